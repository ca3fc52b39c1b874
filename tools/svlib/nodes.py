"""Nodes of a library and how they are written as svxml; the data files from which they come."""

import csv
import textwrap
from collections.abc import Sequence
from dataclasses import dataclass, field
from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

DATA = Path(__file__).resolve().parents[2] / "sarvo" / "data"
LIBRARY = DATA / "library"

BSD3 = "BSD 3-Clause, copyright 2013 Colour Developers; numbers copied unchanged from colour-science 0.4.7"
CC0 = "CC0 1.0, from the refractiveindex.info database"
PUBLIC_DOMAIN = "public domain, work of the US Geological Survey"
FACTS = "none needed: published numbers are facts"


@dataclass
class Node:
    """`parameters` come as (name, value), `columns` of the table `samples` as name and cells."""

    family: str
    type: str
    name: str
    summary: str
    source: str
    licence: str
    notes: str = ""
    parameters: list[tuple[str, str]] = field(default_factory=list)
    columns: dict[str, Sequence[str]] = field(default_factory=dict)

    def comments(self) -> str:
        lines = [self.summary + ".", self.notes, f"Source: {self.source}.", f"Licence: {self.licence}."]
        return "\n".join(line for line in lines if line)

    def lines(self) -> list[str]:
        lines = [f"    <node family={quoteattr(self.family)} type={quoteattr(self.type)} name={quoteattr(self.name)}>"]
        lines.append(f"        <comments>{escape(self.comments())}</comments>")
        if self.columns:
            lines.append('        <table name="samples">')
            for name, cells in self.columns.items():
                lines.append(f'            <column name="{name}">')
                lines += textwrap.wrap(" ".join(cells), 126, initial_indent=" " * 16, subsequent_indent=" " * 16)
                lines.append("            </column>")
            lines.append("        </table>")
        lines += [f'        <parameter name="{name}" value={quoteattr(value)}/>' for name, value in self.parameters]
        return [*lines, "    </node>"]


def document(title: str, nodes: list[Node]) -> str:
    names = [(node.family, node.name) for node in nodes]
    if len(set(names)) != len(names):
        raise ValueError(f"{title}: a name is there twice")
    lines = [
        '<?xml version="1.0" encoding="UTF-8"?>',
        f"<!-- {title}. Made by tools/make_svlib.py; sources and licences: README.txt. -->",
    ]
    lines.append('<scene version="1">')
    for node in nodes:
        lines += node.lines()
    return "\n".join([*lines, "</scene>", ""])


def read_columns(file: Path) -> dict[str, list[str]]:
    """The columns of a table whose first line is a comment, digits as they stand."""
    with file.open(encoding="ascii", newline="") as lines:
        next(lines)
        rows = list(csv.DictReader(lines))
    return {name: [row[name] for row in rows] for name in rows[0]}


def number(value: float, digits: int = 9) -> str:
    return f"{value:.{digits}g}"


def spectrum(
    name: str,
    wavelengths: Sequence[str],
    values: Sequence[str],
    *,
    hold: bool,
    cubic: bool = False,
    scale: str = "",
    **about: str,
) -> Node:
    parameters = [("interpolation", "cubic")] if cubic else []
    parameters += [("extrapolation", "hold")] if hold else []
    parameters += [("scale", scale)] if scale else []
    return Node(
        "spectrum", "tabulated", name, parameters=parameters, columns={"wavelength": wavelengths, "value": values}, **about
    )


def index(
    name: str, wavelengths: Sequence[str], n: Sequence[str], k: Sequence[str], *, cubic: bool = False, **about: str
) -> Node:
    parameters = [("interpolation", "cubic")] if cubic else []
    return Node("dielectricfunc", "nk", name, parameters=parameters, columns={"wavelength": wavelengths, "n": n, "k": k}, **about)
