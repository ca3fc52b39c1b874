"""Parameters between engine and Python."""

import numpy
import pytest
from engine_script import EngineScript

ENGINE = EngineScript()
value = ENGINE.value
PARAMETERS = [
    ENGINE.parameter("info", 1, value("text", "v1.2 é")),
    ENGINE.parameter("real", 2, value("double", "0.1")),
    ENGINE.parameter("integer", 3, value("int32", "-7")),
    ENGINE.parameter("text", 4, value("text", "hello")),
    ENGINE.parameter("file", 5, value("text", "a.png")),
    ENGINE.parameter("link", 6, value("text", "gold")),
    ENGINE.parameter("flag", 7, value("bool", "true")),
    ENGINE.parameter("vector", 8, value("float", "1 2.5 3")),
    ENGINE.parameter("direction", 9, value("float", "0 0 1")),
    ENGINE.parameter("color", 12, value("color", "901")),
    ENGINE.parameter("m2", 13, value("float", "1 2 3 4")),
    ENGINE.parameter("m3", 14, value("float", "1 2 3 4 5 6 7 8 9")),
]
NESTED = ENGINE.parameter("nested", 2, value("double", "2.5"))
MODE = ENGINE.parameter("mode", 10, value("text", "off"), choices=[("off", []), ("on", [NESTED])])
NODE = ENGINE.node("bsdf", "lambertian", parameters=[*PARAMETERS, MODE])["n"]
ENGINE.update({"nemraTriColor_space(901)": "3", "nemraTriColor_spaceToString(3)": "srgb",
               "nemraTriColor_coords(901)": "0.25 0.5 1", "nemraTriColor_create_name": "902",
               "nemraValue_create_tricolor(902)": "903", "nemraValue_create_double(0.5)": "904",
               f"nemraNode_setParameter({NODE}, real, 904, 0)": "true"})


@pytest.fixture
def node(nemra):
    return nemra and nemra.nodes.bsdf.Lambertian("n")


@pytest.fixture
def deleted(nemra):
    return nemra and nemra.nodes.bsdf.Lambertian("unknown")


class TestGetters:
    def test_scalars_and_texts(self, node):
        assert (node.getInfo(), node.getText(), node.getFile(), node.getLink()) == ("v1.2 é", "hello", "a.png", "gold")
        assert (node.getReal(), node.getInteger(), node.getFlag()) == (0.1, -7, True)
        assert node.getMode() == "off" and node.getModeChoices() == ["off", "on"]

    def test_arrays_own_their_memory(self, node):
        vector, m2, m3 = node.getVector(), node.getM2(), node.getM3()
        assert vector.dtype == m2.dtype == numpy.float32 and not vector.flags.owndata and vector.base is not None
        assert vector.tolist() == [1, 2.5, 3] and m2.tolist() == [[1, 2], [3, 4]] and m3[1].tolist() == [4, 5, 6]
        vector[0] = 9
        assert node.getVector()[0] == 1

    def test_color_is_a_dict(self, node):
        assert list(node.getColor().items()) == [("space", "srgb"), ("coord", [0.25, 0.5, 1.0])]

    def test_values_are_given_back(self, node, probe):
        node.getReal()
        taken = probe.calls("nemraParameter_value")
        assert len(taken) == 1 and len(probe.calls("nemraValue_release")) == 1
        node.getText()
        assert probe.calls("freeCharArray") == ["freeCharArray(hello)"]

    def test_missing_prints_a_line_and_gives_a_default(self, deleted, capsys):
        defaults = {"Info": "", "Real": -1.0, "Integer": 0, "Text": "", "File": "", "Link": "", "Flag": False, "Color": {},
                    "Mode": "", "ModeChoices": []}
        for name, default in defaults.items():
            assert getattr(deleted, "get" + name)() == default
            raw = "mode" if name == "ModeChoices" else name.lower()
            assert capsys.readouterr().out == f"{raw} parameter does not exists for the selected  mode\n"
        for name in ("Vector", "Direction", "M2", "M3"):
            empty = getattr(deleted, "get" + name)()
            assert empty.dtype == numpy.float32 and empty.shape == (0,)

    def test_nested_parameter_comes_and_goes_with_its_choice(self, node, probe, capsys):
        assert node.getNested() == -1.0
        assert capsys.readouterr().out == "nested parameter does not exists for the selected mode mode\n"
        probe.answer({f"nemraParameter_findRecursive({MODE}, nested)": NESTED})
        assert node.getNested() == 2.5 and capsys.readouterr().out == ""

    def test_engine_is_asked_with_a_null_top(self, deleted, probe):
        probe.forget()
        deleted.getNested()
        assert probe.calls("nemraParameter_findRecursive") == ["nemraParameter_findRecursive(0, nested)"]

    def test_an_empty_answer_is_no_crash(self, node, probe):
        number = ENGINE.value("double", "")
        probe.answer({f"nemraParameter_value({PARAMETERS[1]})": number, f"nemraValue_size({number})": "0"})
        assert node.getReal() == -1.0
        probe.answer({f"nemraParameter_value({PARAMETERS[10]})": number})
        assert node.getM2().shape == (2, 2)


class TestSetters:
    def test_value_and_answer_pass_through(self, node, probe):
        assert node.setReal(0.5) is True and node.setReal(real=0.75) is False
        assert probe.calls("nemraNode_setParameter")[0] == f"nemraNode_setParameter({NODE}, real, 904, 0)"
        assert not probe.calls("nemraValue_release")

    def test_makers(self, node, probe):
        node.setInteger(-2**31)
        node.setFlag(True)
        node.setText("é")
        node.setMode("on")
        node.setVector([1, 2, 3])
        node.setM2(numpy.array([[1, 2], [3, 4]], numpy.float64))
        node.setM3(numpy.arange(9.0).reshape(3, 3))
        made = [call for call in probe.calls() if call.startswith("nemraValue_create")]
        assert made[:4] == ["nemraValue_create_int32(-2147483648)", "nemraValue_create_bool(true)", "nemraValue_create_c_str(é)",
                        "nemraValue_create_c_str(on)"]
        assert made[4].startswith("nemraValue_create_vec_float([1 2 3], 3")
        assert made[5].startswith("nemraValue_create_vec_float([1 2 3 4], 4")
        assert made[6].startswith("nemraValue_create_vec_float([0 1 2 3 4 5 6 7 8], 9")

    @pytest.mark.parametrize("setter, shape, text", [
        ("setVector", (4,), "Number of element must be 3"), ("setVector", (3, 1), "Number of dimensions must be 1"),
        ("setDirection", (), "Number of dimensions must be 1"), ("setM2", (4,), "Number of dimensions must be 2"),
        ("setM2", (2, 3), "Expecting a 2x2 mat"), ("setM3", (9,), "Number of dimensions must be 2"),
        ("setM3", (2, 2), "Expecting a 3x3 mat")])
    def test_wrong_shape_changes_nothing(self, node, probe, setter, shape, text):
        probe.forget()
        with pytest.raises(RuntimeError, match=f"^{text}$"):
            getattr(node, setter)(numpy.zeros(shape))
        assert probe.calls() == []

    def test_views_never_read_beyond_their_memory(self, node, probe):
        """Memory order where the memory has it; a reversed or repeated view has less memory than elements."""
        m2 = numpy.array([[1, 2], [3, 4]], numpy.float32)
        node.setM2(m2.T)
        node.setVector(numpy.array([1, 2, 3], numpy.float32)[::-1])
        node.setVector(numpy.broadcast_to(numpy.float32(5), (3,)))
        node.setVector(numpy.arange(6, dtype=numpy.float32)[::2])
        assert [call.split("]")[0].split("[")[1] for call in probe.calls("nemraValue_create_vec_float")] == [
            "1 2 3 4", "3 2 1", "5 5 5", "0 1 2"]

    def test_deleted_node(self, deleted, probe):
        probe.forget()
        assert deleted.setReal(0.5) is False
        assert probe.calls() == ["nemraValue_create_double(0.5)"]

    @pytest.mark.parametrize("setter, argument", [("setReal", "x"), ("setInteger", 2**31), ("setInteger", 1.5), ("setText", 3),
                                                  ("setVector", "abc"), ("setColor", [1]), ("setFlag", "yes")])
    def test_wrong_type(self, node, setter, argument):
        with pytest.raises(TypeError, match="incompatible function arguments"):
            getattr(node, setter)(argument)

    def test_color(self, node, probe):
        node.setColor({"space": "srgb", "coord": [1, 0.5, 0.25], 7: "x", "other": 1})
        node.setColor({"space": 3, "coord": [0, 0, 0]})
        assert probe.calls("nemraTriColor_create_name") == ["nemraTriColor_create_name(srgb, 1, 0.5, 0.25)",
                                                            "nemraTriColor_create_name(, 0, 0, 0)"]
        node.setColor({"space": "srgb", "coord": (1, 2, 3)})
        node.setColor({"space": "srgb", "coord": [1, 2]})
        assert len(probe.calls("nemraNode_setParameter")) == 4
        with pytest.raises(RuntimeError):
            node.setColor({"coord": [1, 2, "x"]})
