"""Raw data slots and fixed children of a node."""

import numpy
import pytest
from engine_script import EngineScript

ENGINE = EngineScript()
SLOTS = [("text", 1), ("index", 3), ("ints", 4), ("floats", 5), ("doubles", 6), ("data/1", 7)]
OLD = ENGINE.handle("layer", "generic", "layers")
NODE = ENGINE.node("setup", "default", raw=SLOTS, children=[("layers", OLD), ("slot", 0)])["n"]
ENGINE.node("setup", "linked", children=[("layers", OLD)])
NEW = ENGINE.node("layer", "generic", names=["mine"])["mine"]
OTHER = ENGINE.node("bsdf", "black", names=["other"])["other"]
CONTENTS = {"text": ENGINE.value("text", "é"), "index": ENGINE.value("int32", "0 1 2"), "ints": ENGINE.value("int32", "-1"),
            "floats": ENGINE.value("float", "0.5 1"), "doubles": ENGINE.value("double", "0.1"),
            "data/1": ENGINE.value("binary", "ab")}
ENGINE.update({f"nemraNode_getRawDataValue({NODE}, {slot})": str(number) for slot, number in CONTENTS.items()})
ENGINE.update({f"nemraNode_setRawDataValue({NODE}, {slot}, 0)": "true" for slot, _ in SLOTS})
ENGINE.update({f"nemraNode_setChild({NODE}, {NEW})": "true", f"nemraNode_clone({NEW})": "801",
               "nemraNode_className(801)": "layer", "nemraNode_typeName(801)": "generic"})


@pytest.fixture
def node(nemra, probe):
    made = nemra and nemra.nodes.setup.Default("n")
    if probe:
        probe.forget()
    return made


@pytest.fixture
def deleted(nemra):
    return nemra and nemra.nodes.setup.Default("unknown")


class TestRawData:
    def test_reading(self, node, probe):
        assert node.getRawText() == "é" and node.getRawData_1() == b"ab"
        for array, dtype, contents in ((node.getRawIndex(), numpy.int32, [0, 1, 2]), (node.getRawInts(), numpy.int32, [-1]),
                                       (node.getRawFloats(), numpy.float32, [0.5, 1]),
                                       (node.getRawDoubles(), numpy.float64, [0.1])):
            assert array.dtype == dtype and array.tolist() == contents and array.base is not None
        assert probe.calls("nemraValue_release") == []

    def test_writing(self, node, probe):
        assert node.setRawText("é") is True and node.setRawData_1(b"a\0b") is True
        assert node.setRawIndex([1, 2]) is True and node.setRawDoubles(numpy.array([0.5], "f4")) is True
        made = [call for call in probe.calls() if call.startswith("nemraValue_create")]
        assert made == ["nemraValue_create_c_str(é)", "nemraValue_create_vec_char(a\0b, 3)",
                        "nemraValue_create_vec_int32_t([1 2], 2)", "nemraValue_create_vec_double([0.5], 1)"]

    def test_only_the_first_dimension_counts(self, node, probe):
        node.setRawFloats(numpy.arange(12, dtype=numpy.float32).reshape(4, 3))
        node.setRawFloats(numpy.zeros((4, 0), numpy.float32))
        node.setRawFloats([])
        assert probe.calls("nemraValue_create_vec_float") == ["nemraValue_create_vec_float([0 1 2 3], 4)",
                                                              "nemraValue_create_vec_float(null, 0)",
                                                              "nemraValue_create_vec_float(null, 0)"]
        with pytest.raises(IndexError):
            node.setRawFloats(numpy.float32(1))

    def test_empty_bytes_are_a_null_pointer(self, node, probe):
        node.setRawData_1(b"")
        assert probe.calls("nemraValue_create_vec_char") == ["nemraValue_create_vec_char(null, 0)"]

    def test_deleted_node(self, deleted, probe):
        probe.answer(nemraValue_create="850")
        assert deleted.getRawData_1() == b"" and deleted.getRawFloats().shape == (0,) and deleted.getRawText() == ""
        assert deleted.setRawText("x") is False and deleted.setRawInts([1]) is False
        assert probe.calls("nemraValue_release") == ["nemraValue_release(&850)"] * 3  # empty, made for the getter alone
        assert not probe.calls("nemraNode_getRawDataValue") and not probe.calls("nemraNode_setRawDataValue")


class TestChildren:
    def test_getter_gives_the_typed_child(self, node, nemra, probe):
        assert type(node.getLayers()) is nemra.nodes.layer.Generic and node.getLayers().name() == "layers"
        probe.answer({f"nemraNode_getChild({NODE}, layers)": "0"})
        assert type(node.getLayers()) is nemra.nodes.Node and node.getLayers().getPtr() == 0
        probe.answer({f"nemraNode_getChild({NODE}, layers)": OLD})

    def test_new_child_takes_the_slots_name(self, node, nemra, probe):
        assert node.setLayers(nemra.nodes.layer.Generic("mine")) is True
        changes = [call for call in probe.calls() if call.startswith(("nemraNode_setName", "nemraNode_setChild"))]
        assert changes == [f"nemraNode_setName({NEW}, layers)", f"nemraNode_setChild({NODE}, {NEW})"]

    def test_other_family_is_refused(self, node, nemra, probe, capsys):
        assert node.setLayers(nemra.nodes.bsdf.Black("other")) is False
        assert capsys.readouterr().out == "Wrong Node type. Expecting: layer get:  bsdf\n"
        assert not probe.calls("nemraNode_setName") and not probe.calls("nemraNode_setChild")

    def test_refused_clone_stays_the_scripts_and_taken_one_doesnt(self, node, nemra, probe):
        clone = nemra.nodes.layer.Generic("mine").clone()
        assert node.setLayers(clone) is False
        del clone
        assert probe.calls("nemraNode_setChild") == [f"nemraNode_setChild({NODE}, 801)"]
        assert probe.calls("nemraNode_release") == []
        other = nemra.nodes.Node("layer", "generic", "mine").clone()
        probe.answer({"nemraNode_className(801)": "bsdf"})
        assert node.setLayers(other) is False
        del other
        assert probe.calls("nemraNode_release") == ["nemraNode_release(&801)"]
        probe.answer({"nemraNode_className(801)": "layer"})

    def test_deleted_parent_and_none(self, deleted, node, nemra, capsys):
        assert deleted.getLayers().getPtr() == 0
        assert deleted.setLayers(nemra.nodes.layer.Generic("mine")) is False
        assert capsys.readouterr().out == "Wrong Node type. Expecting: This node was deleted get:  layer\n"
        with pytest.raises(TypeError, match="incompatible function arguments"):
            node.setLayers(None)
