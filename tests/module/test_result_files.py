"""Files of results, opened by readers that share nothing with the engine: OpenEXR's own package, Pillow with its copy of lcms, numpy, and
a reader of Radiance pictures below."""

import csv
import io
import re
import struct
import threading
from pathlib import Path

import imageio.v3
import numpy as np
import OpenEXR
import pytest
from PIL import Image, ImageCms

from sarvo import examples, nemra

ROOT = Path(__file__).resolve().parents[2]
WIDTH, HEIGHT, SPP = 48, 32, 4
SENSORS = {
    "xyz": '<child slot="sensor" type="ciexyz"/>',
    "bands": '<child slot="sensor" type="spectralbox"><parameter name="first" value="400"/><parameter name="last" value="700"/>'
    '<parameter name="count" value="31"/></child>',
    "energy": '<child slot="sensor" type="energy"/>',
}


def render(scene: Path, spp: int = SPP) -> "nemra.Raw":
    finished, kept = threading.Event(), []
    renderer = nemra.Renderer()
    renderer.setHaltCondition(time=0, spp=spp, action=nemra.Renderer.halt_cond.stops)
    renderer.addLocalNode()
    renderer.onFinish(lambda raw: (kept.append(raw.copy()), finished.set()))
    assert renderer.start(str(scene)) and finished.wait(300)
    return kept[0]


@pytest.fixture(scope="module")
def raws(tmp_path_factory):
    """The Cornell box, small and not square, through a lens, once for each sensor."""
    text = Path(examples["cornellbox"]).read_text()
    for name, value in (("width", WIDTH), ("height", HEIGHT), ("film_width", 37.5)):
        text, count = re.subn(rf'<parameter name="{name}" value="[^"]*"/>', f'<parameter name="{name}" value="{value}"/>', text)
        assert count == 1
    made = {}
    for name, sensor in SENSORS.items():
        scene = tmp_path_factory.mktemp(name) / "scene.svxml"
        lens = '<parameter name="aperture" value="lens"><parameter name="f_number" value="8"/></parameter>'
        scene.write_text(text.replace(SENSORS["xyz"], lens + sensor))
        made[name] = render(scene)
    return made


@pytest.fixture
def raw(raws):
    """One that a test may change."""
    return raws["xyz"].copy()


@pytest.fixture(scope="module")
def messages():
    heard = []
    nemra.onMessage(lambda message, kind: heard.append(message))
    yield heard
    nemra.onMessage(None)


def planes(path):
    """Channels by name, indexed [x, y], and the header."""
    with OpenEXR.File(str(path), separate_channels=True) as file:
        return {name: channel.pixels.T.copy() for name, channel in file.channels().items()}, dict(file.header())


class TestExr:
    def test_bands_hold_the_luminance_that_is_shown(self, raws, tmp_path):
        raw = raws["bands"]
        assert raw.writeRaw(str(tmp_path / "a.exr"), "exr")
        channels, header = planes(tmp_path / "a.exr")
        assert header["spectralLayoutVersion"] == "1.0" and header["emissiveUnits"] == "W.m^-2.sr^-1"
        assert header["sarvo:valueUnit"] == "W.m^-2.sr^-1.nm^-1" and header["sarvo:quantity"] == "spectral radiance"
        limits = [tuple(float(end[:-2]) for end in pair.split(":")) for pair in header["sarvo:bandLimits"].rstrip(";").split(";")]
        cmf = np.loadtxt(ROOT / "tests/data/cmf/cie1931_2deg_xyz_1nm.csv", delimiter=",", skiprows=2)
        luminance, pixels = 0.0, raw.pixels()
        for i, (low, high) in enumerate(limits):
            name = f"S0.{raw.channelWavelength(i) * 1e9:.6f}nm".replace(".", ",").replace("S0,", "S0.")
            assert (low + high) / 2 == pytest.approx(raw.channelWavelength(i) * 1e9, abs=1e-6)
            assert channels[name].dtype == np.float32
            np.testing.assert_array_equal(channels[name], pixels[..., i])
            fine = np.linspace(low, high, 1001)
            ybar = np.trapezoid(np.interp(fine, cmf[:, 0], cmf[:, 2]), fine)
            luminance = luminance + 683.0 * channels[name].astype(float) * ybar
        shown = header["whiteLuminance"] * (0.2126390 * channels["R"] + 0.7151687 * channels["G"] + 0.0721923 * channels["B"])
        assert luminance.max() > 100
        np.testing.assert_allclose(shown, luminance, rtol=1e-4, atol=1e-4 * luminance.max())

    def test_tristimulus_values_and_colours(self, raws, tmp_path):
        raw = raws["xyz"]
        assert raw.writeRaw(str(tmp_path / "raw.exr"), "EXR") and raw.writeResult(str(tmp_path / "result.exr"), "exr")
        channels, header = planes(tmp_path / "raw.exr")
        assert sorted(channels) == ["X", "Y", "Z"] and header["sarvo:valueUnit"] == "cd.m^-2"
        for i, name in enumerate("XYZ"):
            np.testing.assert_array_equal(channels[name], raw.pixels()[..., i])
        channels, header = planes(tmp_path / "result.exr")
        assert sorted(channels) == ["B", "G", "R"] and header["compression"] == OpenEXR.ZIP_COMPRESSION
        assert header["chromaticities"][:2] == pytest.approx((0.64, 0.33))
        luminance = 0.2126390 * channels["R"] + 0.7151687 * channels["G"] + 0.0721923 * channels["B"]
        np.testing.assert_allclose(luminance, raw.pixels()[..., 1], rtol=1e-4, atol=1e-3)

    def test_the_camera_is_described(self, raws, tmp_path):
        raws["energy"].writeRaw(str(tmp_path / "a.exr"), "exr")
        channels, header = planes(tmp_path / "a.exr")
        assert sorted(channels) == ["B", "E", "G", "R"] and "whiteLuminance" not in header
        assert header["sarvo:instrumentType"] == "stdcam" and header["aperture"] == 8.0 and header["samplesPerPixel"] == SPP
        matrix = np.array(header["worldToCamera"], float).reshape(4, 4)
        target = np.array([0.278, 0.273, 0.2, 1.0]) @ matrix  # row vectors
        np.testing.assert_allclose(target, [0, 0, 1, 1], atol=1e-6)
        left = np.array([1.278, 0.273, 0.2, 1.0]) @ matrix
        assert left[0] == pytest.approx(-1), "the camera looks along +z with +y up: +x is on its left"

    @pytest.mark.parametrize("sensor", SENSORS)
    def test_read_back(self, raws, sensor, tmp_path):
        raw = raws[sensor]
        raw.writeRaw(str(tmp_path / "a.exr"), "exr")
        again = nemra.Raw.readOpenExr(str(tmp_path / "a.exr"))
        np.testing.assert_array_equal(again.pixels(), raw.pixels())
        names = [[r.channelName(i) for i in range(r.channelCount())] for r in (raw, again)]
        assert names[0] == names[1] and again.isCompatible(again.copy())
        assert [again.channelResponse(i) for i in range(again.channelCount())] == [raw.channelResponse(i) for i in range(raw.channelCount())]

    def test_read_what_others_wrote(self, tmp_path):
        values = {"S0.1000,0nm": 3.0, "S0.400,0nm": 1.0, "S0.550,938nm": 2.0, "R": 9.0, "G": 9.0, "B": 9.0}
        arrays = {name: np.full((5, 7), value, np.float32) for name, value in values.items()}
        OpenEXR.File({"compression": OpenEXR.PIZ_COMPRESSION, "type": OpenEXR.scanlineimage}, arrays).write(str(tmp_path / "f.exr"))
        raw = nemra.Raw.readOpenExr(str(tmp_path / "f.exr"))
        assert [raw.channelWavelength(i) * 1e9 for i in range(3)] == pytest.approx([400, 550.938, 1000])
        assert raw.pixels().shape == (7, 5, 3) and raw.pixels()[3, 2].tolist() == [1.0, 2.0, 3.0]
        assert all(raw.isChannelSpectral(i) for i in range(3)) and raw.writeAuto(str(tmp_path / "again.exr"))
        half = {name: np.full((2, 2), 0.5, np.float16) for name in "RGB"}
        OpenEXR.File({"type": OpenEXR.scanlineimage}, half).write(str(tmp_path / "h.exr"))
        grey = nemra.Raw.readOpenExr(str(tmp_path / "h.exr"))
        assert grey.channelName(1) == "Y" and grey.pixels()[0, 0, 1] == pytest.approx(0.5)


class TestSvraw:
    @pytest.mark.parametrize("sensor", SENSORS)
    def test_everything_comes_back(self, raws, sensor, tmp_path):
        raw, path = raws[sensor], str(tmp_path / "a.svraw")
        assert raw.writeAuto(path)
        again = nemra.Raw.readSvraw(path)
        for quantity in (nemra.Raw.quantity.Raw, nemra.Raw.SensorPower, nemra.Raw.SensorIrradiance, nemra.Raw.SensorExposure):
            np.testing.assert_array_equal(again.pixels(quantity), raw.pixels(quantity))
        for meta in ("variance", "spp", "depth", "snr"):
            np.testing.assert_array_equal(again.metaPixels(meta), raw.metaPixels(meta))
        assert again.getInstrument() == raw.getInstrument() != b"" and again.getOutput() == raw.getOutput() != b""
        assert again.getInstrumentName() == raw.getInstrumentName() and again.getOutputName() == raw.getOutputName()
        assert (again.renderTime(), again.SPS(), again.SPP()) == (raw.renderTime(), raw.SPS(), raw.SPP())
        assert again.getQuantityCount() == raw.getQuantityCount() == 5
        assert raw.writeResultBytes("png") == again.writeResultBytes("png")
        assert again.add(raw) and again.SPP() == 2 * SPP
        np.testing.assert_array_equal(again.pixels(), raw.pixels())

    def test_what_is_no_result_gives_a_null_handle_and_a_message(self, raw, tmp_path, messages):
        for name, contents in (("missing", None), ("empty", b""), ("text", b"hello" * 100), ("cut", b"\x89SVRAW\r\n\1\0\0\0INFO")):
            if contents is not None:
                (tmp_path / name).write_bytes(contents)
            for read in (nemra.Raw.readSvraw, nemra.Raw.readOpenExr):
                heard = len(messages)
                nothing = read(str(tmp_path / name))
                assert nothing.width() == 0 and nothing.channelCount() == 0 and len(messages) == heard + 1
                assert not nothing.writeAuto(str(tmp_path / "out.svraw")) and nothing.getOutput() == b""
        assert nemra.Raw.readSvraw(str(tmp_path)).width() == 0


def read_radiance(data: bytes):
    """Header lines and pixels [x, y, rgb] of a run-length encoded Radiance picture."""
    header, rest = data.split(b"\n\n", 1)
    size, rest = rest.split(b"\n", 1)
    height, width = map(int, re.fullmatch(rb"-Y (\d+) \+X (\d+)", size).groups())
    stream, pixels = io.BytesIO(rest), np.zeros((height, 4, width), np.uint8)
    for row in pixels:
        assert struct.unpack(">BBH", stream.read(4)) == (2, 2, width)
        for component in row:
            x = 0
            while x < width:
                count = stream.read(1)[0]
                run = count - 128 if count > 128 else count
                component[x : x + run] = stream.read(1)[0] if count > 128 else np.frombuffer(stream.read(run), np.uint8)
                x += run
            assert x == width
    assert not stream.read()
    scale = np.ldexp(1.0, pixels[:, 3].astype(int) - 136)
    rgb = np.where(pixels[:, 3:] > 0, (pixels[:, :3] + 0.5) * scale[:, None], 0)
    return header.decode().splitlines(), rgb.transpose(2, 0, 1)


class TestHdr:
    def test_radiance_programs_find_luminance_and_view(self, raws, tmp_path):
        raws["xyz"].writeResult(str(tmp_path / "a.hdr"), "hdr")
        header, rgb = read_radiance((tmp_path / "a.hdr").read_bytes())
        assert header[0] == "#?RADIANCE" and "FORMAT=32-bit_rle_rgbe" in header and "EXPOSURE=1" in header
        luminance, reported = 179.0 * rgb @ [0.265, 0.670, 0.065], raws["xyz"].pixels()[..., 1]
        # Colours outside of the primaries' triangle are cut off; the others have at least 7 bits of their largest component.
        inside = rgb.min(axis=2) > 0.2 * rgb.max(axis=2)
        assert inside.sum() > 100
        np.testing.assert_allclose(luminance[inside], reported[inside], rtol=0.015)
        view = next(line for line in header if line.startswith("VIEW="))
        assert "-vtv" in view and "-vp 0.278 0.273 -0.8" in view and "-vd 0 0 1" in view


class TestPictures:
    def test_profiles_are_those_that_are_announced(self, raw, tmp_path):
        for name in ("png", "jpg", "png16"):
            assert raw.writeResult(str(tmp_path / name), name)
            assert (tmp_path / name).read_bytes() == raw.writeResultBytes(name)
        profile = raw.getImage8bitProfile()
        assert profile and profile == raw.getImage8bitProfile()
        assert ImageCms.getProfileDescription(ImageCms.ImageCmsProfile(io.BytesIO(profile))).strip() == "sRGB"
        png, jpg = (Image.open(tmp_path / name) for name in ("png", "jpg"))
        assert png.size == jpg.size == (WIDTH, HEIGHT) and png.info["icc_profile"] == jpg.info["icc_profile"] == profile
        codes = np.asarray(png, int)
        assert np.abs(codes - np.asarray(jpg, int)).mean() < 6
        assert struct.unpack(">IIBB", (tmp_path / "png16").read_bytes()[16:26]) == (WIDTH, HEIGHT, 16, 2)
        np.testing.assert_array_equal(imageio.v3.imread(tmp_path / "png"), codes.astype(np.uint8))

    def test_the_8_bit_picture_is_announced(self, raw):
        assert raw.getImage8bitInfo() == {"succeed": 1, "width": WIDTH, "height": HEIGHT, "stride": 3 * WIDTH, "alignment": 4}
        raw.removeChannels()
        assert raw.getImage8bitInfo() == {"succeed": 0} and raw.getImage8bitProfile() == b""

    def test_formats(self, raw, tmp_path, messages):
        assert raw.getOutputFormat() == ["png", "jpg", "exr", "hdr", "png16"] and raw.getDefaultFormat() == "png"
        for form in ("csv", "svraw", "tiff", "", "p\0ng"):
            heard = len(messages)
            assert not raw.writeResult(str(tmp_path / "x"), form) and len(messages) == heard + 1
        assert not raw.writeRaw(str(tmp_path / "x"), "png")
        assert list(tmp_path.iterdir()) == []


class TestCsv:
    def test_rows_are_pixels(self, raws, tmp_path):
        raw = raws["bands"]
        assert raw.writeAuto(str(tmp_path / "a.csv")) and raw.writeRaw(str(tmp_path / "b.csv"), "csv")
        assert (tmp_path / "a.csv").read_bytes() == (tmp_path / "b.csv").read_bytes()
        with open(tmp_path / "a.csv", encoding="utf-8", newline="") as file:
            header, *rows = csv.reader(file)
        assert header[:3] == ["x", "y", "400 nm [W.m^-2.sr^-1.nm^-1]"]
        assert header[-2:] == ["samples", "standard error of mean [W.m^-2.sr^-1.nm^-1]"]
        table = np.array(rows, float)
        assert table.shape == (WIDTH * HEIGHT, 2 + 31 + 2) and table[1, :2].tolist() == [1, 0]
        x, y = table[:, 0].astype(int), table[:, 1].astype(int)
        np.testing.assert_array_equal(table[:, 2:33].astype(np.float32), raw.pixels()[x, y])
        assert (table[:, 33] == SPP).all()
        error = np.sqrt(raw.metaPixels("variance") / SPP)
        np.testing.assert_allclose(table[:, 34], error[x, y], rtol=1e-5)


class TestWhatCannotBeWritten:
    @pytest.mark.parametrize("form", ["svraw", "exr", "hdr", "csv", "png", "jpg"])
    def test_gives_false_and_one_message_with_the_reason(self, raw, form, tmp_path, messages):
        old = tmp_path / f"old.{form}"
        old.write_text("old")
        (tmp_path / f"folder.{form}").mkdir()
        (tmp_path / f"full.{form}").symlink_to("/dev/full")
        before = sorted(tmp_path.iterdir())
        for name, reason in ((tmp_path / f"missing/a.{form}", "No such file or directory"), (tmp_path / f"folder.{form}", "Is a directory"),
                             (tmp_path / f"full.{form}", "No space left on device"), (tmp_path / f"{'a' * 5000}.{form}", "File name too long"),
                             (old / f"a.{form}", "Not a directory")):  # fmt: skip
            heard = len(messages)
            assert raw.writeAuto(str(name)) is False
            assert len(messages) == heard + 1 and reason in messages[-1]
        assert sorted(tmp_path.iterdir()) == before and old.read_text() == "old"
        assert raw.writeAuto(str(old)) and old.stat().st_size > 100


class TestImageNodes:
    def test_a_node_of_numbers(self, tmp_path):
        node = nemra.nodes.image.Inline("i")
        node.setWidth(2), node.setHeight(1), node.setRawPixels(np.array([1, 1, 1, 0, 0, 0], np.float32))
        with open(tmp_path / "i.svbin", "wb") as file:
            node.write(file)
        data = (tmp_path / "i.svbin").read_bytes()
        raw = nemra.Raw.fromImageNode(data, len(data))
        assert raw.pixels().shape == (2, 1, 3) and raw.pixels()[0, 0, 1] == pytest.approx(1.0)

    def test_other_bytes_give_a_null_handle(self, raws):
        for data in (b"", b"x" * 50, raws["xyz"].getOutput()):
            assert nemra.Raw.fromImageNode(data, len(data)).width() == 0
