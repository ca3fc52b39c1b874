"""Ratings of glare of a rendered view whose rating has a closed form, through the Python interface and in each kind of report."""

import base64
import csv
import html.parser
import io
import math
import struct
import threading
import zlib

import numpy as np
import pytest

from sarvo import nemra, results

# Two spheres of 2000 cd/m2 and radius 0.15 m, 4 m and 3 m before the eye, 1.5 m above it, the second one 1 m to the side; an even
# background of 50 cd/m2. A flat spectrum of 1 W/(m2 sr nm) has 683 * 106.857 cd/m2. The lamps have no reflection.
EFFICACY = 683 * 106.857
UGR = 11.9673
SCENE = f"""<scene version="1" name="spheres" active_setup="default">
    <node family="material" type="generic" name="lamp">
        <child slot="bsdf" type="lambertian">
            <child slot="reflectance" type="uniform"><parameter name="value" value="0"/></child>
        </child>
        <child slot="emitter" type="lambertian">
            <child slot="radiance" type="uniform"><parameter name="value" value="{2000 / EFFICACY}"/></child>
        </child>
    </node>
    <node family="setup" type="default" name="default">
        <child slot="instrument" type="idealrectcam" name="eye">
            <parameter name="position" value="0 0 0"/>
            <parameter name="target" value="1 0 0"/>
            <parameter name="up" value="0 0 1"/>
            <parameter name="horizontal_fov" value="90"/>
            <parameter name="width" value="320"/>
            <parameter name="height" value="320"/>
            <child slot="sensor" type="ciexyz"/>
            <item type="glarereport" name="report">
                <parameter name="detection" value="mean_factor"/>
                <parameter name="position_index" value="formula"/>
                <child slot="title" type="default"><parameter name="content" value="View of {{instrument}}"/></child>
            </item>
            <item type="glaremap" name="map"><parameter name="detection" value="mean_factor"/></item>
        </child>
        <child slot="environment" type="uniform">
            <child slot="radiance" type="uniform"><parameter name="value" value="{50 / EFFICACY}"/></child>
        </child>
    </node>
    <sphere name="ball" radius="0.15" material="lamp"/>
    <instance geometry="ball"><transform>1 0 0 4 0 1 0 0 0 0 1 1.5 0 0 0 1</transform></instance>
    <instance geometry="ball"><transform>1 0 0 3 0 1 0 1 0 0 1 1.5 0 0 0 1</transform></instance>
</scene>
"""


@pytest.fixture(scope="module")
def raw(tmp_path_factory):
    path = tmp_path_factory.mktemp("glare") / "spheres.svxml"
    path.write_text(SCENE)
    finished = threading.Event()
    kept = []

    def keep(result):
        kept.append(result.copy())
        finished.set()

    renderer = nemra.Renderer()
    renderer.setParameter("num_threads", 2)
    renderer.setHaltCondition(time=0, spp=32, action=nemra.Renderer.halt_cond.stops)
    renderer.addLocalNode()
    renderer.onFinish(keep)
    assert renderer.start(str(path))
    assert finished.wait(300)
    return kept[0]


class Page(html.parser.HTMLParser):
    """Cells of the tables, row by row, and the sources of the pictures."""

    def __init__(self, text):
        super().__init__()
        self.rows, self.pictures, self.open = [], [], []
        self.feed(text)
        self.close()

    def handle_starttag(self, tag, attributes):
        if tag == "tr":
            self.rows.append([])
        if tag in ("td", "th"):
            self.rows[-1].append("")
        if tag == "img":
            self.pictures.append(dict(attributes)["src"])
        if tag not in ("img", "meta"):
            self.open.append(tag)

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, data):
        if self.open and self.open[-1] in ("td", "th"):
            self.rows[-1][-1] += data


def png_pixels(data):
    """Of a PNG file of 8-bit RGB without interlacing, indexed [y, x, component]: read here, apart from the engine's library."""
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    at, body = 8, b""
    while at < len(data):
        (size,), kind = struct.unpack(">I", data[at:at + 4]), data[at + 4:at + 8]
        chunk = data[at + 8:at + 8 + size]
        assert struct.unpack(">I", data[at + 8 + size:at + 12 + size])[0] == zlib.crc32(kind + chunk)
        if kind == b"IHDR":
            width, height, depth, color = struct.unpack(">IIBB", chunk[:10])
            assert (depth, color) == (8, 2)
        if kind == b"IDAT":
            body += chunk
        at += 12 + size
    lines = np.frombuffer(zlib.decompress(body), np.uint8).reshape(height, 1 + 3 * width)
    pixels = np.zeros((height, 3 * width), np.uint8)
    for y, (method, line) in enumerate(zip(lines[:, 0], lines[:, 1:], strict=True)):
        above = pixels[y - 1] if y else np.zeros(3 * width, np.uint8)
        for i in range(3 * width):
            a = int(pixels[y, i - 3]) if i >= 3 else 0
            b = int(above[i])
            c = int(above[i - 3]) if i >= 3 else 0
            p = a + b - c
            paeth = min((abs(p - a), 0, a), (abs(p - b), 1, b), (abs(p - c), 2, c))[2]
            pixels[y, i] = (int(line[i]) + [0, a, b, (a + b) // 2, paeth][method]) & 255
    return pixels.reshape(height, width, 3)


def csv_report(raw):
    return list(csv.reader(io.StringIO(raw.writeResultBytes("csv").decode())))


def test_rating_of_the_view(raw):
    whole = raw.getUGR(0, 0, 2147483647, 2147483647)
    assert whole == pytest.approx(UGR, abs=0.05)
    assert raw.getUGR(-5, -5, 320, 320) == whole == results.ugr(raw)
    # Without the second sphere, which stands to the left: +y is on the left of a view along +x with +z up.
    left = raw.getUGR(0, 0, 140, 320)
    assert left - whole == pytest.approx(8 * math.log10(3038.392 / (3038.392 + 3209.845)), abs=0.05)
    assert raw.getUGR(0, 250, 320, 320) == -math.inf


def test_formats_are_listed_and_others_refused(raw, tmp_path):
    assert raw.getOutputFormat() == ["html", "txt", "csv"]
    with pytest.raises(ValueError, match="'report' isn't a picture: it has html, txt, csv"):
        results.preview(raw)
    assert raw.getDefaultFormat() == "html"
    assert raw.writeResult(str(tmp_path / "a.html"), "html")
    assert (tmp_path / "a.html").read_bytes() == raw.writeResultBytes("html")
    assert not raw.writeResult(str(tmp_path / "a.xlsx"), "xlsx")
    assert sorted(entry.name for entry in tmp_path.iterdir()) == ["a.html"]


def test_csv_lists_ratings_and_sources(raw):
    rows = csv_report(raw)
    facts = {row[0]: row[1] for row in rows if len(row) == 2}
    assert facts["title"] == "View of eye"
    assert float(facts["Unified glare rating"]) == pytest.approx(UGR, abs=0.1)
    assert float(facts["Background luminance [cd/m2]"]) == pytest.approx(49.864, abs=0.1)
    # Ev = 50 pi + 1950 pi sum of (r / d)^2 cos; the probability follows from it and the closed forms of the index.
    illuminance = 50 * math.pi + 1950 * math.pi * 0.15**2 * (4 / 18.25**1.5 + 3 / 12.25**1.5)
    assert float(facts["Vertical illuminance at the eye [lx]"]) == pytest.approx(illuminance, abs=0.5)
    dgp = 5.87e-5 * illuminance + 0.0918 * math.log10(1 + (3209.845 + 3038.392) / illuminance**1.87) + 0.16
    assert float(facts["Daylight glare probability"]) == pytest.approx(dgp, abs=6e-4)
    header = next(i for i, row in enumerate(rows) if row and row[0] == "source")
    table = [dict(zip(rows[header], row, strict=True)) for row in rows[header + 1:]]
    assert [row["source"] for row in table] == ["1", "2"]
    known = ((0.003874391, 2.197302, 0, 20.556), (0.005772924, 2.756805, -18.435, 25.377))
    for row, (solid_angle, index, right, up) in zip(table, known, strict=True):
        assert float(row["luminance [cd/m2]"]) == pytest.approx(2000, rel=2e-3)
        assert float(row["solid angle [sr]"]) == pytest.approx(solid_angle, rel=0.02)
        assert float(row["position index"]) == pytest.approx(index, abs=0.01)
        assert float(row["right [deg]"]) == pytest.approx(right, abs=0.1)
        assert float(row["up [deg]"]) == pytest.approx(up, abs=0.1)
        assert row["remark"] == ""


def test_page_shows_the_same_numbers_and_a_picture(raw):
    text = raw.writeResultBytes("html").decode()
    page = Page(text)
    assert page.open == []
    for row in csv_report(raw)[1:]:
        if len(row) == 12:
            assert row in page.rows
    assert len(page.pictures) == 1
    head, _, body = page.pictures[0].partition(",")
    assert head == "data:image/png;base64"
    pixels = png_pixels(base64.b64decode(body, validate=True))
    height, width, _ = pixels.shape
    assert height == 320 and width > 320  # a scale beside it
    red = (pixels[:, :320].astype(int) @ [1, -1, 0] > 150)
    assert 50 < red.sum() < 400  # two outlines
    x = np.nonzero(red)[1]
    assert ((x > 90) & (x < 125) | (x > 145) & (x < 175)).all()


def test_text_says_the_same(raw):
    text = raw.writeResultBytes("txt").decode()
    facts = {row[0]: row[1] for row in csv_report(raw) if len(row) == 2}
    line = next(line for line in text.splitlines() if line.startswith("Unified glare rating"))
    assert line.split()[-1] == facts["Unified glare rating"]


def test_map_is_a_picture(raw):
    own = raw.copy()
    assert own.importOutput(raw, "map")
    pixels = png_pixels(own.writeResultBytes("png"))
    assert pixels.shape[0] == 320
    red = (pixels[:, :320].astype(int) == [255, 32, 32]).all(axis=2)
    assert red[:, 90:180].sum() == red.sum() > 200  # the sources are filled; numbers stand on them
