"""What updates and statistics cost a render, in processor time by thread, which other programs on the machine don't change.

Direct: threads that exist for it (conductor, callbacks), beside the render threads, in the first seconds of renders with and without
onUpdate and onStatisticsUpdate. Indirect: what render threads take longer for a sample since others read their film (locks, caches); too
little to be seen at the usual rate, so updates are forced many times a second in every other window, and what one of them costs is
scaled to the usual rate.

    PYTHONPATH=build/python python benchmarks/update_cost.py [--sizes 512 2048] [--seconds 30] [--windows 12]
"""

import argparse
import math
import pathlib
import statistics
import threading
import time

from sarvo import examples, nemra

BOX = pathlib.Path(examples["cornellbox"]).read_bytes()
FORCED = 0.1  # s between forced updates


def thread_seconds():
    """Processor time of this process's threads so far, added up by their names."""
    times = {}
    for task in pathlib.Path("/proc/self/task").iterdir():
        try:
            name = (task / "comm").read_text().strip()
            spent = int((task / "schedstat").read_text().split()[0]) * 1e-9
        except OSError:  # it has just ended
            continue
        times[name] = times.get(name, 0.0) + spent
    return times


def since(before):
    return {name: spent - before.get(name, 0.0) for name, spent in thread_seconds().items()}


class Render:
    """A render of the box with that many pixels a side."""

    def __init__(self, size, threads):
        scene = BOX.replace(b'value="512"', b'value="%d"' % size)
        self.updates = 0
        self.ended = threading.Event()
        self.renderer = nemra.Renderer()
        self.renderer.setParameter("num_threads", threads)
        self.renderer.addLocalNode()
        self.renderer.setHaltCondition(0, 0, nemra.Renderer.halt_cond.stops)
        self.renderer.onFinish(lambda raw: self.ended.set())
        self.start = lambda: self.renderer.startData(scene, len(scene))

    def listen(self, on):
        self.renderer.onUpdate(self.count if on else None)
        self.renderer.onStatisticsUpdate((lambda: None) if on else None)

    def count(self, raw):
        self.updates += 1

    def samples(self):
        return self.renderer.getStatistic(nemra.Renderer.samples)

    def stop(self):
        self.renderer.stop()
        self.ended.wait()


def direct(size, threads, seconds, listens):
    """Render threads, conductor, callbacks in s of the processor, at a few moments; and updates seen by then."""
    render = Render(size, threads)
    if listens:
        render.listen(True)
    assert render.start()
    before, began, rows = thread_seconds(), time.monotonic(), []
    for at in (seconds / 6, seconds / 2, seconds):
        time.sleep(max(0.0, began + at - time.monotonic()))
        spent = since(before)
        rows.append((at, *(spent.get(f"nemra-{name}", 0.0) for name in ("render", "conduct", "callback")), render.updates))
    render.stop()
    return rows


def indirect(size, threads, windows):
    """s that render threads take longer because of one update: mean and standard error."""
    render = Render(size, threads)
    assert render.start()
    while render.samples() < 2 * size * size:  # the first touch of memory, and short passes
        time.sleep(0.05)
    costs, last = [], None
    for window in range(2 * windows + 1):
        listens = window % 2 == 1
        render.listen(listens)
        time.sleep(0.1)
        before, done, seen = thread_seconds(), render.samples(), render.updates
        until = time.monotonic() + 2.0
        while time.monotonic() < until:
            if listens:
                render.renderer.updateRaw()
            time.sleep(FORCED)
        spent = since(before)["nemra-render"]
        rate = spent / (render.samples() - done)
        if listens:
            middle = (spent, render.samples() - done, max(1, render.updates - seen))
        elif last is not None and window > 1:
            quiet = 0.5 * (last + rate)  # of the windows on both sides, as the machine's speed drifts
            costs.append((middle[0] - quiet * middle[1]) / middle[2])
        if not listens:
            last = rate
    render.stop()
    return statistics.mean(costs), statistics.stdev(costs) / math.sqrt(len(costs))


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", type=int, nargs="+", default=[512, 2048], help="pixels a side")
    parser.add_argument("--seconds", type=float, default=30.0)
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--windows", type=int, default=12)
    options = parser.parse_args()

    for size in options.sizes:
        quiet = direct(size, options.threads, options.seconds, False)
        heard = direct(size, options.threads, options.seconds, True)
        assert heard[-1][4] > 0 and quiet[-1][4] == 0, "updates come when they are wanted, and only then"
        extra, error = indirect(size, options.threads, options.windows)
        print(f"{size} x {size}, {options.threads} threads; an update costs render threads {1e3 * extra:.1f} +- {1e3 * error:.1f} ms")
        for (at, render, conduct, callback, _), (_, r, c, d, updates) in zip(quiet, heard, strict=True):
            indirectly = updates * extra / r
            print(f"  first {at:4.0f} s: without {100 * (conduct + callback) / render:.3f} %, with {updates} updates: conductor "
                  f"{100 * c / r:.3f} %, callbacks {100 * d / r:.3f} %, indirectly {100 * indirectly:.3f} +- "
                  f"{100 * updates * error / r:.3f} % of the render threads' time")


if __name__ == "__main__":
    main()
