"""What scripts do to renders, in child processes of their own: callbacks that raise, exits in the middle, renderers dropped.

Every child must end with its own exit code and with nothing on stderr but what its callbacks raise, however often it is repeated.
"""

import concurrent.futures
import os
import signal
import subprocess
import sys
import time

import pytest

SLOW = 8 if "NEMRA_SANITIZED" in os.environ else 1

# A box with a lamp, small enough to be read in no time and never finished by itself.
PRELUDE = """
import gc, os, sys, threading, time
from sarvo import examples, nemra
SCENE = examples["cornellbox"]

def renderer(threads=2, spp=0, action=nemra.Renderer.halt_cond.stops):
    made = nemra.Renderer()
    made.setParameter("num_threads", threads)
    made.addLocalNode()
    made.setHaltCondition(0, spp, action)
    return made

def wait(condition, seconds=20):
    until = time.monotonic() + seconds
    while not condition():
        assert time.monotonic() < until, "nothing came"
        time.sleep(0.002)

def attach(made, work):
    made.onChange(lambda state: work())
    made.onUpdate(lambda raw: work())
    made.onFinish(lambda raw: work())
    made.onStatisticsUpdate(lambda: work())
    made.onMessage(lambda source, message, level: work())

def raising():
    raise ValueError("boom")

WORK = {"empty": lambda: None, "busy": lambda: sum(range(50_000)), "sleeping": lambda: time.sleep(0.01), "raising": raising}
"""


def run(script: str, *arguments: str, timeout: float = 60) -> subprocess.CompletedProcess:
    return subprocess.run([sys.executable, "-c", PRELUDE + script, *arguments], capture_output=True, text=True, timeout=timeout * SLOW)


def child(script: str, *arguments: str, timeout: float = 60, code: int = 0, says: str = "") -> str:
    """Runs a script. `says`: what all of the engine's lines on stderr must hold, where there may be some."""
    result = run(script, *arguments, timeout=timeout)
    errors = result.stderr
    if "raising" in arguments:  # with nobody to hear it, what a callback raises is printed
        says = "callback raised: ValueError: boom"
    said = [line for line in errors.splitlines() if line.startswith("nemra: ")]
    if says and said:
        assert all(says in line for line in said), errors
        errors = ""
    assert (result.returncode, errors) == (code, ""), result.stdout
    return result.stdout


class TestExit:
    """Every script may end at any moment of a render."""

    @pytest.mark.parametrize("work", ["empty", "busy", "sleeping", "raising"])
    @pytest.mark.parametrize("threads", [1, 4])
    def test_in_the_middle_of_a_render(self, work, threads):
        script = """
def main():
    made = renderer(threads=int(sys.argv[2]))
    attach(made, WORK[sys.argv[1]])
    assert made.start(SCENE)
    until = time.monotonic() + float(sys.argv[3])
    while time.monotonic() < until:
        made.updateRaw()
        time.sleep(0.003)
    return made
kept = main() if sys.argv[4] == "global" else bool(main())
"""
        def one(attempt):
            began = time.monotonic()
            child(script, work, str(threads), str(0.005 * attempt), "global" if attempt % 2 else "local")
            return time.monotonic() - began

        with concurrent.futures.ThreadPoolExecutor(2) as pool:
            assert max(pool.map(one, range(13))) < 8 * SLOW

    def test_right_after_the_start(self):
        for _ in range(5):
            child("made = renderer(); attach(made, WORK['busy']); assert made.start(SCENE)")

    def test_by_a_callback(self):
        child("""
made = renderer(spp=1)
made.onFinish(lambda raw: os._exit(5))
assert made.start(SCENE)
time.sleep(20)
""", code=5)
        child("""
made = renderer(spp=1)
seen = []
def finish(raw):
    seen.append(1)
    sys.exit(3)  # ends a thread of the engine's, not the process
made.onFinish(finish)
assert made.start(SCENE)
wait(lambda: seen)
time.sleep(0.05)
""", says="the finish callback raised: SystemExit: 3")

    def test_interrupted(self):
        script = """
made = renderer()
attach(made, WORK["busy"])
assert made.start(SCENE)
try:
    print("started", flush=True)
    for _ in range(300):
        time.sleep(0.1)  # a signal just before the sleep begins is only seen after it
except KeyboardInterrupt:
    made.stop()
    print("interrupted", flush=True)
"""
        for attempt in range(3):
            process = subprocess.Popen([sys.executable, "-c", PRELUDE + script], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
            try:
                assert process.stdout.readline() == "started\n"
                time.sleep(0.05 * attempt)
                process.send_signal(signal.SIGINT)
                began = time.monotonic()
                output, errors = process.communicate(timeout=20 * SLOW)
                assert time.monotonic() - began < 4 * SLOW
            finally:
                process.kill()
            assert (process.returncode, output, errors) == (0, "interrupted\n", "")

    def test_in_a_forked_child(self):
        child("""
import warnings
warnings.simplefilter("ignore")
children = [os.fork()]
if not children[0]:
    made = renderer(spp=1)
    done = []
    made.onFinish(lambda raw: done.append(raw.SPP()))
    sys.exit(0 if made.start(SCENE) and (wait(lambda: done) or done == [1.0]) else 1)
made = renderer()
attach(made, WORK["busy"])
assert made.start(SCENE)
time.sleep(0.05)
children.append(os.fork())
if not children[1]:
    sys.exit(0 if not made.start(SCENE) else 1)
for number in children:
    until = time.monotonic() + 20
    while True:
        ended, status = os.waitpid(number, os.WNOHANG)
        if ended:
            assert status == 0, status
            break
        assert time.monotonic() < until, "a child hangs"
        time.sleep(0.01)
""", says="this renderer was made before the process was forked")


class TestDrop:
    """A renderer may be dropped at any moment."""

    @pytest.mark.parametrize("work", ["empty", "busy", "sleeping", "raising"])
    def test_while_rendering(self, work):
        child("""
for attempt in range(25):
    made = renderer()
    attach(made, WORK[sys.argv[1]])
    assert made.start(SCENE)
    if attempt % 3:
        made.updateRaw()
        time.sleep(0.002 * (attempt % 7))
    del made
    if attempt % 2:
        time.sleep(0.002)
""", work, timeout=120)

    def test_callables_that_give_up_the_interpreter_lock_when_they_go(self):
        child("""
class Slow:
    def __call__(self, *arguments):
        pass
    def __del__(self):
        time.sleep(0.03)  # time for callbacks into a renderer that is half gone
for attempt in range(10):
    made = renderer()
    for name in ["onStatisticsUpdate", "onMessage", "onFinish", "onChange", "onUpdate"]:
        getattr(made, name)(Slow())
    assert made.start(SCENE)
    for _ in range(3):
        made.updateRaw()
        time.sleep(0.02)
    made.setParameter("no such parameter", attempt)
    del made
""", says='unknown parameter "no such parameter"')

    def test_a_kept_raw_of_a_dropped_renderer_is_empty_and_a_copy_is_not(self):
        child("""
kept = []
made = renderer(spp=1)
made.onFinish(lambda raw: kept.extend([raw, raw.copy()]))
assert made.start(SCENE)
wait(lambda: len(kept) == 2)
shape = kept[1].pixels().shape
assert shape == (kept[1].width(), kept[1].height(), 3) and shape[0] > 0
assert (kept[0].pixels() == kept[1].pixels()).all()
del made
gc.collect()
assert kept[0].pixels().shape == (0, 0, 0)
assert kept[1].pixels().shape == shape and kept[1].pixels().max() > 0
""")


class TestCallbacks:
    def test_one_that_raises_stops_nothing(self):
        child("""
made = renderer(spp=2)
seen = []
made.onChange(lambda state: raising())
made.onUpdate(lambda: None)  # takes too few
made.onMessage(lambda source, message, level: seen.append((message, level)))
made.onFinish(lambda raw: seen.append("finished"))
assert made.start(SCENE)
made.updateRaw()
wait(lambda: "finished" in seen)
said = [entry[0] for entry in seen if entry != "finished"]
assert sum("state callback raised" in text and "boom" in text for text in said) == 3, said
""")

    def test_the_renderer_can_be_used_from_inside_one(self):
        child("""
made = renderer(spp=1)
states, finished = [], []
def finish(raw):
    finished.append(raw.SPP())
    made.stop()
    made.setParameter("num_threads", 1)
    made.onStatisticsUpdate(lambda: None)
    if len(finished) < 3:
        assert made.start(SCENE)
made.onChange(lambda state: states.append(int(state)))
made.onFinish(finish)
assert made.start(SCENE)
wait(lambda: len(finished) == 3)
assert states == [1, 3, 0] * 3, states
assert finished == [1.0] * 3
""")

    def test_one_that_blocks_holds_up_no_render(self):
        child("""
made = renderer(spp=4)
states, finished = [], []
made.onChange(lambda state: (time.sleep(0.2), states.append(int(state))))
made.onFinish(lambda raw: finished.append(raw.SPP()))
assert made.start(SCENE)
wait(lambda: finished)
assert finished == [4.0] and states == [1, 3, 0]
""")

    def test_emptied_ones_end_quietly(self):
        child("""
made = renderer(spp=1)
attach(made, WORK["empty"])
made.onChange(None); made.onUpdate(None); made.onStatisticsUpdate(None)
done = []
made.onFinish(lambda raw: done.append(1))
assert made.start(SCENE)
wait(lambda: done)
""")


class TestMessages:
    """No warning and no error may be lost, whoever listens and however soon the script ends."""

    FAILING = """
made = renderer()
who, then = sys.argv[1:]
if who in ("script", "both"):
    nemra.onMessage(lambda message, level: print("script:", message, flush=True))
if who in ("renderer", "both"):
    made.onMessage(lambda source, message, level: print("renderer:", source, message, flush=True))
assert not made.start("/no/such.svxml")
if then == "drop":
    del made
sys.exit(1)
"""

    @pytest.mark.parametrize("then", ["end", "drop"])
    @pytest.mark.parametrize("who", ["script", "renderer", "both", "nobody"])
    def test_a_failed_start_is_explained_though_the_script_ends_at_once(self, who, then):
        for _ in range(4):
            result = run(self.FAILING, who, then)
            assert result.returncode == 1
            told = {one: result.stdout.count(one + ":") for one in ("script", "renderer")}
            printed = result.stderr.count("nemra: error: /no/such.svxml")
            assert told["script"] == (who in ("script", "both")), result
            if then == "drop" and who == "renderer":  # what it was to be told is still said
                assert told["renderer"] + printed == 1, result
            elif then == "end":
                assert told["renderer"] == (who in ("renderer", "both")), result
            assert printed == (not told["script"] and not told["renderer"]), result

    def test_a_failed_start_is_explained_behind_a_callback_that_blocks(self):
        result = run("""
made = renderer()
made.onMessage(lambda source, message, level: print("renderer:", message, flush=True))
began = threading.Event()
made.onChange(lambda state: (began.set(), time.sleep(1)))
assert made.start(SCENE) and began.wait(20) and not made.start(SCENE)
""")
        assert result.returncode == 0
        assert (result.stdout + result.stderr).count("a render is under way already") == 1, result

    def test_what_nobody_takes_is_printed(self):
        script = """
listen = {"emptied": [lambda *a: None, None], "raising": [lambda *a: 1 / 0]}[sys.argv[1]]
made = renderer()
for listener in listen:
    nemra.onMessage(listener)
    made.onMessage(listener)
assert not nemra.nodes.Scene("s").read("/no/such.svxml")
for name in ("first", "second"):
    made.setParameter(name, 1)
assert not made.start("/nor/this.svxml")
"""
        for how in ("emptied", "raising"):
            result = run(script, how)
            assert (result.returncode, result.stdout) == (0, "")
            for text in ("/no/such.svxml", '"first"', '"second"', "/nor/this.svxml"):
                assert result.stderr.count(text) == 1, result.stderr
            assert result.stderr.count("message callback raised: ZeroDivisionError") == (2 if how == "raising" else 0), result.stderr


class TestStart:
    def test_says_what_is_wrong_and_starts_the_next_time(self, tmp_path):
        broken = tmp_path / "broken.svxml"
        broken.write_text("<scene><node")
        child("""
said = []
nemra.onMessage(lambda message, level: said.append(message))
made = renderer(spp=1)
done = []
made.onFinish(lambda raw: done.append(raw.SPP()))
for name in [sys.argv[1], sys.argv[1] + ".missing"]:
    said.clear()
    assert not made.start(name)
    wait(lambda: said)
    time.sleep(0.03)
    assert len(said) == 1 and sys.argv[1] in said[0], said
assert not made.startData(b"junk", 4)
assert made.start(SCENE)
assert not made.start(SCENE)
wait(lambda: done)
data = open(SCENE, "rb").read()
assert made.startData(data, len(data))
wait(lambda: len(done) == 2)
assert done == [1.0, 1.0]
""", str(broken))

    @pytest.mark.skipif("NEMRA_SANITIZED" in os.environ, reason="the script lies about its memory, and a sanitizer rightly says so")
    def test_takes_a_buffer_that_is_shorter_than_said_from_the_front(self):
        child("""
import io
said = []
nemra.onMessage(lambda message, level: said.append(message))
scene = nemra.nodes.Scene("s")
scene.read(SCENE)
buffers = [open(SCENE, "rb").read()]
for kind in (scene.SVXMLZ, scene.SVBIN, scene.SVBINZ):
    file = io.BytesIO()
    scene.write(file, kind)
    buffers.append(file.getvalue())
for data in buffers:
    said.clear()
    assert not renderer().startData(data, len(data) + 2_000_000_000)
    wait(lambda: said)
""")

    def test_same_seed_same_bits_for_any_number_of_threads(self):
        child("""
import numpy
results = []
for threads in (1, 2, 5):
    made = renderer(threads=threads, spp=3)
    before = len(results)
    made.onFinish(lambda raw: results.append([raw.pixels()] + [raw.metaPixels(n) for n in ("variance", "spp", "depth")]))
    assert made.start(SCENE)
    wait(lambda: len(results) > before, 60)
for other in results[1:]:
    assert all(numpy.array_equal(a, b) for a, b in zip(results[0], other))
assert results[0][0].max() > 0
""", timeout=120)

    def test_many_small_renders_keep_memory_threads_and_files_flat(self):
        child("""
scene = open(SCENE).read()
for side in ("width", "height"):
    assert f'name="{side}" value="512"' in scene
    scene = scene.replace(f'name="{side}" value="512"', f'name="{side}" value="16"')
scene = scene.encode()
def rss():
    return int(open("/proc/self/statm").read().split()[1]) * 4096
def once():
    made = renderer(threads=1, spp=1)
    done = []
    made.onFinish(lambda raw: done.append(raw.SPP()))
    assert made.startData(scene, len(scene))
    wait(lambda: done)
for _ in range(100):
    once()
time.sleep(0.2)
before, files = rss(), len(os.listdir("/proc/self/fd"))
for _ in range(200):
    once()
time.sleep(0.2)
assert len(os.listdir("/proc/self/task")) < 12
assert len(os.listdir("/proc/self/fd")) <= files
print((rss() - before) / 200)
assert rss() - before < 200 * 4096, (rss() - before) / 200
""", timeout=240)
