"""The operations of families that land later, against independent numpy
formulas; each test runs once its members are implemented in the library."""

import numpy as np
import pytest

import quorin
from references import box_reference, convolve_reference

rng = np.random.default_rng(17)


def needs(name):
    return pytest.mark.skipif(not hasattr(quorin, name), reason=f"{name} has no implemented member in this build")


@needs("box_blur")
def test_box_blur_against_the_running_mean():
    img = rng.integers(0, 256, (37, 41, 4), dtype=np.uint8)
    np.testing.assert_array_equal(quorin.box_blur(img, size=(5, 3)), box_reference(img, 5, 3))
    np.testing.assert_array_equal(quorin.box_blur(img[..., 2].copy(), size=7), box_reference(img[..., 2], 7, 7))
    view = img[3:30, 2:40]  # padded rows: packed for the member, the caller's array untouched
    np.testing.assert_array_equal(quorin.box_blur(view, size=3), box_reference(np.ascontiguousarray(view), 3, 3))


@needs("convolve")
def test_convolve_and_tent_against_zero_edges():
    img = rng.integers(0, 256, (29, 33, 4), dtype=np.uint8)
    kernel = np.array([[1, 2, 1], [2, 4, 2], [1, 2, 1]], np.int16)
    np.testing.assert_array_equal(quorin.convolve(img, kernel=kernel, divisor=16), convolve_reference(img, kernel))
    if hasattr(quorin, "tent_blur"):  # two passes of weights 1, 2, 1 over 4
        horizontal = convolve_reference(img, np.array([[1, 2, 1]]), divisor=4)
        tent = convolve_reference(horizontal, np.array([[1], [2], [1]]), divisor=4)
        np.testing.assert_array_equal(quorin.tent_blur(img, size=3), tent)


@needs("scale")
def test_scale_sizes_split_and_copy():
    img = rng.integers(0, 256, (61, 47, 4), dtype=np.uint8)
    assert quorin.scale(img, size=(61, 47)).tobytes() == img.tobytes()
    for size in ((300, 290), (20, 200)):
        split = quorin.scale(img, size=size)
        assert split.shape == size + (4,)
        assert split.tobytes() == quorin.scale(img, size=size, flags=quorin.SINGLE_THREADED).tobytes()
    flat = np.full((40, 40), 77, np.uint8)
    assert (quorin.scale(flat, size=(90, 13)) == 77).all()


@needs("histogram")
def test_histogram_counts_every_value():
    img = rng.integers(0, 256, (50, 70, 4), dtype=np.uint8)
    counts = quorin.histogram(img[5:45, 3:60])  # a view: only its pixels counted
    for c in range(4):
        np.testing.assert_array_equal(counts[c], np.bincount(img[5:45, 3:60, c].ravel(), minlength=256))


@needs("matrix_multiply")
def test_matrix_multiply_against_numpy():
    img = rng.integers(0, 256, (19, 23, 4), dtype=np.uint8)
    matrix = rng.integers(-40, 80, (4, 4)).astype(np.int16)
    expect = np.clip(np.trunc((img.astype(np.int64) @ matrix) / 64), 0, 255).astype(np.uint8)
    np.testing.assert_array_equal(quorin.matrix_multiply(img, matrix=matrix, divisor=64), expect)
