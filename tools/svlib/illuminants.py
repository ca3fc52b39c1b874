"""CIE illuminants. Each is scaled to a luminance of 1 cd/m2 when it is taken for a radiance in W/(m2 sr nm)."""

from collections.abc import Iterator, Sequence

from .curves import product_integral
from .nodes import BSD3, DATA, FACTS, LIBRARY, Node, number, read_columns, spectrum

FOLDER = LIBRARY / "illuminants"
#: lm/W, as the engine has it.
EFFICACY = 683.0
CIE_15 = "CIE 015:2018, Colorimetry"
SCALED = "Scaled to 1 cd/m2 when taken as a radiance in W/(m2 sr nm)"


def observer() -> tuple[list[float], list[float]]:
    table = read_columns(DATA.parents[1] / "tests" / "data" / "cmf" / "cie1931_2deg_xyz_1nm.csv")
    names = list(table)
    return [float(v) for v in table[names[0]]], [float(v) for v in table[names[2]]]


def illuminant(name: str, wavelengths: Sequence[str], values: Sequence[str], summary: str, source: str, notes: str = "") -> Node:
    x, y = observer()
    luminance = EFFICACY * product_integral([float(v) for v in wavelengths], [float(v) for v in values], x, y)
    notes = " ".join(part for part in (notes, SCALED + "; the samples are the published relative values.") if part)
    return spectrum(
        name,
        wavelengths,
        values,
        hold=False,
        scale=number(1.0 / luminance),
        summary=summary,
        source=source,
        licence=BSD3,
        notes=notes,
    )


def daylight_weights(nominal: float) -> tuple[float, float]:
    """M1 and M2 of the daylight series, rounded as the CIE does."""
    t = nominal * 1.4388 / 1.4380
    if t <= 7000:
        x = -4.6070e9 / t**3 + 2.9678e6 / t**2 + 99.11 / t + 0.244063
    else:
        x = -2.0064e9 / t**3 + 1.9018e6 / t**2 + 247.48 / t + 0.237040
    y = -3 * x * x + 2.870 * x - 0.275
    below = 0.0241 + 0.2562 * x - 0.7341 * y
    return round((-1.3515 - 1.7703 * x + 5.9114 * y) / below, 3), round((0.0300 - 31.4424 * x + 30.0717 * y) / below, 3)


def daylight() -> Iterator[Node]:
    table = read_columns(FOLDER / "cie_d_series_5nm.csv")
    series = read_columns(FOLDER / "cie_daylight_components_s0s1s2.csv")
    for column, nominal in (("D50", 5000), ("D55", 5500), ("D65", 6500), ("D75", 7500)):
        m1, m2 = daylight_weights(nominal)
        rebuilt = [
            float(a) + m1 * float(b) + m2 * float(c) for a, b, c in zip(series["S0"], series["S1"], series["S2"], strict=True)
        ]
        published = table[column]
        if max(abs(a - float(b)) for a, b in zip(rebuilt, published, strict=False)) > 1.0e-3:
            raise ValueError(f"{column} isn't the sum of the daylight components")
        values = [*published, *(number(v, 7) for v in rebuilt[len(published) :])]
        yield illuminant(
            f"cie_{column.lower()}",
            series["wavelength_nm"],
            values,
            f"Illuminant {column}, a phase of daylight of about {nominal} K",
            f"{CIE_15} and ISO/CIE 11664-2:2022",
            f"300 to 780 nm as published; 785 to 830 nm S0 + M1 S1 + M2 S2 with M1 = {m1:g}, M2 = {m2:g}.",
        )
    yield illuminant(
        "cie_c", table["wavelength_nm"], table["C"], "Illuminant C, average daylight without ultraviolet (historic)", CIE_15
    )


def illuminants() -> Iterator[Node]:
    # Planck's law with c2 = 0.01435 m K at 2848 K; the engine has c2 of CODATA 2018.
    yield Node(
        "spectrum",
        "blackbody",
        "cie_a",
        summary="Illuminant A, incandescent light",
        source=f"{CIE_15} and ISO/CIE 11664-2:2022",
        licence=FACTS,
        notes="Planck's law at 2848 K with c2 = 0.01435 m K, that is at 2855.4955 K with c2 of CODATA 2018. " + SCALED + ".",
        parameters=[
            ("temperature", number(2848 * 0.014387768775 / 0.01435, 8)),
            ("normalization", "luminance"),
            ("luminance", "1"),
        ],
    )
    yield from daylight()
    x, y = observer()
    level = 1.0 / (EFFICACY * product_integral([x[0], x[-1]], [1.0, 1.0], x, y))
    yield Node(
        "spectrum",
        "uniform",
        "cie_e",
        summary="Illuminant E, the same power at every wavelength",
        source=CIE_15,
        licence=FACTS,
        notes=SCALED + ".",
        parameters=[("value", number(level))],
    )

    kinds = {
        "cie_f1_f12_5nm": "fluorescent lamp; mercury lines spread over 5 nm",
        "cie_fl3_series_5nm": "fluorescent lamp of the 2004 series; mercury lines spread over 5 nm",
        "cie_hp1_hp5_5nm": "high-pressure discharge lamp",
        "cie_led_5nm": "LED lamp",
    }
    special = {
        "HP1": "standard high-pressure sodium lamp",
        "HP2": "colour-enhanced high-pressure sodium lamp",
        "HP3": "high-pressure metal halide lamp",
        "HP4": "high-pressure metal halide lamp",
        "HP5": "high-pressure metal halide lamp",
        "LED-BH1": "hybrid of phosphor-converted blue and red LED",
        "LED-RGB1": "LED lamp of red, green and blue",
        "LED-V1": "LED lamp of violet light and phosphors",
        "LED-V2": "LED lamp of violet light and phosphors",
    }
    for file, kind in kinds.items():
        table = read_columns(FOLDER / f"{file}.csv")
        for column, values in table.items():
            if column == "wavelength_nm":
                continue
            if column.startswith("LED-B") and column not in special:
                kind = "LED lamp of blue light and phosphor"
            name = "cie_" + column.lower().replace("-", "_")
            yield illuminant(name, table["wavelength_nm"], values, f"Illuminant {column}, {special.get(column, kind)}", CIE_15)
    for i in range(1, 13):
        yield Node(
            "spectrum",
            "linked",
            f"cie_f{i}",
            summary=f"Illuminant FL{i} under its older name F{i}",
            source=CIE_15,
            licence=FACTS,
            parameters=[("node", f"cie_fl{i}")],
        )
