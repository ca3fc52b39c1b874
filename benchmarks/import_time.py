"""Time to import sarvo.nemra beside numpy, each in fresh processes, taken in turns; then what the engine takes of it."""

import argparse
import pathlib
import statistics
import subprocess
import sys

CODE = """
import time
began = time.perf_counter()
{statement}
print(time.perf_counter() - began)
"""
STATEMENTS = {"numpy": "import numpy", "sarvo.nemra": "from sarvo import nemra"}


# The engine alone, by its flat interface: what the module asks of it while it is imported.
SPLIT = """
import ctypes, pathlib, sys, time
folder = pathlib.Path(sys.argv[1])
clock = time.perf_counter
began = clock()
engine = [ctypes.CDLL(folder / f"lib{name}.so", mode=ctypes.RTLD_GLOBAL) for name in ("nemraCommon", "nemraNode", "nemra")]
loaded = clock()
node = engine[1]
node.nemraNode_register()
registered = clock()
node.nemraNode_create.restype = ctypes.c_void_p
for path in sys.argv[2].split():
    for _ in range(2):
        assert node.nemraNode_create(*(part.encode() for part in path.split("/")), b"dummy"), path
print(loaded - began, registered - loaded, clock() - registered)
"""


def split(repeats: int) -> None:
    from sarvo import nemra

    package = pathlib.Path(nemra.__file__).parent
    paths = []
    for family in vars(nemra.nodes).values():
        for entry in vars(family).values() if hasattr(family, "Linked") else ():
            made = entry("n") if isinstance(entry, type) else None
            if made is not None and made.getPtr():
                paths.append(f"{made.className()}/{made.typeName()}")
    command = [sys.executable, "-c", SPLIT, str(package / "lib"), " ".join(paths)]
    times = [[float(word) for word in subprocess.run(command, capture_output=True, text=True, check=True).stdout.split()] for _ in range(repeats)]
    libraries, registration, dummies = (1e3 * statistics.median(column) for column in zip(*times, strict=True))
    print(f"of these: libraries {libraries:.1f} ms, registration {registration:.1f} ms, two nodes of each of {len(paths)} classes {dummies:.1f} ms")


def measure(statement: str) -> float:
    result = subprocess.run([sys.executable, "-c", CODE.format(statement=statement)], capture_output=True, text=True, check=True)
    return float(result.stdout)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--repeats", type=int, default=11)
    repeats = parser.parse_args().repeats

    times: dict[str, list[float]] = {name: [] for name in STATEMENTS}
    for i in range(repeats + 1):
        for name, statement in STATEMENTS.items():
            seconds = measure(statement)
            if i:  # the first round fills the file cache
                times[name].append(seconds)
    medians = {name: statistics.median(values) for name, values in times.items()}
    for name, values in times.items():
        print(f"import {name:12s} {1e3 * medians[name]:7.1f} ms   (median of {repeats}, least {1e3 * min(values):.1f} ms)")
    print(f"ratio {medians['sarvo.nemra'] / medians['numpy']:.2f}")
    split(repeats)


if __name__ == "__main__":
    main()
