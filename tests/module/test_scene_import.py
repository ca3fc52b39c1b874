"""Meshes and scenes from other files, loaded at once or kept as a tag until the scene is rendered."""


import numpy
import pytest
from render_picture import picture_of

from sarvo import examples, nemra

Scene = nemra.nodes.Scene
IN_METRES, IN_MILLIMETRES, UP_Z, GEOMETRIES_ALONE = 4, 1, 32, 64


def obj_of(meshes):
    """The text of an OBJ file with a group for each mesh; numbers read back to the same bits."""
    lines, first = [], 1
    for mesh in meshes:
        lines += [f"g {mesh.name()}", f"usemtl {mesh.getMaterialName()}"]
        vertices = mesh.getVertices().reshape(-1, 3)
        lines += ["v " + " ".join(repr(float(x)) for x in vertex) for vertex in vertices]
        lines += ["f " + " ".join(str(first + i) for i in triangle) for triangle in mesh.getTriangles().reshape(-1, 3)]
        first += len(vertices)
    return "\n".join(lines) + "\n"


def small_box():
    box = Scene("box")
    assert box.read(examples["cornellbox"])
    camera = box.findNodes("setup")[0].getChild("instrument")
    assert camera.setWidth(16) and camera.setHeight(16)
    return box


def rendered(scene):
    data = scene.print().encode()
    return picture_of("startData", data, len(data))


def test_a_box_from_an_obj_file_renders_to_the_same_bits(tmp_path):
    expected = rendered(small_box())
    path = tmp_path / "walls.obj"
    path.write_text(obj_of(small_box().getMeshes()))
    for load in (True, False):
        box = small_box()
        box.clearGeometry()
        assert box.addImport(str(path), load, IN_METRES | GEOMETRIES_ALONE, "")
        assert bool(box.getMeshes()) == load
        assert ("<import" in box.print()) != load
        assert (rendered(box) == expected).all()


def test_unit_axis_and_prefix(tmp_path):
    (tmp_path / "chair.obj").write_text("v 0 0 0\nv 1000 0 0\nv 0 0 2000\nusemtl oak\nf 1 2 3\n")
    scene = Scene("s")
    scene.addSearchPath(str(tmp_path))
    assert scene.addImport("chair.obj", True, IN_MILLIMETRES | UP_Z, "left_")
    (mesh,), (instance,) = scene.getMeshes(), scene.getInstances()
    assert mesh.name() == instance.geometryName() == "left_chair" and mesh.getMaterialName() == "oak"
    assert mesh.getVertices().ravel() == pytest.approx([0, 0, 0, 1, 0, 0, 0, 2, 0], abs=1e-15)


def test_what_cannot_be_imported_leaves_the_scene_as_it_was(tmp_path):
    good = tmp_path / "a.obj"
    good.write_text("v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n")
    (tmp_path / "broken.obj").write_text("v 0 0 0\nf 1 2 3\n")
    scene = Scene("s")
    assert scene.addImport(str(good), True, 0, "")
    before = scene.print()
    for name in ("a.obj", "broken.obj", "nosuch.obj", ""):
        assert scene.addImport(str(tmp_path / name), True, 0, "") is False
    assert scene.addImport(str(good), False, 1 << 20, "") is False
    assert scene.print() == before


def test_a_render_refuses_an_import_that_is_not_there():
    box = small_box()
    assert box.addImport("nosuch.ply", False, 0, "")
    renderer = nemra.Renderer()
    renderer.addLocalNode()
    data = box.print().encode()
    assert not renderer.startData(data, len(data))


def test_vertices_of_a_mesh_that_names_a_file_are_read_for_a_render_alone():
    scene = Scene("s")
    assert scene.readBytes(b'<scene version="1"><mesh name="m" file="chair.ply" unit="mm"/></scene>')
    assert numpy.size(scene.getMeshes()[0].getVertices()) == 0
    assert 'file="chair.ply" unit="mm"' in scene.print()
