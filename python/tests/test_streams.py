"""Voice activity, resampling and noise suppression: whole signals, and streams that are cut anyhow."""
import numpy as np
import pytest
import scipy.signal

import kels


def cut(signal, rng, pieces=15):
    return np.split(signal, np.sort(rng.integers(0, len(signal), pieces)))


def run(stream, blocks):
    return np.concatenate([stream.push(block) for block in blocks] + [stream.flush()])


@pytest.fixture
def phrase(speech, rng):
    """Noise for two seconds, speech for two, noise for two; 8 kHz, int16."""
    noise = rng.normal(0, 25, 48000)
    noise[16000:32000] += speech
    return np.round(noise).astype(np.int16)


def test_voice_activity_finds_the_speech(phrase, rng):
    whole = kels.vad(phrase, 8000)
    assert whole.dtype == bool and len(whole) == (len(phrase) - 200) // 80 + 1
    assert not whole[:190].any() and not whole[-100:].any()
    assert whole[200:400].mean() > 0.7
    detector = kels.VoiceActivity(8000)
    expected = run(detector, [phrase])
    assert len(expected) == len(whole) and (expected != whole).mean() < 0.05
    assert np.array_equal(run(detector, cut(phrase, rng)), expected)
    assert np.array_equal(run(detector, cut(phrase / 32768, rng)), expected)
    for length in (0, 100, 200, 900, 1100):
        assert len(run(detector, [phrase[:length]])) == len(kels.vad(phrase[:length], 8000))
    assert kels.vad(np.repeat(phrase, 2), 16000)[200:400].mean() > 0.7


@pytest.mark.parametrize('rates', [(8000, 16000), (44100, 16000), (16000, 44100), (48000, 8000), (11025, 8000)])
def test_resampling_keeps_tones_and_stops_the_rest(rates):
    before, after = rates
    slower = min(rates)
    t, u = np.arange(before) / before, np.arange(after) / after
    tone = np.sin(2 * np.pi * 0.41 * slower * t)
    result = kels.resample(tone, before, after)
    assert result.dtype == np.float32 and len(result) == after
    middle = slice(after // 10, -after // 10)
    assert np.allclose(result[middle], np.sin(2 * np.pi * 0.41 * slower * u)[middle], atol=1e-5)
    if after < before:
        stopped = kels.resample(np.sin(2 * np.pi * 0.55 * slower * t), before, after)
        assert np.abs(stopped[middle]).max() < 1e-5


def test_resampled_streams_are_those_of_one_call(rng):
    signal = rng.normal(0, 3000, 5000)
    for kind in (np.int16, np.float32):
        part = signal.astype(kind)
        for rates in ((8000, 11025), (16000, 8000)):
            whole = kels.resample(part, *rates, quality='fast')
            assert whole.dtype == kind and len(whole) == -(-5000 * rates[1] // rates[0])
            stream = kels.Resampler(*rates, 'fast', kind)
            assert np.array_equal(run(stream, cut(part, rng)), whole)
            assert np.array_equal(run(stream, [part]), whole)
    assert len(kels.resample(np.zeros(0), 8000, 16000)) == 0
    assert len(kels.resample(np.ones(1), 8000, 16000)) == 2


def test_noise_goes_and_speech_stays(phrase, speech, rng):
    clean = kels.denoise(phrase, 8000)
    assert clean.dtype == np.float32 and len(clean) == len(phrase)
    noisy = phrase / 32768
    assert clean[8000:15000].std() < 0.3 * noisy[8000:15000].std()
    assert np.corrcoef(clean[16000:32000], speech)[0, 1] > 0.98
    stream = kels.Denoiser(8000)
    assert np.allclose(run(stream, cut(phrase, rng)), clean, atol=1e-7)
    assert np.allclose(run(stream, cut(noisy, rng)), clean, atol=1e-7)
    tone = 0.3 * scipy.signal.chirp(np.arange(32000) / 16000, 200, 2, 5000)
    assert np.corrcoef(kels.denoise(tone + rng.normal(0, 1e-3, 32000), 16000)[8000:], tone[8000:])[0, 1] > 0.99
    assert len(kels.denoise(phrase[:50], 8000)) == 50
    with pytest.raises(kels.KelsError, match='kelStatusOutOfRange'):
        kels.Denoiser(96000)


@pytest.fixture
def room(rng):
    """A loudspeaker's signal and its echo in a room, 8 kHz, 10 s."""
    played = scipy.signal.lfilter([1], [1, -0.7], rng.normal(0, 0.05, 80000)).astype(np.float32)
    response = rng.normal(0, 0.1, 800) * np.exp(-np.arange(800) / 120)
    return played, np.convolve(played, response)[:80000].astype(np.float32)


def test_echo_goes_and_the_near_end_stays(room, rng):
    played, echo = room
    near = np.zeros(80000, np.float32)
    near[60000:70000] = 0.1 * np.sin(np.arange(10000) * 0.4)
    microphone = echo + near + rng.normal(0, 1e-4, 80000).astype(np.float32)
    canceller = kels.EchoCanceller(8000)
    clean = np.concatenate([canceller.push(played, microphone), canceller.flush()])
    assert clean.dtype == np.float32 and len(clean) == 80000
    assert clean[40000:60000].std() < 0.05 * echo[40000:60000].std()
    assert np.corrcoef(clean[60000:70000], near[60000:70000])[0, 1] > 0.99
    # However it is cut; and once more after the flush.
    cuts = np.sort(rng.integers(0, 80000, 15))
    parts = [canceller.push(*pair) for pair in zip(np.split(played, cuts), np.split(microphone, cuts))]
    assert np.array_equal(np.concatenate([*parts, canceller.flush()]), clean)


def test_a_silent_side_is_no_trouble(room):
    played, echo = room
    assert not kels.EchoCanceller(8000).push(played[:8000], np.zeros(8000)).any()
    left = kels.EchoCanceller(16000, tail=0.05, block=64).push(np.zeros(8000), echo[:8000])
    assert np.array_equal(left, echo[:8000])
    with pytest.raises(kels.KelsError, match='kelStatusOutOfRange'):
        kels.EchoCanceller(4000)
