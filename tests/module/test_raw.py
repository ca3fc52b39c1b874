"""Results: what the module asks of the engine, and what it makes of the answers."""

import gc

import numpy
import pytest

ENGINE = {"nemraRawReadSvraw": "70"}
NULL_TEXT = "basic_string: construction from null is not valid"


@pytest.fixture
def raw(probe, nemra):
    if not nemra:
        return None
    made = nemra.Raw.readSvraw("a.svraw")
    probe.forget()
    return made


def scripted_samples(width, height, channels, quantity=0):
    """A number per sample in which each coordinate has its own digits, so that a mix-up shows."""
    sizes = {"nemraRawWidth": width, "nemraRawHeight": height, "nemraRawChannelCount": channels}
    samples = {
        f"nemraRawGetLightQuantity(70, {c}, {x}, {y}, {quantity})": 1000 * x + 100 * y + 10 * c + 0.1
        for x in range(width)
        for y in range(height)
        for c in range(channels)
    }
    return sizes | samples


class TestOwnership:
    def test_no_raw_is_ever_released(self, probe, nemra, raw):
        probe.answer(nemraRawCopy="71", nemraRawReadOpenExr="72", nemraRawFromImageNode="73")
        made = [raw.copy(), nemra.Raw.readOpenExr("a.exr"), nemra.Raw.fromImageNode(b"a\0b", 3), nemra.Raw.readSvraw("b")]
        assert probe.calls() == [
            "nemraRawCopy(70)", "nemraRawReadOpenExr(a.exr)", "nemraRawFromImageNode(a\0b, 3)", "nemraRawReadSvraw(b)",
        ]  # fmt: skip
        del made, raw
        gc.collect()
        assert probe.calls("nemraRawRelease") == []

    def test_there_is_no_constructor(self, probe, nemra):
        with pytest.raises(TypeError, match="No constructor defined!$"):
            nemra.Raw()
        assert nemra.Raw.__bases__ == (nemra.CRawHandler,)

    def test_failed_read_gives_a_raw_that_passes_null_on(self, probe, nemra):
        probe.answer(nemraRawReadSvraw="<null>", nemraRawFromImageNode="<null>")
        missing = nemra.Raw.readSvraw("missing.svraw")
        assert missing.width() == 0
        assert nemra.Raw.fromImageNode(None, 0).height() == 0
        assert probe.calls()[1:] == ["nemraRawWidth(0)", "nemraRawFromImageNode(null, 0)", "nemraRawHeight(0)"]
        probe.answer(ENGINE)


class TestMetadata:
    def test_arguments_reach_the_engine_in_their_order(self, probe, nemra, raw):
        raw.getLightQuantity(1, 2, 3, nemra.Raw.SensorPower)
        raw.getUGR(1, 2, 3, 2147483647)
        raw.hasChannel("a")
        raw.hasMetaChannel("b")
        raw.channelIndex("c")
        raw.getXHeaderName(4)
        raw.getYHeaderName(5)
        assert probe.calls() == [
            "nemraRawGetLightQuantity(70, 1, 2, 3, 4)", "nemraRawGetUGR(70, 1, 2, 3, 2147483647)", "nemraRawHasChannel(70, a)",
            "nemraRawHasMetaChannel(70, b)", "nemraRawChannelIndex(70, c)", "nemraRawGetXHeaderName(70, 4)",
            "nemraRawGetYHeaderName(70, 5)",
        ]  # fmt: skip

    @pytest.mark.parametrize(
        ("method", "function", "answer", "result"),
        [
            ("renderTime", "nemraRawRenderTime", "1.5", 1.5),
            ("SPS", "nemraRawSPS", "2e6", 2e6),
            ("SPP", "nemraRawSPP", "64", 64.0),
            ("isDraft", "nemraRawIsDraft", "true", True),
            ("getAutoRangeValue", "nemraRawGetAutoRangeValue", "0.25", 0.25),
            ("getQuantityCount", "nemraRawGetQuantityCount", "3", 3),
            ("getDefaultFormat", "nemraRawGetDefaultFormat", "png", "png"),
        ],
    )
    def test_answers_pass_unchanged(self, probe, raw, method, function, answer, result):
        probe.answer({function: answer})
        assert getattr(raw, method)() == result
        assert probe.calls() == [f"{function}(70)"]

    @pytest.mark.parametrize(
        ("function", "method", "arguments"),
        [
            ("nemraRawChannelName", "channelName", [-1]),
            ("nemraRawGetInstrumentOutput", "getInstrumentOutput", [9]),
            ("nemraRawGetInstrumentName", "getInstrumentName", []),
            ("nemraRawGetOutputName", "getOutputName", []),
            ("nemraRawGetXHeaderName", "getXHeaderName", [0]),
            ("nemraRawGetYHeaderName", "getYHeaderName", [0]),
            ("nemraRawGetDefaultFormat", "getDefaultFormat", []),
        ],
    )
    def test_null_text_raises(self, probe, raw, function, method, arguments):
        probe.answer({function: "<null>"})
        with pytest.raises(RuntimeError, match=NULL_TEXT):
            getattr(raw, method)(*arguments)

    def test_null_response_is_none(self, probe, raw):
        probe.answer(nemraRawChannelResponse="<null>")
        assert raw.channelResponse(5) is None
        probe.answer(nemraRawChannelResponse="spectral")
        assert raw.channelResponse(5) == "spectral"

    def test_quantities(self, probe, nemra, raw):
        names = ["Raw", "SensorIrradiance", "SceneRadiance", "SceneIrradiance", "SensorPower", "SensorExposure", "ComputedBSDF"]
        assert {name: int(member) for name, member in nemra.Raw.quantity.__members__.items()} == dict(zip(names, range(7), strict=True))
        assert all(getattr(nemra.Raw, name) is getattr(nemra.Raw.quantity, name) for name in names)
        assert nemra.Raw.quantity.SensorPower == 4
        probe.answer(nemraRawGetQuantity="2")
        assert raw.getQuantity(0) is not None and raw.getQuantity(0) == nemra.Raw.SceneRadiance

    def test_wrong_types_are_refused(self, probe, raw):
        for call in (
            lambda: raw.getUGR(0, 0, 1e100, 1e100),
            lambda: raw.channelName(2**31),
            lambda: raw.getLightQuantity(0, 0, 0, None),
            lambda: raw.pixels(None),
            lambda: raw.add(None),
            lambda: raw.hasChannel(3),
        ):
            with pytest.raises(TypeError):
                call()
        assert probe.calls() == []


class TestPixels:
    def test_axes_are_x_y_channel(self, probe, nemra, raw):
        probe.answer(scripted_samples(2, 3, 4))
        pixels = raw.pixels()
        assert pixels.dtype == numpy.float32
        assert pixels.shape == (2, 3, 4) and pixels.strides == (48, 16, 4)
        assert pixels[1, 2, 3] == numpy.float32(1230.1)
        expected = numpy.fromfunction(lambda x, y, c: 1000 * x + 100 * y + 10 * c + 0.1, (2, 3, 4)).astype(numpy.float32)
        assert (pixels == expected).all()
        samples = probe.calls("nemraRawGetLightQuantity")
        assert samples[:5] == [f"nemraRawGetLightQuantity(70, {c}, 0, {y}, 0)" for y, c in [(0, 0), (0, 1), (0, 2), (0, 3), (1, 0)]]
        assert len(samples) == 24 and len(probe.calls()) == 27

    def test_quantity_reaches_each_sample(self, probe, nemra, raw):
        probe.answer(scripted_samples(1, 2, 1))
        raw.pixels(nemra.Raw.quantity.SensorPower)
        assert probe.calls("nemraRawGetLightQuantity") == [f"nemraRawGetLightQuantity(70, 0, 0, {y}, 4)" for y in range(2)]

    def test_array_is_independent_of_the_raw(self, probe, nemra):
        raw = nemra.Raw.readSvraw("a") if nemra else None
        probe.answer(scripted_samples(2, 1, 1))
        pixels = raw.pixels()
        del raw
        pixels += 1
        gc.collect()
        assert pixels.flags.writeable and pixels[1, 0, 0] == numpy.float32(1000.1) + 1

    @pytest.mark.parametrize("shape", [(0, 3, 2), (3, 0, 2), (3, 2, 0), (0, 0, 0)])
    def test_empty_axis_asks_for_no_sample(self, probe, raw, shape):
        probe.answer(nemraRawWidth=shape[0], nemraRawHeight=shape[1], nemraRawChannelCount=shape[2])
        assert raw.pixels().shape == shape
        assert probe.calls("nemraRawGetLightQuantity") == []

    @pytest.mark.parametrize("shape", [(65536, 32768, 1), (65536, 65536, 1), (2**31 - 1, 2**31 - 1, 2**31 - 1), (-1, 1, 1)])
    def test_too_many_elements_are_a_memory_error(self, probe, raw, shape):
        probe.answer(nemraRawWidth=shape[0], nemraRawHeight=shape[1], nemraRawChannelCount=shape[2])
        with pytest.raises(MemoryError):
            raw.pixels()
        assert probe.calls("nemraRawGetLightQuantity") == []


class TestMetaPixels:
    def test_samples_of_the_channel_of_that_name(self, probe, raw):
        probe.answer(scripted_samples(2, 3, 8))
        probe.answer(nemraRawHasMetaChannel="true", nemraRawChannelIndex="7")
        depth = raw.metaPixels("depth")
        assert depth.dtype == numpy.float32 and depth.shape == (2, 3) and depth.strides == (12, 4)
        assert depth[1, 2] == numpy.float32(1270.1)
        assert probe.calls()[:4] == [
            "nemraRawHasMetaChannel(70, depth)", "nemraRawWidth(70)", "nemraRawHeight(70)", "nemraRawChannelIndex(70, depth)",
        ]  # fmt: skip
        assert probe.calls("nemraRawGenerateSNR") == []

    def test_snr_is_computed_first_each_time(self, probe, raw):
        probe.answer(nemraRawHasMetaChannel="false")
        raw.metaPixels("snr")
        raw.metaPixels("snr")
        assert probe.calls() == ["nemraRawGenerateSNR(70)", "nemraRawHasMetaChannel(70, snr)"] * 2

    def test_unknown_name_prints_a_line(self, probe, raw, capsys):
        probe.answer(nemraRawHasMetaChannel="false")
        assert raw.metaPixels("dpeth").shape == (0,)
        assert capsys.readouterr().out == (
            'dpeth is not computed nor a valid channel.\n Valid channels are: "variance","spp","snr","depth"\n'
        )

    def test_empty_axis(self, probe, raw):
        probe.answer(nemraRawHasMetaChannel="true", nemraRawWidth="3", nemraRawHeight="0")
        square = raw.metaPixels("spp")
        assert square.shape == (3, 3) and not square.any()
        probe.answer(nemraRawWidth="0")
        assert raw.metaPixels("spp").shape == (0, 0)
        assert probe.calls("nemraRawGetLightQuantity") == []


class TestOutput:
    def test_writers_succeed_exactly_with_zero(self, probe, raw):
        def results():
            return [raw.writeResult("f", "png"), raw.writeRaw("f", "exr"), raw.writeAuto("f"), raw.importOutput(raw, "o")]

        functions = ("nemraRawWriteResult", "nemraRawWriteRaw", "nemraRawWriteAuto", "nemraRawImportOutput")
        for answer, expected in [("0", True), ("1", False), ("-1", False)]:
            probe.answer(dict.fromkeys(functions, answer))
            assert results() == [expected] * 4
        assert probe.calls()[:4] == [
            "nemraRawWriteResult(70, f, png)", "nemraRawWriteRaw(70, f, exr)", "nemraRawWriteAuto(70, f)",
            "nemraRawImportOutput(70, 70, o)",
        ]  # fmt: skip

    def test_booleans_pass_unchanged(self, probe, raw):
        functions = ["SetInstrument", "SetOutput", "IsCompatible", "Add", "Filter"]
        for answer in ("true", "false"):
            probe.answer({"nemraRaw" + name: answer for name in functions})
            results = [raw.setInstrument(b"\0a", 2), raw.setOutput("é", 2), raw.isCompatible(raw), raw.add(raw), raw.filter()]
            assert results == [answer == "true"] * 5
        raw.filter(True)
        assert probe.calls("nemraRawFilter") == ["nemraRawFilter(70, false)"] * 2 + ["nemraRawFilter(70, true)"]
        assert probe.calls("nemraRawSetInstrument")[0] == "nemraRawSetInstrument(70, \0a, 2)"
        assert probe.calls("nemraRawSetOutput")[0] == "nemraRawSetOutput(70, é, 2)"

    def test_formats(self, probe, raw):
        probe.answer(nemraRawGetOutputFormatSize="0")
        assert raw.getOutputFormat() == []
        assert probe.calls("nemraRawGetOutputFormat") == []
        probe.answer({"nemraRawGetOutputFormatSize": "2", "nemraRawGetOutputFormat(70, 0)": "png",
                      "nemraRawGetOutputFormat(70, 1)": "exr"})  # fmt: skip
        assert raw.getOutputFormat() == ["png", "exr"]

    def test_result_bytes(self, probe, raw):
        probe.answer(nemraRawWriteResultBytes=b"a\0b\xff")
        assert raw.writeResultBytes("png") == b"a\0b\xff"
        assert len(probe.calls("freeCharArray")) == 1
        probe.answer({"count nemraRawWriteResultBytes": "0"})
        assert raw.writeResultBytes("png") == b"a"
        probe.forget_answer("count nemraRawWriteResultBytes")
        probe.forget()
        probe.answer(nemraRawWriteResultBytes="<null>")
        with pytest.raises(RuntimeError, match=NULL_TEXT):
            raw.writeResultBytes("png")
        assert probe.calls("freeCharArray") == []

    @pytest.mark.parametrize("name", ["Instrument", "Output", "Image8bitProfile"])
    def test_serialised_reads_start_empty_each_time(self, probe, raw, name):
        read = getattr(raw, "get" + name)
        assert read() == b""
        probe.answer({"nemraRawGet" + name: b"\0svbin\xff"})
        assert read() == b"\0svbin\xff"
        assert read() == b"\0svbin\xff"
        probe.forget_answer("nemraRawGet" + name)

    def test_image_information(self, probe, nemra, raw):
        assert raw.getImage8bitInfo() == {"succeed": 0}
        probe.answer(nemraRawGetImage8bitInfo="true")
        info = raw.getImage8bitInfo()
        assert info == {"succeed": 1, "width": 3, "height": 2, "stride": 12, "alignment": 4}
        assert type(info["succeed"]) is int
        assert not hasattr(nemra.Raw, "getImage8bit")


class TestDocumentation:
    def test_order_of_definition(self, probe, nemra):
        wanted = """copy width height renderTime SPS SPP isDraft channelCount hasChannel hasMetaChannel channelName channelIndex
            isChannelLuminous isChannelEnergy isChannelSpectral channelWavelength channelResponse getAutoRangeValue getUGR
            getInstrumentName getInstrumentOutput getOutputName importOutput getOutputFormat getDefaultFormat writeResult
            writeResultBytes metaPixels pixels writeRaw writeAuto readSvraw readOpenExr fromImageNode removeChannels filter
            getImage8bitInfo getImage8bitProfile getInstrument setInstrument getOutput setOutput getLightQuantity getXHeaderName
            getYHeaderName isCompatible getQuantityCount getQuantity add""".split()
        methods = [name for name, value in vars(nemra.Raw).items() if name in wanted]
        assert methods == wanted

    def test_package_name_stands_in_the_docstrings(self, probe, nemra):
        assert ":meth:`sarvo.nemra.Raw.channelWavelength`" in nemra.Raw.pixels.__doc__
        assert "Quantity is on of a :meth:`sarvo.nemra.Raw.quantity` enumerator " in nemra.Raw.getLightQuantity.__doc__
        assert "from sarvo import nemra" in nemra.Raw.getImage8bitInfo.__doc__
        assert r"\"jpg\", \"exr\", etc..., supported" in nemra.Raw.getOutputFormat.__doc__

    def test_examples_are_python(self, probe, nemra):
        for doc in [nemra.Raw.__doc__, *(getattr(nemra.Raw, name).__doc__ for name in ("pixels", "getOutput", "writeAuto"))]:
            block = doc.split(".. code-block:: python\n\n")[1]
            compile("if True:\n" + block, "example", "exec")
