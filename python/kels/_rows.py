"""Vectors and rows: windows, pre-emphasis, deltas, distances by time warping."""
import numpy as np

from kels._base import call, count, ffi, lib, matrix, pointer, vector

_WINDOWS = {'rectangular': lib.kelWinRect, 'hann': lib.kelWinHann, 'hamming': lib.kelWinHamming,
            'povey': lib.kelWinPovey, 'blackman': lib.kelWinBlackman, 'kaiser': lib.kelWinKaiser}


def window(kind, length, beta=0.0, periodic=False):
    """A window: float64, (length,).

    kind: 'rectangular', 'hann', 'hamming', 'povey', 'blackman' or 'kaiser', which takes beta.
    periodic: symmetric about length / 2, as wanted for overlapping frames; else about (length - 1) / 2.

    >>> kels.window('hann', 5)
    array([0. , 0.5, 1. , 0.5, 0. ])
    """
    if kind not in _WINDOWS:
        raise ValueError(f'no window {kind!r}: there are {", ".join(_WINDOWS)}')
    result = np.empty(count(length, 'length'))
    call(lib.kelsWindow_64f, pointer(result), length, _WINDOWS[kind] + (lib.kelWinPeriodic if periodic else 0), beta)
    return result


def pre_emphasis(signal, coefficient=0.97, before=None):
    """signal[i] - coefficient * signal[i - 1]: float32, (samples,).

    before: the sample before the first one; without it the first sample stands before itself.

    >>> kels.pre_emphasis([1, 2, 3], 0.5, before=0)
    array([1. , 1.5, 2. ], dtype=float32)
    """
    signal = vector(signal)
    result = np.empty_like(signal)
    memory = ffi.NULL if before is None else ffi.new('Kel32f*', before)
    call(lib.kelsPreEmphasis_32f, pointer(signal), pointer(result), signal.size, coefficient, memory)
    return result


def delta(rows, order=1, window=2):
    """The rows with their slopes behind them: float32, (frames, (order + 1) * width) from (frames, width).

    order: 1 appends the slopes over `window` (1 or 2) rows to either side, 2 those of the slopes as well.
    At the ends the first or the last row stands for those outside.
    At least 2 * window rows are wanted, for order 2 at least 3 * window.

    >>> kels.delta(np.arange(6)[:, None] ** 2, window=1)[:, 1]
    array([0.5, 2. , 4. , 6. , 8. , 4.5], dtype=float32)
    """
    if order not in (1, 2) or window not in (1, 2):
        raise ValueError('order and window are 1 or 2')
    rows = np.ascontiguousarray(matrix(rows)[0])
    height, width = rows.shape
    result = np.empty((height, (order + 1) * width), np.float32)
    function = getattr(lib, f'kels{"Delta" * order}_Win{window}_32f_D2')
    scale = 1 / (2 * sum(k * k for k in range(1, window + 1)))
    call(function, pointer(rows), width, pointer(result), result.shape[1], height, *[scale] * order,
         lib.kelDeltaBlockFirst | lib.kelDeltaBlockLast)
    return result


def dtw(a, b, band=None, beam=None):
    """The cost of the best monotone alignment of two sequences of vectors, (frames, width) each; None if there is none.

    The cost is the sum of the Euclidean distances of aligned rows, one for each row of the longer sequence, whose
    neighbour in the shorter one stays or moves on by one or two.  Both ends are open by `band` rows.
    band: rows that an alignment may leave the diagonal by; all without it.  beam: cost above the best at which it is
    given up.

    >>> kels.dtw([[0], [0], [1], [1], [2], [0]], [[0], [1], [2], [0]])
    0.0
    """
    (a, step), (b, other) = matrix(a), matrix(b)
    if a.shape[1] != b.shape[1]:
        raise ValueError(f'rows of {a.shape[1]} and of {b.shape[1]} values')
    if step != other:
        a, b, step = np.ascontiguousarray(a), np.ascontiguousarray(b), a.shape[1]
    cost = ffi.new('Kel32f*')
    call(lib.kelsDTW_L2_32f_D2, pointer(a), a.shape[0], pointer(b), b.shape[0], a.shape[1], step, cost,
         max(a.shape[0], b.shape[0]) if band is None else band, 1e30 if beam is None else beam)
    return None if cost[0] >= 3.4e38 else cost[0]
