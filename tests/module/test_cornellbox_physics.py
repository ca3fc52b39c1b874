"""The rendered Cornell box against a second computation that shares nothing with the engine (cornell_reference.py)."""

import os
import threading

import cornell_reference as reference
import numpy as np
import pytest

from sarvo import examples, nemra

# Paths per patch for the second computation: the more indirect the light, the more it takes.
PATHS = {"back wall": 20_000, "floor": 15_000, "ceiling": 90_000, "front of the tall block": 50_000, "light": 2_000}
SAMPLES = 8_000_000
SIGMAS = 4.5


def render(scene: str, spp: float) -> np.ndarray:
    """XYZ of a scene, indexed [x, y, channel]."""
    finished = threading.Event()
    pixels = []

    def keep(raw):
        try:
            assert [raw.channelName(i) for i in range(raw.channelCount())] == ["X", "Y", "Z"]
            pixels.append(raw.pixels())
        finally:
            finished.set()

    renderer = nemra.Renderer()
    renderer.setParameter("num_threads", 2)
    renderer.setHaltCondition(time=0, spp=spp, action=nemra.Renderer.halt_cond.stops)
    renderer.addLocalNode()
    renderer.onFinish(keep)
    assert renderer.start(scene)
    assert finished.wait(120)
    return pixels[0].astype(float)


@pytest.fixture(scope="module")
def picture() -> np.ndarray:
    """The example scene, as shipped, with about SAMPLES samples."""
    first = render(examples["cornellbox"], 1)
    return render(examples["cornellbox"], max(1, round(SAMPLES / first[..., 0].size)))


def mean_and_error(pixels: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """Mean of a patch and its standard error, from 16 interleaved sets of pixels, which all see the same change across it."""
    sets = np.array([pixels[i::4, j::4].mean(axis=(0, 1)) for i in range(4) for j in range(4)])
    return pixels.mean(axis=(0, 1)), sets.std(axis=0, ddof=1) / 4


@pytest.mark.skipif("NEMRA_SANITIZED" in os.environ, reason="takes minutes there, and the numbers are the same")
@pytest.mark.parametrize("name", reference.PATCHES)
def test_patch_has_the_radiance_of_an_independent_computation(picture, name):
    width, height, _ = picture.shape
    patch = reference.PATCHES[name]
    # Whole pixels, for both.
    x0, x1 = round(patch.left * width), round(patch.right * width)
    y0, y1 = round(patch.top * height), round(patch.bottom * height)
    snapped = reference.Patch(patch.surface, x0 / width, x1 / width, y0 / height, y1 / height)

    found, found_error = mean_and_error(picture[x0:x1, y0:y1])
    expected, expected_error = reference.patch_xyz(snapped, PATHS.get(name, 12_000), seed=20)

    assert (expected_error < 0.01 * expected).all()
    assert (found_error < 0.01 * found).all()
    # The wavelengths of neighbouring pixels aren't drawn independently of each other, which the sets can't show: 0.1 % for that.
    tolerance = SIGMAS * np.hypot(found_error, expected_error) + 0.001 * expected
    assert (np.abs(found - expected) < tolerance).all(), f"XYZ {found}, expected {expected} +- {tolerance}"


def test_red_is_on_the_left_and_green_on_the_right():
    """The picture as people know it: not mirrored, not upside down, colour bleeding on the white blocks."""
    picture = render(examples["cornellbox"], 4)
    width, height, _ = picture.shape

    def mean(name):
        patch = reference.PATCHES[name]
        return picture[round(patch.left * width):round(patch.right * width),
                       round(patch.top * height):round(patch.bottom * height)].mean(axis=(0, 1))

    x, y, _ = mean("red wall")
    assert x > 1.5 * y
    x, y, _ = mean("green wall")
    assert y > 1.2 * x
    assert mean("light")[1] > 50 * mean("ceiling")[1]
    # Nothing beside the light comes near it, however few samples: the estimator makes no fireflies.
    light = mean("light")[1]
    beside = np.delete(picture[..., 1], np.s_[int(0.10 * height):int(0.18 * height)], axis=1)
    assert beside.max() < 0.2 * light
