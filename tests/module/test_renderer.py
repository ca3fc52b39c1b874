"""Render jobs and workers: engine threads reach Python callables, and nothing else happens in between."""

import gc
import weakref

import pytest

ENGINE = {"nemraRendererCreate": "50", "nemraServerCreate": "60"}

# Name of the method, the engine's setter, the number of arguments that the callable gets.
CALLBACKS = [
    ("onChange", "nemraRendererSetStateChangedCallback", 1),
    ("onUpdate", "nemraRendererSetUpdateCallback", 1),
    ("onFinish", "nemraRendererSetFinishedCallback", 1),
    ("onStatisticsUpdate", "nemraRendererSetStatisticsCallback", 0),
    ("onMessage", "nemraRendererSetMessageCallback", 3),
]


@pytest.fixture
def renderer(probe, nemra):
    if not nemra:
        return None
    made = nemra.Renderer()
    probe.forget()
    return made


@pytest.fixture
def server(probe, nemra):
    if not nemra:
        return None
    made = nemra.Server()
    probe.forget()
    return made


def fire(probe, method):
    """What left the callback."""
    return {
        "onChange": lambda: probe.state(1),
        "onUpdate": lambda: probe.raw("nemraRendererSetUpdateCallback", 77),
        "onFinish": lambda: probe.raw("nemraRendererSetFinishedCallback", 78),
        "onStatisticsUpdate": probe.statistics,
        "onMessage": lambda: probe.message("scene/light", "hello", 8),
    }[method]()


class Callable:
    """Can be watched by a weak reference."""

    def __init__(self):
        self.calls = []

    def __call__(self, *arguments):
        self.calls.append(arguments)


class TestControl:
    def test_arguments_reach_the_engine(self, probe, nemra, renderer):
        renderer.setParameter("num_threads", 4)
        renderer.setParameter("num_threads", "4")
        renderer.setParameter("setup", None)
        renderer.setHaltCondition(time=0, spp=25, action=nemra.Renderer.halt_cond.stops)
        renderer.togglePause(True)
        renderer.clearNodes()
        renderer.addLocalNode()
        renderer.addRemoteNode()
        renderer.start("a.svxml")
        renderer.start(None)
        renderer.startData(b"a\0b", 3)
        renderer.updateRaw()
        renderer.getStatistic(nemra.Renderer.wrongrate)
        renderer.stop()
        assert probe.calls() == [
            "nemraRendererSetParameterInt(50, num_threads, 4)", "nemraRendererSetParameter(50, num_threads, 4)",
            "nemraRendererSetParameter(50, setup, null)", "nemraRendererSetHaltCondition(50, 0, 25, 1)",
            "nemraRendererTogglePause(50, true)", "nemraRendererClearNodes(50)", "nemraRendererAddLocalNode(50)",
            "nemraRendererAddRemoteNode(50)", "nemraRendererStart(50, a.svxml)", "nemraRendererStart(50, null)",
            "nemraRendererStartData(50, a\0b, 3)", "nemraRendererUpdateRaw(50)", "nemraRendererGetStatistic(50, 5)",
            "nemraRendererStop(50)",
        ]  # fmt: skip

    def test_answers_pass_unchanged(self, probe, nemra, renderer):
        assert [renderer.start("a"), renderer.startData("a", 1), renderer.togglePause(False)] == [False] * 3
        probe.answer(nemraRendererStart="true", nemraRendererStartData="true", nemraRendererTogglePause="true")
        assert [renderer.start("a"), renderer.startData("a", 1), renderer.togglePause(False)] == [True] * 3
        probe.answer(nemraRendererGetStatistic="12.5")
        assert renderer.getStatistic(nemra.Renderer.spp) == 12.5

    def test_size_beyond_32_bits_is_refused(self, probe, renderer):
        for size in (2**32, -1):
            with pytest.raises(TypeError):
                renderer.startData(b"a", size)
        assert probe.calls() == []

    def test_enumerators(self, probe, nemra):
        def numbers(enumerator):
            return {name: int(member) for name, member in enumerator.__members__.items()}

        stats = "time samples spp spsaverage spscurrent wrongrate halttime haltspp".split()
        assert numbers(nemra.Renderer.stat_type) == dict(zip(stats, range(8), strict=True))
        assert numbers(nemra.Renderer.state) == {"idle": 0, "running": 1, "paused": 2, "stopping": 3}
        assert numbers(nemra.Renderer.halt_cond) == {"pauses": 0, "stops": 1, "nochange": 2}
        assert nemra.Renderer.spp is nemra.Renderer.stat_type.spp and nemra.Renderer.stopping is nemra.Renderer.state.stopping
        assert nemra.Renderer.nochange == 2

    def test_docstrings_name_the_package(self, probe, nemra):
        assert ":meth:`sarvo.nemra.Renderer.onFinish` call back even if using nochange" in nemra.Renderer.halt_cond.__doc__
        assert "(see :meth:`sarvonemra.main.messageType`" in nemra.Renderer.onMessage.__doc__
        assert nemra.Renderer.__doc__.startswith("Create a Renderer object")
        assert nemra.Renderer.setParameter.__doc__.index("value: str") < nemra.Renderer.setParameter.__doc__.index("value: int")


class TestOwnership:
    def test_callbacks_go_before_the_handle(self, probe, nemra):
        released_before = []
        renderer = nemra.Renderer()
        for method, _, _ in CALLBACKS:
            callback = Callable()
            getattr(renderer, method)(callback)
            weakref.finalize(callback, lambda m=method: released_before.append((m, len(probe.calls("nemraRendererRelease")))))
            del callback
        del renderer
        gc.collect()
        assert released_before == [(m, 0) for m in ("onMessage", "onStatisticsUpdate", "onFinish", "onChange", "onUpdate")]
        assert probe.calls("nemraRendererRelease") == ["nemraRendererRelease(&50)"]
        assert probe.calls("nemraRendererStop") == []

    def test_null_handle_is_not_released(self, probe, nemra):
        probe.answer(nemraRendererCreate="<null>", nemraServerCreate="<null>")
        made = [nemra.Renderer(), nemra.Server()]
        made[0].stop()
        del made
        probe.answer(ENGINE)
        assert probe.calls() == ["nemraRendererCreate()", "nemraServerCreate()", "nemraRendererStop(0)"]

    def test_server(self, probe, nemra):
        server = nemra.Server()
        del server
        assert probe.calls() == ["nemraServerCreate()", "nemraServerRelease(&60)"]


class TestCallbacks:
    @pytest.mark.parametrize(("method", "setter", "count"), CALLBACKS)
    def test_called_from_a_foreign_thread(self, probe, renderer, method, setter, count):
        callback = Callable()
        getattr(renderer, method)(callback)
        assert probe.calls() == [f"{setter}(50)"]
        for _ in range(20):
            assert fire(probe, method) == ""
        assert [len(arguments) for arguments in callback.calls] == [count] * 20

    @pytest.mark.parametrize(("method", "setter", "count"), CALLBACKS)
    def test_replaced_one_is_dropped_at_once(self, probe, renderer, method, setter, count):
        first, second = Callable(), Callable()
        gone = weakref.ref(first)
        getattr(renderer, method)(first)
        del first
        getattr(renderer, method)(second)
        assert gone() is None
        fire(probe, method)
        assert len(second.calls) == 1
        assert probe.calls(setter) == [f"{setter}(50)"] * 2

    @pytest.mark.parametrize(("method", "setter", "count"), CALLBACKS)
    def test_none_leaves_the_trampoline(self, probe, renderer, method, setter, count):
        getattr(renderer, method)(None)
        assert probe.calls() == [f"{setter}(50)"]
        assert fire(probe, method) == "bad_function_call"

    @pytest.mark.parametrize(("method", "setter", "count"), CALLBACKS)
    def test_exception_leaves_into_the_engine(self, probe, renderer, method, setter, count):
        def fails(*arguments):
            raise ValueError("out of tune")

        getattr(renderer, method)(fails)
        assert "ValueError: out of tune" in fire(probe, method)
        getattr(renderer, method)(Callable())
        assert fire(probe, method) == ""

    @pytest.mark.parametrize(("method", "setter", "count"), CALLBACKS)
    def test_without_user_pointer_nothing_is_called(self, probe, renderer, method, setter, count):
        callback = Callable()
        getattr(renderer, method)(callback)
        probe.answer({"no user pointer": "1"})
        assert fire(probe, method) == "" and callback.calls == []
        probe.forget_answer("no user pointer")

    def test_raw_is_the_engines(self, probe, nemra, renderer):
        kept = Callable()
        renderer.onUpdate(kept)
        probe.raw("nemraRendererSetUpdateCallback", 77)
        (raw,) = kept.calls.pop()
        assert isinstance(raw, nemra.Raw)
        probe.answer({"nemraRawWidth(77)": "9"})
        assert raw.width() == 9
        del raw, kept, renderer
        gc.collect()
        assert probe.calls("nemraRawRelease") == []

    def test_arguments_have_their_types(self, probe, nemra, renderer):
        states, messages = Callable(), Callable()
        renderer.onChange(states)
        renderer.onMessage(messages)
        probe.state(3)
        probe.message("scène/lampe", "voilà", 16)
        assert states.calls == [(nemra.Renderer.state.stopping,)]
        assert messages.calls == [("scène/lampe", "voilà", nemra.messageType.Error)]

    def test_null_text_of_a_message_is_a_fault(self, probe, renderer):
        callback = Callable()
        renderer.onMessage(callback)
        for source, message in ((None, "m"), ("s", None)):
            assert probe.message(source, message, 4) == "basic_string: construction from null is not valid"
        assert callback.calls == []

    def test_wrong_number_of_parameters_leaves_into_the_engine(self, probe, renderer):
        renderer.onMessage(lambda source, message: None)
        assert "TypeError" in probe.message("s", "m", 4)

    def test_not_callable(self, probe, renderer):
        for method, _, _ in CALLBACKS:
            with pytest.raises(TypeError):
                getattr(renderer, method)(3)
        assert probe.calls() == []


class TestServer:
    def test_arguments_reach_the_engine(self, probe, server):
        probe.answer(nemraServerOpenBlocking="4242")
        assert server.open(0) == 4242
        assert server.openAsync(5000) is None
        server.setParameter("num_threads", "2")
        server.close()
        assert probe.calls() == [
            "nemraServerOpenBlocking(60, 0)", "nemraServerOpenAsync(60, 5000)", "nemraServerSetParameter(60, num_threads, 2)",
            "nemraServerCloseBlocking(60)",
        ]  # fmt: skip

    def test_message_name_comes_first_for_the_engine(self, probe, nemra, server):
        server.sendMessage("hello", 4)
        server.sendMessage("hello", 4, "worker")
        server.sendMessage(msg="hello", type=int(nemra.Warning), name="worker")
        assert probe.calls() == [
            "nemraServerSendMessage(60, server, hello, 4)", "nemraServerSendMessage(60, worker, hello, 4)",
            "nemraServerSendMessage(60, worker, hello, 8)",
        ]  # fmt: skip

    def test_busy_callback(self, probe, server):
        callback = Callable()
        server.onBusyStateChange(callback)
        assert probe.busy(True) == "" and probe.busy(False) == ""
        assert callback.calls == [(True,), (False,)]
        gone = weakref.ref(callback)
        del callback
        server.onBusyStateChange(None)
        assert gone() is None
        assert probe.busy(True) == "bad_function_call"
