"""Meshes, spheres, cones and instances: arrays in and out, printed faults, what is released."""

import gc
import io

import numpy
import pytest

ENGINE = {
    "nemraMesh_create": "10", "nemraSphere_create": "20", "nemraCone_create": "30", "nemraInstance_create": "40",
    "nemraInstance_copy": "41", "nemraScene_create": "90", "nemraScene_addGeom": "91", "nemraScene_addInstance": "92",
    "nemraGeometry_getType(10)": "mesh", "nemraGeometry_getType(20)": "sphere", "nemraGeometry_getType(30)": "cone",
    "nemraNode_create(bsdf, lambertian, m)": "80", "nemraNode_className(80)": "bsdf", "nemraNode_typeName(80)": "lambertian",
    "nemraNode_name(80)": "m", "nemraInstance_getTransform": " ".join(map(str, range(16))),
}  # fmt: skip

SQUARE = numpy.array([[0, 0, 0], [1, 0, 0], [1, 1, 0], [0, 1, 0]], float)
TRIANGLES = numpy.array([[0, 1, 2], [0, 2, 3]], numpy.int32)
NO_ROWS = numpy.zeros((0, 3), numpy.float32)
DELETED = 'This geometry has been deleted. You should considerer calling "del" on it.'
DIMENSIONS_LINE = "Number of dimensions must be 2, got: 1\n"
SIZE_LINE = "Expecting a numpy.array of size ( -1 , 3 )\n"


@pytest.fixture
def geometries(nemra):
    return nemra and nemra.nodes.geometries


def elements(array):
    return "[" + " ".join(f"{value:g}" for value in numpy.asarray(array).ravel()) + "]"


def created(vertices="[]", normals="null", uvs="null", triangles="[]"):
    def count(text):
        return 0 if text == "null" else len(text.strip("[]").split())

    return f"nemraMesh_create(m, {vertices}, {normals}, {uvs}, {count(vertices)}, {triangles}, {count(triangles)})"


class TestMeshFromArrays:
    def test_all_arrays(self, probe, geometries, capsys):
        normals = numpy.tile(numpy.float32([0, 0, 1]), (4, 1))
        uvs = numpy.float32([[0, 0], [1, 0], [1, 1], [0, 1]])
        mesh = geometries.Mesh("m", SQUARE, normals, TRIANGLES, uvs)
        assert probe.calls() == [created(elements(SQUARE), elements(normals), elements(uvs), elements(TRIANGLES))]
        assert capsys.readouterr().out == ""
        del mesh
        gc.collect()
        assert probe.calls("nemraGeometry_release") == []

    def test_other_types_are_converted(self, probe, geometries):
        geometries.Mesh("m", SQUARE.astype(numpy.float32), NO_ROWS, TRIANGLES.tolist())
        geometries.Mesh(name="m", vertices=SQUARE.tolist(), normals=NO_ROWS, triangles=TRIANGLES.astype(numpy.int64))
        assert probe.calls() == [created(elements(SQUARE), triangles=elements(TRIANGLES))] * 2
        with pytest.raises(TypeError):
            geometries.Mesh("m", "vertices", NO_ROWS, TRIANGLES)

    @pytest.mark.parametrize(
        ("vertices", "line"), [(SQUARE[:, :2], SIZE_LINE), (SQUARE.ravel(), DIMENSIONS_LINE), (SQUARE[0], DIMENSIONS_LINE)]
    )
    def test_wrong_vertices_print_and_count_as_none(self, probe, geometries, capsys, vertices, line):
        geometries.Mesh("m", vertices, NO_ROWS, TRIANGLES)
        assert capsys.readouterr().out == line
        assert probe.calls() == [created("null", triangles=elements(TRIANGLES))]

    def test_wrong_normals_triangles_and_uvs(self, probe, geometries, capsys):
        mesh = geometries.Mesh("m", SQUARE, numpy.float32([]), TRIANGLES[:, :2], numpy.zeros((4, 3), numpy.float32))
        assert capsys.readouterr().out == DIMENSIONS_LINE + SIZE_LINE + SIZE_LINE.replace("3", "2")
        assert probe.calls() == [created(elements(SQUARE), triangles="null")]
        assert mesh.getPtr() == 10

    def test_missing_normals_are_zeros_for_the_engine(self, probe, geometries):
        geometries.Mesh("m", SQUARE, numpy.float32([[0, 0, 1]]), TRIANGLES)
        expected = elements([0, 0, 1] + [0] * 9)
        assert probe.calls() == [created(elements(SQUARE), expected, triangles=elements(TRIANGLES))]

    def test_memory_order_of_views(self, probe, geometries):
        fortran = numpy.asfortranarray(SQUARE)
        geometries.Mesh("m", fortran, NO_ROWS, TRIANGLES)
        assert probe.calls() == [created(elements(SQUARE.T), triangles=elements(TRIANGLES))]

    def test_reversed_and_broadcast_views_stay_inside_their_memory(self, probe, geometries):
        geometries.Mesh("m", numpy.broadcast_to(2.0, (4, 3)), NO_ROWS, TRIANGLES[::-1])
        assert probe.calls() == [created(elements([2] * 12), triangles=elements(TRIANGLES[::-1]))]

    def test_uvs_have_to_match_the_vertices(self, probe, geometries, capfd):
        mesh = geometries.Mesh("m", SQUARE, NO_ROWS, TRIANGLES, numpy.zeros((3, 2), numpy.float32))
        assert capfd.readouterr().out == "Please provide uv for each vertex 3!=4\n"
        assert probe.calls() == []
        assert repr(mesh) == DELETED and mesh.name() == "This geometry was deleted"

    def test_a_single_pair_is_dropped(self, probe, geometries, capfd):
        geometries.Mesh("m", SQUARE[:1], NO_ROWS, TRIANGLES, numpy.zeros((1, 2), numpy.float32))
        assert probe.calls() == [created(elements(SQUARE[:1]), triangles=elements(TRIANGLES))]
        assert capfd.readouterr().out == ""

    def test_uvs_without_dimension(self, probe, geometries):
        with pytest.raises(IndexError, match=r"invalid axis: 0 \(ndim = 0\)"):
            geometries.Mesh("m", SQUARE, NO_ROWS, TRIANGLES, numpy.array(1, numpy.float32))


class TestMeshToArrays:
    GETTERS = [
        ("getVertices", "nemraMesh_getVertices", numpy.float64, 3),
        ("getTriangles", "nemraMesh_getTriangles", numpy.int32, 3),
        ("getVextexNormals", "nemraMesh_getVextexNormals", numpy.float32, 3),
        ("getTriangleNormals", "nemraMesh_getTriangleNormals", numpy.float32, 3),
        ("getUvs", "nemraMesh_getUvs", numpy.float32, 2),
    ]

    @pytest.mark.parametrize(("method", "function", "dtype", "width"), GETTERS)
    def test_shapes(self, probe, geometries, method, function, dtype, width):
        mesh = geometries.Mesh("m", SQUARE, NO_ROWS, TRIANGLES)
        empty = getattr(mesh, method)()
        assert empty.shape == (0, width) and empty.dtype == dtype
        probe.answer({function + "Size": "7", function: "0 1 2 3 4 5 6"})
        rows = getattr(mesh, method)()
        assert rows.dtype == dtype and rows.flags.c_contiguous and rows.flags.writeable
        assert rows.tolist() == numpy.arange(7 // width * width).reshape(-1, width).tolist()
        probe.answer({function: "<null>"})
        assert getattr(mesh, method)().shape == (0, width)
        probe.forget_answer(function, function + "Size")

    def test_copy_is_a_new_engine_mesh_without_material(self, probe, geometries):
        mesh = geometries.Mesh("m", SQUARE, NO_ROWS, TRIANGLES)
        probe.answer({"nemraGeometry_name(10)": "m", "nemraMesh_getVerticesSize": "12", "nemraMesh_getVertices": elements(SQUARE)[1:-1],
                      "nemraMesh_getTrianglesSize": "6", "nemraMesh_getTriangles": elements(TRIANGLES)[1:-1]})  # fmt: skip
        probe.forget()
        duplicate = mesh.copy()
        assert type(duplicate) is geometries.Mesh
        calls = probe.calls()
        assert calls[-1] == created(elements(SQUARE), triangles=elements(TRIANGLES))
        order = [call.split("(")[0] for call in calls if "Size" in call]
        assert order == ["nemraMesh_getUvsSize", "nemraMesh_getTrianglesSize", "nemraMesh_getVextexNormalsSize", "nemraMesh_getVerticesSize"]
        assert not any("aterial" in call for call in calls)
        del mesh, duplicate
        gc.collect()
        assert probe.calls("nemraGeometry_release") == []


class TestGeometry:
    def test_repr_and_number(self, probe, geometries):
        handle = 5 * 2**32 + 2**31 + 7
        probe.answer({"nemraSphere_create": handle, f"nemraGeometry_getType({handle})": "sphere",
                      f"nemraGeometry_name({handle})": "s", f"nemraGeometry_numPrimitives({handle})": "1"})  # fmt: skip
        sphere = geometries.Sphere("s", 2)
        probe.answer(ENGINE)
        assert repr(sphere) == f"<nemrageometry_ptr: {handle} name: s type: sphere primitives: 1>"
        assert sphere.getPtr() == 7 - 2**31
        assert probe.calls("freeCharArray") == []

    def test_material_by_name_and_by_node(self, probe, nemra, geometries):
        sphere = geometries.Sphere("s", 2)
        node = nemra.nodes.Node("bsdf", "lambertian", "m")
        probe.answer({"nemraGeometry_getMaterialName(20)": "gold", "nemraGeometry_getMaterial(20)": "80"})
        probe.forget()
        sphere.setMaterial("gold")
        sphere.setMaterial(node)
        sphere.setMaterial(nemra.nodes.Node("no", "such", "node"))
        assert sphere.getMaterialName() == "gold"
        assert [c for c in probe.calls() if "aterial(" in c or "MaterialName" in c or c.startswith("free")] == [
            "nemraGeometry_setMaterialName(20, gold)", "nemraGeometry_setMaterial(20, 80)", "nemraGeometry_getMaterialName(20)",
            "freeCharArray(gold)",
        ]  # fmt: skip
        assert type(sphere.getMaterial()) is nemra.nodes.bsdf.Lambertian

    def test_write_and_print(self, probe, geometries, tmp_path):
        cone = geometries.Cone("c", 0.5)
        probe.answer({"nemraGeometry_serialize(30, 0)": "<cone/>", "nemraGeometry_serialize(30, 1)": b"\0bin\xff"})
        assert cone.print() == "<cone/>"
        with open(tmp_path / "c.svxml", "w") as file:
            cone.write(file)
        with open(tmp_path / "c.svbin", "wb") as file:
            cone.write(file=file)
        assert (tmp_path / "c.svxml").read_text() == "<cone/>"
        assert (tmp_path / "c.svbin").read_bytes() == b"\0bin\xff"
        with pytest.raises(AttributeError):
            cone.write(io.BytesIO())
        with pytest.raises(TypeError, match=r"^Node::dump\(file\): incompatible function argument:  `file` must be a file-like "):
            cone.write(3)

    def test_abstract(self, probe, geometries):
        with pytest.raises(TypeError, match="No constructor defined!$"):
            geometries.Geometry()
        assert geometries.Mesh.__bases__ == geometries.Sphere.__bases__ == geometries.Cone.__bases__ == (geometries.Geometry,)
        assert geometries.Geometry.__bases__ == (geometries.CGeomHandler,)


class TestSphereAndCone:
    def test_constructors(self, probe, geometries):
        geometries.Sphere("s", 4)
        geometries.Sphere("s", 4.0, True)
        geometries.Sphere(name="s", radius=4.0, reverse=True)
        geometries.Cone("c", 0.5)
        geometries.Cone("c", 0.5, True)
        assert probe.calls() == [
            "nemraSphere_create(s, 4, false)", "nemraSphere_create(s, 4, true)", "nemraSphere_create(s, 4, true)",
            "nemraCone_create(c, 0.5, false)", "nemraCone_create(c, 0.5, true)",
        ]  # fmt: skip
        for wrong in (lambda: geometries.Sphere("s"), lambda: geometries.Cone("c", 1.0, reverse=True)):
            with pytest.raises(TypeError):
                wrong()

    def test_scalars_are_single_precision(self, probe, geometries):
        sphere, cone = geometries.Sphere("s", 1), geometries.Cone("c", 1)
        probe.answer(nemraSphere_getRadius="0.1", nemraCone_getRtop="0.1", nemraSphere_setRadius="true", nemraCone_setRtop="false")
        assert sphere.getRadius() == cone.getRtop() == float(numpy.float32(0.1))
        assert sphere.setRadius(2) is True and cone.setRtop(3) is False
        assert probe.calls("nemraSphere_setRadius") + probe.calls("nemraCone_setRtop") == [
            "nemraSphere_setRadius(20, 2)", "nemraCone_setRtop(30, 3)",
        ]  # fmt: skip


class TestDeletedGeometry:
    """The engine took the geometry over: the wrapper answers with fixed words and asks the engine no more."""

    @pytest.fixture
    def deleted(self, probe, nemra, geometries):
        if not nemra:
            return None
        scene, sphere, cone = nemra.nodes.Scene("s"), geometries.Sphere("s", 1), geometries.Cone("c", 1)
        mesh = geometries.Mesh("m", SQUARE, NO_ROWS, TRIANGLES)
        for geometry in (sphere, cone, mesh):
            scene.add(geometry, keepOriginal=False)
        probe.forget()
        return sphere, cone, mesh

    def test_answers(self, probe, nemra, deleted, tmp_path):
        sphere, cone, mesh = deleted
        words = "This geometry was deleted"
        for geometry in deleted:
            assert repr(geometry) == DELETED and geometry.getPtr() == 0 and geometry.numPrimitives() == 0
            assert [geometry.name(), geometry.typeName(), geometry.print(), geometry.getMaterialName()] == [words] * 4
            geometry.setName("x")
            geometry.setMaterial("x")
            with open(tmp_path / "deleted", "wb") as file:
                geometry.write(file)
            assert (tmp_path / "deleted").read_bytes() == words.encode()
        assert sphere.getRadius() == -1.0 and cone.getRtop() == -1.0
        assert sphere.setRadius(1) is False and cone.setRtop(1) is False
        assert mesh.getVertices().shape == (0, 3) and mesh.getUvs().shape == (0, 2)
        assert repr(mesh.copy()) == DELETED
        assert probe.calls() == []
        assert "deleted" in repr(sphere.getMaterial())
        assert probe.calls("nemraGeometry_getMaterial") == ["nemraGeometry_getMaterial(0)"]


class TestInstance:
    def test_ownership(self, probe, nemra):
        instance = nemra.nodes.Instance()
        duplicate = instance.copy()
        del instance
        gc.collect()
        assert probe.calls("nemraInstance_release") == []
        del duplicate
        gc.collect()
        assert probe.calls("nemraInstance_release") == ["nemraInstance_release(&41)"]

    def test_a_copy_given_to_a_scene_is_not_released(self, probe, nemra):
        probe.answer({"keeps handles": "1"})
        duplicate = nemra.nodes.Instance().copy()
        nemra.nodes.Scene("s").add(duplicate, keepOriginal=False)
        probe.forget_answer("keeps handles")
        del duplicate
        gc.collect()
        assert probe.calls("nemraInstance_release") == []

    def test_transform_passes_unchanged(self, probe, nemra):
        instance = nemra.nodes.Instance()
        matrix = instance.getTransform()
        assert matrix.dtype == numpy.float64 and matrix.strides == (32, 8)
        assert (matrix == numpy.arange(16).reshape(4, 4)).all()
        probe.forget()
        for accepted in (matrix, matrix.astype(numpy.float32), matrix.tolist(), matrix.T, numpy.asfortranarray(matrix.T)):
            assert instance.setTransform(accepted) is True
        assert probe.calls() == [f"nemraInstance_setTransform(40, {elements(matrix)})"] * 5

    @pytest.mark.parametrize(
        ("shape", "line"),
        [
            ((3, 3), "Expecting a numpy.array of shape ( 4 , 4 )\n"),
            ((4, 3), "Expecting a numpy.array of size ( 4 , 4 )\n"),
            ((16,), DIMENSIONS_LINE),
        ],
    )
    def test_wrong_shape_prints(self, probe, nemra, capsys, shape, line):
        instance = nemra.nodes.Instance()
        assert instance.setTransform(numpy.zeros(shape)) is False
        assert capsys.readouterr().out == line
        assert probe.calls("nemraInstance_setTransform") == []

    def test_views_that_run_backwards_stay_inside_their_memory(self, probe, nemra):
        matrix = numpy.arange(16.0).reshape(4, 4)
        assert nemra.nodes.Instance().setTransform(matrix[::-1])
        assert probe.calls("nemraInstance_setTransform") == [f"nemraInstance_setTransform(40, {elements(matrix[::-1])})"]

    def test_material_may_be_taken_and_stays_unowned(self, probe, nemra):
        instance, node = nemra.nodes.Instance(), nemra.nodes.Node("bsdf", "lambertian", "m")
        instance.setMaterial(node)
        instance.setMaterial(mat=node, fallback=True, keepOriginal=False)
        assert probe.calls("nemraInstance_setMaterial") == [
            "nemraInstance_setMaterial(40, &80, false, true)", "nemraInstance_setMaterial(40, &80, true, false)",
        ]  # fmt: skip
        assert node.name() == "This node was deleted"
        with pytest.raises(TypeError):
            instance.setMaterial(None)
        probe.answer(nemraInstance_material="80")
        assert type(instance.material()) is nemra.nodes.bsdf.Lambertian

    def test_deleted(self, probe, nemra):
        instance = nemra.nodes.Instance()
        nemra.nodes.Scene("s").add(instance, keepOriginal=False)
        probe.forget()
        assert repr(instance) == 'This Instance has been deleted. You should considerer calling "del" on it.'
        assert not instance.getTransform().any() and instance.setTransform(numpy.eye(4)) is True
        assert instance.geometryName() == instance.print() == "This instance was deleted"
        instance.setGeometryName("x")
        duplicate = instance.copy()
        assert duplicate.getPtr() == 0 and "has been deleted" in repr(instance.material())
        del duplicate
        assert probe.calls() == []

    def test_repr(self, probe, nemra):
        probe.answer({"nemraInstance_geometryName(40)": "ball"})
        assert repr(nemra.nodes.Instance()) == "<nemraInstance_ptr: 40 geometry: ball>"
