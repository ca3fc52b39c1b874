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


def times_of(call, repeats: int) -> tuple[float, float]:
    """Least and median time in seconds of the calling thread: what others do on the machine shows in the second only."""
    times = []
    for _ in range(repeats):
        began = time.thread_time()
        call()
        times.append(time.thread_time() - began)
    return min(times), statistics.median(times)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--repeats", type=int, default=41)
    repeats = parser.parse_args().repeats

    raw = render_once()
    pixels = raw.pixels()
    x, y, channel = pixels.shape[0] // 2, pixels.shape[1] // 3, pixels.shape[2] - 1
    assert pixels[x, y, channel] == np.float32(raw.getLightQuantity(channel, x, y, nemra.Raw.quantity.Raw))
    assert np.isfinite(pixels).all() and pixels.any()

    print(f"{pixels.shape}, ns per element: least (median) of {repeats} calls")
    least = {}
    for name, call, size in (
        ("pixels()", raw.pixels, pixels.size),
        ("metaPixels('spp')", lambda: raw.metaPixels("spp"), pixels[..., 0].size),
        ("numpy copy", pixels.copy, pixels.size),
    ):
        least[name], median = (1e9 * seconds / size for seconds in times_of(call, repeats))
        print(f"{name:18}{least[name]:6.2f} ({median:.2f})")
    print(f"pixels() takes {least['pixels()'] / least['numpy copy']:.1f} times as long as the copy")


if __name__ == "__main__":
    main()
