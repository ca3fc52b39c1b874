"""What updates and statistics cost a render, in processor time by thread, which other programs on the machine change little.

Direct: threads that exist for it (conductor, callbacks), beside the render threads, in the beginning of renders with and without
onUpdate and onStatisticsUpdate. All times are the processor's; on a busy machine they only take longer to come. Indirect: what render
threads take longer for a sample since others read their film (locks, caches); too little to be seen at the usual rate, so updates are
forced many times a second in every other window, and what one of them costs is scaled to the usual rate.

    PYTHONPATH=build/python python benchmarks/update_cost.py [--sizes 512 2048] [--seconds 60] [--windows 12]
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


def direct(size, threads, moments, listens):
    """Render threads, conductor, callbacks in s, when the render threads have had as much as `moments` say; and updates seen by then."""
    render = Render(size, threads)
    if listens:
        render.listen(True)
    assert render.start()
    before, rows = thread_seconds(), []
    for at in moments:
        while since(before).get("nemra-render", 0.0) < at:
            time.sleep(0.05)
        spent = since(before)
        rows.append((*(spent.get(f"nemra-{name}", 0.0) for name in ("render", "conduct", "callback")), render.updates))
    render.stop()
    return rows


def indirect(size, threads, windows):
    """s that render threads take longer because of one update: mean and standard error."""
    render = Render(size, threads)
    assert render.start()
    while render.samples() < 2 * size * size:  # the first touch of memory, and short passes
        time.sleep(0.05)
    costs, last = [], None
    for window in range(2 * windows + 1):  # every other one without
        listens = window % 2 == 1
        render.listen(listens)
        time.sleep(0.1)
        before, done, seen = thread_seconds(), render.samples(), render.updates
        while since(before)["nemra-render"] < 1.5:
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
    parser.add_argument("--seconds", type=float, default=60.0, help="of the render threads, in each render that is asked for updates")
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--windows", type=int, default=12)
    options = parser.parse_args()

    for size in options.sizes:
        (render, conduct, callback, none), = direct(size, options.threads, [options.seconds / 4], False)
        heard = direct(size, options.threads, [options.seconds * part for part in (1 / 6, 1 / 2, 1)], True)
        assert heard[-1][3] > 0, "no update came: give it more seconds"
        assert none == 0
        extra, error = indirect(size, options.threads, options.windows)
        print(f"{size} x {size}, {options.threads} threads; an update costs render threads {1e3 * extra:.1f} +- {1e3 * error:.1f} ms")
        print(f"  first {render:4.0f} s without a callback: {100 * (conduct + callback) / render:.3f} % of the render threads' time")
        for render, conduct, callback, updates in heard:
            print(f"  first {render:4.0f} s, {updates} updates: conductor {100 * conduct / render:.3f} %, callbacks {100 * callback / render:.3f} %, "
                  f"indirectly {100 * updates * extra / render:.3f} +- {100 * updates * error / render:.3f} %", flush=True)


if __name__ == "__main__":
    main()
