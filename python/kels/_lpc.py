"""Linear prediction, and conversions of predictors.

A predictor of order p is the array a1 .. ap of the inverse filter 1 + a1 z^-1 + .. + ap z^-p, without the leading 1.
Each conversion takes one array of p values, or rows of them, and gives float32 of the same shape.
"""
import numpy as np

from kels._base import call, count, lib, pointer


def _each_row(values, width, convert):
    """The result of convert(row, out), of `width` values, for every row of the last dimension."""
    values = np.ascontiguousarray(values, np.float32)
    result = np.empty((*values.shape[:-1], width), np.float32)
    rows = values.reshape(-1, values.shape[-1])
    for row, out in zip(rows, result.reshape(len(rows), width)):
        convert(row, out)
    return result


def lpc(frames, order, method='autocorrelation'):
    """The predictor of each frame: float32, (..., order) from (..., samples).

    method: 'autocorrelation', for windowed frames, whose predictors are stable; or 'covariance', which wants no window
    and predicts sinusoids exactly.

    >>> x = np.sin(0.3 * np.arange(400))
    >>> bool(np.allclose(kels.lpc(x, 2, 'covariance'), [-2 * np.cos(0.3), 1], atol=1e-4))
    True
    """
    functions = {'autocorrelation': lib.kelsLinearPrediction_Auto_32f, 'covariance': lib.kelsLinearPrediction_Cov_32f}
    if method not in functions:
        raise ValueError(f'no method {method!r}: there are {", ".join(functions)}')
    return _each_row(frames, count(order, 'order'),
                     lambda row, out: call(functions[method], pointer(row), row.size, pointer(out), order))


def _convert(values, function):
    return _each_row(values, np.shape(values)[-1],
                     lambda row, out: call(function, pointer(row), pointer(out), row.size))


def lpc_to_reflection(predictor):
    """Reflection coefficients, all within -1 .. 1 if the predictor is stable.

    >>> kels.lpc_to_reflection([-0.5, 0.25])
    array([ 0.4 , -0.25], dtype=float32)
    """
    return _convert(predictor, lib.kelsLPToReflection_32f)


def reflection_to_lpc(reflection):
    """The predictor of reflection coefficients.

    >>> kels.reflection_to_lpc([0.4, -0.25])
    array([-0.5 ,  0.25], dtype=float32)
    """
    return _convert(reflection, lib.kelsReflectionToLP_32f)


def lpc_to_lsp(predictor):
    """Line spectral pairs: the cosines of p frequencies, descending.  The predictor must be stable.

    >>> pairs = kels.lpc_to_lsp([-0.5, 0.25])
    >>> bool((np.diff(pairs) < 0).all())
    True
    """
    return _convert(predictor, lib.kelsLPToLSP_32f)


def lsp_to_lpc(pairs):
    """The predictor of line spectral pairs.

    >>> kels.lsp_to_lpc(kels.lpc_to_lsp([-0.5, 0.25])).round(5)
    array([-0.5 ,  0.25], dtype=float32)
    """
    return _convert(pairs, lib.kelsLSPToLP_32f)


def lpc_to_cepstrum(predictor):
    """The cepstrum c1 .. cp of 1/A(z).

    >>> kels.lpc_to_cepstrum([-0.5, 0.25])
    array([ 0.5  , -0.125], dtype=float32)
    """
    return _convert(predictor, lib.kelsLPToCepstrum_32f)


def cepstrum_to_lpc(cepstrum):
    """The predictor whose 1/A(z) has the cepstrum c1 .. cp.

    >>> kels.cepstrum_to_lpc([0.5, -0.125])
    array([-0.5 ,  0.25], dtype=float32)
    """
    return _convert(cepstrum, lib.kelsCepstrumToLP_32f)


def lpc_spectrum(predictor, length):
    """The magnitudes |1/A| at length frequencies around the circle, a power of two: float32, (..., length).

    Value k is that of the frequency k / length of the sampling rate.

    >>> kels.lpc_spectrum([-0.5], 4).round(4)
    array([2.    , 0.8944, 0.6667, 0.8944], dtype=float32)
    """
    predictor = np.asarray(predictor, np.float32)
    whole = np.concatenate([np.ones((*predictor.shape[:-1], 1), np.float32), predictor], axis=-1)
    order = count(length, 'length').bit_length() - 1
    if 1 << order != length:
        raise ValueError(f'the length {length} is no power of two')
    return _each_row(whole, length,
                     lambda row, out: call(lib.kelsLPToSpectrum_32f, pointer(row), row.size, pointer(out), order, 0.0))
