#!/usr/bin/env python3
"""Writes sarvo/examples/cornellbox.svxml from the measured data in sarvo/data/cornell.

Lengths become metres. The ceiling is cut open around the lamp, so that the lamp's quad lies in the hole and no two faces
coincide. Faces are turned so that those of the room look inwards, those of the blocks outwards and the lamp's downwards.
"""

import csv
import json
import sys
from collections.abc import Iterable
from pathlib import Path
from xml.sax.saxutils import quoteattr

ROOT = Path(__file__).resolve().parent.parent
DATA = ROOT / "sarvo" / "data" / "cornell"
TARGET = ROOT / "sarvo" / "examples" / "cornellbox.svxml"

Point = tuple[float, float, float]
Face = list[Point]


def metres(millimetres: Iterable[float]) -> Point:
    x, y, z = (round(value / 1000.0, 7) for value in millimetres)
    return x, y, z


def read_columns(file: Path) -> dict[str, list[str]]:
    """The columns of a table whose first line is a comment, digits as they stand."""
    with file.open(encoding="ascii", newline="") as lines:
        next(lines)
        rows = list(csv.DictReader(lines))
    return {name: [row[name] for row in rows] for name in rows[0]}


def normal(face: Face) -> Point:
    """Of the face's diagonals, by the right-hand rule over its corners; not of unit length."""
    a = [face[2][k] - face[0][k] for k in range(3)]
    b = [face[3][k] - face[1][k] for k in range(3)]
    return a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]


def turned(face: Face, towards: Point) -> Face:
    """The face with its front to that point. The diagonal that cuts it in two triangles stays the same."""
    middle = [sum(corner[k] for corner in face) / 4.0 for k in range(3)]
    side = sum(n * (t - m) for n, t, m in zip(normal(face), towards, middle, strict=True))
    return face if side > 0.0 else [face[0], face[3], face[2], face[1]]


def centre(faces: list[Face]) -> Point:
    corners = [corner for face in faces for corner in face]
    x, y, z = ((min(c[k] for c in corners) + max(c[k] for c in corners)) / 2.0 for k in range(3))
    return x, y, z


def with_hole(face: Face, hole: Face) -> list[Face]:
    """A level rectangle without a rectangle inside it: a grid of three by three without its middle."""
    y = face[0][1]
    xs = sorted({p[0] for p in face} | {p[0] for p in hole})
    zs = sorted({p[2] for p in face} | {p[2] for p in hole})
    if len(xs) != 4 or len(zs) != 4 or any(p[1] != y for p in face + hole):
        raise ValueError("ceiling and hole must be level rectangles, one inside the other")
    return [
        [(xs[i], y, zs[j]), (xs[i + 1], y, zs[j]), (xs[i + 1], y, zs[j + 1]), (xs[i], y, zs[j + 1])]
        for i in range(3)
        for j in range(3)
        if (i, j) != (1, 1)
    ]


def surfaces(data: dict) -> list[tuple[str, str, list[Face]]]:
    """Name, material and faces of each surface."""
    published = {s["name"]: [[metres(p) for p in s["vertices"]]] for s in data["surfaces"]}
    holes = {s["name"]: [metres(p) for p in s["hole"]] for s in data["surfaces"] if "hole" in s}
    room = centre([faces[0] for name, faces in published.items() if "block" not in name])
    result = []
    for surface in data["surfaces"]:
        name = surface["name"]
        faces = published[name]
        if name in holes:
            faces = with_hole(faces[0], holes[name])
        if "_block_" in name:
            block = name.partition("_block_")[0]
            inside = centre([f[0] for other, f in published.items() if other.startswith(f"{block}_block_")])
            # Away from the block's middle: towards the point mirrored at the face.
            middle = centre(faces)
            towards = metres(1000.0 * (2.0 * m - i) for m, i in zip(middle, inside, strict=True))
        else:
            towards = room
        result.append((name, surface["material"], [turned(face, towards) for face in faces]))
    return result


def number_lines(rows: Iterable[Iterable[float]], indent: str) -> list[str]:
    return [indent + " ".join(f"{value:.10g}" for value in row) for row in rows]


def mesh(name: str, material: str, faces: list[Face]) -> list[str]:
    corners = list(dict.fromkeys(corner for face in faces for corner in face))
    index = {corner: i for i, corner in enumerate(corners)}
    triangles = [[index[face[i]] for i in corner] for face in faces for corner in ((0, 1, 2), (0, 2, 3))]
    return [
        f"    <mesh name={quoteattr(name)} material={quoteattr(material)}>",
        "        <vertices>",
        *number_lines(corners, " " * 12),
        "        </vertices>",
        "        <triangles>",
        *number_lines(triangles, " " * 12),
        "        </triangles>",
        "    </mesh>",
    ]


def samples(wavelengths: list[str], values: list[str], indent: str) -> list[str]:
    return [
        f'{indent}<table name="samples">',
        f'{indent}    <column name="wavelength">{" ".join(wavelengths)}</column>',
        f'{indent}    <column name="value">{" ".join(f"{float(v):.10g}" for v in values)}</column>',
        f"{indent}</table>",
    ]


def paint(name: str, wavelengths: list[str], values: list[str]) -> list[str]:
    return [
        f'    <node family="material" type="generic" name={quoteattr(name)}>',
        '        <child slot="bsdf" type="lambertian">',
        '            <child slot="reflectance" type="tabulated">',
        *samples(wavelengths, values, " " * 16),
        '                <parameter name="extrapolation" value="hold"/>',
        "            </child>",
        "        </child>",
        "    </node>",
    ]


def lamp(reflectance: float, light: dict[str, list[str]]) -> list[str]:
    return [
        '    <node family="material" type="generic" name="light">',
        '        <child slot="bsdf" type="lambertian">',
        '            <child slot="reflectance" type="uniform">',
        f'                <parameter name="value" value="{reflectance:.10g}"/>',
        "            </child>",
        "        </child>",
        '        <child slot="emitter" type="lambertian">',
        '            <parameter name="side" value="front"/>',
        '            <child slot="radiance" type="tabulated">',
        *samples(light["wavelength_nm"], light["emission"], " " * 16),
        "            </child>",
        "        </child>",
        "    </node>",
    ]


def setup(camera: dict) -> list[str]:
    position = metres(camera["position"])
    target = tuple(round(p + d, 7) for p, d in zip(position, camera["direction"], strict=True))

    def vector(values: Iterable[float]) -> str:
        return " ".join(f"{value:.10g}" for value in values)

    return [
        '    <node family="setup" type="default" name="default">',
        '        <child slot="instrument" type="stdcam">',
        f'            <parameter name="position" value="{vector(position)}"/>',
        f'            <parameter name="target" value="{vector(target)}"/>',
        f'            <parameter name="up" value="{vector(camera["up"])}"/>',
        f'            <parameter name="focal_length" value="{1000.0 * camera["focal_length"]:.10g}"/>',
        f'            <parameter name="film_width" value="{1000.0 * camera["film_width"]:.10g}"/>',
        f'            <parameter name="film_height" value="{1000.0 * camera["film_height"]:.10g}"/>',
        '            <parameter name="width" value="512"/>',
        '            <parameter name="height" value="512"/>',
        '            <child slot="sensor" type="ciexyz"/>',
        '            <item type="rgbimage" name="image"/>',
        "        </child>",
        "    </node>",
    ]


def scene() -> str:
    data = json.loads((DATA / "cornell_geometry.json").read_text(encoding="ascii"))
    paints = read_columns(DATA / "cornell_reflectances.csv")
    light = read_columns(DATA / "cornell_light.csv")
    parts = surfaces(data)
    lines = [
        '<?xml version="1.0" encoding="UTF-8"?>',
        "<!-- The measured Cornell box. Source of the measurements: " + data["source"] + ".",
        "     Made by tools/make_cornellbox.py. Metres; y up; the camera looks along +z, so +x is on the left of the picture.",
        "     The lamp's emission has no published unit: it is taken as W/(m2 sr nm). -->",
        '<scene version="1" name="cornellbox" active_setup="default">',
    ]
    for name in ("white", "green", "red"):
        lines += paint(name, paints["wavelength_nm"], paints[name])
    lines += lamp(data["light_reflectance"], light)
    lines += setup(data["camera"])
    for name, material, faces in parts:
        lines += mesh(name, material, faces)
    lines += [f"    <instance geometry={quoteattr(name)}/>" for name, _, _ in parts]
    lines += ["</scene>", ""]
    return "\n".join(lines)


def main() -> int:
    text = scene()
    if sys.argv[1:] == ["--check"]:
        current = TARGET.read_text(encoding="utf-8") if TARGET.exists() else ""
        if current != text:
            print(f"{TARGET} isn't what the data give: run {Path(__file__).name}", file=sys.stderr)
            return 1
        return 0
    TARGET.parent.mkdir(parents=True, exist_ok=True)
    TARGET.write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
