"""Voice activity: speech or noise, frame by frame."""
import numpy as np

from kels._base import call, ffi, lib, pointer, size_of, unit_samples
from kels._features import FeatureExtractor, feature_config

_MELS, _PARTS = 25, 64  # what the detector takes of a frame
_LAG = 6                # frames by which decisions come late
_DEAF = 10              # frames of a stream that get none, while the noise is learned
_PRIMING = 20           # quiet frames that the detector hears before a whole recording


class VoiceActivity:
    """Decides on frames of 25 ms, one every 10 ms, of a stream whose first ten frames are noise.

    Samples are int16, or floats within +-1.

    >>> detector = kels.VoiceActivity(8000)
    >>> rng = np.random.default_rng(0)
    >>> sound = rng.normal(0, 1e-3, 16000)
    >>> sound[8000:12000] += 0.3 * np.sin(np.arange(4000) * (1 + np.sin(np.arange(4000) / 800)))
    >>> speech = np.concatenate([detector.push(part) for part in np.split(sound, 20)] + [detector.flush()])
    >>> len(speech), bool(speech[:90].any()), bool(speech[110:140].all())
    (198, False, True)
    """

    def __init__(self, rate):
        plain = dict(window='hamming', spectrum='magnitude', log_kind='log_none', remove_mean=0, pre_emphasis=0,
                     energy=0, low_freq=64, high_freq=0, num_filters=_MELS)
        # As many bins as there are parts, at least.
        length = max(feature_config(rate)['fft_len'], 2 * _PARTS)
        self._spectra = FeatureExtractor(rate, output='spectrum', fft_len=length, **plain)
        self._bank = FeatureExtractor(rate, output='bank', fft_len=length, **plain).bank()
        self._share = length // 2 // _PARTS
        self._stream = self._spectra.stream()
        self._state = ffi.new('Kel8u[]', size_of(lib.kelsVADGetBufSize_Aurora_32f))
        self._decision = ffi.new('int*')
        self._start()

    def _start(self):
        call(lib.kelsVADInit_Aurora_32f, self._state)
        self._frames = self._given = 0

    def _inputs(self, spectra):
        parts = spectra[:, :_PARTS * self._share].reshape(len(spectra), _PARTS, self._share).sum(2)
        return np.ascontiguousarray(spectra @ self._bank.T), parts

    def _hear(self, mels, parts):
        """The decisions that these frames bring, each about the frame _LAG before; None while there are none."""
        mel, part = pointer(mels), pointer(parts)
        decisions = []
        for t in range(len(mels)):
            call(lib.kelsVADDecision_Aurora_32f, mel + t * _MELS, part + t * _PARTS, 0, self._decision, self._state)
            decisions.append(None if self._decision[0] == lib.kelVadPending else
                             self._decision[0] == lib.kelVadSpeech)
        return decisions

    def _take(self, spectra):
        answers = self._hear(*self._inputs(spectra))
        result = []
        for answer in answers:
            self._frames += 1
            if answer is not None:
                # Frames before the first decision are those that the noise was learned from.
                result += [False] * (self._frames - 1 - _LAG - self._given - len(result)) + [answer]
        self._given += len(result)
        return np.array(result, bool)

    def push(self, signal):
        """Takes samples and returns the decisions that they bring, one for each frame: bool, True for speech."""
        return self._take(self._stream.push(unit_samples(signal)))

    def flush(self):
        """Ends the stream and returns the decisions that are owed; the detector is at its start again."""
        rest = self._take(self._stream.flush())
        owed = []
        for _ in range(self._frames - self._given):
            if self._frames > _DEAF:
                call(lib.kelsVADFlush_Aurora_32f, self._decision, self._state)
                owed.append(self._decision[0] == lib.kelVadSpeech)
            else:
                owed.append(False)
        self._start()
        return np.concatenate([rest, np.array(owed, bool)])


def vad(signal, rate):
    """Which frames of a recording are speech: bool, (frames,); frame t begins at sample t * rate / 100.

    signal: int16, or floats within +-1.  rate: Hz.  The noise is learned from the quietest tenth of the frames, so that
    the recording may begin with speech.

    >>> sound = np.random.default_rng(0).normal(0, 1e-3, 16000)
    >>> sound[8000:12000] += 0.3 * np.sin(np.arange(4000) * (1 + np.sin(np.arange(4000) / 800)))
    >>> speech = kels.vad(sound, 8000)
    >>> bool(speech[110:140].all()), bool(speech[:90].any())
    (True, False)
    """
    detector = VoiceActivity(rate)
    mels, parts = detector._inputs(detector._spectra(unit_samples(signal)))
    if not len(mels):
        return np.empty(0, bool)
    energies = mels.sum(1)
    quiet = np.sort(np.argsort(energies, kind='stable')[:max(5, len(mels) // 10)])
    first = np.resize(quiet, _PRIMING)
    detector._hear(mels[first], parts[first])
    decisions = detector._hear(mels, parts)
    for _ in range(_LAG):
        call(lib.kelsVADFlush_Aurora_32f, detector._decision, detector._state)
        decisions.append(detector._decision[0] == lib.kelVadSpeech)
    return np.array(decisions[_LAG:], bool)
