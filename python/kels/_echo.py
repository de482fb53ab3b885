"""Echo cancellation: what a loudspeaker plays, taken out of a microphone's signal."""
import math

import numpy as np

from kels import fft
from kels._base import call, count, ffi, lib, pointer, size_of, vector

_DECAY = 40  # of a room's response, in e-folds a second


class EchoCanceller:
    """An adaptive filter that learns the way from a loudspeaker to a microphone, on a stream.

    rate: 8000 to 48000 Hz.  tail: seconds of the room's response that are modelled; 0.128 suits a small room.
    block: samples that are worked on at a time, a power of two; about 16 ms by default.

    >>> rng = np.random.default_rng(0)
    >>> played = rng.normal(0, 0.1, 32000)
    >>> heard = 0.5 * np.roll(played, 200)
    >>> left = kels.EchoCanceller(8000).push(played, heard)
    >>> bool(left[16000:].std() < 0.05 * heard[16000:].std())
    True
    """

    def __init__(self, rate, tail=0.128, block=None):
        self.block = block or (128 if rate <= 8000 else 256 if rate <= 16000 else 512)
        self._rate, self._parts = rate, max(math.ceil(count(rate, 'rate') * tail / self.block), 1)
        self._smooth = 0.87 ** (125 * self.block / rate)
        prior = np.exp(-_DECAY * self.block / rate * np.arange(self._parts), dtype=np.float32)[:, None]
        self._prior = prior / prior.sum()
        self._controller = ffi.new('Kel64f[]', size_of(lib.kelsControllerGetSizeAEC_32f, self.block) // 8 + 1)
        self._start()

    def _start(self):
        shape = self._parts, self.block + 1
        call(lib.kelsControllerInitAEC_32f, self._rate, self.block, self._state())
        self._references, self._filter = np.zeros(shape, np.complex64), np.zeros(shape, np.complex64)
        self._variances, self._steps = np.zeros(shape, np.float32), np.zeros(shape, np.float32)
        self._variances[:] = self._prior
        self._near = np.zeros(shape[1], np.float32)
        self._last = np.zeros(self.block, np.float32)
        self._waiting = np.zeros((2, 0), np.float32)
        self._newest = 0  # row of the references; older ones follow it

    def _state(self):
        return ffi.cast('KelAECState_32f*', self._controller)

    def push(self, reference, microphone):
        """Takes as many samples of both signals; returns the microphone's without the echo, in whole blocks: float32.

        Samples may be in any unit, int16 or floats, which is that of the result as well.
        """
        pair = np.stack([vector(reference), vector(microphone)])
        self._waiting = np.concatenate([self._waiting, pair], axis=1)
        blocks = self._waiting.shape[1] // self.block
        done = np.empty(blocks * self.block, np.float32)
        for place in range(0, len(done), self.block):
            done[place:place + self.block] = self._work(*self._waiting[:, place:place + self.block])
        self._waiting = self._waiting[:, len(done):]
        return done

    def flush(self):
        """Ends the stream and returns what is left of a block; the filter is as new."""
        missing = self._waiting.shape[1]
        silence = np.zeros(-missing % self.block, np.float32)
        rest = self.push(silence, silence)[:missing]
        self._start()
        return rest

    def _rows(self, array, kind, first=0):
        """Pointers to rows, as an array of C."""
        base, width = pointer(array), array.shape[1]
        return ffi.new(f'{kind}*[]', [base + (first + p) % self._parts * width for p in range(self._parts)])

    def _work(self, reference, microphone):
        size, bins, parts = self.block, self.block + 1, self._parts
        self._newest = (self._newest - 1) % parts
        self._references[self._newest] = fft.rfft(np.concatenate([self._last, reference]))
        self._last = reference
        heard = self._rows(self._references, 'Kel32fc', self._newest)
        known = self._rows(self._filter, 'Kel32fc')

        # What the filter predicts is taken away.
        predicted = np.empty(bins, np.complex64)
        call(lib.kelsFilterAECNLMS_32fc, heard, known, pointer(predicted), bins, parts)
        error = microphone - fft.irfft(predicted)[size:]
        if not microphone.any():
            return error  # a microphone that is muted says nothing about the room
        # What is left teaches the filter.
        factor, forget, flag = ffi.new('Kel32f*'), ffi.new('Kel32f*'), ffi.new('int*')
        call(lib.kelsControllerUpdateAEC_32f, pointer(self._last), pointer(microphone), pointer(error),
             self._state(), factor, forget, flag)
        if flag[0] == lib.kelAECPathChange:
            self._variances[:] = self._prior
        spectrum = fft.rfft(np.concatenate([np.zeros_like(error), error]))
        steps = self._rows(self._steps, 'Kel32f')
        call(lib.kelsStepSizeUpdateAECNLMS_32f, heard, known, pointer(spectrum), pointer(self._near),
             self._rows(self._variances, 'Kel32f'), steps, bins, parts, factor[0], forget[0], self._smooth)
        call(lib.kelsCoefUpdateAECNLMS_32fc_I, heard, pointer(spectrum), steps, known, bins, parts)
        # A partition holds as many samples of the room as a block, and as many zeros.
        response = fft.irfft(self._filter)
        response[:, size:] = 0
        self._filter[:] = fft.rfft(response)
        return error
