"""Reflectances, 0 to 1, read linearly between the samples; the first and the last one hold outside."""

import json
from collections.abc import Iterator

from .nodes import BSD3, DATA, FACTS, LIBRARY, PUBLIC_DOMAIN, Node, number, read_columns, spectrum

FOLDER = LIBRARY / "reflectance"
USGS = "USGS Spectral Library Version 7 (Kokaly et al. 2017, doi 10.5066/F7RR1WDJ)"
PATCHES = [
    "dark skin",
    "light skin",
    "blue sky",
    "foliage",
    "blue flower",
    "bluish green",
    "orange",
    "purplish blue",
    "moderate red",
    "purple",
    "yellow green",
    "orange yellow",
    "blue",
    "green",
    "red",
    "yellow",
    "magenta",
    "cyan",
    "white",
    "neutral 8",
    "neutral 6.5",
    "neutral 5",
    "neutral 3.5",
    "black",
]
CRI = [
    "light greyish red",
    "dark greyish yellow",
    "strong yellow green",
    "moderate yellowish green",
    "light bluish green",
    "light blue",
    "light violet",
    "light reddish purple",
    "strong red",
    "strong yellow",
    "strong green",
    "strong blue",
    "human complexion",
    "leaf green",
]


def colorchecker() -> Iterator[Node]:
    table = read_columns(FOLDER / "colorchecker24_ohta_5nm.csv")
    columns = [name for name in table if name != "wavelength_nm"]
    for i, (column, patch) in enumerate(zip(columns, PATCHES, strict=True), 1):
        if not column.startswith(patch.replace(" ", "_").replace(".", "_")):
            raise ValueError(f"the chart's patch {i} is {column} and not {patch}")
        yield spectrum(
            f"colorchecker_{i:02}_{patch.replace(' ', '_')}",
            table["wavelength_nm"],
            table[column],
            hold=True,
            summary=f"Reflectance of patch {i} of the 24-patch colour chart, {patch}",
            source="N. Ohta (1997), equal to ISO 17321-1",
            licence=BSD3,
        )


def cri_samples() -> Iterator[Node]:
    table = read_columns(FOLDER / "cie_cri_test_samples_5nm.csv")
    for i, look in enumerate(CRI, 1):
        yield spectrum(
            f"cri_tcs{i:02}",
            table["wavelength_nm"],
            table[f"TCS{i:02}"],
            hold=True,
            summary=f"Reflectance of colour rendering test sample {i}, {look}",
            source="CIE 13.3-1995",
            licence=BSD3,
        )


def usgs() -> Iterator[Node]:
    table = read_columns(FOLDER / "usgs_materials_5nm.csv")
    for column, values in table.items():
        if column != "wavelength_nm":
            yield spectrum(
                f"usgs_{column}",
                table["wavelength_nm"],
                values,
                hold=True,
                source=USGS,
                licence=PUBLIC_DOMAIN,
                summary=f"Reflectance of the sample {column.replace('_', ' ')}",
                notes="Every 5 nm, smoothed over 15 nm, by the public copy at HendrikGC02/Astroray (MIT).",
            )
    table = read_columns(FOLDER / "lawn_grass_usgs_10nm.csv")
    yield spectrum(
        "usgs_lawn_grass_gds91",
        table["wavelength_nm"],
        table["lawn_grass"],
        hold=True,
        source=USGS,
        licence=PUBLIC_DOMAIN,
        summary="Reflectance of green lawn grass",
        notes="Every 10 nm.",
    )


def cornell() -> Iterator[Node]:
    table = read_columns(DATA / "cornell" / "cornell_reflectances.csv")
    source = json.loads((DATA / "cornell" / "cornell_geometry.json").read_text(encoding="ascii"))["source"]
    for name in ("white", "green", "red"):
        yield spectrum(
            f"cornell_{name}",
            table["wavelength_nm"],
            [number(float(v)) for v in table[name]],
            hold=True,
            licence=FACTS,
            summary=f"Reflectance of the {name} paint of the Cornell box",
            source=source.rstrip("."),
        )
