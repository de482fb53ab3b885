"""Codebooks: vector quantisation."""
import pathlib

import numpy as np

from kels._base import KelsError, KelsMemoryError, build, call, count, lib, matrix, pointer, size_of

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

    def _hold(self, codebook):
        self._codebook, self._tree = codebook, codebook.kind != lib.kelCdbkExhaustive
        self.codevectors_ = np.empty((codebook.cdbkSize, codebook.width), np.float32)
        call(lib.kelsGetCodebook_32f, codebook, pointer(self.codevectors_), codebook.width)
        return self

    def fit(self, X):
        """Builds the codebook from rows, (rows, width).

        Where rows repeat there may be fewer codevectors, which is a KelsWarning.
        """
        rows, step = matrix(X)
        if not rows.size:
            raise ValueError('there are no rows')
        return self._hold(build('KelCdbk_32f', lib.kelsCdbkInitAlloc_L2_32f, pointer(rows), rows.shape[1], step,
                                rows.shape[0], self.size, _KINDS[self.split], free=lib.kelsCdbkFree_32f))

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
        """Writes the codebook with its tree to a file, a block of kels/store.h, which C programs read too."""
        block = np.empty(size_of(lib.kelsCdbkGetPackedSize_32f, self._codebook), np.uint8)
        call(lib.kelsCdbkPack_32f, self._codebook, pointer(block), len(block))
        pathlib.Path(file).write_bytes(block)

    @classmethod
    def load(cls, file):
        """The codebook of a file that save, or a C program, has written; it encodes as the one that was saved."""
        block = np.fromfile(file, np.uint8)
        try:
            book = build('KelCdbk_32f', lib.kelsCdbkUnpackAlloc_32f, pointer(block), len(block),
                         free=lib.kelsCdbkFree_32f)
        except KelsMemoryError:
            raise
        except KelsError:
            raise ValueError(f'{file}: not a codebook of floats, or a damaged one') from None
        split = next((name for name, kind in _KINDS.items() if kind == book.kind), 'widest')
        return cls(book.cdbkSize, split)._hold(book)
