"""An engine that answers oddly: names and texts of any kind, nulls, changing answers. No answer may crash, and what the module
was given it gives back."""

import numpy
import pytest
from engine_script import EngineScript

ENGINE = EngineScript()
value = ENGINE.value
BAD = b"ab\xff"  # no UTF-8
FORBIDDEN = "\\/:?\"<>|-%^{}[]&* "

# bsdf/lambertian: odd names, choices in choices in choices, children and slots that clash.
DEEPEST = ENGINE.parameter("deepest", 2)
THIRD = ENGINE.parameter("third", 10, choices=[("c", [DEEPEST])])
SECOND = ENGINE.parameter("second", 10, choices=[("b", [THIRD])])
ALIKE = [ENGINE.parameter("alike", 3), ENGINE.parameter("alike", 3), ENGINE.parameter("alike", 4)]
TOP = ENGINE.parameter("top", 10, choices=[("empty", []), ("one", [SECOND, ALIKE[0]]), ("two", [ALIKE[1], ALIKE[2]]),
                                           ("self", [ENGINE.parameter("top", 2)]), ("null", [0])])
NAMED = [ENGINE.parameter(name, 2) for name in ("x" + FORBIDDEN, "éa", "3x", "ptr", "")]
EXTREME = [ENGINE.parameter(f"extreme{code}", code) for code in (-(2**31), 2**31 - 1)]
ODD = ENGINE.node(
    "bsdf", "lambertian",
    parameters=[TOP, *NAMED, *EXTREME, ENGINE.parameter("info", 1), ENGINE.parameter("rawX", 2), ENGINE.parameter("raw", 3)],
    children=[("info", ENGINE.handle("bsdf", "black", "info")), ("a b", ENGINE.handle("bsdf", "black", "a b")),
              ("a_b", ENGINE.handle("layer", "generic", "a_b")), ("", ENGINE.handle("bsdf", "black", ""))],
    raw=[("x", 5), ("", 7), ("minus", -1), ("none", 0), ("over", 8), ("d/1", 7), ("d_1", 5)],
)["n"]

# spectrum/tabulated: one parameter of each kind.
KINDS = {"real": 2, "integer": 3, "text": 4, "flag": 7, "vector": 8, "mode": 10, "color": 12, "m2": 13, "m3": 14, "table": 11}
PARAMETERS = {name: ENGINE.parameter(name, code, choices=[("a", []), ("b", [])] if code == 10 else None,
                                     columns=["a", "b"] if code == 11 else ())
              for name, code in KINDS.items()}
NODE = ENGINE.node("spectrum", "tabulated", parameters=PARAMETERS.values(), raw=[("text", 1), ("ints", 3), ("bytes", 7)])["n"]
ENGINE.node("setup", "default", children=[("slot", 0)])
ENGINE.update({"nemraValue_create_table(700)": "701", "nemraTableValue_create": "700"})


@pytest.fixture
def node(nemra, probe):
    made = nemra and nemra.nodes.spectrum.Tabulated("n")
    if probe:
        probe.forget()
    return made


def own(python_class):
    return [name for name in vars(python_class) if not name.startswith("_")]


class TestNames:
    def test_any_name_becomes_a_method(self, nemra):
        odd = nemra.nodes.bsdf.Lambertian
        assert {"getX" + "_" * 18, "set\udcc3\udca9a".encode("utf-8", "surrogateescape").decode(), "get3x", "getPtr"} <= set(own(odd))
        assert odd.getPtr is not nemra.nodes.Node.getPtr and "-> float" in odd.getPtr.__doc__
        assert "-> float" in odd.get.__doc__ and "float) -> bool" in odd.set.__doc__
        assert not any("xtreme" in name for name in own(odd))

    def test_choices_in_choices(self, nemra, probe):
        node = nemra.nodes.bsdf.Lambertian("n")
        probe.forget()
        for getter in (node.getThird, node.getDeepest):
            getter()
        assert probe.calls("nemraParameter_findRecursive") == [f"nemraParameter_findRecursive({TOP}, third)",
                                                               f"nemraParameter_findRecursive({TOP}, deepest)"]

    def test_alike_under_several_choices(self, nemra, probe):
        odd = nemra.nodes.bsdf.Lambertian
        probe.forget()
        node = odd("n")
        node.setAlike(3)
        node.setAlike("text")
        assert probe.calls("nemraValue_create_int32") == ["nemraValue_create_int32(3)"]
        assert probe.calls("nemraValue_create_c_str") == ["nemraValue_create_c_str(text)"]
        assert odd.getTop.__doc__.count("-> str") == 1 and odd.getTop.__doc__.count("-> float") == 1

    def test_children_give_way_one_method_at_a_time(self, nemra):
        odd = nemra.nodes.bsdf.Lambertian
        assert "Get the info parameter" in odd.getInfo.__doc__ and "Set the info node" in odd.setInfo.__doc__
        assert "Retrieve the a b node" in odd.getA_b.__doc__ and "a_b node" not in odd.getA_b.__doc__
        assert "Retrieve the  node" not in odd.get.__doc__

    def test_slots_join_what_is_there(self, nemra, probe):
        odd = nemra.nodes.bsdf.Lambertian
        names = [name for name in own(odd) if name.startswith("setRaw")]
        assert names == ["setRawX", "setRaw", "setRawD_1"]
        for name in names:
            assert getattr(odd, name).__doc__.startswith(f"{name}(*args, **kwargs)\nOverloaded function.")
        probe.forget()
        odd("n").setRawD_1(b"ab")
        odd("n").setRawD_1([1.5])
        assert [call.split(",")[1] for call in probe.calls("nemraNode_setRawDataValue")] == [" d/1", " d_1"]


class TestTextThatIsNoUtf8:
    def test_general_methods(self, nemra, probe):
        node = nemra.nodes.Node("spectrum", "tabulated", "n")
        probe.answer({f"nemraNode_comments({NODE})": BAD, f"nemraNode_serialize({NODE}, 0)": BAD,
                      f"nemraNode_serialize({NODE}, 1)": BAD})
        probe.forget()
        for method in (node.comments, node.print):
            with pytest.raises(UnicodeDecodeError):
                method()
        assert len(probe.calls("freeCharArray")) == 1
        probe.answer({f"nemraNode_name({NODE})": BAD})
        with pytest.raises(UnicodeDecodeError):
            repr(node)
        probe.answer({f"nemraNode_name({NODE})": "n"})

    def test_values(self, node, probe):
        number = value("text", BAD, kind=1, size=1)
        probe.answer(dict(ENGINE) | {f"nemraParameter_value({PARAMETERS['text']})": str(number),
                                     f"nemraParameter_choiceName({PARAMETERS['mode']}, 1)": BAD,
                                     f"nemraNode_getRawDataValue({NODE}, text)": str(number)})
        probe.forget()
        with pytest.raises(UnicodeDecodeError):
            node.getText()
        assert len(probe.calls("nemraValue_release")) == len(probe.calls("freeCharArray")) == 1
        for method in (node.getModeChoices, node.getRawText):
            with pytest.raises(UnicodeDecodeError):
                method()
        assert len(probe.calls("freeCharArray")) == 2

    def test_cells_and_columns(self, node, probe):
        cell = value("text", BAD, kind=1, size=1)
        table = ENGINE.table([[cell]])
        probe.answer(dict(ENGINE) | {f"nemraParameter_tableValues({PARAMETERS['table']})": str(table)})
        probe.forget()
        with pytest.raises(UnicodeDecodeError):
            node.getTable()
        assert len(probe.calls("nemraValue_release")) == len(probe.calls("freeCharArray")) == 1

    def test_messages(self, nemra, probe):
        seen = []
        nemra.onMessage(lambda *arguments: seen.append(arguments))
        for foreign in (True, False):
            assert "utf-8" in probe.log(BAD, 4, foreign=foreign)
        probe.log("fine", 4)
        nemra.onMessage(None)
        assert [text for text, _ in seen] == ["fine"]

    @pytest.mark.parametrize("name", [{"nemraParameter_name(6)": BAD}, {"nemraNode_name(7)": BAD},
                                      {"nemraNode_getRawDataSize(5)": "1", "nemraNode_getRawDataName(5, 0)": BAD,
                                       "nemraNode_getRawDataType(5, ab\udcff)": "1", "nemraNode_getRawDataType": "1"}])
    def test_at_import(self, run_python, name):
        process = run_python(f"""
from probe_engine import Probe
Probe().answer({{**{{"nemraNode_create(intlaw, advfoil, dummy)": "5", "nemraNode_getParameters(5)": "6",
                  "nemraParameter_type(6)": "2", "nemraNode_children(5)": "7"}}, **{{k: v for k, v in {name!r}.items()
                  if k.isascii()}}}})
try:
    from sarvo import nemra
except ImportError as e:
    print(e, type(e.__cause__).__name__)
""")
        assert process.stdout == "initialization failed UnicodeDecodeError\n", process.stderr


class TestNull:
    def test_names_of_a_node_that_arrives(self, nemra, probe):
        probe.answer({f"nemraNode_getChild({NODE}, c)": "55", "nemraNode_className(55)": "<null>"})
        with pytest.raises(RuntimeError, match="construction from null"):
            nemra.nodes.Node("spectrum", "tabulated", "n").getChild("c")
        probe.answer({"nemraNode_className(55)": "bsdf", "nemraNode_typeName(55)": "<null>"})
        with pytest.raises(RuntimeError, match="construction from null"):
            nemra.nodes.Node("spectrum", "tabulated", "n").getChild("c")

    def test_lists(self, nemra, probe):
        node = nemra.nodes.Node("spectrum", "tabulated", "n")
        probe.answer({f"nemraNode_children({NODE})": "<null>", f"nemraNode_getChildList({NODE})": "",
                      "count nemraNode_getChildList": "0"})
        assert node.children() == [] and node.getChildList() == []

    def test_values(self, node, probe):
        """Without a value there is nothing to convert and nothing to give back."""
        for name in ("real", "integer", "flag", "vector"):
            probe.answer({f"nemraParameter_value({PARAMETERS[name]})": "<null>"})
        assert (node.getReal(), node.getInteger(), node.getFlag(), node.getVector().size) == (-1.0, 0, False, 0)
        assert probe.calls("nemraValue_release") == []

    def test_texts(self, node, probe):
        color = ENGINE.value("color", "901")
        probe.answer(dict(ENGINE) | {f"nemraParameter_value({PARAMETERS['color']})": str(color),
                                     "nemraTriColor_spaceToString": "<null>",
                                     f"nemraParameter_choiceName({PARAMETERS['mode']}, 0)": "<null>"})
        for method in (node.getColor, node.getModeChoices):
            with pytest.raises(RuntimeError, match="construction from null"):
                method()
        assert len(probe.calls("nemraValue_release")) == 1

    def test_cells(self, node, probe):
        table = ENGINE.table([[0, value("int32", "7", kind=3)], [value("int32", "7", kind=3), 0]])
        probe.answer(dict(ENGINE) | {f"nemraParameter_tableValues({PARAMETERS['table']})": str(table)})
        assert {name: column.tolist() for name, column in node.getTable().items()} == {"a": [0, 7]}

    def test_serialised_bytes(self, nemra, probe, tmp_path):
        probe.answer({f"nemraNode_serialize({NODE}, 1)": "<null>"})
        with open(tmp_path / "n", "wb") as file, pytest.raises(RuntimeError, match="construction from null"):
            nemra.nodes.Node("spectrum", "tabulated", "n").write(file)

    def test_at_import(self, run_python):
        for answers in ({"nemraNode_getRawDataSize(5)": "1", "nemraNode_getRawDataName(5, 0)": "<null>"},
                        {"nemraNode_children(5)": "7", "nemraNode_name(7)": "<null>"}):
            process = run_python(f"""
from probe_engine import Probe
Probe().answer({{"nemraNode_create(intlaw, advfoil, dummy)": "5", **{answers!r}}})
try:
    from sarvo import nemra
except ImportError as e:
    print(e)
""")
            assert process.stdout == "basic_string: construction from null is not valid\n", process.stderr


class TestSizes:
    def test_zero_means_to_the_first_zero(self, nemra, probe, tmp_path):
        probe.answer({f"nemraNode_serialize({NODE}, 0)": b"ab\0cd", f"nemraNode_serialize({NODE}, 1)": b"ef\0gh",
                      "count nemraNode_serialize": "0"})
        node = nemra.nodes.Node("spectrum", "tabulated", "n")
        probe.forget()
        assert node.print() == "ab"
        with open(tmp_path / "n", "wb") as file:
            node.write(file)
        assert (tmp_path / "n").read_bytes() == b"ef" and len(probe.calls("freeCharArray")) == 2
        probe.forget_answer("count nemraNode_serialize")

    def test_negative_sizes_are_empty(self, node, probe):
        number = value("int32", "1 2", size=-1)
        probe.answer(dict(ENGINE) | {f"nemraParameter_value({PARAMETERS['integer']})": str(number),
                                     f"nemraNode_getRawDataValue({NODE}, ints)": str(number)})
        assert node.getInteger() == 0 and node.getRawInts().size == 0


class TestTables:
    def read(self, node, probe, *columns):
        table = ENGINE.table(columns)
        probe.answer(dict(ENGINE) | {f"nemraParameter_tableValues({PARAMETERS['table']})": str(table)})
        return node.getTable()

    def test_the_last_cell_of_a_column_decides(self, node, probe):
        table = self.read(node, probe, [value(kind=-1), value("bool", "true", kind=2)],
                          [value("binary", "x", kind=7), value("text", "lost", kind=100)])
        assert list(table) == ["a"] and table["a"].tolist() == [False, True]

    def test_empty_cells_and_columns_beyond_the_schema(self, node, probe):
        kinds = (("int32", 3), ("uint64", 4), ("float", 5), ("double", 6))
        for reader, kind in kinds:
            table = self.read(node, probe, [value(reader, "", kind=kind)], [value(reader, "2", kind=kind)],
                              [value(reader, "3", kind=kind)])
            assert {name: column.tolist() for name, column in table.items()} == {"a": [0], "b": [2]}

    def test_an_unfinished_table_is_given_back(self, node, probe, capsys):
        probe.answer({"nemraTableValue_hasColumn(700, a)": "true", "nemraTableValue_set": "true",
                      "nemraTableValue_columnIndex(700, a)": "0"})
        assert node.setTable({"a": [1.5]}) is False
        assert node.setTable({"a": ["fine"], "c": ["unknown"]}) is False
        with pytest.raises(IndexError):
            node.setTable({"a": []})
        with pytest.raises(UnicodeEncodeError):
            node.setTable({"\udc80": ["x"]})
        assert len(probe.calls("nemraTableValue_release")) == 4 and not probe.calls("nemraNode_setParameter")
        probe.forget()
        node.setTable({"a": type("Subclass", (list,), {})(["x"])})
        assert not probe.calls("nemraTableValue_release") and len(probe.calls("nemraNode_setParameter")) == 1


class TestChangingAnswers:
    def test_inactive_between_look_up_and_question(self, node, probe, capsys):
        probe.answer({f"nemraParameter_type({PARAMETERS['real']})": "0", f"nemraParameter_type({PARAMETERS['mode']})": "0"})
        assert node.getReal() == -1.0 and node.getModeChoices() == []
        assert capsys.readouterr().out == ("real parameter does not exists for the selected  mode\n"
                                           "mode parameter does not exists for the selected  mode\n")
        probe.answer(ENGINE)

    def test_number_of_choices_is_asked_each_time(self, node, probe):
        probe.answer({f"once nemraParameter_choicesSize({PARAMETERS['mode']})": "5"})
        assert node.getModeChoices() == ["a", "b"]
        assert len(probe.calls("nemraParameter_choicesSize")) == 3

    def test_deleted_between_two_calls(self, node, probe, capsys):
        """A child setter asks for the old child, and that may be gone when the new one is given."""
        setup = type(node).__mro__[1]("setup", "default", "n")
        assert setup.setChild(setup.getChild("slot")) is False
        assert probe.calls("nemraNode_setChild")[0].endswith(", 0)")


class TestCallsInOrder:
    """All calls of one getter and one setter of each kind."""

    LOOK_UP = [f"nemraNode_getParameters({NODE})"]

    def test_setters(self, node, probe):
        arguments = {"real": (0.5, "double(0.5)"), "integer": (3, "int32(3)"), "text": ("x", "c_str(x)"), "flag": (True, "bool(true)"),
                     "mode": ("a", "c_str(a)"), "vector": ([1, 2, 3], "vec_float([1 2 3], 3)"),
                     "m2": (numpy.eye(2), "vec_float([1 0 0 1], 4)"), "m3": (numpy.eye(3), "vec_float([1 0 0 0 1 0 0 0 1], 9)")}
        for name, (argument, made) in arguments.items():
            probe.forget()
            assert getattr(node, "set" + name.capitalize())(argument) is False
            assert probe.calls() == ["nemraValue_create_" + made, f"nemraNode_setParameter({NODE}, {name}, 0, 0)"]
        probe.forget()
        node.setColor({"coord": [1, 2, 3]})
        assert probe.calls() == ["nemraTriColor_create_name(, 1, 2, 3)", "nemraValue_create_tricolor(0)",
                                 f"nemraNode_setParameter({NODE}, color, 0, 0)"]

    def test_getters(self, node, probe):
        readers = {"real": ("double", "1.5", ["get_double", "size", "size"]), "integer": ("int32", "1", ["get_int32", "size", "size"]),
                   "flag": ("bool", "true", ["get_bool"]), "text": ("text", "x", ["toString"]),
                   "vector": ("float", "1 2", ["get_float", "size", "size", "size"])}
        for name, (reader, elements, asked) in readers.items():
            number = value(reader, elements)
            probe.answer(dict(ENGINE) | {f"nemraParameter_value({PARAMETERS[name]})": str(number)})
            probe.forget()
            getattr(node, "get" + name.capitalize())()
            calls = [call for call in probe.calls() if "_name(" not in call and not call.startswith("freeCharArray")]
            assert calls == [*self.LOOK_UP, f"nemraParameter_type({PARAMETERS[name]})", f"nemraParameter_value({PARAMETERS[name]})",
                             *(f"nemraValue_{one}({number})" for one in asked), f"nemraValue_release(&{number})"]


class TestCallbacks:
    def test_on_the_calling_thread(self, nemra, probe):
        probe.answer(nemraRendererCreate="60", nemraServerCreate="61")
        renderer, server, seen = nemra.Renderer(), nemra.Server(), []
        renderer.onUpdate(lambda raw: seen.append(type(raw)))
        renderer.onChange(lambda state: seen.append(int(state)))
        renderer.onStatisticsUpdate(lambda: seen.append("statistics"))
        renderer.onMessage(lambda *arguments: seen.append(arguments[:2]))
        server.onBusyStateChange(seen.append)
        for foreign in (True, False):
            seen.clear()
            outcomes = [probe.raw("nemraRendererSetUpdateCallback", 62, foreign), probe.state(1, foreign), probe.statistics(foreign),
                        probe.message("s", "m", 4, foreign), probe.busy(True, foreign)]
            assert outcomes == [""] * 5
            assert seen == [nemra.Raw, 1, "statistics", ("s", "m"), True]

    def test_what_is_no_callable_leaves_the_old_one(self, nemra, probe):
        seen = []
        nemra.onMessage(lambda text, level: seen.append(text))
        probe.forget()
        with pytest.raises(TypeError):
            nemra.onMessage(3)
        assert probe.calls("addNemraLogMessageCallbackSink") == []
        probe.log("still", 4)
        nemra.onMessage(None)
        assert seen == ["still"]
