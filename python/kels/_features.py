"""Features of recordings and streams, as HTK, Kaldi, librosa and Whisper compute them."""
import functools
import re

import numpy as np

from kels._base import build, call, ffi, lib, pointer, samples

PRESETS = {'htk-mfcc': lib.kelFeatHtkMfcc, 'kaldi-mfcc': lib.kelFeatKaldiMfcc, 'kaldi-fbank': lib.kelFeatKaldiFbank,
           'librosa-mfcc': lib.kelFeatLibrosaMfcc, 'whisper-mel': lib.kelFeatWhisperMel}

# How the words for a field's values become names of the library's constants.
_PREFIXES = {'window': 'kelWin', 'edges': 'kelFeat', 'spectrum': 'kelFeat', 'mel_scale': 'kelFeatScale',
             'triangles': 'kelFeatTriangle', 'bank_norm': 'kelFeatBank', 'log_kind': 'kelFeat', 'output': 'kelFeat',
             'dct_scale': 'kelFeatDct', 'energy': 'kelFeat', 'energy_place': 'kelFeat', 'delta_edge': 'kelFeatDelta',
             'norm': 'kelFeatNorm', 'hint': 'kelHint'}


def _capitals(name):
    return ''.join(part[:1].upper() + part[1:] for part in re.split('[-_]', name))


def _snake(name):
    return re.sub('([A-Z])', lambda match: '_' + match[1].lower(), name)


_FIELDS = {_snake(name): name for name, _ in ffi.typeof('KelFeatureConfig').fields if name != 'reserved'}


def _value(field, value):
    """Numbers as they are; words such as 'hann+periodic' by the constants that they name."""
    if not isinstance(value, str):
        return value
    total = 0
    for word in value.split('+'):
        name = _PREFIXES.get(field, '') + _capitals(word)
        if field not in _PREFIXES or not hasattr(lib, name):
            raise ValueError(f'{field} has no value {word!r}')
        total |= getattr(lib, name)
    return total


def feature_config(rate, preset='kaldi-mfcc', **fields):
    """The configuration of a preset at a sampling rate in Hz, as a dict, with the given fields changed.

    Fields have the names of the C structure with underscores, and those that are choices take words as well as numbers.

    >>> config = kels.feature_config(16000, 'kaldi-mfcc', num_ceps=20, window='hamming')
    >>> config['frame_len'], config['num_ceps'], config['window']
    (400, 20, 2)
    """
    if preset not in PRESETS:
        raise ValueError(f'no preset {preset!r}: there are {", ".join(PRESETS)}')
    unknown = set(fields) - set(_FIELDS)
    if unknown:
        raise TypeError(f'no field {", ".join(sorted(unknown))}: there are {", ".join(_FIELDS)}')
    config = ffi.new('KelFeatureConfig*')
    call(lib.kelsFeaturePreset, config, rate, PRESETS[preset])
    result = {ours: getattr(config, theirs) for ours, theirs in _FIELDS.items()}
    result.update((field, _value(field, value)) for field, value in fields.items())
    return result


class FeatureExtractor:
    """A front end: built once for a sampling rate, then read by any number of calls and threads.

    Rows are of dtype float32.  Samples are int16, or floats in the toolkit's unit: +-32768 for HTK and Kaldi, +-1 for
    librosa and Whisper.

    >>> extract = kels.FeatureExtractor(8000, 'htk-mfcc', delta_order=2)
    >>> extract(np.zeros(8000, np.int16)).shape
    (98, 39)
    """

    def __init__(self, rate, preset='kaldi-mfcc', **fields):
        self.config = feature_config(rate, preset, **fields)
        config = ffi.new('KelFeatureConfig*')
        for ours, theirs in _FIELDS.items():
            setattr(config, theirs, self.config[ours])
        self._spec = build('KelFeatureSpec_32f', lib.kelsFeatureInitAlloc_32f, config, free=lib.kelsFeatureFree_32f)
        self.width = self._shape(1)[1]

    def _shape(self, count):
        height, width = ffi.new('int*'), ffi.new('int*')
        call(lib.kelsFeatureGetSize_32f, self._spec, count, height, width)
        return height[0], width[0]

    def __call__(self, signal):
        """Rows of `width` values for a whole signal: an array (frames, width)."""
        signal = samples(signal)
        rows = np.empty(self._shape(signal.size), np.float32)
        if rows.size:
            function = lib.kelsFeature_16s32f_D2 if signal.dtype == np.int16 else lib.kelsFeature_32f_D2
            call(function, pointer(signal), signal.size, pointer(rows), self.width, self._spec, ffi.NULL)
        return rows

    def bank(self):
        """The weights of the filter bank: an array (num_filters, fft_len / 2 + 1)."""
        weights = np.empty((self.config['num_filters'], self.config['fft_len'] // 2 + 1), np.float32)
        call(lib.kelsFeatureGetBank_32f_D2, pointer(weights), weights.shape[1], self._spec)
        return weights

    def stream(self):
        """A FeatureStream at its start."""
        return FeatureStream(self)

    def blocks(self, signal_blocks):
        """Iterates over blocks of samples and yields the rows that each of them settles, and the rest at the end.

        >>> extract = kels.FeatureExtractor(8000)
        >>> signal = (1000 * np.sin(np.arange(8000) / 7)).astype(np.int16)
        >>> rows = np.concatenate(list(extract.blocks(np.split(signal, 10))))
        >>> bool((rows == extract(signal)).all())
        True
        """
        stream = self.stream()
        for block in signal_blocks:
            yield stream.push(block)
        yield stream.flush()


class FeatureStream:
    """Features of one audio stream, given as soon as no later sample can change them.

    The rows of all pushes and of the flush are bit for bit those of one call on the whole signal.  A front end that
    needs the whole signal, by log_range or norm, has no stream.
    """

    def __init__(self, extractor):
        self.extractor = extractor  # outlives what refers to it
        self._stream = build('KelFeatureStream_32f', lib.kelsFeatureStreamInitAlloc_32f, extractor._spec,
                             free=lib.kelsFeatureStreamFree_32f)
        self._counts = ffi.new('int[3]')

    def _sizes(self, count):
        call(lib.kelsFeatureStreamGetSize_32f, self._stream, count, self._counts, self._counts + 1)
        return self._counts[0], self._counts[1]

    def push(self, signal):
        """Takes samples, int16 or floats; returns the rows that they settle, (frames, width)."""
        signal = samples(signal)
        if not signal.size:
            return np.empty((0, self.extractor.width), np.float32)
        rows = np.empty((self._sizes(signal.size)[0], self.extractor.width), np.float32)
        function = lib.kelsFeatureStream_16s32f_D2 if signal.dtype == np.int16 else lib.kelsFeatureStream_32f_D2
        call(function, pointer(signal), signal.size, *self._place(rows), self._counts + 2, self._stream)
        return rows

    def flush(self):
        """Ends the signal and returns the rows that are left; the stream is at its start again."""
        rows = np.empty((self._sizes(0)[1], self.extractor.width), np.float32)
        call(lib.kelsFeatureStreamFlush_32f_D2, *self._place(rows), self._counts + 2, self._stream)
        return rows

    def reset(self):
        """Forgets the signal so far."""
        call(lib.kelsFeatureStreamReset_32f, self._stream)

    def _place(self, rows):
        return pointer(rows), self.extractor.width, rows.shape[0]


_extractor = functools.lru_cache(32)(FeatureExtractor)


def features(signal, rate, preset='kaldi-mfcc', **fields):
    """Features of a whole recording, as a toolkit computes them: an array (frames, values) of float32.

    signal: samples, int16 or floats in the toolkit's unit, +-32768 (HTK, Kaldi) or +-1 (librosa, Whisper).
    rate: Hz.  preset: 'htk-mfcc', 'kaldi-mfcc', 'kaldi-fbank', 'librosa-mfcc' or 'whisper-mel'.
    fields: changes to the preset, see feature_config.

    >>> signal = (1000 * np.sin(np.arange(16000) / 9)).astype(np.int16)
    >>> kels.features(signal, 16000, 'kaldi-fbank').shape
    (98, 80)
    """
    return _extractor(rate, preset, **fields)(signal)
