"""Signal processing and pattern recognition for speech, on NumPy arrays.

Functions and classes here take and give NumPy arrays, and copy nothing whose type and layout already fit.  Calls
release the interpreter's lock, so threads scale.  `kels.lib` holds every function and constant of the C library by its
name, and `kels.ffi` makes the arguments for them.
"""
from kels import fft
from kels._base import KelsError, KelsMemoryError, KelsWarning, call, ffi, lib, pointer, status_text
from kels._codebook import Codebook
from kels._denoise import Denoiser, denoise
from kels._echo import EchoCanceller
from kels._features import PRESETS, FeatureExtractor, FeatureStream, feature_config, features
from kels._lpc import (cepstrum_to_lpc, lpc, lpc_spectrum, lpc_to_cepstrum, lpc_to_lsp, lpc_to_reflection, lsp_to_lpc,
                       reflection_to_lpc)
from kels._mixture import GaussianMixture
from kels._pitch import find_peaks, periodicity, pitch, similarity, spectral_entropy
from kels._resample import Resampler, resample
from kels._rows import delta, dtw, pre_emphasis, window
from kels._vad import VoiceActivity, vad
from kels._words import WordRecogniser

__version__ = ffi.string(lib.KELS_VERSION_STRING).decode()


def target():
    """The build of the library in use, which the loader has picked for this processor.

    >>> kels.target() in ('x86-64', 'x86-64-v3', 'x86-64-v4')
    True
    """
    return ffi.string(lib.kelsrGetTargetName()).decode()
