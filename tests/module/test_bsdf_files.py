"""The scattering of a sample as XML for window simulation and as tables. What is expected comes from vectors in space and from angle
bounds that stand here once more, not from the engine's own."""

import csv
import io
import locale
import math
import xml.etree.ElementTree as ElementTree

import numpy as np
import OpenEXR
import pytest

from sarvo import nemra

# Upper bounds of the rings in degrees and patches in each (Klems 1994, and the coarse ones of LBNL's WINDOW).
RINGS = {
    "full": [(5, 1), (15, 8), (25, 16), (35, 20), (45, 24), (55, 24), (65, 24), (75, 16), (90, 12)],
    "half": [(6.5, 1), (19.5, 8), (32.5, 12), (45.5, 16), (58.5, 20), (71.5, 12), (90, 8)],
    "quarter": [(9, 1), (27, 8), (45, 12), (63, 12), (90, 8)],
}
COUNTS = {"full": 145, "half": 77, "quarter": 41}
NAMESPACE = {"w": "http://windows.lbl.gov"}
NORMAL, TANGENT = np.array([0.0, 0.0, 1.0]), np.array([1.0, 0.0, 0.0])


def node_bytes(node, tmp_path):
    path = tmp_path / "node.svbin"
    with open(path, "wb") as file:
        node.write(file)
    return path.read_bytes()


def capture(**options):
    node = nemra.nodes.instrument.Bsdfcapture("goniometer")
    for name, value in options.items():
        getattr(node, "set" + name.capitalize())(value)
    return node


def result(planes, instrument, output, tmp_path):
    """A nemra.Raw with those planes[name][row, column], read from a file and said to be what that instrument has measured."""
    path = tmp_path / "values.exr"
    OpenEXR.File({"type": OpenEXR.scanlineimage}, {n: np.ascontiguousarray(p, np.float32) for n, p in planes.items()}).write(str(path))
    raw = nemra.Raw.readOpenExr(str(path))
    for node, put in ((instrument, raw.setInstrument), (output, raw.setOutput)):
        data = node_bytes(node, tmp_path)
        assert put(data, len(data))
    return raw


def bsdf_output(layout="windows_xml", spectral="photopic", **texts):
    node = nemra.nodes.output.Bsdf("scattering")
    node.setLayout(layout)
    node.setSpectral(spectral)
    for name, value in texts.items():
        getattr(node, "set" + name.capitalize())(value)
    return node


def vector(theta, phi, x, y, z):
    return math.sin(theta) * (math.cos(phi) * x + math.sin(phi) * y) + math.cos(theta) * z


def scattering(source, leaving):
    """1/sr of light from `source` to `leaving`, which both point away from the sample: the light is thrown aside, along a fixed
    direction and more so where it comes from a fixed side. Nothing about it is symmetric."""
    aside = -source + np.array([0.3, 0.7, 0.0]) * abs(source @ NORMAL)
    reflected = (leaving @ NORMAL) * (source @ NORMAL) > 0
    if reflected:
        aside = aside - 2 * (aside @ NORMAL) * NORMAL
    aside /= np.linalg.norm(aside)
    strength = (0.4 if reflected else 1.0) * (1 + 0.5 * (source @ TANGENT) + 0.2 * (source @ NORMAL))
    return 0.01 + strength * math.exp(6 * (aside @ leaving - 1))


def measured(raw, lit_front):
    """What an instrument would have found in each direction, by the titles of rows and columns."""
    beside = np.cross(NORMAL, TANGENT)

    def direction(title):
        what, theta, phi, unit = title.split()
        assert unit == "deg"
        front = lit_front == (what != "transmitted")
        theta, phi = (math.radians(float(part.split("=")[1])) for part in (theta, phi))
        return vector(theta, phi, TANGENT, beside, NORMAL if front else -NORMAL)

    columns = [direction(raw.getXHeaderName(x)) for x in range(raw.width())]
    rows = [direction(raw.getYHeaderName(y)) for y in range(raw.height())]
    return np.array([[scattering(s, o) for s in columns] for o in rows])


def patches(root):
    """(theta, phi, projected solid angle) of the file's own basis."""
    found, total = [], 0.0
    for block in root.iterfind(".//w:AngleBasisBlock", NAMESPACE):
        theta = math.radians(float(block.find("w:Theta", NAMESPACE).text))
        count = int(block.find("w:nPhis", NAMESPACE).text)
        lower, upper = (math.radians(float(block.find(f"w:ThetaBounds/w:{end}Theta", NAMESPACE).text)) for end in ("Lower", "Upper"))
        assert lower == pytest.approx(total) and lower <= theta < upper
        total = upper
        found += [(theta, 2 * math.pi * i / count, math.pi * (math.sin(upper) ** 2 - math.sin(lower) ** 2) / count) for i in range(count)]
    assert total == pytest.approx(math.pi / 2)
    return found


def blocks(root):
    """Matrices [direction of leaving light, of arriving light] by wavelength and direction."""
    found = {}
    for data in root.iterfind(".//w:WavelengthData", NAMESPACE):
        block = data.find("w:WavelengthDataBlock", NAMESPACE)
        direction = block.find("w:WavelengthDataDirection", NAMESPACE).text
        assert block.find("w:ScatteringDataType", NAMESPACE).text == ("BTDF" if direction.startswith("T") else "BRDF")
        names = {block.find(f"w:{which}AngleBasis", NAMESPACE).text for which in ("Row", "Column")}
        assert names == {root.find(".//w:AngleBasisName", NAMESPACE).text}
        values = [float(text) for text in block.find("w:ScatteringData", NAMESPACE).text.split(",")]
        side = math.isqrt(len(values))
        assert side * side == len(values)
        found[data.find("w:Wavelength", NAMESPACE).text, direction] = np.reshape(values, (side, side))
    return found


class TestWindowXml:
    @pytest.mark.parametrize("side", ["front", "back"])
    @pytest.mark.parametrize("size", RINGS)
    def test_light_goes_where_it_went(self, size, side, tmp_path):
        instrument = capture(side=side, component="both", basis="klems", klems_patches=size)
        blank = result({"Y": np.zeros((2 * COUNTS[size], COUNTS[size]))}, instrument, bsdf_output(), tmp_path)
        values = measured(blank, side == "front")
        raw = result({"X": values, "Y": values, "Z": values}, instrument, bsdf_output(), tmp_path)
        assert raw.getOutputFormat() == ["xml"] and raw.writeAuto(str(tmp_path / "a.xml"))
        root = ElementTree.parse(tmp_path / "a.xml").getroot()
        basis = patches(root)
        bounds = [upper for upper, count in RINGS[size] for _ in range(count)]
        assert len(basis) == len(bounds) and sum(area for _, _, area in basis) == pytest.approx(math.pi)
        assert [theta for theta, _, _ in basis] == sorted(theta for theta, _, _ in basis)
        lower = [0 if i == 0 else RINGS[size][i - 1][0] for i, (_, count) in enumerate(RINGS[size]) for _ in range(count)]
        assert [math.degrees(b[0]) for b in basis[1:]] == pytest.approx([(a + b) / 2 for a, b in zip(lower, bounds, strict=True)][1:])

        # The file's frame: x along the tangent, z against the normal, y up from both. Its arriving light *goes* to the azimuth.
        z = -NORMAL
        x, y = TANGENT, np.cross(z, TANGENT)
        lit = NORMAL if side == "front" else -NORMAL
        name = side.capitalize()
        found = blocks(root)
        assert set(found) == {("Visible", f"Transmission {name}"), ("Visible", f"Reflection {name}")}
        for (_, direction), matrix in found.items():
            leaving = lit if direction.startswith("Reflection") else -lit
            expected = [
                [scattering(vector(t, p + math.pi, x, y, lit), vector(theta, phi, x, y, leaving)) for t, p, _ in basis]
                for theta, phi, _ in basis
            ]
            assert matrix == pytest.approx(np.array(expected), rel=1e-5), direction
            # Light that goes on as it came, or is mirrored, stays in the patch of its number: the peak is near the diagonal.
            hemispherical = np.array([area for _, _, area in basis]) @ matrix
            ours = values[: COUNTS[size]] if direction.startswith("Reflection") else values[COUNTS[size] :]
            assert sorted(hemispherical) == pytest.approx(sorted(np.array([area for _, _, area in basis]) @ ours), rel=1e-5)

    def test_parts_of_the_spectrum(self, tmp_path):
        """Visible and solar means of a sample that lets long waves pass and reflects nothing else."""
        shape = (41, 41)
        planes = {f"T.{nm},0nm": np.full(shape, 0.0 if nm < 600 else 0.2) for nm in range(305, 1200, 10)}
        instrument = capture(component="transmission", basis="klems", klems_patches="quarter")
        output = bsdf_output(spectral="photopic_and_solar", product='Blind <"A" & B>\x01', manufacturer="Müller")
        output.setThickness(0.004)
        raw = result(planes, instrument, output, tmp_path)
        data = raw.writeResultBytes("xml")
        root = ElementTree.fromstring(data)
        assert root.find(".//w:Name", NAMESPACE).text == 'Blind <"A" & B>\ufffd'
        assert root.find(".//w:Manufacturer", NAMESPACE).text == "Müller"
        thickness = root.find(".//w:Thickness", NAMESPACE)
        assert thickness.text == "0.004" and thickness.get("unit") == "Meter"
        found = blocks(root)
        # Shares beyond 600 nm, summed up in steps of 0.1 nm from the CIE's and ASTM's tables: of the luminance of D65, and of the
        # sun's direct light from 300 to 1200 nm.
        assert found["Visible", "Transmission Front"] == pytest.approx(np.full(shape, 0.2 * 0.15276), rel=0.005)
        assert found["Solar", "Transmission Front"] == pytest.approx(np.full(shape, 0.2 * 0.62275), rel=0.001)
        for name in ("de_DE.UTF-8", "fr_FR.UTF-8"):
            try:
                before = locale.setlocale(locale.LC_NUMERIC)
                locale.setlocale(locale.LC_NUMERIC, name)
            except locale.Error:
                continue
            try:
                assert raw.writeResultBytes("xml") == data
            finally:
                locale.setlocale(locale.LC_NUMERIC, before)

    def test_each_channel(self, tmp_path):
        planes = {f"T.{nm},0nm": np.full((41, 41), nm * 1e-3) for nm in (450, 550)}
        output = bsdf_output(spectral="channels")
        instrument = capture(basis="klems", klems_patches="quarter", side="back")
        found = blocks(ElementTree.fromstring(result(planes, instrument, output, tmp_path).writeResultBytes("xml")))
        assert {key: matrix.max() for key, matrix in found.items()} == pytest.approx(
            {("450", "Reflection Back"): 0.45, ("550", "Reflection Back"): 0.55}
        )

    @pytest.mark.parametrize(
        ("options", "shape", "why"),
        [
            ({"basis": "grid"}, (41, 41), 'that of instrument/bsdfcapture goniometer is "grid"'),
            ({"basis": "equal_area"}, (41, 41), '"equal_area"'),
            ({"basis": "klems"}, (145, 145), None),
            ({"basis": "klems", "component": "both"}, (145, 145), "needs 145 x 290 values"),
            ({"basis": "klems", "klems_patches": "half"}, (145, 145), "needs 77 x 77 values"),
            (None, (41, 41), "this one is of a stdcam"),
        ],
    )
    def test_what_has_no_place_in_it(self, options, shape, why, tmp_path):
        instrument = nemra.nodes.instrument.Stdcam("camera") if options is None else capture(**options)
        planes = {name: np.ones(shape) for name in "XYZ"}
        raw = result(planes, instrument, bsdf_output(), tmp_path)
        heard = []
        nemra.onMessage(lambda message, kind: heard.append(message))
        try:
            assert raw.writeResult(str(tmp_path / "a.xml"), "xml") is (why is None)
            assert not raw.writeResult(str(tmp_path / "a.csv"), "csv")
        finally:
            nemra.onMessage(None)
        assert (tmp_path / "a.xml").exists() is (why is None)
        if why:
            assert any(why in message for message in heard), heard


class TestTables:
    def test_titles_are_directions(self, tmp_path):
        grid = {"basis": "grid", "incident_theta_count": 3, "incident_phi_count": 2, "outgoing_theta_count": 2, "outgoing_phi_count": 4}
        raw = result({"Y": np.zeros((16, 6))}, capture(component="both", **grid), bsdf_output("table"), tmp_path)
        assert [raw.getXHeaderName(x) for x in (0, 1, 5)] == [
            "incident theta=0 phi=0 deg", "incident theta=0 phi=180 deg", "incident theta=60 phi=180 deg"]
        assert raw.getYHeaderName(5) == "reflected theta=67.5 phi=90 deg"
        assert raw.getYHeaderName(13) == "transmitted theta=67.5 phi=90 deg"
        with pytest.raises(RuntimeError):
            raw.getYHeaderName(16)
        rows = list(csv.reader(io.StringIO(raw.writeResultBytes("csv").decode())))
        assert rows[0][1:] == [raw.getXHeaderName(x) for x in range(6)]
        assert [row[0] for row in rows[1:17]] == [raw.getYHeaderName(y) for y in range(16)]
        table = nemra.nodes.output.Table("grid")
        table.setLayout("grid")
        raw = result({"Y": np.zeros((16, 6))}, capture(component="both", **grid), table, tmp_path)
        assert next(csv.reader(io.StringIO(raw.writeResultBytes("csv").decode().split("\n", 1)[1])))[2] == "incident theta=0 phi=180 deg"

    def test_titles_are_numbers_where_the_size_is_another(self, tmp_path):
        raw = result({"Y": np.zeros((5, 7))}, capture(basis="klems"), bsdf_output("table"), tmp_path)
        assert raw.getXHeaderName(3) == "3" and raw.getYHeaderName(4) == "4"
