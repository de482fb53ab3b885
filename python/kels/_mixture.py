"""Gaussian mixtures with diagonal covariances."""
import warnings

import numpy as np

from kels._base import KelsError, KelsWarning, call, count, floating, lib, matrix, pointer
from kels._codebook import Codebook

_ROWS_A_CELL = 500   # rows for each component that the fit begins with
_LEAST_SHARE = 1e-3  # of the variance of all rows: least variance of a component at the beginning
# Where there are not as many cells, components are split.
_SPLIT = 0.2         # how far the halves move from the mean, in deviations
_SETTLE = 5          # passes after each round


class GaussianMixture:
    """A mixture of diagonal Gaussians, fitted by expectation and maximisation with splits.

    It has the names of scikit-learn's mixtures of covariance_type 'diag': weights_ (components,), means_ and
    covariances_ (components, width), all float64.  Fitting begins with the cells of a codebook, which is grown by
    splits, so that it needs no random start and gives the same result every time.

    max_iter: passes after the last split; fitting ends earlier where a pass gains less than tol a row.
    reg_covar: is added to variances.

    >>> rng = np.random.default_rng(0)
    >>> X = np.concatenate([rng.normal(-3, 1, (5000, 2)), rng.normal(3, 0.5, (5000, 2))])
    >>> mixture = kels.GaussianMixture(2).fit(X)
    >>> np.sort(mixture.means_[:, 0]).round(1)
    array([-3.,  3.])
    """

    def __init__(self, n_components=1, *, max_iter=100, tol=1e-3, reg_covar=1e-6):
        self.n_components = count(n_components, 'n_components')
        self.max_iter, self.tol, self.reg_covar = max_iter, tol, reg_covar

    @classmethod
    def from_parameters(cls, weights, means, covariances):
        """A mixture of these weights, means and variances.

        >>> kels.GaussianMixture.from_parameters([1], [[0]], [[1]]).score_samples([[0.0]]).round(4)
        array([-0.9189], dtype=float32)
        """
        mixture = cls(len(weights))
        mixture._set(*(np.array(values, np.float64) for values in (weights, means, covariances)))
        return mixture

    def _set(self, weights, means, covariances):
        if means.shape != covariances.shape or weights.shape != means.shape[:1] or means.ndim != 2:
            raise ValueError('weights (components,), means and covariances (components, width) are wanted')
        self.weights_, self.means_, self.covariances_ = weights, means, covariances
        constants = np.empty(len(weights))
        for variances, place in zip(covariances, range(len(weights))):
            call(lib.kelsUpdateGConst_DirectVar_64f, pointer(variances), variances.size, pointer(constants) + place)
        call(lib.kelsOutProbPreCalc_64f_I, pointer(np.log(weights)), pointer(constants), constants.size)
        self._models = {np.dtype(kind): (means.astype(kind), (1 / covariances).astype(kind), constants.astype(kind))
                        for kind in (np.float32, np.float64)}

    def _rows(self, X, kind=None):
        rows, step = matrix(X, kind or floating(X))
        if not rows.size:
            raise ValueError('there are no rows')
        if hasattr(self, 'means_') and rows.shape[1] != self.means_.shape[1]:
            raise ValueError(f'rows of {rows.shape[1]} values, and the mixture has {self.means_.shape[1]}')
        return rows, step

    def _each(self, rows):
        """Pointers to mean and inverse variances and the constant, of each component."""
        means, inverses, constants = self._models[rows.dtype]
        width = means.shape[1]
        mean, inverse = pointer(means), pointer(inverses)
        return [(mean + k * width, inverse + k * width, constants[k]) for k in range(len(constants))]

    def score_samples(self, X):
        """The logarithm of the density at each row: (rows,), in the dtype of X, float32 or float64."""
        rows, step = self._rows(X)
        suffix = '64f' if rows.dtype == np.float64 else '32f'
        first, add = (getattr(lib, f'kelsLogGauss{name}_{suffix}_D2') for name in ('', 'Add'))
        scores = np.empty(len(rows), rows.dtype)
        for k, (mean, inverse, constant) in enumerate(self._each(rows)):
            call(add if k else first, pointer(rows), step, mean, inverse, rows.shape[1], pointer(scores), len(rows),
                 constant)
        return scores

    def score(self, X):
        """The mean of score_samples."""
        return float(self.score_samples(X).mean())

    def _posteriors(self, rows, step):
        """The share of each component in each row, (components, rows); the logarithm of the density at each row."""
        function = lib.kelsLogGauss_64f_D2
        shares = np.empty((len(self.weights_), len(rows)))
        for k, (mean, inverse, constant) in enumerate(self._each(rows)):
            call(function, pointer(rows), step, mean, inverse, rows.shape[1], pointer(shares[k]), len(rows), constant)
        largest = shares.max(0)
        shares -= largest
        call(lib.kelsExp_64f_I, pointer(shares), shares.size)
        sums = shares.sum(0)
        shares /= sums
        return shares, largest + np.log(sums)

    def predict_proba(self, X):
        """The share of each component in each row: float64, (rows, components); rows add up to 1."""
        return self._posteriors(*self._rows(X, np.float64))[0].T

    def predict(self, X):
        """The component with the largest share in each row: (rows,)."""
        return self._posteriors(*self._rows(X, np.float64))[0].argmax(0)

    def fit(self, X):
        """Fits the mixture to rows, (rows, width); afterwards there are converged_, n_iter_ and lower_bound_."""
        self.__dict__.pop('means_', None)
        rows = self._rows(X, np.float64)[0]
        centre = rows.mean(0)
        rows = rows - centre  # variances come from sums of squares
        self._begin(rows, rows.std(0) + np.sqrt(self.reg_covar))
        while len(self.weights_) < self.n_components:
            self._split(min(len(self.weights_), self.n_components - len(self.weights_)))
            for _ in range(_SETTLE):
                self._step(rows)
        before = -np.inf
        self.converged_, self.n_iter_, self.lower_bound_ = False, 0, before
        while not self.converged_ and self.n_iter_ < self.max_iter:
            self.lower_bound_ = self._step(rows)
            self.n_iter_ += 1
            self.converged_ = bool(self.lower_bound_ - before < self.tol)
            before = self.lower_bound_
        self._set(self.weights_, self.means_ + centre, self.covariances_)
        return self

    def _begin(self, rows, deviations):
        """One component for each cell of a codebook of some of the rows."""
        some = (rows[::-(-len(rows) // (_ROWS_A_CELL * self.n_components))] / deviations).astype(np.float32)
        try:
            with warnings.catch_warnings():
                warnings.simplefilter('ignore', KelsWarning)
                cells = Codebook(self.n_components).fit(some).encode(some)
        except KelsError:  # there are not as many different rows
            cells = np.zeros(len(some), int)
        used = [some[cells == k] for k in np.unique(cells)]
        self._set(np.array([len(cell) / len(some) for cell in used]),
                  np.array([cell.mean(0) for cell in used]) * deviations,
                  np.array([cell.var(0, dtype=np.float64) + _LEAST_SHARE for cell in used]) * deviations ** 2)

    def _step(self, rows):
        """One pass; gives the mean log likelihood before it."""
        shares, logs = self._posteriors(rows, rows.shape[1])
        means, covariances = np.empty_like(self.means_), np.empty_like(self.covariances_)
        # A component that has lost its rows stays as it is, with next to no weight.
        sums = np.maximum(shares.sum(1), 1e-10)
        shares /= sums[:, None]
        for k in range(len(sums)):
            call(lib.kelsWeightedMeanVarColumn_64f_D2, pointer(rows), rows.shape[1], pointer(shares[k]), len(rows),
                 pointer(means[k]), pointer(covariances[k]), rows.shape[1])
        lost = sums < 1e-6
        means[lost], covariances[lost] = self.means_[lost], self.covariances_[lost]
        covariances[~lost] = np.maximum(covariances[~lost], 0) + self.reg_covar
        self._set(sums / sums.sum(), means, covariances)
        return float(logs.mean())

    def _split(self, number):
        heaviest = np.argsort(-self.weights_, kind='stable')[:number]
        means, covariances = (np.concatenate([values, values[heaviest]]) for values in (self.means_, self.covariances_))
        for new, old in enumerate(heaviest, len(self.weights_)):
            call(lib.kelsGaussianSplit_64f, pointer(means[old]), pointer(covariances[old]), pointer(means[new]),
                 pointer(covariances[new]), means.shape[1], _SPLIT)
        weights = self.weights_.copy()
        weights[heaviest] /= 2
        self._set(np.concatenate([weights, weights[heaviest]]), means, covariances)

    def save(self, file):
        """Writes the parameters to a NumPy archive, .npz."""
        np.savez(file, weights=self.weights_, means=self.means_, covariances=self.covariances_)

    @classmethod
    def load(cls, file):
        """A mixture that save has written."""
        with np.load(file) as archive:
            return cls.from_parameters(archive['weights'], archive['means'], archive['covariances'])
