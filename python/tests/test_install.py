"""What users do: the blocks of the manual's page, and pip."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

from test_binding import loaded_library


def test_the_page_of_the_manual_runs(root, tmp_path, monkeypatch):
    text = (root / 'docs/python.md').read_text()
    blocks = re.findall(r'^```python\n(.*?)^```\n(?:\n```text\n(.*?)^```)?', text, re.M | re.S)
    assert len(blocks) > 5
    # One program: later blocks use what earlier ones have made.
    monkeypatch.chdir(tmp_path)
    os.symlink(root / 'examples', 'examples')
    program = ''.join(f'{code}\nprint("\\0")\n' for code, _ in blocks)
    result = subprocess.run([sys.executable, '-c', program], text=True, stdout=subprocess.PIPE, check=True)
    for (code, expected), printed in zip(blocks, result.stdout.split('\0\n')):
        assert not expected or printed == expected, code


def test_pip_installs_without_a_network(root, tmp_path):
    # A copy, for pip leaves what it builds beside the sources.
    made = shutil.ignore_patterns('build', '*.egg-info', '_kels.*')
    shutil.copytree(root / 'python', tmp_path / 'python', ignore=made)
    shutil.copytree(root / 'include', tmp_path / 'include')
    # The loader may have picked a build for newer processors, from a folder inside that of the library.
    folder = re.sub('/glibc-hwcaps/.*', '', str(pathlib.Path(loaded_library()).parent))
    environment = dict(os.environ, KELS_BUILD=folder, CFLAGS='-O0')
    for name in ('PYTHONPATH', 'LD_LIBRARY_PATH'):
        environment.pop(name, None)
    subprocess.run([sys.executable, '-m', 'pip', 'install', '--quiet', '--no-index', '--no-build-isolation',
                    '--no-deps', '--target', tmp_path / 'site', tmp_path / 'python'],
                   check=True, env=environment, cwd=tmp_path)
    # Without the loader's variables: the extension knows the folder that it was built with.
    environment['PYTHONPATH'] = str(tmp_path / 'site')
    result = subprocess.run([sys.executable, '-m', 'kels'], env=environment, cwd=tmp_path, text=True,
                            stdout=subprocess.PIPE, check=True)
    assert result.stdout.startswith('kels ') and 'FAILED' not in result.stdout
