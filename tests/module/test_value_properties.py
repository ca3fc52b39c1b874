"""Values of every kind through the module and our engine: what is taken is read back as it went in, whatever it is; what isn't
taken changes nothing; and a scene file keeps both."""

import io
import math

import numpy
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays

from sarvo import nemra

nodes = nemra.nodes
SINGLE = st.floats(width=32, allow_nan=False, allow_infinity=False)
UNIT = st.floats(0, 1, width=32)
TEXT = st.text(st.characters(blacklist_categories=["Cs"]))

settings.register_profile("nemra", max_examples=60, deadline=None, derandomize=True, database=None)
settings.load_profile("nemra")


def through_a_scene(node, form):
    """The node as a scene that was written and read gives it back."""
    made = nodes.Scene("s")
    made.add(node)
    stream = io.StringIO() if form == nodes.Scene.SVXML else io.BytesIO()
    made.write(stream, form)
    data = stream.getvalue()
    read = nodes.Scene("r")
    assert read.readBytes(data if isinstance(data, bytes) else data.encode())
    return read.findNodes(name=node.name())[0]


class TestScalars:
    @given(st.floats())
    def test_real_is_kept_to_the_bit_or_refused(self, value):
        node = nodes.spectrum.Uniform("n")
        before = node.getValue()
        taken = node.setValue(value)
        after = node.getValue()
        assert after == (value if taken else before)
        assert taken or not 0 <= value <= 1e15

    @given(st.integers())
    def test_integer_is_kept_or_refused(self, value):
        node = nodes.instrument.Idealrectcam("n")
        before = node.getWidth()
        if -(2**31) <= value < 2**31:
            taken = node.setWidth(value)
            assert node.getWidth() == (value if taken else before)
        else:
            with pytest.raises(TypeError, match="incompatible function arguments"):
                node.setWidth(value)
            assert node.getWidth() == before

    @given(TEXT)
    def test_text_is_kept_up_to_its_first_zero(self, text):
        node = nodes.text.Default("n")
        assert node.setContent(text)
        assert node.getContent() == text.split("\0")[0]

    @given(st.text(st.characters(whitelist_categories=["Cs"]), min_size=1))
    def test_half_a_surrogate_pair_is_no_text(self, text):
        node = nodes.text.Default("n")
        with pytest.raises((TypeError, UnicodeEncodeError)):
            node.setContent(text)
        with pytest.raises((TypeError, UnicodeEncodeError)):
            node.setName(text)

    @given(st.lists(st.floats(width=32), min_size=3, max_size=3))
    def test_vector_is_kept_or_refused(self, vector):
        node = nodes.instrument.Idealrectcam("n")
        before = node.getPosition().tolist()
        taken = node.setPosition(numpy.array(vector, numpy.float32))
        assert taken or not all(abs(x) <= 1e9 for x in vector)
        assert node.getPosition().tolist() == (vector if taken else before)


class TestColors:
    @given(st.sampled_from(["srgb", "linear_srgb", "xyz", "xyy", "lab", "rec2020", "", "no such space"]),
           st.lists(st.floats(width=32), min_size=3, max_size=3))
    def test_color_is_kept_or_refused(self, space, coord):
        node = nodes.spectrum.Rgb("n")
        before = node.getColor()
        taken = node.setColor({"space": space, "coord": coord})
        assert node.getColor() == ({"space": space, "coord": coord} if taken else before)
        assert not taken or all(map(math.isfinite, coord))


@st.composite
def tables(draw):
    """Columns of a tabulated spectrum: any number type, any view of the memory."""
    rows = draw(st.integers(1, 12))
    table = {}
    for column in draw(st.permutations(["wavelength", "value"])):
        dtype = draw(st.sampled_from([numpy.float32, numpy.float64, numpy.int32]))
        elements = st.integers(0, 2000) if dtype is numpy.int32 else st.floats(0, 2000, width=32)
        table[column] = draw(arrays.arrays(dtype, rows, elements=elements))
    return table


class TestTables:
    @given(tables())
    def test_columns_are_kept_with_their_types(self, table):
        node = nodes.spectrum.Tabulated("n")
        before = node.getSamples()
        taken = node.setSamples(table)
        after = node.getSamples()
        expected = table if taken else before
        assert set(after) == set(expected)
        for name, column in expected.items():
            assert after[name].dtype == column.dtype and after[name].tolist() == column.tolist()

    @given(st.integers(1, 6), st.integers(1, 6))
    def test_columns_of_different_lengths_are_refused(self, first, second):
        node = nodes.spectrum.Tabulated("n")
        before = node.print()
        taken = node.setSamples({"wavelength": numpy.arange(400.0, 400.0 + first), "value": numpy.ones(second)})
        assert taken == (first == second)
        assert taken or node.print() == before


class TestRawData:
    @given(st.binary(max_size=300))
    def test_bytes(self, data):
        node = nodes.image.Embedded("n")
        assert node.setRawData(data)
        assert node.getRawData() == data

    @given(arrays.arrays(numpy.float32, st.integers(0, 40), elements=SINGLE))
    def test_numbers(self, data):
        node = nodes.image.Inline("n")
        assert node.setRawPixels(data)
        assert node.getRawPixels().tolist() == data.tolist()


class TestScenes:
    """Numbers in the shortest form that reads back to the same bits; texts with whatever XML gives a meaning to."""

    @pytest.mark.parametrize("form", [nodes.Scene.SVXML, nodes.Scene.SVBIN])
    @given(value=st.floats(0, 1e15), text=TEXT, name=TEXT.filter(lambda name: name.split("\0")[0]))
    def test_a_node_comes_back_equal(self, form, value, text, name):
        node = nodes.spectrum.Uniform(name)
        node.setValue(value)
        node.setComments(text)
        back = through_a_scene(node, form)
        assert back.getValue() == node.getValue() == value
        assert back.comments() == node.comments()
        assert back.print() == node.print()
