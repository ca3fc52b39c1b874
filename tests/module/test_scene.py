"""Scenes: what goes in, what comes out, and the four encodings on their way to Python file objects."""

import gc
import io

import numpy
import pytest

ENGINE = {
    "nemraScene_create": "90", "nemraMesh_create": "10", "nemraSphere_create": "20", "nemraCone_create": "30",
    "nemraInstance_create": "40", "nemraNode_create(bsdf, lambertian, m)": "80", "nemraNode_clone(80)": "81",
    "nemraScene_addNode": "82", "nemraScene_addGeom": "95", "nemraScene_addInstance": str(2**40 + 5),
    "nemraGeometry_getType(10)": "mesh", "nemraGeometry_getType(20)": "sphere", "nemraGeometry_getType(30)": "cone",
}  # fmt: skip
for handle in (80, 81, 82):
    ENGINE |= {f"nemraNode_className({handle})": "bsdf", f"nemraNode_typeName({handle})": "lambertian"}

STRING_MODE = "Can't write scene, file must be in string mode (use StringIO or with open(path, 'w' ))"
BINARY_MODE = "Can't write scene, file must be in binary mode (use BytesIO or with open(path, 'wb' )) )"


@pytest.fixture
def scene(probe, nemra):
    if not nemra:
        return None
    made = nemra.nodes.Scene("s")
    probe.forget()
    return made


def shapes(nemra):
    geometries = nemra.nodes.geometries
    no_rows = numpy.zeros((0, 3), numpy.float32)
    return geometries.Mesh("m", no_rows, no_rows, no_rows), geometries.Cone("c", 1), geometries.Sphere("s", 1)


class TestAdding:
    @pytest.mark.parametrize("keep", [True, False])
    def test_geometry_comes_back_as_its_class(self, probe, nemra, scene, keep):
        for shape, handle in zip(shapes(nemra), (10, 30, 20), strict=True):
            probe.forget()
            added = scene.add(shape, keepOriginal=keep)
            assert type(added) is type(shape) and added.getPtr() == 95
            assert shape.getPtr() == (handle if keep else 0)
            type_text = {10: "mesh", 20: "sphere", 30: "cone"}[handle]
            assert probe.calls() == [
                f"nemraGeometry_getType({handle})", f"freeCharArray({type_text})",
                f"nemraScene_addGeom(90, &{handle}, {str(keep).lower()})",
            ]  # fmt: skip

    def test_deleted_geometry_still_reaches_the_engine(self, probe, nemra, scene):
        sphere = nemra.nodes.geometries.Sphere("s", 1)
        scene.add(sphere, False)
        probe.forget()
        assert scene.add(sphere) is None
        assert probe.calls() == ["nemraScene_addGeom(90, &0, true)"]

    def test_node_comes_back_as_its_class(self, probe, nemra, scene):
        node = nemra.nodes.Node("bsdf", "lambertian", "m")
        added = scene.add(node)
        assert type(added) is nemra.nodes.bsdf.Lambertian and added.getPtr() == 82 and node.getPtr() == 80
        assert probe.calls("nemraScene_addNode") == ["nemraScene_addNode(90, &80, true)"]

    @pytest.mark.parametrize("cleared", [True, False])
    def test_clone_given_away_is_not_released(self, probe, nemra, scene, cleared):
        if not cleared:
            probe.answer({"keeps handles": "1"})
        clone = nemra.nodes.Node("bsdf", "lambertian", "m").clone()
        added = scene.add(clone, keepOriginal=False)
        probe.forget_answer("keeps handles")
        assert ("has been deleted" in repr(clone)) == cleared
        del clone, added
        gc.collect()
        assert probe.calls("nemraNode_release") == []

    def test_clone_kept_is_released(self, probe, nemra, scene):
        clone = nemra.nodes.Node("bsdf", "lambertian", "m").clone()
        scene.add(clone)
        del clone
        gc.collect()
        assert probe.calls("nemraNode_release") == ["nemraNode_release(&81)"]

    @pytest.mark.parametrize(
        ("layers", "shown"),
        [
            ([], "[]"),
            ([[]], "[[]]"),
            ([["a"]], "[[a]]"),
            ([["a"], ["a", "b"]], "[[a][a b]]"),
            ((("é", "b"), []), "[[é b][]]"),
        ],
    )
    def test_layers_of_an_instance(self, probe, nemra, scene, layers, shown):
        instance = nemra.nodes.Instance()
        assert scene.add(instance, layers) == 2**40 + 5
        assert scene.add(instance, layers=layers, keepOriginal=False) == 2**40 + 5
        assert probe.calls("nemraScene_addInstance") == [
            f"nemraScene_addInstance(90, &40, {shown}, true)", f"nemraScene_addInstance(90, &40, {shown}, false)",
        ]  # fmt: skip
        assert instance.getPtr() == 0

    def test_wrong_arguments(self, probe, nemra, scene):
        mesh, _, _ = shapes(nemra)
        instance = nemra.nodes.Instance()
        for call in (
            lambda: scene.add(None),
            lambda: scene.add(mesh, layers=[]),
            lambda: scene.add(instance, "layer"),
            lambda: scene.add(instance, [[1]]),
            lambda: scene.remove(None),
        ):
            with pytest.raises(TypeError):
                call()
        assert probe.calls("nemraScene") == []


class TestContents:
    def test_texts_and_answers(self, probe, scene):
        scene.setName("n")
        scene.addSearchPath("p")
        assert scene.setActiveSetup("u") is False
        assert scene.addImport("file", True, 3, "prefix") is False
        probe.answer(nemraScene_setActiveSetupName="true", nemraScene_addImport="true", nemraScene_name="x")
        assert scene.setActiveSetup("u") is True and scene.addImport("file", False, -1, "") is True
        assert scene.name() == "x"
        assert probe.calls()[:4] == [
            "nemraScene_setName(90, n)", "nemraScene_addSearchPath(90, p)", "nemraScene_setActiveSetupName(90, u)",
            "nemraScene_addImport(90, file, true, 3, prefix)",
        ]  # fmt: skip
        probe.answer(nemraScene_name="<null>", nemraScene_getActiveSetupName="<null>")
        for read in (scene.name, scene.getActiveSetup):
            with pytest.raises(RuntimeError, match="basic_string: construction from null is not valid"):
                read()

    def test_removing_by_object_and_by_number(self, probe, nemra, scene):
        node, instance = nemra.nodes.Node("bsdf", "lambertian", "m"), nemra.nodes.Instance()
        probe.answer(nemraScene_removeGeom="true")
        probe.forget()
        assert [scene.remove(node), scene.remove(shapes(nemra)[2]), scene.remove(instance)] == [False, True, False]
        assert scene.remove(instance.getPtr()) is None
        scene.remove(scene.add(instance))
        scene.remove(2**64 - 1)
        for number in (-1, 2**64):
            with pytest.raises(TypeError):
                scene.remove(number)
        assert [call for call in probe.calls() if "remove" in call] == [
            "nemraScene_removeNode(90, 80)", "nemraScene_removeGeom(90, 20)", "nemraScene_removeInstance(90, 40)",
            "nemraScene_remove(90, 40)", f"nemraScene_remove(90, {2**40 + 5})", f"nemraScene_remove(90, {2**64 - 1})",
        ]  # fmt: skip

    def test_clearing(self, probe, scene):
        scene.clear(), scene.clearNodes(), scene.clearGeometry(), scene.clearInstances()
        assert probe.calls() == [f"nemraScene_clear{what}(90)" for what in ("", "Nodes", "Geometry", "Instances")]

    def test_lists_are_borrowed_and_typed(self, probe, nemra, scene):
        assert scene.getNodes() == scene.getGeometries() == scene.getInstances() == scene.getMeshes() == scene.findNodes() == []
        probe.answer({
            "nemraScene_getNodes": "80 81", "nemraScene_findNodes": "81", "nemraScene_getInstances": "40 41",
            "nemraScene_getGeometries": "30 0 77 10 20", "nemraScene_getMeshes": "10 11", "nemraScene_getSpheres": "20",
            "nemraScene_getCones": "30",
        })  # fmt: skip
        geometries = nemra.nodes.geometries
        assert [type(node) for node in scene.getNodes()] == [nemra.nodes.bsdf.Lambertian] * 2
        assert [i.getPtr() for i in scene.getInstances()] == [40, 41]
        probe.forget()
        found = scene.getGeometries()
        assert [type(g) for g in found] == [geometries.Cone, geometries.Mesh, geometries.Sphere]
        assert [g.getPtr() for g in found] == [30, 10, 20]
        assert len(probe.calls("freeCharArray")) == 4
        assert [type(g) for g in scene.getMeshes() + scene.getSpheres() + scene.getCones()] == [
            geometries.Mesh, geometries.Mesh, geometries.Sphere, geometries.Cone,
        ]  # fmt: skip
        assert scene.findNodes(name="n", class_name="c")[0].getPtr() == 81
        assert probe.calls("nemraScene_findNodes") == ["nemraScene_findNodes(90, c, , n)"]
        del found
        gc.collect()
        assert not any("release" in call for call in probe.calls())


class TestReading:
    def test_answers_pass_and_bytes_keep_their_zeros(self, probe, scene):
        probe.answer(nemraScene_readFromFile="true")
        assert scene.read("a.svxml") is True
        assert scene.readBytes(b"a\0b") is False
        assert probe.calls() == ["nemraScene_readFromFile(90, a.svxml)", "nemraScene_readFromChar(90, a\0b, 3)"]

    def test_only_bytes(self, probe, scene):
        for wrong in (bytearray(b"a"), "a", None, memoryview(b"a")):
            with pytest.raises(TypeError):
                scene.readBytes(wrong)
        assert probe.calls() == []


class TestWriting:
    @pytest.fixture
    def encodings(self, probe, nemra):
        if not nemra:
            return None
        Scene = nemra.nodes.Scene
        payloads = {Scene.SVXML: "<scène/>", Scene.SVBIN: b"\0bin", Scene.SVXMLZ: b"\x1f\x8bx", Scene.SVBINZ: b"\x1f\x8bb\0"}
        probe.answer({f"nemraScene_writeToChar(90, {int(f)})": payload for f, payload in payloads.items()})
        return payloads

    def test_format_enumerator(self, probe, nemra):
        Scene = nemra.nodes.Scene
        assert {n: int(m) for n, m in Scene.Format.__members__.items()} == {"SVXML": 0, "SVBIN": 1, "SVXMLZ": 2, "SVBINZ": 3}
        assert Scene.SVBIN is Scene.Format.SVBIN
        with pytest.raises(TypeError):
            Scene("s").write(io.BytesIO(), 1)

    def test_bytes_are_rewound_and_text_is_not(self, probe, scene, encodings):
        for form, payload in encodings.items():
            stream = io.StringIO() if isinstance(payload, str) else io.BytesIO()
            scene.write(stream, form)
            assert stream.read() == ("" if isinstance(payload, str) else payload)
            assert stream.getvalue() == payload
        assert len(probe.calls("freeCharArray")) == 4

    def test_files(self, probe, nemra, scene, encodings, tmp_path):
        for mode, form in [("w", 0), ("wb", 1), ("ab", 2), ("w+b", 3)]:
            form, payload = list(encodings.items())[form]
            with open(tmp_path / mode, mode, encoding=None if "b" in mode else "utf-8") as file:
                scene.write(file, format=form)
            assert (tmp_path / mode).read_bytes() == (payload.encode() if isinstance(payload, str) else payload)

    def test_mismatch_is_refused_before_the_engine_is_asked(self, probe, nemra, scene, encodings, tmp_path):
        class Renamed(io.BytesIO):
            pass

        class Minimal:
            def write(self, data): ...
            def flush(self): ...

        Scene = nemra.nodes.Scene
        with open(tmp_path / "f", "wb") as binary, open(tmp_path / "g", "w") as text:
            for file in (io.BytesIO(), binary):
                with pytest.raises(TypeError) as refusal:
                    scene.write(file)
                assert str(refusal.value) == STRING_MODE
            for file in (io.StringIO(), Renamed(), Minimal(), text):
                for form in (Scene.SVBIN, Scene.SVXMLZ, Scene.SVBINZ):
                    with pytest.raises(TypeError) as refusal:
                        scene.write(file, form)
                    assert str(refusal.value) == BINARY_MODE
        with pytest.raises(TypeError) as refusal:
            scene.write(3)
        assert str(refusal.value) == (
            "Scene::write(file): incompatible function argument:  `file` must be a file-like object, but `3` provided"
        )
        assert probe.calls() == []
        scene.write(Minimal())
        assert probe.calls("nemraScene_writeToChar") == ["nemraScene_writeToChar(90, 0)"]

    def test_what_a_file_raises_passes_on(self, probe, nemra, scene, encodings):
        class Full:
            mode = "w"

            def write(self, data):
                raise OSError(28, "No space left on device")

            def flush(self): ...

        for form, mode in ((nemra.nodes.Scene.SVXML, "w"), (nemra.nodes.Scene.SVBIN, "wb")):
            file = Full()
            file.mode = mode
            with pytest.raises(OSError, match="No space left"):
                scene.write(file, form)

    def test_long_text_is_cut_between_characters(self, probe, scene):
        text = "aé€🙂" * 700
        probe.answer({"nemraScene_writeToChar(90, 0)": text})
        stream = io.StringIO()
        scene.write(stream)
        assert stream.getvalue() == text == scene.print()

    def test_print_goes_by_size_and_text_by_its_end(self, probe, scene):
        probe.answer({"nemraScene_writeToChar(90, 0)": "a\0b"})
        stream = io.StringIO()
        scene.write(stream)
        assert stream.getvalue() == "a" and scene.print() == "a\0b"

    def test_null_raises(self, probe, scene):
        probe.answer({"nemraScene_writeToChar(90, 0)": "<null>"})
        for write in (scene.print, lambda: scene.write(io.StringIO())):
            with pytest.raises(RuntimeError, match="basic_string: construction from null is not valid"):
                write()
