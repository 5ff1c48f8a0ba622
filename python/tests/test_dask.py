"""quorin.dask: chunked results byte for byte those of one call; batches on
a two-process cluster survive a killed worker."""

import os
import signal
import threading
import time

import numpy as np
import pytest

import quorin
import quorin.dask as qd
from quorin import cli, images
from references import box_reference, convolve_reference

da = pytest.importorskip("dask.array")
distributed = pytest.importorskip("distributed")

rng = np.random.default_rng(11)


def test_per_pixel_operations_chunk_by_chunk():
    img = rng.integers(0, 256, (300, 310, 4), dtype=np.uint8)
    chunked = da.from_array(img, chunks=(97, 101, 3))  # pixels split across chunks too
    result = qd.apply("premultiply", chunked).compute(scheduler="threads")
    assert result.tobytes() == quorin.premultiply(img).tobytes()
    bottom = rng.integers(0, 256, img.shape, dtype=np.uint8)
    blended = qd.apply("alpha_blend", chunked, da.from_array(bottom, chunks=(150, 64, 4))).compute()
    assert blended.tobytes() == quorin.alpha_blend(img, bottom).tobytes()


class Reference:
    name, prepare, resizes = "reference", None, False

    def __init__(self, function, halo, boundary):
        self.function, self.halo, self.boundary = function, halo, boundary

    def __call__(self, image, flags=0, **params):
        return self.function(image, **params)


@pytest.mark.parametrize("op,params", [
    (Reference(box_reference, lambda p: (1 + p["kernel_height"] // 2, 1 + p["kernel_width"] // 2), "nearest"),
     {"kernel_height": 7, "kernel_width": 3}),
    (Reference(convolve_reference, lambda p: (p["kernel"].shape[0] // 2, p["kernel"].shape[1] // 2), 0),
     {"kernel": np.array([[1, 2, 1], [2, 4, 2], [1, 2, 1], [0, 1, 0], [1, 0, 1]])}),
])
def test_neighbourhood_halo_gives_the_whole_image_bytes(op, params):
    img = rng.integers(0, 256, (61, 70, 4), dtype=np.uint8)
    chunked = da.from_array(img, chunks=(16, 23, 4))
    result = qd.apply(op, chunked, **params).compute(scheduler="sync")
    np.testing.assert_array_equal(result, op(img, **params))
    # One row or column of halo fewer shows at the chunk seams.
    short = Reference(op.function, lambda p: tuple(max(0, d - 1) for d in op.halo(p)), op.boundary)
    assert not np.array_equal(qd.apply(short, chunked, **params).compute(scheduler="sync"), op(img, **params))


@pytest.mark.parametrize("name,params", [("box_blur", {"size": (5, 3)}), ("tent_blur", {"size": (3, 5)}),
                                         ("convolve", {"kernel": np.ones((3, 5), np.int16), "divisor": 15})])
# Even chunks; chunks thinner than the halo and split across the channels
# (joined first); one chunk; a plane in uneven chunks.
@pytest.mark.parametrize("shape,chunks", [((90, 77, 4), (32, 30, 4)), ((41, 37, 4), (2, 3, 1)),
                                          ((20, 25, 4), (20, 25, 4)), ((50, 47), ((5, 30, 15), (40, 7)))])
def test_library_neighbourhood_members_chunked(name, params, shape, chunks):
    if not hasattr(quorin, name):
        pytest.skip(f"{name} has no implemented member in this build")
    img = rng.integers(0, 256, shape, dtype=np.uint8)
    try:
        expect = getattr(quorin, name)(img, **params)
    except quorin.FormatError:
        pytest.skip(f"{name} has no member for {len(shape)}-D images")
    result = qd.apply(name, da.from_array(img, chunks=chunks), **params).compute()
    assert result.tobytes() == expect.tobytes()


@pytest.fixture(scope="module")
def client():
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None)
    with distributed.Client(cluster) as c:
        yield c
    cluster.close()


def write_inputs(folder, count, size):
    paths = []
    for i in range(count):
        path = str(folder / f"in{i:02}.png")
        images.write_image(path, rng.integers(0, 256, size + (4,), dtype=np.uint8))
        paths.append(path)
    return paths


def test_batch_survives_a_killed_worker(tmp_path, client):
    inputs = write_inputs(tmp_path, 8, (500, 500))
    out = tmp_path / "out"
    out.mkdir()
    jobs = [([i], str(out / os.path.basename(i))) for i in inputs]
    results = []
    batch = threading.Thread(target=lambda: results.extend(cli.run_batch("premultiply", jobs, {}, client=client)))
    batch.start()
    while not any(p.suffix == ".png" for p in out.iterdir()) and batch.is_alive():
        time.sleep(0.005)
    pids = client.run(os.getpid)
    os.kill(next(iter(pids.values())), signal.SIGKILL)
    killed_mid_batch = batch.is_alive() and len(list(out.glob("*.png"))) < len(jobs)
    batch.join(timeout=120)
    assert killed_mid_batch
    assert sorted(o for o, _ in results) == sorted(o for _, o in jobs)
    assert all(error is None for _, error in results)
    for i, o in jobs:
        expect = images.apply(quorin.ops.available()["premultiply"], [images.read_image(i[0])], {})
        assert images.read_image(o).tobytes() == expect.tobytes()


def test_command_line_on_a_scheduler(tmp_path, client):
    inputs = write_inputs(tmp_path, 3, (40, 30))
    code = cli.main(["unpremultiply", *inputs, "-o", str(tmp_path / "out"), "--scheduler",
                     client.scheduler.address, "--no-progress"])
    assert code == 0
    for i in inputs:
        local = images.apply(quorin.ops.available()["unpremultiply"], [images.read_image(i)], {})
        assert images.read_image(str(tmp_path / "out" / os.path.basename(i))).tobytes() == local.tobytes()
