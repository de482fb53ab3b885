"""What the tests share: random numbers, a speech-like signal, and the NumPy front end that bench/python measures."""
import pathlib
import sys

import numpy as np
import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / 'bench/python'))


@pytest.fixture
def rng():
    return np.random.default_rng(20)


@pytest.fixture(scope='session')
def root():
    return ROOT


@pytest.fixture(scope='session')
def speech():
    """Two seconds at 8 kHz, int16: a buzz with moving resonances in syllables, and a little noise."""
    rng = np.random.default_rng(7)
    t = np.arange(16000) / 8000
    buzz = sum(np.sin(2 * np.pi * k * (120 * t + np.sin(3 * t))) / (1 + (k - 6 - 3 * np.sin(5 * t)) ** 2)
               for k in range(1, 25))
    syllables = np.clip(np.sin(2 * np.pi * 2 * t), 0, None)
    return np.round(6000 * buzz * syllables + rng.normal(0, 20, t.size)).astype(np.int16)
