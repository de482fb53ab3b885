"""The binding: everything is there, statuses become exceptions, arrays are passed without copies, threads run."""
import doctest
import importlib
import pathlib
import pickle
import pkgutil
import subprocess
import sys
import threading
import time

import numpy as np
import pytest

import kels
from kels import _base


def loaded_library():
    maps = pathlib.Path('/proc/self/maps').read_text()
    return next(line.split()[-1] for line in maps.split('\n') if 'libkelsra6.so' in line)


def test_every_exported_function_is_reachable():
    listing = subprocess.run(['nm', '-D', '--defined-only', '--format=posix', loaded_library()], check=True, text=True,
                             stdout=subprocess.PIPE).stdout
    exported = {line.split('@')[0].split()[0] for line in listing.split('\n') if line.startswith('kels')}
    assert len(exported) > 600
    assert exported == {name for name in dir(kels.lib) if name.startswith('kels')}


def test_the_extension_names_the_library_and_no_folder():
    dynamic = subprocess.run(['readelf', '-d', kels._kels.__file__], check=True, text=True,
                             stdout=subprocess.PIPE).stdout
    assert f'[libkelsra6.so.{kels.lib.KELS_VERSION_MAJOR}]' in dynamic
    assert 'RPATH' not in dynamic and 'RUNPATH' not in dynamic


def test_constants_and_structures_are_those_of_the_headers():
    assert (kels.lib.kelStatusNullPtr, kels.lib.kelVadSpeech, kels.lib.kelFftNoDiv) == (-8, 1, 8)
    assert kels.lib.KELS_LOG_ZERO_32F == -4500000
    assert kels.ffi.sizeof('KelFeatureConfig') == 184
    assert kels.__version__.split('.')[0] == str(kels.lib.KELS_VERSION_MAJOR)
    assert kels.target() in ('x86-64', 'x86-64-v3', 'x86-64-v4')


def test_a_refused_call_raises_with_name_and_text():
    with pytest.raises(kels.KelsError, match=r'kelsMax_32f: kelStatusSize \(-6\), size out of range') as caught:
        kels.call(kels.lib.kelsMax_32f, kels.ffi.new('float[1]'), 0, kels.ffi.new('float*'))
    assert (caught.value.name, caught.value.status) == ('kelStatusSize', -6)
    assert str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value)
    with pytest.warns(kels.KelsWarning, match='kelStatusLogZero'):
        kels.call(kels.lib.kelsLn_32f_I, kels.ffi.new('float[1]', [0]), 1)
    with pytest.raises(MemoryError):
        raise kels.KelsMemoryError('kelsFFTInitAlloc_R_32f', kels.lib.kelStatusNoMemory)


def test_arrays_that_fit_are_not_copied(rng):
    table = rng.normal(size=(20, 16)).astype(np.float32)
    for rows, step in ((table, 16), (table[:, 3:7], 16), (table[::2, :5], 32)):
        passed, given = _base.matrix(rows)
        assert np.shares_memory(passed, table) and given == step
    assert np.shares_memory(_base.vector(table[3]), table)
    for rows in (table.T, table[::-1], table[:, ::2], table.astype(np.float64), table[:1, 3:7][np.newaxis, 0]):
        passed, step = _base.matrix(rows)
        assert np.array_equal(passed, rows.astype(np.float32)) and step == rows.shape[1]
    with pytest.raises(ValueError, match='two dimensions'):
        _base.matrix(table[0])


def test_strided_rows_score_as_their_copy(rng):
    table = rng.normal(size=(50, 9)).astype(np.float32)
    mixture = kels.GaussianMixture(2).fit(table[:, 2:6])
    assert np.array_equal(mixture.score_samples(table[::3, 2:6]), mixture.score_samples(table[::3, 2:6].copy()))


def test_calls_let_other_threads_run(rng):
    signal = rng.integers(-9000, 9000, 8000 * 900).astype(np.int16)
    done = threading.Event()
    seen = []
    worker = threading.Thread(target=lambda: (kels.features(signal, 8000, 'kaldi-fbank'), done.set()))
    worker.start()
    while not done.is_set():
        seen.append(time.monotonic())
        time.sleep(0.001)
    worker.join()
    # Under the interpreter's lock there would be a gap as long as the call.
    assert len(seen) > 5 and np.diff(seen).max() < 0.5 * (seen[-1] - seen[0])


def test_threads_share_objects(speech):
    extract = kels.FeatureExtractor(8000)
    mixture = kels.GaussianMixture(4).fit(extract(speech))
    expected = mixture.score_samples(extract(speech))
    results = [None] * 8

    def work(i):
        results[i] = [mixture.score_samples(extract(speech)) for _ in range(5)]

    threads = [threading.Thread(target=work, args=(i,)) for i in range(len(results))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all(np.array_equal(scores, expected) for result in results for scores in result)


MODULES = [name for _, name, _ in pkgutil.iter_modules(kels.__path__) if name not in ('_kels', '__main__')]


@pytest.mark.parametrize('name', ['', *MODULES])
def test_examples_of_docstrings(name):
    module = importlib.import_module(f'kels.{name}'.rstrip('.'))
    result = doctest.testmod(module, extraglobs={'kels': kels, 'np': np})
    assert result.failed == 0 and (result.attempted > 0 or not name)


def test_every_public_name_has_an_example():
    public = [getattr(kels, name) for name in dir(kels) if not name.startswith('_')]
    made_here = [thing for thing in public if getattr(thing, '__module__', '').startswith('kels.')]
    # Helpers of kels.lib, and classes that another one's example shows.
    shown_elsewhere = {kels.KelsMemoryError, kels.KelsWarning, kels.call, kels.pointer, kels.FeatureStream}
    bare = [thing.__name__ for thing in made_here if '>>>' not in thing.__doc__ and thing not in shown_elsewhere]
    assert not bare


def test_self_test_of_the_module():
    result = subprocess.run([sys.executable, '-m', 'kels'], text=True, stdout=subprocess.PIPE, check=True)
    assert result.stdout.startswith(f'kels {kels.__version__}, the {kels.target()} build')
    assert 'FAILED' not in result.stdout
