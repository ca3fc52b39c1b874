#!/usr/bin/env python3
"""Writes the package's libraries of named nodes, sarvo/svlib/*.svlib, from the data in sarvo/data/library (and the Cornell box's
paints from sarvo/data/cornell), and the list of what they hold in docs/library.md. With --check it compares instead.

Digits of measured values are copied as they stand. What comes from a formula is tabulated so finely that the engine's cubic
interpolation between the rows gives the formula back; the node's comments say which rows and how well.
"""

import sys
from collections.abc import Iterator
from pathlib import Path

from svlib.dielectrics import dielectrics, glasses, metals, semiconductors, water
from svlib.illuminants import illuminants
from svlib.nodes import Node, document
from svlib.reflectances import colorchecker, cornell, cri_samples, usgs

ROOT = Path(__file__).resolve().parent.parent
FOLDER = ROOT / "sarvo" / "svlib"
DOCS = ROOT / "docs" / "library.md"
BEGIN, END = "<!-- made by tools/make_svlib.py: begin -->\n", "<!-- end -->\n"

#: File, what it holds, what makes its nodes.
LIBRARIES = [
    ("colorchecker", "Colour chart of 24 patches, reflectance", colorchecker),
    ("cornell", "Paints of the Cornell box, reflectance", cornell),
    ("cri", "Test samples of the colour rendering index, reflectance", cri_samples),
    ("dielectrics", "Crystals, plastics and air, refractive index", dielectrics),
    ("glasses", "Optical glasses and fused silica, refractive index", glasses),
    ("illuminants", "Illuminants, relative spectral power of luminance 1 cd/m2", illuminants),
    ("metals", "Metals, complex refractive index", metals),
    ("semiconductors", "Silicon, complex refractive index", semiconductors),
    ("usgs", "Natural and man-made materials, reflectance", usgs),
    ("water", "Water, complex refractive index and absorption", water),
]


def catalogue(made: list[tuple[str, str, list[Node]]]) -> Iterator[str]:
    for file, title, nodes in made:
        yield f"\n### {file}.svlib: {title[0].lower()}{title[1:]}\n\n| name | family | what |\n|---|---|---|\n"
        for node in nodes:
            yield f"| `{node.name}` | {node.family} | {node.summary} |\n"


def main() -> int:
    made = [(file, title, list(make())) for file, title, make in LIBRARIES]
    texts = {FOLDER / f"{file}.svlib": document(title, nodes) for file, title, nodes in made}
    before, _, rest = DOCS.read_text(encoding="utf-8").partition(BEGIN)
    texts[DOCS] = before + BEGIN + "".join(catalogue(made)) + "\n" + END + rest.partition(END)[2]

    extra = {path for path in FOLDER.glob("*.svlib") if path not in texts}
    if sys.argv[1:] == ["--check"]:
        stale = [path for path, text in texts.items() if not path.exists() or path.read_text(encoding="utf-8") != text]
        for path in sorted([*stale, *extra]):
            print(f"{path} isn't what the data give: run {Path(__file__).name}", file=sys.stderr)
        return 1 if stale or extra else 0
    for path, text in texts.items():
        path.write_text(text, encoding="utf-8")
    for path in extra:
        path.unlink()
    return 0


if __name__ == "__main__":
    sys.exit(main())
