"""Time of Raw.pixels() per element, beside a copy of the same array by numpy."""

import argparse
import statistics
import threading
import time

import numpy as np

from sarvo import examples, nemra


def render_once() -> "nemra.Raw":
    finished = threading.Event()
    kept = []

    def keep(raw):
        kept.append(raw.copy())
        finished.set()

    renderer = nemra.Renderer()
    renderer.setHaltCondition(time=0, spp=1, action=nemra.Renderer.halt_cond.stops)
    renderer.addLocalNode()
    renderer.onFinish(keep)
    assert renderer.start(examples["cornellbox"])
    assert finished.wait(120)
    return kept[0]


def median_time(call, repeats: int) -> float:
    times = []
    for _ in range(repeats):
        began = time.perf_counter()
        call()
        times.append(time.perf_counter() - began)
    return statistics.median(times)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--repeats", type=int, default=21)
    repeats = parser.parse_args().repeats

    raw = render_once()
    pixels = raw.pixels()
    x, y, channel = pixels.shape[0] // 2, pixels.shape[1] // 3, pixels.shape[2] - 1
    assert pixels[x, y, channel] == np.float32(raw.getLightQuantity(channel, x, y, nemra.Raw.quantity.Raw))
    assert np.isfinite(pixels).all() and pixels.any()

    ours = median_time(raw.pixels, repeats)
    copy = median_time(pixels.copy, repeats)
    meta = median_time(lambda: raw.metaPixels("spp"), repeats)
    print(f"pixels()          {1e9 * ours / pixels.size:6.2f} ns per element   {pixels.shape}, {1e3 * ours:.2f} ms")
    print(f"metaPixels('spp') {1e9 * meta / pixels[..., 0].size:6.2f} ns per element")
    print(f"numpy copy        {1e9 * copy / pixels.size:6.2f} ns per element   ratio {ours / copy:.1f}")


if __name__ == "__main__":
    main()
