"""The package over the library: declarations, errors, arrays without copies,
results against independent formulas, refusals before any call."""

import ctypes
import sys
import threading
import time

import numpy as np
import pytest

import quorin
from quorin import _lowlevel

rng = np.random.default_rng(7)


def manifest(state):
    return {n for n, s in _lowlevel.STATES.items() if s == state}


def test_every_implemented_entry_point_is_declared_and_no_other():
    exported = manifest("implemented")
    declared = set(_lowlevel.MEMBERS)
    # Internal dispatch helpers and functions whose types the parser skips are
    # still declared; everything declared is implemented.
    assert declared <= exported
    assert exported - declared == set(_lowlevel.DATA)
    assert len(quorin.lib.kQuorinDecodeArray_16Q12Format) == 6  # exported data reads through
    for name in list(manifest("stub"))[:20] + list(manifest("partial")):
        with pytest.raises(NotImplementedError, match="end the process"):
            getattr(quorin.lib, name)


def test_error_classes_come_from_the_header_table():
    err = quorin.BadArgumentError
    assert issubclass(err, quorin.QuorinError)
    assert (err.code, err.name) == (-21773, "kQuorinError_BadArgument")
    assert quorin.error_name(-21766) == "kQuorinError_RegionExceedsSource"
    with pytest.raises(quorin.BadArgumentError) as raised:
        quorin.clip(np.zeros((0, 3), np.float32), low=0, high=1)  # the member refuses an empty image
    assert raised.value.code == -21773 and "QuorinClip_PlanarF" in str(raised.value)


def test_premultiply_8bit_every_colour_alpha_pair():
    c, a = np.meshgrid(np.arange(256), np.arange(256), indexing="ij")
    img = np.stack([a, c, 255 - c, c], axis=-1).astype(np.uint8)
    out = quorin.premultiply(img)
    expect = (img[..., 1:].astype(np.int64) * img[..., :1] + 127) // 255
    np.testing.assert_array_equal(out[..., 1:], expect)
    np.testing.assert_array_equal(out[..., 0], img[..., 0])
    rgba = np.ascontiguousarray(img[..., [1, 2, 3, 0]])
    np.testing.assert_array_equal(quorin.premultiply(rgba, format="RGBA8888"), out[..., [1, 2, 3, 0]])


def test_views_are_written_in_place_and_nothing_outside():
    big = rng.integers(0, 256, (40, 50, 4), dtype=np.uint8)
    guard = big.copy()
    view = big[5:31, 3:47]  # rows padded by the rest of the big image
    expect = quorin.premultiply(np.ascontiguousarray(view))
    result = quorin.premultiply(view, out=view)
    assert result is view
    np.testing.assert_array_equal(view, expect)
    outside = np.ones(big.shape[:2], bool)
    outside[5:31, 3:47] = False
    np.testing.assert_array_equal(big[outside], guard[outside])


@pytest.mark.parametrize("op,fmt,dtype", [("premultiply", "ARGBFFFF", np.float32), ("unpremultiply", "ARGB16U", np.uint16),
                                          ("clip_to_alpha", "RGBA8888", np.uint8)])
def test_threads_and_single_thread_give_the_same_bytes(op, fmt, dtype):
    if dtype == np.float32:
        img = rng.random((300, 310, 4), dtype=np.float32)
        img[::7, ::5, 1] = np.nan
    else:
        img = rng.integers(0, np.iinfo(dtype).max, (300, 310, 4), dtype=dtype, endpoint=True)
    fn = getattr(quorin, op)
    split = fn(img, format=fmt)
    single = fn(img, format=fmt, flags=quorin.SINGLE_THREADED)
    assert split.tobytes() == single.tobytes()


def test_planes_round_trip_and_a_missing_alpha_plane():
    img = rng.integers(0, 256, (17, 23, 4), dtype=np.uint8)
    planes = quorin.convert(img, "ARGB8888", "Planar8")
    assert planes.shape == (4, 17, 23)
    for i in range(4):
        np.testing.assert_array_equal(planes[i], img[..., i])
    np.testing.assert_array_equal(quorin.convert(list(planes), "Planar8", "ARGB8888"), img)
    no_alpha = quorin.convert([None, *planes[1:]], "Planar8", "ARGB8888")
    assert (no_alpha[..., 0] == 0).all() and (no_alpha[..., 1:] == img[..., 1:]).all()
    with pytest.raises(quorin.UsageError, match="no conversion from ARGB8888 to Bogus"):
        quorin.convert(img, "ARGB8888", "Bogus")


def test_channel_operations_against_numpy():
    img = rng.integers(0, 256, (9, 13, 4), dtype=np.uint8)
    np.testing.assert_array_equal(quorin.permute_channels(img, order=[3, 0, 2, 1]), img[..., [3, 0, 2, 1]])
    for c in range(4):
        np.testing.assert_array_equal(quorin.extract_channel(img, channel=c), img[..., c])
    plane = np.zeros((9, 13), np.uint8)
    assert quorin.extract_channel(img, channel=3, out=plane) is plane
    np.testing.assert_array_equal(plane, img[..., 3])
    filled = quorin.fill(color=[1, 2, 3, 4], size=(3, 5), format="ARGB8888")
    assert (filled == [1, 2, 3, 4]).all()
    over = quorin.overwrite_channels(img, value=9, mask=0b1010)
    np.testing.assert_array_equal(over[..., [0, 2]], 9)
    np.testing.assert_array_equal(over[..., [1, 3]], img[..., [1, 3]])
    f = rng.normal(0, 2, (6, 11)).astype(np.float32)
    f[2, 3] = np.nan
    clipped = quorin.clip(f, low=-1, high=1)
    np.testing.assert_array_equal(clipped, np.where(np.isnan(f), f, np.clip(f, -1, 1)))
    pixel = quorin.overwrite_channels_with_pixel(img.astype(np.uint16), pixel=[7, 8, 9, 10], mask=0x1)
    assert (pixel[..., 3] == 10).all() and (pixel[..., :3] == img[..., :3]).all()


@pytest.mark.parametrize("fmt,dtype", [("ARGB8888", np.uint8), ("ARGB16U", np.uint16), ("ARGBFFFF", np.float32)])
def test_extract_tiles_a_tight_plane_and_writes_nothing_else(fmt, dtype):
    # Every height up to twice the rows a call skips, so that each of the
    # interleaved calls has from zero to two rows and a last row at each seam.
    for height in range(1, 10):
        for width in (1, 2, 5):
            padded = rng.integers(0, 65536, (height, width + 3, 4)).astype(dtype)
            # Rows longer than the image (every n-th row a call), and rows
            # that follow each other (one call over all of them).
            for img, c in [(padded[:, 1:width + 1], c) for c in range(4)] + \
                          [(np.ascontiguousarray(padded[:, :width]), c) for c in range(4)]:
                plane = quorin.extract_channel(img, channel=c, format=fmt)
                assert plane.flags.c_contiguous and plane.shape == (height, width)
                np.testing.assert_array_equal(plane, img[..., c])
                guarded = np.full(height * width + 8, 99, dtype)
                out = guarded[4:-4].reshape(height, width)
                quorin.extract_channel(img, channel=c, format=fmt, out=out)
                np.testing.assert_array_equal(out, img[..., c])
                assert (guarded[:4] == 99).all() and (guarded[-4:] == 99).all()
                wide = np.full((height, width + 2), 99, dtype)  # padded out rows: the padding is kept
                quorin.extract_channel(img, channel=c, format=fmt, out=wide[:, :width])
                np.testing.assert_array_equal(wide[:, :width], img[..., c])
                assert (wide[:, width:] == 99).all()


@pytest.mark.skipif(not hasattr(quorin, "box_blur"), reason="no box blur member in this build")
def test_scratch_memory_is_checked_against_the_members_query():
    img = rng.integers(0, 256, (20, 30, 4), dtype=np.uint8)
    expect = quorin.box_blur(img, size=5)
    asked = []
    scratch = np.full(20 * 30 * 4 + 1, 7, np.uint8)
    got = quorin.box_blur(img, size=5, temp_buffer=lambda n: asked.append(n) or scratch[:n])
    assert asked == [20 * 30 * 4] and got.tobytes() == expect.tobytes() and scratch[-1] == 7
    out = np.zeros_like(img)
    with pytest.raises(quorin.UsageError, match="temp_buffer holds 2399 bytes, the call needs 2400"):
        quorin.box_blur(img, size=5, out=out, temp_buffer=scratch[:2399])
    with pytest.raises(quorin.UsageError, match="writable C-contiguous"):
        quorin.box_blur(img, size=5, out=out, temp_buffer=scratch[::2])
    assert not out.any()  # refused before the call
    with pytest.raises(quorin.BadArgumentError):  # the query's own refusal: a kernel larger than the image
        quorin.box_blur(img, size=(21, 3), temp_buffer=scratch)


def test_bad_input_is_refused_before_the_call():
    img = rng.integers(0, 256, (8, 8, 4), dtype=np.uint8)
    out = np.zeros_like(img)
    cases = [
        (lambda: quorin.premultiply(img.astype(np.int64)), "dtype int64"),
        (lambda: quorin.premultiply(img[..., :3], format="ARGB8888"), r"shape \(height, width, 4\)"),
        (lambda: quorin.premultiply(img, format="RGB565"), "no member for format 'RGB565'"),
        (lambda: quorin.alpha_blend(img, img[:7], out=out), "differs"),
        (lambda: quorin.premultiply(img, out=out[:, :7]), "expected 8x8"),
        (lambda: quorin.premultiply(img[:, ::2], out=out[:, :4]), "adjacent"),
        (lambda: quorin.premultiply(img, out=np.zeros((8, 8, 4), np.float32)), "dtype uint8"),
        (lambda: quorin.premultiply(img, img), "expected 1 images, got 2"),
        (lambda: quorin.premultiply("not an image"), "numpy array"),
        (lambda: quorin.permute_channels(img, out=out), "needs the parameter 'permute_map'"),
        (lambda: quorin.premultiply(img, bogus=1), "no parameter 'bogus'"),
    ]
    for call, message in cases:
        with pytest.raises(quorin.UsageError, match=message):
            call()
    assert not out.any()
    frozen = np.zeros_like(img)
    frozen.flags.writeable = False
    with pytest.raises(quorin.UsageError, match="read-only"):
        quorin.premultiply(img, out=frozen)


def test_operations_appear_with_their_members():
    from quorin.ops import OPERATIONS
    for op in OPERATIONS:
        members = op.members()
        assert hasattr(quorin, op.name) == bool(members), op.name
        for fmt, name in members.items():
            assert _lowlevel.STATES[name] == "implemented"
    # Any implemented member is reachable by name, even with no entry.
    plane, alpha = rng.integers(0, 256, (2, 5, 6), dtype=np.uint8)
    np.testing.assert_array_equal(quorin.call("QuorinPremultiplyData_Planar8", plane, alpha),
                                  (plane.astype(int) * alpha + 127) // 255)


def ticks_during(call):
    """How often another Python thread ran while call was in the library.
    The switch interval is long, so a thread that keeps the GIL through a
    call keeps the counter out for all of it."""
    ticks, stop, running = [], threading.Event(), threading.Event()

    def counter():
        running.set()
        while not stop.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0)

    old = sys.getswitchinterval()
    sys.setswitchinterval(5.0)
    thread = threading.Thread(target=counter)
    thread.start()
    running.wait()
    during = 0
    for _ in range(5):
        start = time.perf_counter()
        call()
        end = time.perf_counter()
        during += sum(start < t < end for t in ticks[-1000:])
    stop.set()
    thread.join()
    sys.setswitchinterval(old)
    return during


def test_calls_release_the_gil():
    img = rng.integers(0, 256, (2048, 2048, 4), dtype=np.uint8)
    assert ticks_during(lambda: quorin.unpremultiply(img, out=img, flags=quorin.SINGLE_THREADED)) > 0
    # The same call through ctypes.PyDLL keeps the GIL: the measure tells them apart.
    held = ctypes.PyDLL(str(_lowlevel.NATIVE_DIR / "libquorin.so")).QuorinUnpremultiplyData_ARGB8888
    record = (ctypes.c_size_t * 4)(img.ctypes.data, 2048, 2048, 2048 * 4)
    assert ticks_during(lambda: held(record, record, quorin.SINGLE_THREADED)) == 0


def test_features():
    f = quorin.features()
    assert f["version"] == quorin.__version__ and f["processors"] >= 1
    assert set(f["targets"]) <= {"AVX3", "AVX2", "SSE4"}
    assert quorin.families()["Alpha"] > 0
