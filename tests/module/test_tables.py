"""Table parameters: columns as numpy arrays and lists."""

import numpy
import pytest
from engine_script import EngineScript

ENGINE = EngineScript()
value = ENGINE.value
COLUMNS = ["words", "flags", "ints", "naturals", "floats", "doubles", "blobs", "links", "empty", "odd", "mixed"]
CONTENTS = ENGINE.table([
    [value("text", "é", kind=1), value("text", "b", kind=1)],
    [value("bool", "true", kind=2), value("bool", "false", kind=2)],
    [value("int32", "-1", kind=3), value("int32", "", kind=3)],
    [value("uint64", "18446744073709551615", kind=4), value("uint64", "2", kind=4)],
    [value("float", "0.1", kind=5), value("float", "2", kind=5)],
    [value("double", "0.1", kind=6), value("double", "2", kind=6)],
    [value("binary", "ab c", kind=7), value("binary", "", kind=7)],
    [value("text", "gold", kind=8), value("text", "silver", kind=8)],
    [value("text", "lost", kind=1), value(kind=0)],
    [value("text", "lost", kind=1), value(kind=9)],
    [value("text", "lost", kind=1), value("float", "4", kind=5)],
])
TABLE = ENGINE.parameter("samples", 11, columns=COLUMNS, table=CONTENTS)
EMPTY = ENGINE.parameter("none", 11, columns=["x"], table=ENGINE.table([]))
NESTED = ENGINE.parameter("inner", 11, columns=["x"], table=ENGINE.table([]))
MODE = ENGINE.parameter("mode", 10, choices=[("on", [NESTED])])
NODE = ENGINE.node("spectrum", "tabulated", parameters=[TABLE, EMPTY, MODE])["n"]
ENGINE.update({"nemraTableValue_create": "700", "nemraTableValue_set": "true", "nemraValue_create_table(700)": "701",
               f"nemraNode_setParameter({NODE}, samples, 701, 0)": "true",
               **{f"nemraTableValue_hasColumn(700, {c})": "true" for c in COLUMNS},
               **{f"nemraTableValue_columnIndex(700, {c})": str(i) for i, c in enumerate(COLUMNS)}})


@pytest.fixture
def node(nemra, probe):
    if not nemra:
        return None
    made = nemra.nodes.spectrum.Tabulated("n")
    probe.answer(nemraTableValue_numRows="0")
    probe.forget()
    return made


def cells(probe):
    """What was made and put in, in order."""
    return [call.removeprefix("nemraValue_create_") for call in probe.calls() if call.startswith("nemraValue_create_")]


class TestReading:
    def test_columns_have_the_type_of_their_cells(self, node):
        table = node.getSamples()
        assert list(table) == ["words", "flags", "ints", "naturals", "floats", "doubles", "blobs", "links", "mixed"]
        assert table["words"] == ["é", "b"] and table["links"] == ["gold", "silver"] and table["blobs"] == [b"ab c", b""]
        for name, dtype, contents in (("flags", bool, [True, False]), ("ints", numpy.int32, [-1, 0]),
                                      ("naturals", numpy.uint64, [2**64 - 1, 2]),
                                      ("floats", numpy.float32, [numpy.float32(0.1), 2]), ("doubles", numpy.float64, [0.1, 2])):
            assert table[name].dtype == dtype and table[name].tolist() == numpy.array(contents, dtype).tolist()

    def test_last_cell_decides(self, node):
        mixed = node.getSamples()["mixed"]
        assert mixed.dtype == numpy.float32 and mixed.tolist() == [0, 4]

    def test_each_cell_is_given_back(self, node, probe):
        node.getSamples()
        assert len(probe.calls("nemraTableValue_get")) == len(probe.calls("nemraValue_release")) == 2 * len(COLUMNS)
        assert probe.calls("nemraTableValue_release") == []

    def test_no_rows_no_entries(self, node):
        assert node.getNone() == {}

    def test_missing(self, nemra, probe, capsys):
        assert nemra.nodes.spectrum.Tabulated("unknown").getSamples() == {}
        assert capsys.readouterr().out == "samples parameter does not exists for the selected  mode\n"


class TestWriting:
    def test_table_is_built_and_handed_over(self, node, probe):
        assert node.setSamples({"words": ["é", "b"]}) is True
        calls = [call for call in probe.calls() if "TableValue" in call or "setParameter" in call]
        assert calls == [
            "nemraTableValue_create()", *(f"nemraTableValue_addColumn(700, {c})" for c in COLUMNS),
            "nemraTableValue_hasColumn(700, words)", "nemraTableValue_columnIndex(700, words)", "nemraTableValue_numRows(700)",
            "nemraTableValue_resizeRows(700, 2)", "nemraTableValue_set(700, 0, 0, 0)", "nemraTableValue_set(700, 0, 1, 0)",
            f"nemraNode_setParameter({NODE}, samples, 701, 0)"]
        assert cells(probe) == ["c_str(é)", "c_str(b)", "table(700)"]

    @pytest.mark.parametrize("dtype, numbers, made", [
        ("int64", [1 << 40 | 5, -1], ["int32(5)", "int32(-1)"]), ("int32", [-3], ["int32(-3)"]),
        ("uint64", [2**64 - 1], ["uint64(18446744073709551615)"]), ("uint32", [2**32 - 1], ["int32(-1)"]),
        ("float32", [0.5], ["float(0.5)"]), ("float64", [0.1], ["double(0.1)"]),
        ("bool", [True, False], ["bool(true)", "bool(false)"]), (">f8", [0.5], ["double(0.5)"])])
    def test_dtype_decides(self, node, probe, dtype, numbers, made):
        assert node.setSamples({"ints": numpy.array(numbers, dtype)}) is True
        assert cells(probe) == [*made, "table(700)"]

    def test_memory_order_within_the_memory(self, node, probe):
        node.setSamples({"floats": numpy.arange(6.0)[::2], "doubles": numpy.arange(6.0).reshape(3, 2)})
        node.setSamples({"floats": numpy.arange(3.0)[::-1]})
        assert [cell for cell in cells(probe) if cell.startswith("double")] == [
            f"double({x})" for x in (0, 1, 2, 0, 1, 2, 2, 1, 0)]

    def test_bytes_keep_their_zeros(self, node, probe):
        node.setSamples({"blobs": [b"a\0b"]})
        assert cells(probe)[0].startswith("vec_char(a\0b")

    def test_what_is_left_out(self, node, probe):
        assert node.setSamples({"ints": None, 7: [1], "floats": (1, 2)}) is True
        assert probe.calls("nemraTableValue_set") == []

    @pytest.mark.parametrize("table, line", [
        ({"x": [1]}, "x is not a valid column name for this parameter"),
        ({"words": ["a", 1]}, "A given list mixes types, which is not allowed"),
        ({"words": [b"a", "b"]}, "A given list mixes types, which is not allowed"),
        ({"ints": [1.5]}, "In column 2 .If you want to pass an array of bool or numbers (float,double, int, ...), please use a "
                          "numpy array instead"),
        ({"ints": numpy.zeros(2, "complex64")}, "This numpy type complex64 is not handle\nIn column 2 .If you want to pass an "
                                                "array of string or bytes, please use a list instead of a numpy array"),
    ])
    def test_fault_in_the_data(self, node, probe, capsys, table, line):
        assert node.setSamples(table) is False
        assert capsys.readouterr().out == line + "\n"
        assert probe.calls("nemraNode_setParameter") == []

    def test_rows_must_agree(self, node, probe, capsys):
        probe.answer(nemraTableValue_numRows="3")
        assert node.setSamples({"words": ["a"]}) is False and node.setSamples({"ints": numpy.zeros(2)}) is False
        assert capsys.readouterr().out == ("[list] Numbers of rows in columns differs 3 1\n"
                                           "Numbers of rows in columns differs 3 != 2\n")

    def test_engine_declines_a_cell(self, node, probe, capsys):
        probe.answer(nemraTableValue_set="false")
        assert node.setSamples({"words": ["a"]}) is False and node.setSamples({"ints": numpy.zeros(2)}) is False
        assert capsys.readouterr().out == "Can't set a value in the table\nError when setting column values\n"
        probe.answer(nemraTableValue_set="true")

    def test_what_raises(self, node):
        with pytest.raises(IndexError):
            node.setSamples({"words": []})
        with pytest.raises(IndexError, match="invalid axis"):
            node.setSamples({"ints": numpy.zeros(())})

    def test_nested_table_has_no_columns_to_write(self, node, probe, capsys):
        probe.answer({"nemraTableValue_hasColumn(700, x)": "false"})
        assert node.setInner({"x": numpy.zeros(1)}) is False
        assert probe.calls("nemraTableValue_addColumn") == []
        assert capsys.readouterr().out == "x is not a valid column name for this parameter\n"

    def test_deleted_node(self, nemra, probe):
        assert nemra.nodes.spectrum.Tabulated("unknown").setSamples({}) is False
        assert probe.calls("nemraNode_setParameter") == []
