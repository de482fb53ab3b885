"""Transforms of real signals, named and scaled as those of numpy.fft, in single precision.

Lengths are powers of two.
"""
import functools

import numpy as np

from kels._base import build, call, ffi, lib, matrix, pointer, vector


@functools.lru_cache(32)
def _spec(length):
    order = max(length.bit_length() - 1, 0) if length & (length - 1) == 0 and length > 0 else -1
    return build('KelFFTSpec_R_32f', lib.kelsFFTInitAlloc_R_32f, order, lib.kelFftDivInvByN, lib.kelHintNone,
                 free=lib.kelsFFTFree_R_32f)


def rfft(x, n=None):
    """The bins 0 .. n/2 of each row: complex64, (..., n/2 + 1) from (..., samples).

    n: the length, a power of two; rows are cut or padded with zeros to it.  It is the rows' own length by default.

    >>> spectrum = kels.fft.rfft(np.cos(2 * np.pi * 3 * np.arange(16) / 16))
    >>> np.abs(spectrum).round(3)
    array([0., 0., 0., 8., 0., 0., 0., 0., 0.], dtype=float32)
    """
    x = np.asarray(x, np.float32)
    n = x.shape[-1] if n is None else int(n)
    spec = _spec(n)
    if x.shape[-1] < n:
        x = np.pad(x, [(0, 0)] * (x.ndim - 1) + [(0, n - x.shape[-1])])
    rows, step = matrix(x[..., :n].reshape(-1, n))
    result = np.empty((rows.shape[0], max(n, 2) + (2 if n > 1 else 0)), np.float32)
    if rows.size:
        call(lib.kelsFFTFwd_RToCCS_32f_D2, pointer(rows), step, pointer(result), result.shape[1], rows.shape[0], spec,
             ffi.NULL)
    return result.view(np.complex64).reshape(*x.shape[:-1], result.shape[1] // 2)


def irfft(spectrum):
    """Real rows from their bins, the inverse of rfft: float32, (..., n) from (..., n/2 + 1).

    >>> x = np.arange(8, dtype=np.float32)
    >>> np.abs(kels.fft.irfft(kels.fft.rfft(x)) - x).max() < 1e-6
    True
    """
    spectrum = np.asarray(spectrum, np.complex64)
    n = 2 * (spectrum.shape[-1] - 1) or 1
    spec = _spec(n)
    flat = spectrum.reshape(-1, spectrum.shape[-1])
    # From its second value on, with the first one repeated there, a row of bins is in the order of the inverse.
    packed = np.array(flat, order='C').view(np.float32)
    packed[:, 1] = packed[:, 0]
    result = np.empty((flat.shape[0], n), np.float32)
    for row, out in zip(packed, result):
        call(lib.kelsFFTInv_PackToR_32f, pointer(row[1:]), pointer(out), spec, ffi.NULL)
    return result.reshape(*spectrum.shape[:-1], n)


def autocorrelation(x, lags):
    """The sums of x[i] x[i + k] for k of 0 .. lags - 1: float32, (lags,).

    >>> kels.fft.autocorrelation([1, 2, 3], 3)
    array([14.,  8.,  3.], dtype=float32)
    """
    x = vector(x)
    result = np.empty(lags, np.float32)
    call(lib.kelsAutoCorr_32f, pointer(x), x.size, pointer(result), lags)
    return result
