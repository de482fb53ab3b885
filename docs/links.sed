# Links of the pages, which lead to files and folders of the sources, turned to what the HTML manual has of them.
s#\]\((\.\./)*include/kels/([a-z]+)\.h\)#](@ref \2)#g
s#\]\(((\.\./)*examples/[a-z-]+)\)#](\1/README.md)#g
s#\]\((\.\./)?([a-z-]+)\)#](\1\2/README.md)#g
s#\]\(([a-z/.-]+\.md)\#[a-z0-9-]+\)#](\1)#g
s#\[([^]]+)\]\([a-z_]+\.(cpp|h)\)#\1#g
