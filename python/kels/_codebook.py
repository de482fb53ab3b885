"""Codebooks: vector quantisation."""
import numpy as np

from kels._base import build, call, count, lib, matrix, pointer, size_of

_KINDS = {'widest': lib.kelCdbkSplitWidest, 'largest': lib.kelCdbkSplitLargest}


class Codebook:
    """Stands for vectors by a few of them, found by splitting clusters and refining all after each split.

    size: codevectors, at most 16383.  split: the cluster to be split next, the 'widest' or the 'largest'.
    After fit or load, codevectors_ holds them: float32, (size, width).

    >>> points = np.array([[0, 0], [0, 1], [10, 0], [10, 1]], np.float32)
    >>> codebook = kels.Codebook(2).fit(points)
    >>> indices = codebook.encode(points)
    >>> codebook.decode(indices)[:, 0]
    array([ 0.,  0., 10., 10.], dtype=float32)
    """

    def __init__(self, size=256, split='widest'):
        self.size = count(size, 'size')
        if split not in _KINDS:
            raise ValueError(f'no split {split!r}: there are {", ".join(_KINDS)}')
        self.split = split

    def _hold(self, rows, step, size, kind):
        if not rows.size:
            raise ValueError('there are no rows')
        self._codebook = build('KelCdbk_32f', lib.kelsCdbkInitAlloc_L2_32f, pointer(rows), rows.shape[1], step,
                               rows.shape[0], size, kind, free=lib.kelsCdbkFree_32f)
        self._tree = kind != lib.kelCdbkExhaustive
        self.codevectors_ = np.empty((size_of(lib.kelsGetCdbkSize_32f, self._codebook), rows.shape[1]), np.float32)
        call(lib.kelsGetCodebook_32f, self._codebook, pointer(self.codevectors_), rows.shape[1])
        return self

    def fit(self, X):
        """Builds the codebook from rows, (rows, width).

        Where rows repeat there may be fewer codevectors, which is a KelsWarning.
        """
        rows, step = matrix(X)
        return self._hold(rows, step, self.size, _KINDS[self.split])

    def encode(self, X, search='full', return_distance=False):
        """The index of the nearest codevector of each row: int32, (rows,).

        search: 'full' compares all codevectors; 'tree', after a fit, follows the splits, which is several times faster
        and finds the nearest in most cases and a near one in the others.
        return_distance: also returns the Euclidean distances, float32, (rows,).
        """
        rows, step = matrix(X)
        if rows.shape[1] != self.codevectors_.shape[1]:
            raise ValueError(f'rows of {rows.shape[1]} values, and codevectors of {self.codevectors_.shape[1]}')
        if search not in ('full', 'tree') or search == 'tree' and not self._tree:
            raise ValueError('search is "full", or after a fit "tree"')
        indices = np.empty(len(rows), np.int32)
        if len(rows) and search == 'tree':
            call(lib.kelsVQ_32f, pointer(rows), step, pointer(indices), len(rows), self._codebook)
        elif len(rows):
            call(lib.kelsCdbk32VQFull_A6, pointer(rows), step, pointer(indices), len(rows), self._codebook,
                 rows.shape[1])
        if not return_distance:
            return indices
        return indices, np.sqrt(np.square(rows - self.codevectors_[indices]).sum(1))

    def decode(self, indices):
        """The codevectors of indices: float32, (..., width)."""
        return self.codevectors_[indices]

    def save(self, file):
        """Writes the codevectors to a NumPy archive, .npz."""
        np.savez(file, codevectors=self.codevectors_)

    @classmethod
    def load(cls, file):
        """A codebook that save has written; it searches in full."""
        with np.load(file) as archive:
            codevectors = np.ascontiguousarray(archive['codevectors'], np.float32)
        codebook = cls(len(codevectors))
        return codebook._hold(codevectors, codevectors.shape[1], len(codevectors), lib.kelCdbkExhaustive)
