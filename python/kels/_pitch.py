"""Pitch: how similar speech is to itself a while later, peaks of curves, and the track of the fundamental frequency."""
import numpy as np

from kels._base import call, count, lib, pointer, unit_samples
from kels._resample import resample

_RATE = 8000  # at which pitch() counts lags
_STEP = 80
_SHORT = 120  # samples that coefficients compare
_MOST = 12    # candidates of a frame


def _rows(values):
    values = np.ascontiguousarray(values, np.float32)
    return values, values.reshape(-1, values.shape[-1])


def _ratios(values, lags, each):
    """each(row, out) for every row of the last dimension; out has a place for each of the lags."""
    values, rows = _rows(values)
    result = np.empty((*values.shape[:-1], lags), np.float32)
    for row, out in zip(rows, result.reshape(len(rows), lags)):
        each(row, out)
    return result


def similarity(frames, length, min_lag, max_lag, bias=0.0):
    """Cross-correlation coefficients of the first `length` samples with those a lag later: float32, (..., lags).

    The lags are min_lag .. max_lag; frames hold length + max_lag samples.  bias: the energy of noise in `length`
    samples, which pulls the coefficients of quiet windows to 0.

    >>> x = np.sin(2 * np.pi * np.arange(200) / 50)
    >>> kels.similarity(x, 60, 48, 52).argmax() + 48
    50
    """
    if np.shape(frames)[-1] < count(length, 'length') + max_lag or min_lag < 0:
        raise ValueError(f'{np.shape(frames)[-1]} samples are too few for {length} and a lag of {max_lag}')
    return _ratios(frames, max_lag - min_lag + 1,
                   lambda row, out: call(lib.kelsCrossCorrCoeffPartial_32f, pointer(row), pointer(row), length,
                                         pointer(out), min_lag, max_lag, bias))


def periodicity(frames, min_lag, max_lag, method='autocorrelation', window=None):
    """How periodic frames are at the lags min_lag .. max_lag: float32, (..., lags).

    method: 'autocorrelation', of frames that have been multiplied by `window`, whose effect is taken out; or
    'least-squares', of frames without their mean, which averages all periods and is about 0 for noise.

    >>> x = np.tile([3, 1, 0, -4], 30)
    >>> kels.periodicity(x, 2, 6, 'least-squares').argmax() + 2
    4
    """
    if method == 'least-squares':
        return _ratios(frames, max_lag - min_lag + 1,
                       lambda row, out: call(lib.kelsPeriodicityLSPE_32f, pointer(row), row.size, pointer(out),
                                             min_lag, max_lag))
    if method != 'autocorrelation':
        raise ValueError(f'no method {method!r}: there are autocorrelation, least-squares')
    size = np.shape(frames)[-1]
    window = np.ascontiguousarray(np.ones(size) if window is None else window, np.float32)
    if window.shape != (size,) or max_lag >= size:
        raise ValueError(f'a window of {size} values and lags below that are needed')
    correlation = np.empty(max_lag + 1, np.float32)
    call(lib.kelsAutoCorr_32f, pointer(window), size, pointer(correlation), max_lag + 1)
    return _ratios(frames, max_lag - min_lag + 1,
                   lambda row, out: call(lib.kelsPeriodicity_32f, pointer(row), row.size, pointer(correlation),
                                         pointer(out), min_lag, max_lag))


def find_peaks(curve, threshold=-np.inf, distance=1):
    """The places of the peaks of a curve: of those nearer to each other than `distance`, the highest.

    >>> kels.find_peaks([0, 3, 0, 4, 0, 3, 0], distance=3)
    array([3])
    """
    curve = np.ascontiguousarray(curve, np.float32)
    flags = np.empty(curve.shape, np.uint8)
    call(lib.kelsFindPeaks_32f8u, pointer(curve), pointer(flags), curve.size, threshold, distance)
    return np.flatnonzero(flags)


def spectral_entropy(spectra):
    """The entropy of rows of power or magnitude, from 0 for a single line to 1 for a flat spectrum: float32.

    >>> float(kels.spectral_entropy([1, 1, 1, 1]))
    1.0
    """
    values, rows = _rows(spectra)
    result = np.empty(len(rows), np.float32)
    for t, row in enumerate(rows):
        call(lib.kelsEntropy_32f, pointer(row), row.size, pointer(result) + t)
    return (result / np.log(values.shape[-1])).reshape(values.shape[:-1])


def _candidates(pair, frame, min_lag, window, bias):
    """(frequencies, scores) of the peaks of both measures together, placed between lags.

    pair: the samples of which the first _SHORT are compared with those a lag later; frame: before its window.
    """
    max_lag = len(pair) - _SHORT
    frame = frame * window
    energy, steady = float(frame @ frame), float(frame @ frame + bias * (window @ window))
    both = 0.3 * similarity(pair, _SHORT, min_lag, max_lag, bias * _SHORT)
    both += 0.7 * energy / steady * periodicity(frame, min_lag, max_lag, window=window)
    places = find_peaks(both, max(0.3 * float(both.max()), 1e-3))
    places = places[np.argsort(-both[places])][:_MOST]
    bend = both[places - 1] - 2 * both[places] + both[places + 1]
    lags = min_lag + places + 0.5 * (both[places - 1] - both[places + 1]) / np.minimum(bend, -1e-9)
    return _RATE / lags, np.minimum(both[places], 1)


def _cheapest(columns, lowest):
    """The index of a candidate for each frame, -1 without voice, on the path of least cost."""
    costs, back, before = np.zeros(1), [], np.zeros(1)
    for frequencies, scores in columns:
        now = np.concatenate([[1], frequencies])
        local = np.concatenate([[scores.max(initial=0) - 0.05], 1 - scores * (1 - 0.3 * lowest / frequencies)])
        jump = np.abs(np.log(now / np.maximum(before, 1)[:, None]))
        step = 2 * np.minimum(jump, 0.35 + np.abs(jump - np.log(2)))
        step[0, 1:] = step[1:, 0] = 0.3
        step[0, 0] = 0
        total = costs[:, None] + step
        back.append(total.argmin(0))
        costs, before = total.min(0) + local, now
    state, path = int(costs.argmin()), []
    for origin in reversed(back):
        path.append(state - 1)
        state = int(origin[state])
    return path[::-1]


def pitch(signal, rate, lowest=60.0, highest=400.0):
    """(times, frequencies, strengths) of the voice in a recording, every 10 ms; the frequency is 0 where there is none.

    signal: int16, or floats within +-1.  Frequencies between lowest and highest, in Hz, are looked for.  The strength
    tells how similar the voice is to itself one period later.

    >>> t = np.arange(8000) / 8000
    >>> sound = sum(np.sin(2 * np.pi * 130 * h * t) / h for h in range(1, 9)) * (np.abs(t - 0.5) < 0.3)
    >>> times, frequencies, strengths = kels.pitch(0.2 * sound, 8000)
    >>> len(times), float(frequencies[50].round(1)), float(frequencies[5])
    (100, 130.0, 0.0)
    """
    x = unit_samples(signal)
    if rate != _RATE:
        x = resample(x, rate, _RATE)
    taps = np.hanning(243)[1:-1] * (0.5 * np.sinc(0.5 * np.arange(-120, 121)) -
                                    0.0125 * np.sinc(0.0125 * np.arange(-120, 121)))
    frames = -(-len(x) // _STEP)
    if not frames:
        return np.empty(0), np.empty(0, np.float32), np.empty(0, np.float32)
    x = np.convolve(x, taps)[120:120 + len(x)].astype(np.float32)
    min_lag, max_lag = int(_RATE / highest) - 1, int(np.ceil(_RATE / lowest)) + 1
    length = int(3 * _RATE / lowest)
    window = (0.5 - 0.5 * np.cos(2 * np.pi * (np.arange(length) + 0.5) / length)).astype(np.float32)
    energies = (np.pad(x, (0, -len(x) % _STEP)).reshape(-1, _STEP) ** 2).mean(1)
    margin = max(_SHORT + max_lag, length)
    padded = np.pad(x, margin)
    columns = []
    for t in range(frames):
        # The noise is the quietest of the last one and a half seconds, or what is faint beside the loudest.
        near = energies[max(0, t - 150):t + 16]
        bias = float(max(near.min(), 5e-4 * near.max(), 1))
        centre = margin + t * _STEP
        pair = padded[centre - (_SHORT + (min_lag + max_lag) // 2) // 2:][:_SHORT + max_lag]
        columns.append(_candidates(pair, padded[centre - length // 2:][:length], min_lag, window, bias))
    path = _cheapest(columns, lowest)
    found = np.array([0 if i < 0 else f[i] for i, (f, _) in zip(path, columns)], np.float32)
    strengths = np.array([s.max(initial=0) if i < 0 else s[i] for i, (_, s) in zip(path, columns)], np.float32)
    return np.arange(frames) * (_STEP / _RATE), found, strengths
