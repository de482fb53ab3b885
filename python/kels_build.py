# Makes the extension kels._kels, which holds every function, constant and structure of <kels.h>.
#
# Nothing is listed here: the declarations are what the C preprocessor leaves of the headers, so a new function is there
# after the next build.  The headers and the library are found in this order:
#   KELS_BUILD   a build folder of these sources: the library there, the headers beside this folder
#   KELS_PREFIX  an installation: headers in include, the library in lib, lib64 or Debian's folder
#   pkg-config   the module "kels", where neither is set
# Run as a program, it builds the extension alone: kels_build.py FOLDER leaves FOLDER/_kels.abi3.so.
import glob
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

import cffi

HERE = pathlib.Path(__file__).resolve().parent


def locate():
    """Folders of the headers and of the library, and whether the loader has to be told about the latter."""
    build, prefix = os.environ.get('KELS_BUILD'), os.environ.get('KELS_PREFIX')
    if build:
        return [HERE.parent / 'include'], [pathlib.Path(build).resolve()], True
    if prefix:
        root = pathlib.Path(prefix).resolve()
        found = [path for name in ('lib', 'lib64', 'lib/x86_64-linux-gnu')
                 for path in glob.glob(str(root / name / 'libkelsra6.so'))]
        if not found:
            raise SystemExit(f'there is no libkelsra6.so below {root}: set KELS_PREFIX to an installation')
        return [root / 'include'], [pathlib.Path(found[0]).parent], True
    try:
        flags = shlex.split(subprocess.run(['pkg-config', '--cflags', '--libs', 'kels'], check=True, text=True,
                                           stdout=subprocess.PIPE).stdout)
    except (OSError, subprocess.CalledProcessError):
        raise SystemExit('pkg-config does not know kels: install it, or set KELS_PREFIX or KELS_BUILD') from None
    folders = {kind: [flag[2:] for flag in flags if flag.startswith(kind)] for kind in ('-I', '-L')}
    return folders['-I'] or ['/usr/include'], folders['-L'], False


def declarations(include):
    """What <kels.h> declares, in the C that cffi reads."""
    command = [os.environ.get('CC', 'cc'), '-E', '-dD', '-x', 'c', '-', *[f'-I{folder}' for folder in include]]
    text = subprocess.run(command, input='#include <kels.h>\n', check=True, text=True, stdout=subprocess.PIPE).stdout
    kept, ours = [], False
    for line in text.split('\n'):
        marker = re.match(r'# \d+ "(.*)"', line)
        if marker:
            ours = re.search(r'/kels/\w+\.h$', marker[1]) is not None
        elif ours:
            kept.append(line)
    lines = []
    for line in kept:
        define = re.match(r'#define (\w+)\s+(.*)', line)
        if not line.startswith('#'):
            lines.append(line)
        elif define and re.match(r'"', define[2]):
            lines.append(f'static char *const {define[1]};')
        elif define and re.fullmatch(r'[-(]*(0x[0-9a-fA-F]+|\d+)[uUlL]*\)*', define[2].strip()):
            lines.append(f'#define {define[1]} ...')
        elif define and re.match(r'[-(]*[\d.]', define[2]):
            lines.append(f'static const double {define[1]};')
    text = re.sub(r'__attribute__\(\(visibility\("\w+"\)\)\)', '', '\n'.join(lines))
    if text.count('(') < 100:
        raise SystemExit('the headers declare next to nothing: are these the headers of kels?')
    return text


def ffi(rpath=None):
    """The builder.  rpath: whether the extension names the library's folder; None leaves that to locate()."""
    include, library, foreign = locate()
    builder = cffi.FFI()
    builder.cdef(declarations(include))
    builder.set_source(
        'kels._kels', '#include <kels.h>', libraries=['kelsra6'], include_dirs=[str(folder) for folder in include],
        library_dirs=[str(folder) for folder in library],
        extra_compile_args=['-g0', '-w', *([] if 'CFLAGS' in os.environ else ['-O1'])],
        runtime_library_dirs=[str(folder) for folder in library] if (foreign if rpath is None else rpath) else [])
    return builder


if __name__ == '__main__':
    with tempfile.TemporaryDirectory() as work:
        built = pathlib.Path(ffi(rpath=False).compile(tmpdir=work))
        # cffi keeps to the interface that all versions of Python 3 share, whatever compile() calls the file.
        target = pathlib.Path(sys.argv[1]) / '_kels.abi3.so'
        target.write_bytes(built.read_bytes())
        target.chmod(0o644)
