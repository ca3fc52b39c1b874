"""Time to import sarvo.nemra beside numpy, each in fresh processes, taken in turns."""

import argparse
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


if __name__ == "__main__":
    main()
