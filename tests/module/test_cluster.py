"""Renders put together from ranges of samples that processes of their own have rendered."""

import multiprocessing
import os
import pathlib
import signal
import threading
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor

import pytest
from test_workers import bits
from workers import Render

from sarvo import cluster, examples

BOX = pathlib.Path(examples["cornellbox"]).read_bytes()
SCENE = BOX.replace(b'value="512"', b'value="64"')
SPP = 21


def pool():
    return ProcessPoolExecutor(2, mp_context=multiprocessing.get_context("spawn"))


@pytest.fixture(scope="module")
def whole_bits():
    return bits(Render(SCENE, [], spp=SPP, local=2).result())


class TestSameBits:
    def test_from_processes(self, whole_bits, tmp_path):
        file = tmp_path / "scene.svxml"
        file.write_bytes(SCENE)
        seen = []
        raw = cluster.render(file, SPP, pool, ranges=4, progress=lambda spp, raw: seen.append((spp, raw.SPP())))
        assert bits(raw) == whole_bits
        assert len(seen) == 4
        assert all(spp == there for spp, there in seen)
        assert seen[-1][0] == SPP

    def test_with_more_ranges_than_samples(self):
        with ThreadPoolExecutor(2) as threads:
            assert bits(cluster.render(SCENE, 3, threads, ranges=100)) == bits(Render(SCENE, [], spp=3, local=1).result())

    def test_when_a_process_is_killed(self, whole_bits):
        """A pool loses all that it has in hand; another takes its place."""
        made = []

        def make():
            made.append(pool())
            return made[-1]

        def kill_once(spp, raw):
            if len(made) == 1:
                for pid in list(made[0]._processes):
                    os.kill(pid, signal.SIGKILL)

        assert bits(cluster.render(SCENE, SPP, make, ranges=6, progress=kill_once)) == whole_bits
        assert len(made) == 2

    def test_with_dask(self, whole_bits):
        distributed = pytest.importorskip("distributed")
        with distributed.LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None) as local, local.get_client() as client:
            killed = threading.Event()

            def kill_one(spp, raw):
                if not killed.is_set():
                    killed.set()
                    pid = next(iter(client.run(os.getpid).values()))
                    os.kill(pid, signal.SIGKILL)  # a nanny starts another

            assert bits(cluster.render(SCENE, SPP, client, ranges=6, progress=kill_one)) == whole_bits


class Flaky:
    """Does tasks at once, but the first ones of each range fail in some way."""

    def __init__(self, outcomes):
        self.outcomes, self.tries = outcomes, {}

    def submit(self, function, scene, first, *rest):
        self.tries[first] = self.tries.get(first, -1) + 1
        spoil = self.outcomes[self.tries[first]] if self.tries[first] < len(self.outcomes) else None
        with ThreadPoolExecutor(1) as one:
            return one.submit(spoil or function, scene, first, *rest)


def lost(*_):
    raise ConnectionError("gone")


def damaged(*arguments):
    version, data = cluster.render_range(*arguments)
    return version, data[: len(data) // 2]


def short(scene, first, end, *rest):
    return cluster.render_range(scene, first, end - 1, *rest)


class TestFaults:
    def test_what_is_lost_or_comes_damaged_or_incomplete_is_rendered_again(self, whole_bits):
        flaky = Flaky([lost, damaged, short])
        assert bits(cluster.render(SCENE, SPP, flaky, ranges=2)) == whole_bits
        assert set(flaky.tries.values()) == {3}

    def test_a_range_that_is_always_lost_ends_the_render(self):
        with pytest.raises(ConnectionError, match="gone"):
            cluster.render(SCENE, SPP, Flaky([lost] * 4), ranges=2)

    def test_a_scene_that_cannot_be_rendered_is_told_and_not_tried_again(self):
        flaky = Flaky([])
        with pytest.raises(cluster.RenderError, match="buffer"):
            cluster.render(b"<scene", SPP, flaky, ranges=1)
        assert flaky.tries == {0: 0}

    def test_another_engine_is_refused(self):
        with pytest.raises(cluster.RenderError, match="0.0.7"):
            cluster.render(SCENE, 2, Flaky([lambda *arguments: ("0.0.7", cluster.render_range(*arguments)[1])]), ranges=1)

    @pytest.mark.parametrize(("spp", "ranges"), [(0, 4), (4, 0), (-1, 4)])
    def test_nothing_to_render_is_refused(self, spp, ranges):
        with pytest.raises(ValueError, match="at least one"):
            cluster.render(SCENE, spp, Flaky([]), ranges=ranges)

    def test_a_range_above_the_halt_condition_is_told(self):
        render = Render(SCENE, [], spp=4, local=0)
        render.renderer.setParameter("first_sample", 4)
        render.renderer.addLocalNode()
        assert render.renderer.startData(SCENE, len(SCENE))
        assert render.result().SPP() == 0
        render.wait_for(lambda: render.says("there is nothing to render"))


def test_needs_no_scheduler(run_python):
    done = run_python("import sys; from sarvo import cluster; print([name for name in sys.modules if 'dask' in name or 'distributed' in name])",
                      real_engine=True)
    assert done.stdout.strip() == "[]", done.stderr
