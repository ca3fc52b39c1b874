"""Long renders that are killed in the middle and gone on with."""

import os
import signal
import subprocess
import sys
import time

import numpy as np
import pytest

from sarvo import nemra

SLOW = 8 if "NEMRA_SANITIZED" in os.environ else 1

SCRIPT = """
import sys, threading
from sarvo import examples, nemra
path, spp, threads, resume, setup = sys.argv[1:]
made = nemra.Renderer()
made.setParameter("output_file_name", path)
made.setParameter("output_raw", "true")
made.setParameter("resume", resume)
made.setParameter("save_interval", "0.1")
made.setParameter("setup", setup)
made.setParameter("num_threads", int(threads))
made.addLocalNode()
made.setHaltCondition(0, float(spp), nemra.Renderer.halt_cond.stops)
finished = threading.Event()
made.onFinish(lambda raw: finished.set())
if not made.start(examples["cornellbox"]):
    sys.exit(3)
finished.wait()
"""


def render(path, spp, threads=2, resume="true", setup=""):
    return subprocess.Popen([sys.executable, "-c", SCRIPT, str(path), str(spp), str(threads), resume, setup],
                            stderr=subprocess.PIPE, text=True)


def samples_in(path):
    return nemra.Raw.readSvraw(str(path)).SPP() if path.exists() else 0.0


def kill_when_saved(path, more_than):
    """Kills a render in the middle once a file with that many samples per pixel is there."""
    process = render(path, 0)
    until = time.monotonic() + 60 * SLOW
    while samples_in(path) <= more_than:
        assert process.poll() is None and time.monotonic() < until
        time.sleep(0.05)
    process.send_signal(signal.SIGKILL)
    process.wait()


def contents(path):
    raw = nemra.Raw.readSvraw(str(path))
    meta = [raw.channelIndex(name) for name in ("variance", "spp", "depth")]
    width, height = raw.width(), raw.height()
    planes = [[[raw.getLightQuantity(channel, x, y, nemra.Raw.quantity.Raw) for y in range(height)] for x in range(width)]
              for channel in meta]
    return raw.pixels(), np.array(planes)


def test_killed_and_gone_on_with_is_as_if_nothing_had_happened(tmp_path):
    long, whole = tmp_path / "long.svraw", tmp_path / "whole.svraw"
    kill_when_saved(long, 0.5)
    kill_when_saved(long, samples_in(long) + 0.5)
    spp = 2 * int(samples_in(long) + 1) + 70  # beyond the pass that was under way
    for path, threads, resume in ((long, 3, "true"), (whole, 1, "false")):
        process = render(path, spp, threads, resume)
        assert (process.wait(120 * SLOW), process.stderr.read()) == (0, "")
    for one, other in zip(contents(long), contents(whole), strict=True):
        np.testing.assert_array_equal(one, other)


def test_a_file_of_something_else_is_refused_and_stays(tmp_path):
    path = tmp_path / "a.svraw"
    assert render(path, 1, resume="false").wait(60 * SLOW) == 0
    before = path.read_bytes()
    process = render(path, 2)
    assert process.wait(60 * SLOW) == 3
    assert "wasn't saved by a render with" in process.stderr.read()
    assert path.read_bytes() == before


@pytest.mark.parametrize("name, value", [("resume", "maybe"), ("save_interval", "often"), ("halt_noise", "low")])
def test_values_that_make_no_sense_are_told(name, value):
    heard = []
    renderer = nemra.Renderer()
    renderer.onMessage(lambda source, message, level: heard.append(message))
    renderer.setParameter(name, value)
    until = time.monotonic() + 10
    while not heard and time.monotonic() < until:
        time.sleep(0.01)
    assert len(heard) == 1 and name in heard[0] and value in heard[0]
