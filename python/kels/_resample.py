"""Signals at another sampling rate."""
import functools
import math

import numpy as np

from kels._base import build, call, count, ffi, lib, pointer, samples, vector

# Width of the filter in samples of the slower rate, cutoff as a fraction of half that rate, Kaiser's alpha.
QUALITIES = {'fast': (46, 0.86, 6), 'speech': (94, 0.90, 9), 'high': (190, 0.956, 13), 'best': (298, 0.969, 15.5)}


@functools.lru_cache(32)
def _filter(rate_in, rate_out, length, cutoff, alpha, suffix):
    return build(f'KelResamplePolyphaseFixed_{suffix}', getattr(lib, f'kelsResamplePolyphaseFixedInitAlloc_{suffix}'),
                 rate_in, rate_out, length, cutoff, alpha, lib.kelHintNone,
                 free=getattr(lib, f'kelsResamplePolyphaseFixedFree_{suffix}'))


class Resampler:
    """Converts a stream from one rate in Hz to another, in blocks of any lengths.

    quality: 'fast' (pass band to 79 % of half the slower rate, rejection 68 dB), 'speech' (86 %, 94 dB), 'high' (93 %,
    127 dB) or 'best' (95 %, 138 dB).  dtype: of the samples, float32 or int16.
    Results are those of one block to the bit, however the stream is cut.

    >>> convert = kels.Resampler(8000, 16000)
    >>> tone = np.sin(0.3 * np.arange(800))
    >>> parts = [convert.push(part) for part in np.split(tone, 8)] + [convert.flush()]
    >>> bool((np.concatenate(parts) == kels.resample(tone, 8000, 16000)).all())
    True
    """

    def __init__(self, rate_in, rate_out, quality='high', dtype=np.float32):
        if quality not in QUALITIES:
            raise ValueError(f'no quality {quality!r}: there are {", ".join(QUALITIES)}')
        self.dtype = np.dtype(dtype)
        if self.dtype not in (np.float32, np.int16):
            raise ValueError('dtype is float32 or int16')
        self.rate_in, self.rate_out = count(rate_in, 'rate_in'), count(rate_out, 'rate_out')
        width, cutoff, alpha = QUALITIES[quality]
        suffix = '16s' if self.dtype == np.int16 else '32f'
        length = round(width * max(rate_in / rate_out, 1))
        self._filter = _filter(self.rate_in, self.rate_out, length, cutoff, alpha, suffix)
        self._convert = getattr(lib, f'kelsResamplePolyphaseFixed_{suffix}')
        self._reach = length / 2
        self._time = ffi.new('double*')
        self._count = ffi.new('int*')
        self._start()

    def _start(self):
        # Silence before the stream, as much as the filter reaches back.
        self._kept = np.zeros(math.ceil(self._reach), self.dtype)
        self._time[0] = len(self._kept)
        self._taken = self._given = 0

    def push(self, signal):
        """Takes samples and returns those of the other rate that they settle."""
        signal = vector(signal, self.dtype)
        self._taken += len(signal)
        return self._pass(signal)

    def _pass(self, signal):
        source = np.concatenate([self._kept, signal])
        room = (len(source) - self._time[0] - self._reach) * self.rate_out / self.rate_in
        result = np.empty(max(math.ceil(room), 0) + 2, self.dtype)
        self._count[0] = 0
        if len(source):
            call(self._convert, self._filter, pointer(source), len(source), pointer(result), 1.0, self._time,
                 self._count)
        done = min(max(math.floor(self._time[0] - self._reach), 0), len(source))
        self._kept = source[done:]
        self._time[0] -= done
        self._given += self._count[0]
        return result[:self._count[0]].copy()

    def flush(self):
        """Ends the stream and returns the rest; the converter is at its start again.

        All in all n samples become ceil(n rate_out / rate_in).
        """
        wanted = -(-self._taken * self.rate_out // self.rate_in) - self._given
        rest = [np.empty(0, self.dtype)]
        while (missing := wanted - sum(map(len, rest))) > 0:
            rest.append(self._pass(np.zeros(math.ceil(self._reach + missing * self.rate_in / self.rate_out) + 1,
                                            self.dtype)))
        self._start()
        return np.concatenate(rest)[:max(wanted, 0)]


def resample(signal, rate_in, rate_out, quality='high'):
    """The signal at another rate: (ceil(samples * rate_out / rate_in),), int16 if it was that, else float32.

    signal: one channel.  Rates in Hz, whole numbers.  quality: see Resampler.

    >>> tone = np.sin(2 * np.pi * 440 * np.arange(44100) / 44100)
    >>> slow = kels.resample(tone, 44100, 16000)
    >>> len(slow), bool(np.allclose(slow[500:-500], np.sin(2 * np.pi * 440 * np.arange(500, 15500) / 16000), atol=1e-5))
    (16000, True)
    """
    signal = samples(signal)
    converter = Resampler(rate_in, rate_out, quality, signal.dtype)
    return np.concatenate([converter.push(signal), converter.flush()])
