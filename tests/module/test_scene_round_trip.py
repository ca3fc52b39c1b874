"""A scene that a script builds, with the engine that ships: what goes in comes out, also after it was written and read."""

import io
import threading

import numpy
import pytest

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


def picture_of(start, *arguments):
    """One sample of each pixel of a scene that a method of a renderer starts."""
    pictures, finished = [], threading.Event()

    def finish(raw):
        pictures.append(raw.pixels())
        finished.set()

    made = nemra.Renderer()
    made.setHaltCondition(time=0, spp=1, action=nemra.Renderer.halt_cond.stops)
    made.addLocalNode()
    made.onFinish(finish)
    assert getattr(made, start)(*arguments)
    assert finished.wait(60)
    return pictures[0]


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
