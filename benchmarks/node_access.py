"""Nodes from a script: a scalar parameter beside an empty bound method, a large table beside its copy, memory of many nodes."""

import argparse
import pathlib
import resource
import statistics
import sys
import time

import numpy as np

from sarvo import nemra

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "build" / "benchmarks"))
from empty_method import Empty  # noqa: E402

CALLS = 200_000


def time_per_call(call, *arguments) -> float:
    began = time.thread_time()
    for _ in range(CALLS):
        call(*arguments)
    return (time.thread_time() - began) / CALLS


def scalar(repeats: int) -> None:
    node = nemra.nodes.spectrum.Blackbody("b")
    empty = Empty()
    assert node.setTemperature(3000.0) and node.getTemperature() == 3000.0
    for name, ours, least in (("getter", (node.getTemperature,), (empty.get,)), ("setter", (node.setTemperature, 3000.0), (empty.set, 3000.0))):
        times = [(time_per_call(*ours), time_per_call(*least)) for _ in range(repeats)]  # in turns: a machine drifts
        mine, empties = (min(column) for column in zip(*times, strict=True))
        ratio = statistics.median(a / b for a, b in times)
        print(f"{name:22} {1e9 * mine:7.0f} ns   empty method {1e9 * empties:5.0f} ns   ratio {ratio:.1f}")


def table(rows: int, repeats: int) -> None:
    node = nemra.nodes.spectrum.Tabulated("t")
    columns = {"wavelength": np.linspace(300.0, 900.0, rows), "value": np.random.default_rng(1).random(rows)}
    cells = rows * len(columns)
    into, out = [], []
    for _ in range(repeats):
        began = time.thread_time()
        assert node.setSamples(columns)
        between = time.thread_time()
        back = node.getSamples()
        out.append(time.thread_time() - between)
        into.append(between - began)
    assert all((back[name] == columns[name]).all() for name in columns)
    print(f"table of {rows} rows   {1e9 * min(into) / cells:5.0f} ns per cell in, {1e9 * min(out) / cells:5.0f} out")


def memory(count: int) -> None:
    def resident() -> float:
        with open("/proc/self/statm", encoding="ascii") as file:
            return int(file.read().split()[1]) * resource.getpagesize()

    kept = [None] * count
    before = resident()
    began = time.thread_time()
    for i in range(count):
        kept[i] = nemra.nodes.spectrum.Uniform("n")
    seconds = time.thread_time() - began
    grown = resident() - before
    objects = [None] * count
    before = resident()
    for i in range(count):
        objects[i] = Empty()
    python = resident() - before
    print(f"{count} nodes          {grown / count:5.0f} bytes each, of these {python / count:.0f} for any bound object; {1e6 * seconds / count:.2f} us each")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--repeats", type=int, default=5)
    parser.add_argument("--rows", type=int, default=1_000_000)
    parser.add_argument("--nodes", type=int, default=1_000_000)
    arguments = parser.parse_args()
    scalar(arguments.repeats)
    table(arguments.rows, arguments.repeats)
    memory(arguments.nodes)


if __name__ == "__main__":
    main()
