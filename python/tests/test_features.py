"""Features and what they are made of, against NumPy and SciPy."""
import numpy as np
import pytest
import scipy.linalg
import scipy.signal
from numpy_mfcc import KaldiMfcc

import kels


def test_kaldi_mfcc_is_that_of_the_formulas(speech):
    for signal, rate in ((speech, 8000), (np.repeat(speech, 2), 16000)):
        expected = KaldiMfcc(rate)(signal)
        rows = kels.features(signal, rate)
        assert rows.dtype == np.float32 and rows.shape == expected.shape
        assert np.all(np.abs(rows - expected) <= 1e-7 * np.maximum(1, np.abs(expected)))
        assert np.array_equal(rows, kels.features(signal.astype(np.float64), rate))


def test_fields_change_a_preset_by_number_and_by_word(speech):
    plain = kels.features(speech, 8000, 'htk-mfcc')
    assert plain.shape[1] == 13
    assert kels.features(speech, 8000, 'htk-mfcc', delta_order=2, num_ceps=10).shape[1] == 33
    assert np.array_equal(kels.features(speech, 8000, 'htk-mfcc', window='hann'),
                          kels.features(speech, 8000, 'htk-mfcc', window=kels.lib.kelWinHann))
    config = kels.feature_config(16000, 'whisper-mel')
    assert config['edges'] == kels.feature_config(16000, edges='centre-reflect+drop-last')['edges'] == 19
    assert config['window'] == kels.feature_config(16000, window='hann+periodic')['window']
    with pytest.raises(ValueError, match='window has no value'):
        kels.features(speech, 8000, window='triangle')
    with pytest.raises(TypeError, match='no field lenght'):
        kels.features(speech, 8000, lenght=3)
    with pytest.raises(ValueError, match='no preset'):
        kels.features(speech, 8000, 'htk')
    with pytest.raises(kels.KelsError, match='kelStatusFBankFreq'):
        kels.features(speech, 8000, high_freq=5000)


def test_streams_give_the_rows_of_one_call(speech, rng):
    extract = kels.FeatureExtractor(8000, 'kaldi-mfcc', edges='mirror', delta_order=2)
    expected = extract(speech)
    cuts = np.sort(rng.integers(0, len(speech), 30))
    for signal in (speech, speech.astype(np.float32)):
        assert np.array_equal(np.concatenate(list(extract.blocks(np.split(signal, cuts)))), expected)
    stream = extract.stream()
    stream.push(speech[:5000])
    stream.reset()
    assert np.array_equal(np.concatenate([stream.push(speech), stream.flush()]), expected)
    with pytest.raises(kels.KelsError, match='kelStatusModeNotSupported'):
        kels.FeatureExtractor(8000, norm='mean').stream()


def test_a_signal_shorter_than_a_frame_has_no_rows():
    assert kels.features(np.zeros(10, np.int16), 8000).shape == (0, 13)


def test_the_bank_is_that_of_the_formulas():
    assert np.allclose(kels.FeatureExtractor(8000).bank(), KaldiMfcc(8000).bank.T, atol=1e-6)


def test_transforms_are_those_of_numpy(rng):
    for shape in ((1,), (2,), (64,), (5, 256), (2, 3, 1024)):
        x = rng.normal(size=shape).astype(np.float32)
        spectrum = kels.fft.rfft(x)
        assert spectrum.dtype == np.complex64
        assert np.allclose(spectrum, np.fft.rfft(x), atol=1e-5 * np.sqrt(shape[-1]))
        assert np.allclose(kels.fft.irfft(spectrum), x, atol=1e-5)
    x = rng.normal(size=(3, 200)).astype(np.float32)
    assert np.allclose(kels.fft.rfft(x, 256), np.fft.rfft(x, 256), atol=1e-4)
    assert np.allclose(kels.fft.rfft(x[:, ::-1], 128), np.fft.rfft(x[:, ::-1], 128), atol=1e-4)
    assert np.allclose(kels.fft.autocorrelation(x[0], 50), np.correlate(x[0], x[0], 'full')[199:249], atol=1e-4)


def test_windows_are_those_of_scipy():
    for kind, name in (('rectangular', 'boxcar'), ('hann', 'hann'), ('hamming', 'hamming'), ('blackman', 'blackman'),
                       ('kaiser', ('kaiser', 8.6))):
        for periodic in (False, True):
            expected = scipy.signal.get_window(name, 57, fftbins=periodic)
            assert np.allclose(kels.window(kind, 57, 8.6, periodic), expected, atol=1e-13)
    assert np.allclose(kels.window('povey', 9), scipy.signal.windows.hann(9) ** 0.85, atol=1e-13)


def test_pre_emphasis_and_deltas(rng):
    x = rng.normal(size=100).astype(np.float32)
    assert np.allclose(kels.pre_emphasis(x, before=0), scipy.signal.lfilter([1, -0.97], 1, x), atol=1e-6)
    rows = rng.normal(size=(30, 4)).astype(np.float32)
    for order, window in ((1, 1), (1, 2), (2, 1), (2, 2)):
        expected = [rows.astype(np.float64)]
        for _ in range(order):
            padded = np.pad(expected[-1], [(window, window), (0, 0)], 'edge')
            slopes = sum(k * (padded[window + k:window + k + 30] - padded[window - k:window - k + 30])
                         for k in range(1, window + 1))
            expected.append(slopes / (2 * sum(k * k for k in range(1, window + 1))))
        assert np.allclose(kels.delta(rows, order, window), np.hstack(expected), atol=1e-6)
    assert np.array_equal(kels.delta(rows[:, 1:3]), kels.delta(rows[:, 1:3].copy()))


def test_predictors_solve_the_normal_equations(rng):
    frames = scipy.signal.lfilter([1], [1, -1.2, 0.8, -0.1], rng.normal(size=(3, 400)) * np.hamming(400))
    predictors = kels.lpc(frames, 8)
    for frame, predictor in zip(frames, predictors):
        r = np.correlate(frame, frame, 'full')[399:408]
        assert np.allclose(predictor, scipy.linalg.solve_toeplitz(r[:8], -r[1:]), atol=1e-4)
    for there, back in ((kels.lpc_to_reflection, kels.reflection_to_lpc), (kels.lpc_to_lsp, kels.lsp_to_lpc),
                        (kels.lpc_to_cepstrum, kels.cepstrum_to_lpc)):
        assert np.allclose(back(there(predictors)), predictors, atol=1e-5)
    whole = np.hstack([np.ones((3, 1)), predictors])
    assert np.allclose(kels.lpc_spectrum(predictors, 64), 1 / np.abs(np.fft.fft(whole, 64)), rtol=1e-5)
    angles = np.arccos(kels.lpc_to_lsp(predictors[0]))
    palindrome = np.append(whole[0], 0) + np.append(0, whole[0][::-1])
    roots = np.angle(np.roots(palindrome))
    assert np.allclose(angles[::2], np.sort(roots[(roots > 1e-6) & (roots < np.pi - 1e-6)]), atol=1e-4)


def test_pitch_follows_a_glide_in_noise(rng):
    rate = 16000
    t = np.arange(2 * rate) / rate
    exact = 110 * 2 ** np.sin(2 * t)
    phase = 2 * np.pi * np.cumsum(exact) / rate
    voiced = (t > 0.4) & (t < 1.6)
    sound = 0.1 * voiced * sum(np.sin(h * phase) / h for h in range(1, 15)) + rng.normal(0, 0.01, len(t))
    times, frequencies, strengths = kels.pitch(sound, rate)
    assert len(times) == 200 and frequencies.dtype == strengths.dtype == np.float32
    inside, outside = (times > 0.45) & (times < 1.55), (times < 0.35) | (times > 1.65)
    assert np.abs(frequencies[inside] / exact[::rate // 100][inside] - 1).max() < 0.02
    assert strengths[inside].min() > 0.7 and not frequencies[outside].any()
    assert not kels.pitch(np.zeros(800), 8000)[1].any() and len(kels.pitch(np.zeros(0), 8000)[0]) == 0


def test_measures_of_periodicity_are_their_formulas(rng):
    x = rng.normal(size=(3, 300)).astype(np.float32)
    wide = x.astype(np.float64)
    expected = [[row[:100] @ row[k:k + 100] / np.sqrt((row[:100] @ row[:100]) * (row[k:k + 100] @ row[k:k + 100]))
                 for k in range(5, 60)] for row in wide]
    assert np.allclose(kels.similarity(x, 100, 5, 59), expected, atol=1e-6)
    window = np.hanning(300)
    r = [np.correlate(v, v, 'full')[299:390] for v in (wide[0] * window, window)]
    expected = r[0] / r[0][0] * r[1][0] / r[1]
    assert np.allclose(kels.periodicity(wide[0] * window, 5, 90, window=window), expected[5:], atol=1e-5)
    p = np.abs(wide)
    assert np.allclose(kels.spectral_entropy(p), [-(v / v.sum() * np.log(v / v.sum())).sum() / np.log(300) for v in p])
    with pytest.raises(ValueError, match='too few'):
        kels.similarity(x, 100, 5, 201)
