"""What render workers bring and cost, on this machine: two workers of one thread each beside one, beside what two local threads bring,
what the client takes of the processor, short renders, and the time from start to the first sample. Ratios within one run, whose cases
take turns.

    PYTHONPATH=build/python python benchmarks/worker_rate.py [--seconds 0.5] [--turns 20] [--spp 256] [--triangles 1000000]
"""

import argparse
import contextlib
import io
import os
import pathlib
import socket
import statistics
import subprocess
import sys
import threading
import time

import numpy

from sarvo import examples, nemra

BOX = pathlib.Path(examples["cornellbox"]).read_bytes().replace(b'value="512"', b'value="256"')
PASSWORD = "benchmark"


@contextlib.contextmanager
def worker(threads=1):
    """Address of a worker process."""
    process = subprocess.Popen([sys.executable, "-m", "sarvo", "worker", "--threads", str(threads), "-q"], stdout=subprocess.PIPE,
                               stderr=subprocess.DEVNULL, text=True, env={**os.environ, "SARVO_PASSWORD": PASSWORD})
    try:
        yield f"127.0.0.1:{process.stdout.readline().split()[-1]}"
    finally:
        process.terminate()
        process.wait()


def renderer(scene, addresses=(), threads=0):
    made = nemra.Renderer()
    made.setParameter("password", PASSWORD)
    for address in addresses:
        made.setParameter("remote_host", address)
        made.addRemoteNode()
    if threads:
        made.setParameter("num_threads", threads)
        made.addLocalNode()
    ended = threading.Event()
    made.onFinish(lambda raw: ended.set())
    return made, ended


class Standing:
    """A render that rests but for the windows in which it is measured: cases that take turns by the half second see the same
    machine, whose speed drifts by more than what is looked for."""

    def __init__(self, scene, **nodes):
        self.made, self.ended = renderer(scene, **nodes)
        assert self.made.startData(scene, len(scene))

    def pause(self, on):
        assert self.made.togglePause(on)

    def samples(self):
        return self.made.getStatistic(nemra.Renderer.samples)

    def warm(self, spp):
        while self.made.getStatistic(nemra.Renderer.spp) < spp:
            time.sleep(0.005)
        self.pause(True)

    def window(self, seconds):
        """Samples per second, and of this process: the processor's time for each second and each million samples."""
        self.pause(False)
        time.sleep(0.1)
        began, before, busy = time.monotonic(), self.samples(), time.process_time()
        time.sleep(seconds)
        took, samples, busy = time.monotonic() - began, self.samples() - before, time.process_time() - busy
        self.pause(True)
        time.sleep(0.05)  # for what is on its way
        return samples / took, busy / took, busy / samples * 1e6

    def end(self):
        self.made.stop()
        self.ended.wait()


def bytes_from(addresses):
    """That this process has received from these workers."""
    received = 0
    for link in pathlib.Path("/proc/self/fd").iterdir():
        with contextlib.suppress(OSError):
            if not os.readlink(link).startswith("socket:"):
                continue
            one = socket.socket(fileno=os.dup(int(link.name)))
        with contextlib.suppress(OSError), one:
            host, port = one.getpeername()[:2]
            if f"{host}:{port}" in addresses:
                info = one.getsockopt(socket.IPPROTO_TCP, socket.TCP_INFO, 136)
                received += int.from_bytes(info[128:], sys.byteorder)  # tcpi_bytes_received of linux/tcp.h
    return received


def speed_up(seconds, turns, spp):
    """Two workers beside one, and what two threads bring here at all, both from `spp` samples per pixel on: pieces are small in the
    beginning of a render, and more of them travel."""
    with worker() as first, worker() as second, worker() as third:
        cases = {"thread": Standing(BOX, threads=1), "threads": Standing(BOX, threads=2), "one": Standing(BOX, addresses=[first]),
                 "two": Standing(BOX, addresses=[second, third])}
        for case in cases.values():
            case.pause(True)
        for case in cases.values():
            case.pause(False)
            case.warm(spp)
        found = {name: [] for name in cases}
        travelled = made = 0
        for _ in range(turns):
            for name, case in cases.items():
                bytes_before, samples_before = bytes_from([second, third]), case.samples()
                found[name].append(case.window(seconds))
                if name == "two":
                    travelled += bytes_from([second, third]) - bytes_before
                    made += case.samples() - samples_before
        for case in cases.values():
            case.end()
    rates = {name: [window[0] for window in windows] for name, windows in found.items()}

    def ratio(above, below):
        """Middle of the turns, and between which values their inner half lies."""
        low, middle, high = statistics.quantiles([a / b for a, b in zip(rates[above], rates[below], strict=True)], n=4)
        return f"{middle:.2f} times ({low:.2f} to {high:.2f})"

    print(f"from {spp} samples per pixel on, middle of {turns} turns (their inner half):")
    print(f"  a local thread: {statistics.median(rates['thread']) / 1e6:.2f} M samples/s; two of them: {ratio('threads', 'thread')}, the ceiling")
    print(f"  one worker of one thread: {ratio('one', 'thread')} a local thread")
    print(f"  two workers of one thread: {ratio('two', 'one')} one, {ratio('two', 'threads')} two local threads")
    share = statistics.median(window[1] for window in found["two"])
    each = statistics.median(window[2] for window in found["two"])
    piece = 16 * 16 * 81 + 32
    print(f"  the client of two: {100 * share:.1f} % of a core, {1e3 * each:.2f} ms for a million samples, "
          f"{1e3 * each / (travelled / made * 1e6 / piece):.2f} ms for each {piece / 1e3:.1f} kB, which is {made / (travelled / piece) / 256:.0f} samples "
          "of each pixel of a piece")


def whole_renders(turns):
    """Short renders from start to finish, where pieces are small and workers have yet to be told what to do."""
    def seconds(spp, **nodes):
        made, ended = renderer(BOX, **nodes)
        made.setHaltCondition(time=0, spp=spp, action=nemra.Renderer.halt_cond.stops)
        began = time.monotonic()
        assert made.startData(BOX, len(BOX))
        ended.wait()
        return time.monotonic() - began

    print("whole renders of 256 x 256 pixels on two workers of one thread, beside two local threads:")
    with worker() as first, worker() as second:
        for spp in (4, 16, 64, 256):
            pairs = [(seconds(spp, addresses=[first, second]), seconds(spp, threads=2)) for _ in range(turns)]
            print(f"  {spp:3} samples per pixel: {statistics.median(away / here for away, here in pairs):.2f} times "
                  f"{statistics.median(here for _, here in pairs):.2f} s")


def first_sample(scene, **nodes):
    """Seconds from start to the first sample."""
    made, ended = renderer(scene, **nodes)
    began = time.monotonic()
    assert made.startData(scene, len(scene))
    while made.getStatistic(nemra.Renderer.samples) == 0:
        time.sleep(0.001)
    took = time.monotonic() - began
    made.stop()
    ended.wait()
    return took


def big_scene(triangles):
    """The box with a wavy sheet of that many triangles in it, in svbin."""
    scene = nemra.nodes.Scene("big")
    assert scene.readBytes(BOX)
    side = int((triangles / 2) ** 0.5) + 1
    x, z = numpy.meshgrid(numpy.linspace(0.1, 0.4, side), numpy.linspace(0.1, 0.4, side))
    y = 0.1 + 0.02 * numpy.sin(60 * x) * numpy.sin(60 * z)
    corner = (numpy.arange(side - 1)[:, None] * side + numpy.arange(side - 1)[None, :]).ravel()
    indices = numpy.stack([corner, corner + 1, corner + side, corner + 1, corner + side + 1, corner + side], -1).reshape(-1, 3)
    vertices = numpy.stack([x, y, z], -1).reshape(-1, 3)
    mesh = nemra.nodes.geometries.Mesh("sheet", vertices, numpy.empty((0, 3), numpy.float32), indices.astype(numpy.int32))
    scene.add(mesh)
    instance = nemra.nodes.Instance()
    instance.setGeometryName("sheet")
    scene.add(instance)
    written = io.BytesIO()
    scene.write(written, scene.SVBIN)
    return written.getvalue()


def starts(triangles, turns):
    scene = big_scene(triangles)
    print(f"scene of {triangles} triangles, {len(scene) / 1e6:.0f} MB in svbin, from start to the first sample:")
    local, away, again = [], [], []
    for _ in range(turns):
        with worker() as one:
            local.append(first_sample(scene, threads=1))
            away.append(first_sample(scene, addresses=[one]))
            again.append(first_sample(scene, addresses=[one]))
    middle = statistics.median(local)
    print(f"  local {middle:.2f} s ({min(local):.2f} to {max(local):.2f}, as memory is new to the machine or not); "
          f"worker {statistics.median(away) / middle:.2f} times that, and {statistics.median(again) / middle:.2f} times when it has the scene already")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=float, default=0.5, help="of a window")
    parser.add_argument("--turns", type=int, default=20)
    parser.add_argument("--spp", type=int, default=256)
    parser.add_argument("--starts", type=int, default=3, help="turns of the large scene")
    parser.add_argument("--triangles", type=int, default=1_000_000, help="0 for no large scene")
    options = parser.parse_args()
    if options.turns > 1:
        speed_up(options.seconds, options.turns, options.spp)
        whole_renders(7)
    if options.triangles > 0:
        starts(options.triangles, options.starts)


if __name__ == "__main__":
    main()
