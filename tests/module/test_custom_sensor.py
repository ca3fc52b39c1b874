"""Sensors of the user's own responses: through renders, workers, interrupted renders and files."""

import csv
import pathlib
import re

import imageio.v3
import numpy as np
import pytest
from workers import Render, Worker

import sarvo
from sarvo import nemra

RESPONSES = """
    <item type="triangle" name="R"><parameter name="center" value="600"/><parameter name="width" value="60"/></item>
    <item type="triangle" name="G"><parameter name="center" value="540"/><parameter name="width" value="60"/></item>
    <item type="triangle" name="B"><parameter name="center" value="450"/><parameter name="width" value="40"/></item>
    <item type="square" name="far, red"><parameter name="minimum" value="650.5"/><parameter name="maximum" value="700"/></item>
    <item type="uniform" name="E"/>
"""


def scene(sensor):
    text = pathlib.Path(sarvo.examples["cornellbox"]).read_text()
    text, count = re.subn(r'<parameter name="(width|height)" value="512"/>', r'<parameter name="\1" value="32"/>', text)
    assert count == 2
    made = f'<child slot="sensor" type="custom">{sensor}</child>' if sensor else '<child slot="sensor" type="energy"/>'
    return text.replace('<child slot="sensor" type="ciexyz"/>', made).encode()


CAMERA = scene(RESPONSES)
SCOTOPIC = scene('<parameter name="response" value="luminous"><parameter name="efficacy" value="1700"/></parameter>'
                 '<item type="triangle" name="rods"><parameter name="center" value="507"/><parameter name="width" value="90"/></item>')


@pytest.fixture(scope="module")
def camera():
    return Render(CAMERA, [], spp=16, local=2).result()


@pytest.fixture(scope="module")
def scotopic():
    return Render(SCOTOPIC, [], spp=4, local=2).result()


def names(raw):
    return [raw.channelName(i) for i in range(raw.channelCount())]


def test_channels_are_the_responses(camera, scotopic):
    assert names(camera) == ["R", "G", "B", "far, red", "E"] and names(scotopic) == ["rods"]
    assert {camera.channelResponse(i) for i in range(5)} == {"energy"} and scotopic.channelResponse(0) == "luminous"
    # A response of 1 everywhere is the sensor of energies, to the bit.
    alone, usual = (Render(scene(sensor), [], spp=4, local=2).result() for sensor in ('<item type="uniform" name="E"/>', None))
    assert names(alone) == names(usual) == ["E"] and alone.pixels().tobytes() == usual.pixels().tobytes()
    assert alone.metaPixels("variance").tobytes() == usual.metaPixels("variance").tobytes()


def test_workers_and_threads_give_the_same_bits(camera):
    with Worker() as worker:
        assert Render(CAMERA, [worker], spp=16).result().pixels().tobytes() == camera.pixels().tobytes()
    assert Render(CAMERA, [], spp=16, local=1).result().pixels().tobytes() == camera.pixels().tobytes()


def test_an_interrupted_render_goes_on(camera, tmp_path):
    path = str(tmp_path / "part.svraw")
    for spp in (5, 16):
        render = Render(CAMERA, [], spp=spp, local=2, output_file_name=path, output_raw="true", resume="true")
        result = render.result()
    assert result.SPP() == 16 and result.pixels().tobytes() == camera.pixels().tobytes()
    assert result.metaPixels("variance").tobytes() == camera.metaPixels("variance").tobytes()


@pytest.mark.parametrize("kind", ["svraw", "exr"])
def test_files_keep_names_kinds_and_values(kind, camera, scotopic, tmp_path):
    for raw in (camera, scotopic):
        assert raw.writeRaw(str(tmp_path / "a"), kind)
        read = (nemra.Raw.readSvraw if kind == "svraw" else nemra.Raw.readOpenExr)(str(tmp_path / "a"))
        assert names(read) == names(raw)
        assert [read.channelResponse(i) for i in range(read.channelCount())] == [raw.channelResponse(i) for i in range(raw.channelCount())]
        np.testing.assert_array_equal(read.pixels(), raw.pixels())
        assert nemra.Raw.quantity.SceneRadiance in [read.getQuantity(i) for i in range(read.getQuantityCount())]


def test_tables_say_units(camera, scotopic, tmp_path):
    for raw, columns in (
        (camera, ["R [W.m^-2.sr^-1]", "G [W.m^-2.sr^-1]", "B [W.m^-2.sr^-1]", "far, red [W.m^-2.sr^-1]", "E [W.m^-2.sr^-1]"]),
        (scotopic, ["rods [cd.m^-2]"]),
    ):
        assert raw.writeRaw(str(tmp_path / "a.csv"), "csv")
        with open(tmp_path / "a.csv", newline="") as file:
            rows = list(csv.reader(file))
        assert rows[0][2 : 2 + len(columns)] == columns
        assert float(rows[1][2]) == raw.pixels()[0, 0, 0]


def test_pictures_show_what_stands_for_a_pixel(camera, scotopic, tmp_path):
    """A grey of E, and of the only channel there is: where that is brighter, so is the picture."""
    for raw, channel in ((camera, 4), (scotopic, 0)):
        assert raw.writeResult(str(tmp_path / "a.png"), "png") and raw.writeRaw(str(tmp_path / "a.hdr"), "hdr")
        shown = imageio.v3.imread(tmp_path / "a.png").astype(float)
        assert np.abs(shown[:, :, 0] - shown[:, :, 1]).max() <= 1
        order = np.argsort(raw.pixels()[:, :, channel].T, axis=None)
        assert (np.diff(shown[:, :, 1].ravel()[order]) >= 0).all()


def test_ratings_of_glare_need_luminances(scotopic):
    heard = []
    nemra.onMessage(lambda message, kind: heard.append(message))
    try:
        assert np.isnan(scotopic.getUGR(0, 0, 32, 32))
    finally:
        nemra.onMessage(None)
    assert any("luminances need spectral channels or the channel Y" in message for message in heard)
