"""Calls, statuses and arrays: what every module of the package builds on."""
import operator
import warnings

import numpy as np

from kels._kels import ffi, lib

STATUS_NAMES = {}
for _name in sorted(dir(lib)):
    if _name.startswith('kelStatus'):
        STATUS_NAMES.setdefault(getattr(lib, _name), _name)


class KelsError(ValueError):
    """A call that the library refused: nothing has been written.

    `function` is the name of the function, `status` its number, `name` the name of the status.

    >>> try:
    ...     kels.fft.rfft(np.zeros(100, np.float32))
    ... except kels.KelsError as error:
    ...     print(error.name, error.status)
    kelStatusFftOrder -15
    """

    def __init__(self, function, status):
        self.function, self.status = function, status
        self.name = STATUS_NAMES.get(status, 'unknown status')
        super().__init__(f'{function}: {self.name} ({status}), {status_text(status)}')

    def __reduce__(self):
        return type(self), (self.function, self.status)


class KelsMemoryError(KelsError, MemoryError):
    """Memory was out."""


class KelsWarning(UserWarning):
    """A call that has written everything, some of it as a documented substitute."""


def status_text(status):
    """A short English text for a status.

    >>> kels.status_text(-8)
    'null pointer'
    """
    return ffi.string(lib.kelsrGetStatusString(status)).decode()


def call(function, *arguments):
    """Calls a function of the library; a negative status raises KelsError, a positive one warns."""
    status = function(*arguments)
    if status < 0:
        kind = KelsMemoryError if status in (lib.kelStatusNoMemory, lib.kelStatusAllocError) else KelsError
        raise kind(function.__name__, status)
    if status > 0:
        name = STATUS_NAMES.get(status, 'unknown status')
        warnings.warn(f'{function.__name__}: {name} ({status}), {status_text(status)}', KelsWarning, stacklevel=3)
    return status


def build(kind, init, *arguments, free):
    """A structure that `init` allocates; it goes back with `free` when Python no longer refers to it."""
    holder = ffi.new(f'{kind}**')
    call(init, holder, *arguments)
    return ffi.gc(holder[0], free)


def size_of(function, *arguments):
    """The int that a GetSize or GetBufSize function stores behind its last argument."""
    size = ffi.new('int*')
    call(function, *arguments, size)
    return size[0]


_KINDS = {np.dtype(name): kind for name, kind in (
    ('uint8', 'Kel8u*'), ('int16', 'Kel16s*'), ('int32', 'Kel32s*'), ('float32', 'Kel32f*'), ('float64', 'Kel64f*'),
    ('complex64', 'Kel32fc*'))}


def pointer(array):
    """A pointer to the first element.  The array has to stay alive while the pointer is used."""
    return ffi.cast(_KINDS[array.dtype], array.__array_interface__['data'][0])


def vector(values, dtype=np.float32):
    """One dimension, contiguous and of the type: the array itself where it is that already, else a copy."""
    array = np.ascontiguousarray(values, dtype)
    if array.ndim != 1:
        raise ValueError(f'one dimension is wanted, and there are {array.ndim}')
    return array


def matrix(values, dtype=np.float32):
    """Rows of the type and their step in elements.

    Rows that lie apart, such as some columns of a larger array, are passed as they are; any other layout is copied.
    """
    array = np.asarray(values, dtype)
    if array.ndim != 2:
        raise ValueError(f'rows are wanted, two dimensions, and there are {array.ndim}')
    size = array.itemsize
    height, width = array.shape
    row, column = array.strides
    if height > 1 and column == size and row % size == 0 and row >= width * size and array.flags.aligned:
        return array, row // size
    return np.ascontiguousarray(array), max(width, 1)


def floating(values):
    """The type in which rows are best computed: float64 for such rows, float32 for all others."""
    return np.float64 if getattr(values, 'dtype', None) == np.float64 else np.float32


def samples(signal):
    """A signal: 16-bit integers as they are, anything else as float32."""
    array = np.asarray(signal)
    return vector(array, np.int16 if array.dtype == np.int16 else np.float32)


def unit_samples(signal):
    """A signal as float32 in the range of 16-bit integers: those as they are, floats times 32768."""
    array = samples(signal)
    if array.dtype == np.int16:
        return array.astype(np.float32)
    return array * np.float32(32768)


def count(value, name, least=1):
    """A whole number that is at least `least`."""
    number = operator.index(value)
    if number < least:
        raise ValueError(f'{name} is {number}, and at least {least} is wanted')
    return number
