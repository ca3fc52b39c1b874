"""What render workers bring and cost, on this machine: two workers of one thread each beside one, a worker beside a local thread, and
the time from start to the first sample. Ratios within one run; the middle of several turns taken alternately.

    PYTHONPATH=build/python python benchmarks/worker_rate.py [--seconds 3] [--turns 5] [--triangles 1000000]
"""

import argparse
import contextlib
import io
import os
import pathlib
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


def rate(scene, seconds, **nodes):
    """Samples per second, from 256 samples per pixel on: before that pieces have fewer samples, and more of them travel."""
    made, ended = renderer(scene, **nodes)
    assert made.startData(scene, len(scene))
    samples = nemra.Renderer.samples
    while made.getStatistic(nemra.Renderer.spp) < 256:
        time.sleep(0.005)
    began, before = time.monotonic(), made.getStatistic(samples)
    time.sleep(seconds)
    result = (made.getStatistic(samples) - before) / (time.monotonic() - began)
    made.stop()
    ended.wait()
    return result


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


def middle(turns):
    return {name: statistics.median(values) for name, values in turns.items()}


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


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--seconds", type=float, default=3.0)
    parser.add_argument("--turns", type=int, default=5)
    parser.add_argument("--triangles", type=int, default=1_000_000)
    options = parser.parse_args()

    with worker() as one, worker() as other:
        cases = {"local": {"threads": 1}, "one": {"addresses": [one]}, "two": {"addresses": [one, other]}}
        turns = {name: [] for name in cases}
        for _ in range(options.turns):
            for name, nodes in cases.items():
                turns[name].append(rate(BOX, options.seconds, **nodes))
        found = middle(turns)
        print(f"one worker of one thread: {found['one'] / found['local']:.2f} times a local thread ({found['local'] / 1e6:.2f} M samples/s)")
        ratios = sorted(two / single for two, single in zip(turns["two"], turns["one"], strict=True))
        print(f"two workers of one thread: {found['two'] / found['one']:.2f} times one ({ratios[0]:.2f} to {ratios[-1]:.2f})")

        scene = big_scene(options.triangles)
        print(f"scene of {options.triangles} triangles, {len(scene) / 1e6:.0f} MB in svbin, from start to the first sample:")
        local = first_sample(scene, threads=1)
        away = first_sample(scene, addresses=[one])
        again = first_sample(scene, addresses=[one])
        print(f"  local {local:.2f} s; worker {away / local:.2f} times that, and {again / local:.2f} times when it has the scene already")


if __name__ == "__main__":
    main()
