"""python -m kels: the version, the build in use, and a self-test, whose failure is the exit status 1."""
import sys

import numpy as np

import kels


def _tests():
    rng = np.random.default_rng(1)
    noise = rng.normal(size=1024).astype(np.float32)
    yield 'transform', np.allclose(kels.fft.rfft(noise), np.fft.rfft(noise), atol=1e-4)
    signal = np.round(3000 * noise).astype(np.int16)
    extract = kels.FeatureExtractor(8000, 'htk-mfcc', delta_order=2)
    rows = np.concatenate(list(extract.blocks(np.array_split(signal, 7))))
    yield 'features', rows.shape == (11, 39) and np.array_equal(rows, extract(signal))
    tone = np.sin(0.2 * np.arange(4000))
    yield 'resampling', np.allclose(kels.resample(tone, 8000, 16000)[400:-400:2], tone[200:-200], atol=1e-5)
    points = np.concatenate([rng.normal(place, 0.1, (50, 3)) for place in (0, 5)]).astype(np.float32)
    mixture = kels.GaussianMixture(2).fit(points)
    yield 'mixtures', np.allclose(np.sort(mixture.means_[:, 0]), [0, 5], atol=0.1)
    indices = kels.Codebook(2).fit(points).encode(points)
    yield 'codebooks', len(set(indices[:50])) == len(set(indices[50:])) == 1
    yield 'warping', kels.dtw(np.repeat(points, 2, axis=0), points) == 0
    reflection = np.array([0.5, -0.3, 0.2], np.float32)
    yield 'prediction', np.allclose(kels.lpc_to_reflection(kels.reflection_to_lpc(reflection)), reflection, atol=1e-6)


def main():
    functions = [name for name in dir(kels.lib) if name.startswith('kels')]
    print(f'kels {kels.__version__}, the {kels.target()} build, {len(functions)} functions')
    results = list(_tests())
    print(', '.join(f'{name}: {"ok" if passed else "FAILED"}' for name, passed in results))
    return 0 if all(passed for _, passed in results) else 1


if __name__ == '__main__':
    sys.exit(main())
