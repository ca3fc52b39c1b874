"""Refractive indices. A material whose index comes from a formula is there twice under one name: as a node of family
dielectricfunc (n and k) and as one of family spectrum (n)."""

import json
import math
from collections.abc import Callable, Iterator

from .curves import errors, linear, rows_for
from .nodes import CC0, FACTS, LIBRARY, Node, index, number, read_columns, spectrum

FOLDER = LIBRARY / "nk"
#: Of n in a table. The catalogues give 5.
DECIMALS = 7
#: nm. No simulation of light that is seen, sensed by silicon or by InGaAs needs more.
FIRST, LAST = 250.0, 2500.0

METALS = {
    "Au": "Gold",
    "Ag": "Silver",
    "Cu": "Copper",
    "Cr": "Chromium",
    "Fe": "Iron",
    "Ni": "Nickel",
    "Ti": "Titanium",
    "Al": "Aluminium",
}
AUTHORS = {
    "johnson": "P. B. Johnson and R. W. Christy, Phys. Rev. B {}",
    "mcpeak": "K. M. McPeak et al., ACS Photonics 2, 326 (2015)",
    "rakic": "A. D. Rakic, Appl. Opt. 34, 4755 (1995)",
}


def measured(file: str, summary: str, source: str) -> Node:
    table = read_columns(FOLDER / f"{file}.csv")
    return index(
        file,
        table["wavelength_nm"],
        table["n"],
        table["k"],
        summary=summary,
        source=source,
        licence=CC0,
        notes="Rows as measured; linear between them.",
    )


def metals() -> Iterator[Node]:
    for path in sorted(FOLDER.glob("*.csv")):
        symbol, _, author = path.stem.partition("_")
        if symbol in METALS:
            paper = AUTHORS[author].format("6, 4370 (1972)" if symbol in ("Au", "Ag", "Cu") else "9, 5056 (1974)")
            what = " (smooth template-stripped film)" if author == "mcpeak" else ""
            yield measured(path.stem, f"{METALS[symbol]}{what}, n + ik", paper)


def semiconductors() -> Iterator[Node]:
    yield measured("Si_aspnes", "Crystalline silicon, n + ik", "D. E. Aspnes and A. A. Studna, Phys. Rev. B 27, 985 (1983)")
    yield measured("Si_schinke", "Crystalline silicon at 295 K, n + ik", "C. Schinke et al., AIP Advances 5, 67168 (2015)")


def sellmeier(material: dict) -> Callable[[float], float]:
    terms = list(zip(material["B"], material["C_um2"], strict=True))

    def n(wavelength: float) -> float:
        square = (wavelength / 1000.0) ** 2
        return math.sqrt(1.0 + material["A"] + sum(b * square / (square - c) for b, c in terms))

    return n


def from_formula(
    name: str,
    n: Callable[[float], float],
    first: float,
    last: float,
    k: tuple[list[float], list[float]] | None = None,
    step: float | None = None,
    decimals: int = DECIMALS,
    **about: str,
) -> Iterator[Node]:
    """k as wavelengths and values, linear in its logarithm between them, or None for 0. Rows every `step` nm, or where n needs
    them. The error of n is held to ten units of its last decimal."""
    first, last = math.ceil(max(first, FIRST)), math.floor(min(last, LAST))
    tolerance = 10.0 ** (1 - decimals)
    if step:
        rows = [first + i * step for i in range(int((last - first) / step) + 1)]
    else:
        rows = rows_for(n, first, last, tolerance, decimals)
    error = max(errors(n, rows, decimals))
    if error > tolerance:
        raise ValueError(f"{name}: n is only good to {error:.1e}")
    table = f"n by its formula from {rows[0]:g} to {rows[-1]:g} nm in {len(rows)} rows; between them within {error:.1e}."
    about["notes"] = f"{table} {about['notes']}"
    wavelengths = [number(v) for v in rows]
    values = [f"{n(v):.{decimals}f}" for v in rows]
    yield spectrum(name, wavelengths, values, hold=True, cubic=True, **about)
    if k:
        curve = linear(k[0], [math.log(v) for v in k[1]])
        extinction = [number(math.exp(curve(min(max(v, k[0][0]), k[0][-1]))), 5) for v in rows]
    else:
        extinction = ["0"] * len(rows)
        about["notes"] += " Absorption isn't given: k is 0."
    about["summary"] = about["summary"].replace("index n", "index n + ik")
    yield index(name, wavelengths, values, extinction, cubic=True, **about)


def materials() -> dict[str, dict]:
    return {m["name"]: m for m in json.loads((FOLDER / "dispersion.json").read_text(encoding="ascii"))["materials"]}


def catalogued(material: dict, kind: str) -> Iterator[Node]:
    name = material["name"]
    k_file = FOLDER / f"{name}_k.csv"
    k = None
    notes = ""
    if k_file.exists():
        table = read_columns(k_file)
        k = [float(v) for v in table["wavelength_nm"]], [float(v) for v in table["k"]]
        notes = "k from the catalogue's internal transmittance."
    relative = material["relative_to"]
    notes = (
        f"n relative to air, at wavelengths in air. {notes}"
        if relative == "air"
        else f"n as published, relative to {relative}. {notes}"
    )
    at = f" at {material['temperature_C']:g} C" if material.get("temperature_C") is not None else ""
    first, last = material["wavelength_range_nm"]
    licence = CC0 if material["licence"].startswith("CC0") else FACTS
    yield from from_formula(
        name,
        sellmeier(material),
        first,
        last,
        k,
        summary=f"{kind}{at}, index n",
        source=material["reference"],
        licence=licence,
        notes=notes.strip(),
    )


def glasses() -> Iterator[Node]:
    for material in materials().values():
        if "catalogue_nd" in material:
            kind = f"Optical glass {material['name']} (n_d {material['catalogue_nd']:.5f}, V_d {material['catalogue_Vd']:.2f})"
            yield from catalogued(material, kind)
    yield from catalogued(materials()["fused_silica"], "Fused silica")


def dielectrics() -> Iterator[Node]:
    kinds = {
        "sapphire_ordinary": "Sapphire, ordinary ray",
        "sapphire_extraordinary": "Sapphire, extraordinary ray",
        "diamond": "Diamond",
        "CaF2": "Calcium fluoride",
        "MgF2_ordinary": "Magnesium fluoride, ordinary ray",
        "MgF2_extraordinary": "Magnesium fluoride, extraordinary ray",
        "polycarbonate": "Polycarbonate",
        "PMMA": "PMMA (acrylic glass)",
    }
    for name, kind in kinds.items():
        yield from catalogued(materials()[name], kind)
    ciddor = json.loads((FOLDER / "dispersion.json").read_text(encoding="ascii"))["air_ciddor"]

    def air(wavelength: float) -> float:
        square = (1000.0 / wavelength) ** 2
        return 1.0 + 1.0e-8 * (ciddor["k1"] / (ciddor["k0"] - square) + ciddor["k3"] / (ciddor["k2"] - square))

    yield from from_formula(
        "air",
        air,
        230.0,
        1690.0,
        decimals=10,
        summary="Standard dry air (15 C, 101325 Pa, 450 ppm CO2), index n",
        source="P. E. Ciddor, Appl. Opt. 35, 1566 (1996)",
        licence=FACTS,
        notes="n relative to vacuum.",
    )


def absorption_to_k(wavelengths: list[str], per_metre: list[str]) -> list[float]:
    return [float(a) * float(w) * 1.0e-9 / (4.0 * math.pi) for w, a in zip(wavelengths, per_metre, strict=True)]


def water() -> Iterator[Node]:
    yield measured("H2O_hale", "Water at 25 C, n + ik", "G. M. Hale and M. R. Querry, Appl. Opt. 12, 555 (1973)")
    yield measured(
        "H2O_segelstein",
        "Water at 25 C, n + ik; n is about 0.0007 high in the visible",
        "D. J. Segelstein, MSc thesis, University of Missouri (1981)",
    )
    fry = read_columns(FOLDER / "water_absorption_popefry.csv")
    segelstein = read_columns(FOLDER / "H2O_segelstein.csv")
    visible = [float(v) for v in fry["wavelength_nm"]]
    pairs = list(zip(visible, absorption_to_k(fry["wavelength_nm"], fry["absorption_per_m"]), strict=True))
    pairs += [
        (float(w), float(k))
        for w, k in zip(segelstein["wavelength_nm"], segelstein["k"], strict=True)
        if not visible[0] - 5 < float(w) < visible[-1] + 5
    ]
    pairs.sort()
    k = [w for w, _ in pairs], [v for _, v in pairs]
    for name, degrees in (("water_20C", 20), ("water_24C", 24)):
        material = materials()[name]
        first, last = material["wavelength_range_nm"]
        yield from from_formula(
            name,
            sellmeier(material),
            first,
            last,
            k,
            step=2.5,
            decimals=6,
            summary=f"Water at {degrees} C, index n",
            licence=f"n {CC0}; k {FACTS}",
            source=material["reference"] + "; k from 380 to 700 nm R. M. Pope and E. S. Fry, Appl. Opt. 36, 8710 (1997), "
            "outside D. J. Segelstein (1981)",
            notes="n relative to air, at wavelengths in air.",
        )
    yield spectrum(
        "water_absorption_popefry",
        fry["wavelength_nm"],
        fry["absorption_per_m"],
        hold=True,
        summary="Absorption coefficient of pure water, 1/m",
        source="R. M. Pope and E. S. Fry, Appl. Opt. 36, 8710 (1997)",
        licence=FACTS,
    )
