"""Recognition of isolated words."""
import numpy as np

from kels._base import count
from kels._features import FeatureExtractor
from kels._mixture import GaussianMixture

_STEPS = np.log([0.80, 0.19, 0.01])  # staying in a state, going on to the next, leaving one out
_IMPOSSIBLE = -1e30                  # far below any log likelihood, and sums of it stay finite
_PASSES = 4
_LEAST_SHARE = 0.5                   # of the variance of all frames, below which no variance of a state falls


def _search(scores):
    """Best paths through left-to-right models: scores (words, states, frames) to log likelihoods and steps.

    Steps, (frames, words, states), tell how many states each best path has moved on by at a frame.
    """
    words, states, frames = scores.shape
    best = np.full((words, states), _IMPOSSIBLE)
    best[:, 0] = scores[:, 0, 0]
    if states > 1:
        best[:, 1] = _STEPS[2] + scores[:, 1, 0]
    steps = np.zeros((frames, words, states), np.int8)
    ways = np.full((3, words, states), _IMPOSSIBLE)
    for t in range(1, frames):
        for step in range(min(3, states)):
            ways[step, :, step:] = best[:, :states - step] + _STEPS[step]
        steps[t] = ways.argmax(0)
        best = ways.max(0) + scores[:, :, t]
    ends = best[:, -2:] + _STEPS[[2, 1]][-min(states, 2):]
    return ends.max(1), states - ends.shape[1] + ends.argmax(1), steps


class WordRecogniser:
    """A hidden Markov model for each word: states from left to right, each with a mixture of Gaussians.

    rate: Hz, of all recordings.  states: of a word.  components: Gaussians of a state.  fields: changes to the front
    end, which is the preset 'htk-mfcc' with slopes, curvatures and the mean taken off.

    >>> rng = np.random.default_rng(0)
    >>> def rising(): return 3000 * np.sin(np.arange(4000) ** 2 / 2e4) + rng.normal(0, 100, 4000)
    >>> recogniser = kels.WordRecogniser(8000, states=4, components=1)
    >>> sounds = [rising() for _ in range(3)] + [rising()[::-1] for _ in range(3)]
    >>> recogniser.fit(sounds, ['up'] * 3 + ['down'] * 3).predict(rising())
    'up'
    """

    def __init__(self, rate, states=12, components=2, **fields):
        self.states, self.components = count(states, 'states'), count(components, 'components')
        self._settings = {'rate': rate, 'preset': 'htk-mfcc', 'delta_order': 2, 'norm': 'mean', **fields}
        self._extract = FeatureExtractor(**self._settings)

    def _features(self, recording):
        rows = self._extract(recording)
        if not len(rows):
            raise ValueError('a recording is shorter than a frame')
        return rows

    def fit(self, recordings, words):
        """Learns from recordings, arrays of samples (int16, or floats in +-32768), and the word that each is."""
        examples = [self._features(recording) for recording in recordings]
        if len(examples) != len(words) or not examples:
            raise ValueError(f'{len(examples)} recordings and {len(words)} words')
        floor = _LEAST_SHARE * np.concatenate(examples).var(0, dtype=np.float64)
        self.words_ = sorted(set(words))
        self.models_ = [self._learn([rows for rows, own in zip(examples, words) if own == word], floor)
                        for word in self.words_]
        return self

    def _learn(self, examples, floor):
        paths = [np.arange(len(rows)) * self.states // len(rows) for rows in examples]
        frames = np.concatenate(examples)
        mixtures = [None] * self.states
        for i in range(_PASSES):
            where = np.concatenate(paths)
            for state in range(self.states):
                own = frames[where == state]
                if len(own):
                    mixtures[state] = self._mixture(own, floor, self.components if i else 1)
                elif mixtures[state] is None:  # no recording is long enough to come here
                    mixtures[state] = self._mixture(frames, floor, 1)
            paths = [self._path(mixtures, rows) for rows in examples]
        return mixtures

    @staticmethod
    def _mixture(rows, floor, components):
        fitted = GaussianMixture(min(components, max(len(rows) // 10, 1)), max_iter=20).fit(rows)
        return GaussianMixture.from_parameters(fitted.weights_, fitted.means_, np.maximum(fitted.covariances_, floor))

    @staticmethod
    def _path(mixtures, rows):
        _, last, steps = _search(np.array([[mixture.score_samples(rows) for mixture in mixtures]]))
        path = np.empty(len(rows), int)
        state = last[0]
        for t in range(len(rows) - 1, -1, -1):
            path[t] = state
            state -= steps[t, 0, state]
        return path

    def recognise(self, recording):
        """The words and their costs, the likeliest first: pairs; a cost is minus the log likelihood of a frame."""
        rows = self._features(recording)
        scores = np.array([[mixture.score_samples(rows) for mixture in model] for model in self.models_])
        costs = -_search(scores)[0] / len(rows)
        return [(self.words_[i], float(costs[i])) for i in np.argsort(costs, kind='stable')]

    def predict(self, recording):
        """The likeliest word."""
        return self.recognise(recording)[0][0]

    def save(self, file):
        """Writes settings and models to a NumPy archive, .npz."""
        parts = {'words': np.array(self.words_), 'settings': np.array(list(self._settings.items()), dtype=str),
                 'sizes': np.array([self.states, self.components])}
        for word, model in enumerate(self.models_):
            for state, mixture in enumerate(model):
                for name in ('weights', 'means', 'covariances'):
                    parts[f'{name}_{word}_{state}'] = getattr(mixture, f'{name}_')
        np.savez(file, **parts)

    @classmethod
    def load(cls, file):
        """A recogniser that save has written."""
        with np.load(file) as archive:
            settings = {str(name): _parsed(str(value)) for name, value in archive['settings']}
            states, components = (int(size) for size in archive['sizes'])
            recogniser = cls(states=states, components=components, **settings)
            recogniser.words_ = [str(word) for word in archive['words']]
            recogniser.models_ = [
                [GaussianMixture.from_parameters(*(archive[f'{name}_{word}_{state}']
                                                   for name in ('weights', 'means', 'covariances')))
                 for state in range(states)] for word in range(len(recogniser.words_))]
        return recogniser


def _parsed(text):
    """The number or the word that a setting was."""
    for kind in (int, float):
        try:
            return kind(text)
        except ValueError:
            pass
    return text
