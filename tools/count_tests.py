"""Adds up JUnit reports and prints one closing line: N passed, N failed, N skipped. A report that is missing is a failure."""

import sys
import xml.etree.ElementTree as ElementTree


def count(path: str) -> tuple[int, int, int]:
    passed = failed = skipped = 0
    for case in ElementTree.parse(path).iter("testcase"):
        kinds = {child.tag for child in case}
        if kinds & {"failure", "error"}:
            failed += 1
        elif "skipped" in kinds:
            skipped += 1
        else:
            passed += 1
    return passed, failed, skipped


def main(paths: list[str]) -> int:
    total = [0, 0, 0]
    for path in paths:
        try:
            counts = count(path)
        except (OSError, ElementTree.ParseError) as fault:
            print(f"{path}: {fault}")
            counts = (0, 1, 0)
        print(f"  {counts[0]:5d} good {counts[1]:3d} bad {counts[2]:3d} left out  {path}")
        total = [a + b for a, b in zip(total, counts, strict=True)]
    print(f"{total[0]} passed, {total[1]} failed, {total[2]} skipped")
    return 1 if total[1] or not total[0] else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
