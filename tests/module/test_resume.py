"""Long renders that are killed in the middle and gone on with."""

import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time

import numpy as np
import pytest
from workers import PASSWORD, Worker

from sarvo import examples, nemra

SLOW = 8 if "NEMRA_SANITIZED" in os.environ else 1

SCRIPT = """
import json, sys, threading
from sarvo import examples, nemra
path, spp, threads, resume, more, worker, scene = sys.argv[1:]
made = nemra.Renderer()
made.setParameter("output_file_name", path)
made.setParameter("output_raw", "true")
made.setParameter("resume", resume)
made.setParameter("save_interval", "0.1")
for name, value in json.loads(more).items():
    made.setParameter(name, value)
if worker:
    made.setParameter("remote_host", worker)
    made.addRemoteNode()
made.setParameter("num_threads", int(threads))
made.addLocalNode()
made.setHaltCondition(0, float(spp), nemra.Renderer.halt_cond.stops)
finished = threading.Event()
made.onFinish(lambda raw: finished.set())
if not made.start(scene or examples["cornellbox"]):
    sys.exit(3)
finished.wait()
"""


def render(path, spp, threads=2, resume="true", worker="", scene="", **more):
    return subprocess.Popen([sys.executable, "-c", SCRIPT, str(path), str(spp), str(threads), resume, json.dumps(more), worker, str(scene)],
                            stderr=subprocess.PIPE, text=True)


def samples_in(path):
    return nemra.Raw.readSvraw(str(path)).SPP() if path.exists() else 0.0


def kill_when_saved(path, more_than, **more):
    """Kills a render in the middle once a file with that many samples per pixel is there."""
    process = render(path, 0, **more)
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


def test_an_adaptive_render_killed_in_its_pilot_and_later_goes_on_with_and_without_a_worker(tmp_path):
    box = pathlib.Path(examples["cornellbox"]).read_text()
    scene = tmp_path / "small.svxml"
    scene.write_text(box.replace('value="512"', 'value="160"'))
    more = {"adaptive": "true", "scene": scene}
    long, whole = tmp_path / "long.svraw", tmp_path / "whole.svraw"
    with Worker() as worker:
        remote = {"worker": worker.address, "password": PASSWORD}
        kill_when_saved(long, 1, **more, **remote)
        kill_when_saved(long, max(40, samples_in(long)), **more)
        spp = 2 * int(samples_in(long)) + 70
        runs = [(long, 1, "true", remote), (whole, 2, "false", {})]
        for path, threads, resume, where in runs:
            process = render(path, spp, threads, resume, **more, **where)
            assert (process.wait(240 * SLOW), process.stderr.read()) == (0, "")
    for one, other in zip(contents(long), contents(whole), strict=True):
        np.testing.assert_array_equal(one, other)
    samples = contents(long)[1][1]
    assert samples.max() > 1.5 * samples.min()


def test_what_a_library_gives_belongs_to_the_render(tmp_path):
    """A spectrum that the scene takes from a library counts as if it stood in the scene; what it doesn't take, doesn't count."""
    path, library, scene = tmp_path / "a.svraw", tmp_path / "colors.svlib", tmp_path / "s.svxml"
    box = pathlib.Path(examples["cornellbox"]).read_text()
    white = re.search(r'    <node family="material" type="generic" name="white">.*?\n    </node>', box, re.S).group()
    scene.write_text(box.replace(white, "").replace('value="512"', 'value="32"'))

    def put(*nodes):
        library.write_text('<scene version="1" name="colors">' + "".join(nodes) + "</scene>")

    def outcome(spp):
        process = render(path, spp, scene=scene, library_paths=str(library))
        return process.wait(60 * SLOW), process.stderr.read()

    put(white)
    assert outcome(2) == (0, "")
    put(white.replace('name="white"', 'name="other"'), white)
    assert outcome(4) == (0, "")
    assert samples_in(path) == 4
    before = path.read_bytes()
    put(re.sub(r"0\.7", "0.6", white))
    code, said = outcome(6)
    assert code == 3
    assert "what libraries gave has changed" in said
    assert path.read_bytes() == before
    put(white)
    assert outcome(6) == (0, "")


def test_a_file_of_something_else_is_refused_and_stays(tmp_path):
    path = tmp_path / "a.svraw"
    assert render(path, 1, resume="false").wait(60 * SLOW) == 0
    before = path.read_bytes()
    process = render(path, 2)
    assert process.wait(60 * SLOW) == 3
    assert "wasn't saved by a render with" in process.stderr.read()
    assert path.read_bytes() == before


@pytest.mark.parametrize("name, value", [("resume", "maybe"), ("save_interval", "often"), ("halt_noise", "low"), ("first_sample", "-1")])
def test_values_that_make_no_sense_are_told(name, value):
    heard = []
    renderer = nemra.Renderer()
    renderer.onMessage(lambda source, message, level: heard.append(message))
    renderer.setParameter(name, value)
    until = time.monotonic() + 10
    while not heard and time.monotonic() < until:
        time.sleep(0.01)
    assert len(heard) == 1 and name in heard[0] and value in heard[0]
