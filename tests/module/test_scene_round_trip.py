"""A scene that a script builds, with the engine that ships: what goes in comes out, also after it was written and read."""

import io
import locale
import os
import shutil
import subprocess
import xml.etree.ElementTree

import numpy
import pytest
from render_picture import picture_of

from sarvo import examples, nemra

geometries = nemra.nodes.geometries
Scene = nemra.nodes.Scene

SQUARE = numpy.array([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], float)
TRIANGLES = numpy.array([[0, 1, 2], [0, 2, 3]], numpy.int32)


@pytest.fixture
def scene():
    """A square in gold, a ball and an instance of the ball."""
    made = Scene("room")
    square = geometries.Mesh("square", SQUARE, numpy.zeros((0, 3), numpy.float32), TRIANGLES)
    square.setMaterial("gold")
    made.add(square, keepOriginal=False)
    made.add(geometries.Sphere("ball", 0.25))
    made.add(geometries.Cone("hat", 0.5))
    made.add(nemra.nodes.material.Generic("gold"))
    instance = nemra.nodes.Instance()
    instance.setGeometryName("ball")
    instance.setTransform(numpy.diag([2.0, 2.0, 2.0, 1.0]))
    made.add(instance)
    return made


def summary(scene):
    (mesh,), (sphere,), (cone,) = scene.getMeshes(), scene.getSpheres(), scene.getCones()
    (instance,) = scene.getInstances()
    return {
        "geometries": sorted((type(g).__name__, g.name()) for g in scene.getGeometries()),
        "vertices": mesh.getVertices().tolist(),
        "triangles": mesh.getTriangles().tolist(),
        "material": mesh.getMaterialName(),
        "radius": sphere.getRadius(),
        "rtop": cone.getRtop(),
        "instance": (instance.geometryName(), instance.getTransform().tolist()),
        "nodes": [(type(node).__name__, node.name()) for node in scene.getNodes()],
    }


def test_contents(scene):
    found = summary(scene)
    assert found["geometries"] == [("Cone", "hat"), ("Mesh", "square"), ("Sphere", "ball")]
    assert found["vertices"] == SQUARE.tolist() and found["triangles"] == TRIANGLES.tolist()
    assert found["material"] == "gold" and found["radius"] == 0.25 and found["rtop"] == 0.5
    assert found["instance"] == ("ball", numpy.diag([2.0, 2.0, 2.0, 1.0]).tolist())
    assert ("Generic", "gold") in found["nodes"]
    assert scene.remove(scene.getSpheres()[0]) is True
    assert scene.getSpheres() == []


def test_text_keeps_the_scene(scene):
    again = Scene("other")
    assert again.readBytes(scene.print().encode())
    assert summary(again) == summary(scene)
    stream = io.StringIO()
    scene.write(stream)
    assert stream.getvalue() == scene.print()


def test_damaged_bytes_leave_the_scene_as_it_was(scene):
    text = scene.print().encode()
    before = summary(scene)
    for damaged in (b"", b"\0", text[: len(text) // 2], b"<scene", b"\x1f\x8b" + bytes(40)):
        assert scene.readBytes(damaged) is False
        assert summary(scene) == before


def test_stale_wrapper_is_answered(scene):
    ball = scene.getSpheres()[0]
    scene.clearGeometry()
    assert ball.setRadius(1) is False and ball.getRadius() in (0.0, -1.0)
    assert scene.remove(ball) is False


@pytest.mark.parametrize("form", [Scene.SVBIN, Scene.SVXMLZ, Scene.SVBINZ])
def test_bytes_keep_the_scene(scene, form, tmp_path):
    stream = io.BytesIO()
    scene.write(stream, form)
    again = Scene("other")
    assert again.readBytes(stream.read())
    assert again.print() == scene.print()
    path = tmp_path / "of any name"
    path.write_bytes(stream.getvalue())
    from_file = Scene("third")
    assert from_file.read(str(path))
    assert from_file.print() == scene.print()
    for size in range(0, len(stream.getvalue()), 7):
        assert again.readBytes(stream.getvalue()[:size]) is False
    assert again.print() == scene.print()


def test_single_pieces_are_written_as_bytes(scene, tmp_path):
    for index, piece in enumerate((scene.getNodes()[0], scene.getMeshes()[0], scene.getInstances()[0])):
        path = tmp_path / str(index)
        with open(path, "wb") as file:
            piece.write(file)
        assert path.read_bytes()[4:8] == b"SVB1"


def test_a_render_starts_from_each_encoding_and_gives_the_same_bits(tmp_path):
    box = Scene("box")
    assert box.read(examples["cornellbox"])
    camera = box.findNodes("setup")[0].getChild("instrument")
    assert camera.setWidth(16) and camera.setHeight(16)
    pictures = []
    for name, form in Scene.Format.__members__.items():
        stream = io.StringIO() if form == Scene.SVXML else io.BytesIO()
        box.write(stream, form)
        written = stream.getvalue()
        data = written if isinstance(written, bytes) else written.encode()
        path = tmp_path / name
        path.write_bytes(data)
        pictures.append(picture_of("startData", data, len(data)))
        pictures.append(picture_of("start", str(path)))
    for picture in pictures[1:]:
        assert (picture == pictures[0]).all()


def test_text_is_xml_whatever_the_names(scene):
    scene.setName("a\x01\x1f\u241b\ufffe\"<&>'\r\n\t")
    text = scene.print()
    assert xml.etree.ElementTree.fromstring(text).tag == "scene"
    assert scene.readBytes(text.encode())
    assert scene.name() == "a\x01\x1f\u241b\ufffe\"<&>'\r\n\t"


@pytest.mark.skipif(shutil.which("localedef") is None, reason="no localedef to make the locale")
def test_reading_sets_the_numeric_locale_and_writing_does_not(scene, tmp_path, monkeypatch):
    made = subprocess.run(["localedef", "-i", "en_US", "-f", "UTF-8", tmp_path / "en_US.UTF-8"], check=False, capture_output=True)
    if made.returncode > 1:
        pytest.skip("localedef lacks its sources")
    monkeypatch.setenv("LOCPATH", str(tmp_path))
    before = locale.setlocale(locale.LC_NUMERIC)

    def after(call):
        locale.setlocale(locale.LC_NUMERIC, "C")
        call()
        return locale.setlocale(locale.LC_NUMERIC)

    try:
        text = scene.print().encode()
        assert after(lambda: scene.read(str(tmp_path / "missing"))) == "en_US.UTF-8"
        assert after(lambda: scene.readBytes(text)) == "en_US.UTF-8"
        assert after(lambda: scene.readBytes(b"")) == "en_US.UTF-8"
        assert after(scene.print) == "C"
        assert after(lambda: scene.write(io.StringIO())) == "C"
        assert after(lambda: scene.write(io.BytesIO(), Scene.SVBINZ)) == "C"
    finally:
        locale.setlocale(locale.LC_NUMERIC, before)


@pytest.mark.parametrize("form", [Scene.SVXMLZ, Scene.SVBINZ])
def test_what_compresses_very_well_is_read_back(form):
    made = Scene("zeros")
    made.add(geometries.Mesh("z", numpy.zeros((400_000, 3)), numpy.zeros((0, 3), numpy.float32), TRIANGLES))
    file = io.BytesIO()
    made.write(file, form)
    assert len(file.getvalue()) < 400_000
    again = Scene("")
    assert again.readBytes(file.getvalue())
    assert again.getMeshes()[0].getVertices().shape == (400_000, 3)


def test_a_pipe_is_refused_at_once(scene, tmp_path):
    os.mkfifo(tmp_path / "pipe")
    assert not scene.read(str(tmp_path / "pipe"))
    assert scene.name() == "room"


def test_arrays_of_any_layout_are_read_as_they_lie(scene):
    """Those that numpy didn't align, and views that span less memory than their size says."""
    packed = numpy.zeros(1 + SQUARE.nbytes, numpy.uint8)[1:].view(numpy.float64).reshape(SQUARE.shape)
    packed[:] = SQUARE
    no_normals = numpy.zeros((0, 3), numpy.float32)
    for vertices in (packed, numpy.broadcast_to(SQUARE[1], SQUARE.shape), SQUARE[::-1]):
        mesh = geometries.Mesh("m", vertices, no_normals, TRIANGLES)
        assert mesh.getVertices().shape == SQUARE.shape
    assert (geometries.Mesh("m", packed, no_normals, TRIANGLES).getVertices() == SQUARE).all()


def test_copies_of_a_mesh_are_its_own(scene):
    """Also where the engine lets copies share their arrays."""
    mesh = geometries.Mesh("m", SQUARE, numpy.zeros((0, 3), numpy.float32), TRIANGLES)
    kept = scene.add(mesh, keepOriginal=True)
    kept.getVertices()[:] = 7.0
    kept.setName("other")
    assert (mesh.getVertices() == SQUARE).all() and (kept.getVertices() == SQUARE).all()
    assert mesh.name() == "m"
    scene.clear()
    assert (mesh.getVertices() == SQUARE).all()
