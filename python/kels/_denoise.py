"""Steady noise taken out of recordings."""
import numpy as np

from kels import fft
from kels._base import call, ffi, lib, pointer, samples, size_of

_MEMORY = np.float32(0.98)  # of the decision-directed rule: what the last frame counts
_LEAST_RATIO = np.float32(3e-3)  # -25 dB: residual noise stays noise and does not turn into tones
_LEAST_NOISE = np.float32(1e-9)  # of samples within +-1: below what 16 bits can say


class Denoiser:
    """Takes steady noise out of a stream of 8 to 48 kHz, int16 or floats within +-1; floats come out.

    Frames of 32 ms, one every 8 ms, have their noise estimated by minima-controlled recursive averaging and are
    multiplied by Ephraim-Malah gains.
    least_gain: what remains of noise alone; 0.1 leaves a little of the room.

    >>> stream = kels.Denoiser(8000)
    >>> noise = np.random.default_rng(0).normal(0, 0.01, 16000)
    >>> quiet = np.concatenate([stream.push(part) for part in np.split(noise, 10)] + [stream.flush()])
    >>> len(quiet), bool(quiet[8000:].std() < 0.3 * noise.std())
    (16000, True)
    """

    def __init__(self, rate, least_gain=0.1):
        order = 8
        while (1 << order) * 1000 < rate * 32:
            order += 1
        self._length, self._hop = 1 << order, 1 << order - 2
        self._rate, self._least_gain = rate, np.float32(least_gain)
        # Before and after: four overlapping squares of it add up to 1.
        self._window = (np.sin(np.pi * (np.arange(self._length) + 0.5) / self._length) / np.sqrt(2)).astype(np.float32)
        self._mcra = ffi.new('Kel64f[]', size_of(lib.kelsGetSizeMCRA_32f, self._length) // 8 + 1)
        self._start()

    def _start(self):
        bins = self._length // 2 + 1
        call(lib.kelsAltInitMCRA_32f, self._rate, self._length, self._hop, self._state())
        self._noise, self._clean = np.zeros(bins, np.float32), np.zeros(bins, np.float32)
        self._input = np.zeros(self._length - self._hop, np.float32)
        self._output = np.zeros(self._length - self._hop, np.float32)
        self._early = self._length - self._hop  # samples that come out before the stream's first one does
        self._taken = self._given = self._heard = 0

    def _state(self):
        return ffi.cast('KelMCRAState_32f*', self._mcra)

    def _gain(self, power):
        call(lib.kelsUpdateNoisePSDMCRA_32f_I, pointer(power), self._state(), pointer(self._noise))
        noise = np.maximum(self._noise, _LEAST_NOISE)
        # A posteriori: the frame's power by the noise's.  A priori: what the last frame kept, and a little of this one.
        post = power / noise
        prior = _MEMORY * (self._clean / noise) + (1 - _MEMORY) * np.maximum(post - 1, 0)
        prior = np.maximum(prior, _LEAST_RATIO)
        gain = np.empty_like(post)
        call(lib.kelsFilterUpdateEMNS_32f, pointer(prior), pointer(post), pointer(gain), gain.size)
        gain = np.clip(gain, self._least_gain, 1)
        self._clean = gain * gain * power
        return gain

    def push(self, signal):
        """Takes samples and returns, as float32, those that are done: all but the last one to two frames."""
        signal = samples(signal)
        signal = signal * np.float32(2.0 ** -15) if signal.dtype == np.int16 else signal
        self._taken += len(signal)
        return self._pass(signal)

    def _pass(self, signal):
        source = np.concatenate([self._input, signal])
        frames = max((len(source) - self._length) // self._hop + 1, 0)
        if not frames:
            self._input = source
            return np.empty(0, np.float32)
        overlapping = np.lib.stride_tricks.sliding_window_view(source, self._length)[::self._hop][:frames]
        spectra = fft.rfft(overlapping * self._window)
        powers = spectra.real ** 2 + spectra.imag ** 2
        for t in range(frames):
            # The first frames begin before the stream does: they would be taken for its noise, and pass instead.
            self._heard += self._hop
            if self._heard >= self._length:
                spectra[t] *= self._gain(powers[t])
        pieces = fft.irfft(spectra) * self._window
        done = np.zeros((frames - 1) * self._hop + self._length, np.float32)
        done[:len(self._output)] = self._output
        for t in range(frames):
            done[t * self._hop:t * self._hop + self._length] += pieces[t]
        self._input, self._output = source[frames * self._hop:], done[frames * self._hop:]
        done = done[:frames * self._hop]
        skipped = min(self._early, len(done))
        self._early -= skipped
        self._given += len(done) - skipped
        return done[skipped:]

    def flush(self):
        """Ends the stream and returns the rest; as many samples have come out as went in."""
        wanted = self._taken - self._given
        rest = self._pass(np.zeros(2 * self._length, np.float32))[:wanted]
        self._start()
        return rest


def denoise(signal, rate, least_gain=0.1):
    """The recording without its steady noise: float32 within +-1, (samples,).

    signal: int16, or floats within +-1.  rate: 8000 to 48000 Hz.

    >>> noise = np.random.default_rng(0).normal(0, 0.01, 16000)
    >>> bool(kels.denoise(noise, 8000)[8000:].std() < 0.3 * noise.std())
    True
    """
    stream = Denoiser(rate, least_gain)
    return np.concatenate([stream.push(signal), stream.flush()])
