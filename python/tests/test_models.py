"""Mixtures, codebooks and warping, against SciPy and plain recursions."""
import numpy as np
import pytest
import scipy.spatial.distance
import scipy.special
import scipy.stats
from scipy.io import wavfile

import kels


@pytest.fixture
def clusters(rng):
    """Five clusters far from the origin and of very different sizes."""
    centres = rng.uniform(-6, 6, (5, 3)) + 100
    return np.concatenate([rng.normal(centre, rng.uniform(0.3, 1, 3), (size, 3))
                           for centre, size in zip(centres, (900, 700, 500, 300, 100))])


def log_density(mixture, X):
    parts = [np.log(weight) + scipy.stats.multivariate_normal.logpdf(X, mean, np.diag(variances))
             for weight, mean, variances in zip(mixture.weights_, mixture.means_, mixture.covariances_)]
    return scipy.special.logsumexp(parts, axis=0), np.array(parts)


def test_scores_are_those_of_scipy(clusters):
    mixture = kels.GaussianMixture(5).fit(clusters)
    expected, parts = log_density(mixture, clusters)
    scores = mixture.score_samples(clusters)
    assert scores.dtype == np.float64 and np.allclose(scores, expected, atol=1e-8)
    single = mixture.score_samples(clusters.astype(np.float32))
    assert single.dtype == np.float32 and np.allclose(single, expected, rtol=1e-4, atol=2e-2)
    assert np.allclose(mixture.predict_proba(clusters), np.exp(parts - expected).T, atol=1e-8)
    assert np.array_equal(mixture.predict(clusters), parts.argmax(0))
    assert mixture.score(clusters) == pytest.approx(expected.mean())


def test_a_pass_is_that_of_expectation_and_maximisation(clusters):
    mixture = kels.GaussianMixture(5, max_iter=1, reg_covar=0).fit(clusters)
    logs, parts = log_density(mixture, clusters)
    shares = np.exp(parts - logs)
    rows = clusters - clusters.mean(0)
    mixture._set(mixture.weights_, mixture.means_ - clusters.mean(0), mixture.covariances_)
    assert mixture._step(rows) == pytest.approx(logs.mean())
    means = shares @ rows / shares.sum(1)[:, None]
    assert np.allclose(mixture.weights_, shares.mean(1))
    assert np.allclose(mixture.means_, means)
    assert np.allclose(mixture.covariances_, shares @ rows ** 2 / shares.sum(1)[:, None] - means ** 2)


def test_fitting_climbs_and_finds_the_clusters(clusters, tmp_path):
    scores = [kels.GaussianMixture(n).fit(clusters).score(clusters) for n in (1, 2, 3, 5, 8)]
    assert np.all(np.diff(scores) > 0)
    mixture = kels.GaussianMixture(5).fit(clusters)
    assert mixture.converged_ and mixture.lower_bound_ == pytest.approx(scores[3], abs=1e-2)
    assert np.array_equal(kels.GaussianMixture(5).fit(clusters).means_, mixture.means_)
    assert np.allclose(np.sort(mixture.weights_) * 2500, [100, 300, 500, 700, 900], rtol=0.15)
    mixture.save(tmp_path / 'mixture.npz')
    loaded = kels.GaussianMixture.load(tmp_path / 'mixture.npz')
    assert np.array_equal(loaded.score_samples(clusters), mixture.score_samples(clusters))
    refitted = mixture.fit(clusters[:, :2])
    assert refitted.means_.shape == (5, 2)


def test_rows_that_do_not_fit_are_refused(clusters):
    mixture = kels.GaussianMixture(2).fit(clusters)
    with pytest.raises(ValueError, match='rows of 2 values'):
        mixture.score_samples(clusters[:, :2])
    with pytest.raises(ValueError, match='no rows'):
        mixture.fit(clusters[:0])
    codebook = kels.Codebook(4).fit(clusters)
    with pytest.raises(ValueError, match='rows of 2 values'):
        codebook.encode(clusters[:, :2])
    with pytest.raises(kels.KelsError, match='kelStatusSize'):
        kels.Codebook(4).fit(clusters[:3])


def test_more_components_than_the_rows_bear():
    rows = np.repeat([[0.0, 0.0], [1.0, 5.0]], 20, axis=0)
    mixture = kels.GaussianMixture(8).fit(rows)
    assert np.isfinite(mixture.score_samples(rows)).all() and np.isfinite(mixture.means_).all()


def test_codebooks_find_the_nearest(clusters, tmp_path):
    codebook = kels.Codebook(16).fit(clusters)
    assert codebook.codevectors_.shape == (16, 3)
    distances = scipy.spatial.distance.cdist(clusters.astype(np.float32), codebook.codevectors_)
    indices, own = codebook.encode(clusters, return_distance=True)
    assert np.allclose(distances[np.arange(len(clusters)), indices], distances.min(1), rtol=1e-4)
    assert np.allclose(own, distances.min(1), atol=1e-4)
    # Every codevector is the mean of its rows, and the tree loses little.
    means = np.array([clusters[indices == i].mean(0) for i in range(16)])
    assert np.abs(means - codebook.codevectors_).max() < 0.3
    tree = codebook.encode(clusters, search='tree')
    assert distances[np.arange(len(clusters)), tree].mean() < 1.05 * distances.min(1).mean()
    file = tmp_path / 'book.kels'
    codebook.save(file)
    loaded = kels.Codebook.load(file)
    assert np.array_equal(loaded.encode(clusters), indices)
    assert np.array_equal(loaded.encode(clusters, search='tree'), tree)
    assert np.array_equal(loaded.decode(indices), codebook.decode(indices))
    for damaged in (file.read_bytes()[:-1], b'', b'no codebook at all'):
        file.write_bytes(damaged)
        with pytest.raises(ValueError, match='book.kels: not a codebook'):
            kels.Codebook.load(file)


def warped(a, b):
    """The recursion of the warping, both ends open."""
    outer, inner = (a, b) if len(a) >= len(b) else (b, a)
    distance = scipy.spatial.distance.cdist(outer, inner)
    cost = distance[0]
    for row in distance[1:]:
        cost = row + np.min([cost, np.append(np.inf, cost[:-1]), np.append([np.inf] * 2, cost[:-2])], axis=0)
    return cost.min()


def test_warping_is_the_recursion(rng):
    a, b = rng.normal(size=(40, 5)), rng.normal(size=(31, 5))
    assert kels.dtw(a, b) == pytest.approx(warped(a.astype(np.float32), b.astype(np.float32)), rel=1e-5)
    assert kels.dtw(a[:, :3], b[::2, :3]) == pytest.approx(warped(a[:, :3], b[::2, :3]), rel=1e-5)
    assert kels.dtw(a, b, band=3) >= kels.dtw(a, b) and kels.dtw(a, b, beam=0.1) >= kels.dtw(a, b)
    assert kels.dtw(a, b, band=-1) is None
    with pytest.raises(ValueError, match='rows of 5 and of 4'):
        kels.dtw(a, b[:, :4])


def test_the_best_path_is_that_of_trying_all(rng):
    from kels import _words
    scores = rng.normal(0, 2, (1, 4, 7))
    best, last, _ = _words._search(scores)

    def walk(state, t):
        here = scores[0, state, t]
        if t == 6:
            return [here + _words._STEPS[4 - state]] if 4 - state in (1, 2) else []
        return [here + _words._STEPS[step] + rest for step in range(3) if state + step < 4
                for rest in walk(state + step, t + 1)]

    assert best[0] == pytest.approx(max(walk(0, 0) + [_words._STEPS[2] + cost for cost in walk(1, 0)]))
    assert last[0] in (2, 3)


def test_words_are_recognised(root, tmp_path):
    words = ('one', 'two', 'three', 'seven')
    recordings = {path: wavfile.read(path) for path in sorted((root / 'examples/words/recordings').glob('*.wav'))
                  if path.stem.split('_')[0] in words}
    rate = next(iter(recordings.values()))[0]
    sounds = [(samples, *path.stem.split('_')) for path, (_, samples) in recordings.items()]
    learned = [(samples, word) for samples, word, _, index in sounds if index != '0']
    recogniser = kels.WordRecogniser(rate).fit(*zip(*learned))
    tried = [(recogniser.predict(samples), word) for samples, word, _, index in sounds if index == '0']
    assert len(tried) > 10 and np.mean([heard == word for heard, word in tried]) > 0.9
    recogniser.save(tmp_path / 'words.npz')
    loaded = kels.WordRecogniser.load(tmp_path / 'words.npz')
    assert loaded.recognise(sounds[0][0]) == recogniser.recognise(sounds[0][0])
