"""Renders on workers in processes of their own: the same bits as here, whatever befalls a worker."""

import os
import pathlib
import random
import re
import signal
import socket
import subprocess
import sys
import threading
import time

import numpy
import pytest
from workers import PASSWORD, SLOW, Render, Worker

import sarvo
from sarvo import nemra

BOX = pathlib.Path(sarvo.examples["cornellbox"]).read_text()
SCENE = BOX.replace('name="width" value="512"', 'name="width" value="200"').replace('name="height" value="512"', 'name="height" value="200"').encode()
META = ("variance", "spp", "depth")


def bits(raw):
    """All that a result says of its pixels."""
    return raw.pixels().tobytes() + b"".join(raw.metaPixels(name).tobytes() for name in META)


@pytest.fixture(scope="module")
def local_bits():
    """Of a render in this process, by samples per pixel."""
    known = {}

    def of(spp):
        if spp not in known:
            known[spp] = bits(Render(SCENE, [], spp=spp, local=2).result())
        return known[spp]

    return of


class TestSameBits:
    @pytest.mark.parametrize(("workers", "local"), [(1, 0), (2, 0), (2, 1)])
    def test_for_any_number_of_workers(self, workers, local, local_bits):
        made = [Worker() for _ in range(workers)]
        try:
            render = Render(SCENE, made, spp=5, local=local)
            assert render.start_result
            assert bits(render.result()) == local_bits(5)
            assert render.states == [1, 3, 0]
            for worker in made:
                render.wait_for(lambda worker=worker: worker.states[-1:] in (["idle"], []))
        finally:
            for worker in made:
                worker.kill()

    def test_with_a_server_of_this_process(self, local_bits):
        render = Render(SCENE, [], spp=3, local=0)
        assert not render.start_result  # there is no node yet
        render.renderer.setParameter("local_remote_server", "true")
        render.renderer.addRemoteNode()
        assert render.renderer.startData(SCENE, len(SCENE))
        assert bits(render.result()) == local_bits(3)

    def test_with_a_scene_that_needs_files_which_the_worker_has_not(self, tmp_path, local_bits):
        """Imports and libraries travel with the scene."""
        (tmp_path / "inner.svxml").write_bytes(SCENE)
        setup = re.search(rb'<node family="setup".*?</node>', SCENE, re.S).group()
        outer = (b'<scene version="1" name="outer" active_setup="default">' + setup +
                 f'<import path="{tmp_path}/inner.svxml"/></scene>'.encode())
        with Worker() as worker:
            assert bits(Render(outer, [worker], spp=2).result()) == local_bits(2)


class TestControl:
    def test_pause_and_stop_reach_the_worker(self):
        with Worker() as worker:
            render = Render(SCENE, [worker], spp=0)
            render.wait_for_spp(1)
            assert render.renderer.togglePause(True)
            time.sleep(0.5)
            before = render.spp()
            time.sleep(0.5)
            assert render.spp() == before
            assert render.renderer.togglePause(False)
            render.wait_for_spp(before + 1)
            render.renderer.stop()
            raw = render.result()
            assert raw.SPP() >= before + 1
            render.wait_for(lambda: worker.states[-1:] == ["idle"], 10)

    def test_messages_of_the_worker_come_to_the_renderer(self):
        with Worker() as worker:
            render = Render(SCENE, [worker], spp=0)
            render.wait_for_spp(1)
            worker.tell("it is getting warm")
            render.wait_for(lambda: ("server", "it is getting warm", int(nemra.Warning)) in render.messages)
            render.renderer.stop()
            render.result()

    def test_two_clients_are_served_one_after_the_other(self, local_bits):
        with Worker() as worker:
            first = Render(SCENE, [worker], spp=0)
            first.wait_for_spp(1)
            second = Render(SCENE, [worker], spp=2)
            second.wait_for(lambda: second.says("busy with another client"))
            assert second.spp() == 0
            first.renderer.stop()
            first.result()
            assert bits(second.result()) == local_bits(2)

    @pytest.mark.parametrize("scene", [b"<scene", SCENE.replace(b'name="width" value="200"', b'name="width" value="2000000"'),
                                       SCENE.replace(b'active_setup="', b'active_setup="not ')])
    def test_a_scene_that_cannot_be_rendered_is_refused_at_once_with_the_words_of_a_local_render(self, scene):
        """Whether a worker is there or not."""
        here, away = Render(scene, [], spp=1, local=1), Render(scene, ["127.0.0.1:1"], spp=1)
        for render in (here, away):
            assert not render.start_result
            render.wait_for(lambda render=render: render.messages)
        assert here.messages == away.messages

    def test_warnings_of_a_scene_are_said_once_where_the_render_is(self):
        """Though the worker looks through it as well."""
        dark = SCENE.replace(b'<instance geometry="light"/>', b"")
        with Worker() as worker:
            renders = [Render(dark, [], spp=1, local=1), Render(dark, [worker], spp=1)]
            warnings = []
            for render in renders:
                render.result()
                warnings.append([text for _, text, level in render.messages if level == int(nemra.Warning)])
            assert any("nothing shines" in text for text in warnings[0])
            assert warnings[0] == warnings[1]


class TestAddresses:
    @pytest.mark.parametrize("host", ["", "no port:", "host:0", "host:70000", "a:b:c", "[::1"])
    def test_one_that_is_none_is_refused(self, host):
        render = Render(SCENE, [host], spp=1)
        assert not render.start_result
        render.wait_for(lambda: render.says("no remote node is added"))

    def test_nobody_there_ends_with_a_message_and_a_finish(self):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            address = f"127.0.0.1:{free.getsockname()[1]}"
        render = Render(SCENE, [address], spp=1, remote_patience="1")
        assert render.start_result
        raw = render.result(20)
        assert raw.SPP() == 0
        assert render.says("nobody answers")
        assert render.says("no render worker is left")

    def test_port_in_use_gives_another(self):
        with socket.socket() as taken:
            taken.bind(("127.0.0.1", 0))
            taken.listen()
            server = nemra.Server()
            opened = server.open(taken.getsockname()[1])
            assert opened not in (0, taken.getsockname()[1])
            assert server.open(0) == opened  # it is open already
            server.close()

    @pytest.mark.parametrize("port", [-1, 70000])
    def test_what_is_no_port(self, port):
        assert nemra.Server().open(port) == 0

    def test_port_is_free_after_close(self):
        server = nemra.Server()
        for _ in range(20):
            port = server.open(0)
            server.close()
            with socket.socket() as again:
                again.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
                again.bind(("127.0.0.1", port))

    def test_without_a_password_this_machine_alone_is_served(self):
        server = nemra.Server()
        port = server.open(0)
        listening = pathlib.Path("/proc/net/tcp").read_text() + pathlib.Path("/proc/net/tcp6").read_text()
        assert f"0100007F:{port:04X} 00000000:0000 0A" in listening
        assert f"00000000:{port:04X} " not in listening
        server.close()


class TestPasswords:
    def test_wrong_one_is_turned_away_with_one_message_that_does_not_tell_it(self, local_bits):
        with Worker() as worker:
            wrong = Render(SCENE, [worker], spp=1, password="the wrong password", remote_patience="3")
            raw = wrong.result(30)
            assert raw.SPP() == 0
            assert sum("turned away" in text for _, text, _ in wrong.messages) == 1
            assert not any("wrong password" in text or PASSWORD in text for _, text, _ in wrong.messages)
            assert bits(Render(SCENE, [worker], spp=1).result()) == local_bits(1)

    def test_a_renderer_never_says_its_password(self):
        render = Render(SCENE, ["nowhere.invalid:1"], spp=1, password="swordfish-swordfish", remote_patience="1")
        render.result(30)
        assert render.messages
        assert not any("swordfish" in source + text for source, text, _ in render.messages)


class TestFaults:
    def test_worker_killed_twenty_times_in_one_render(self, local_bits):
        """At any moment: while it is looked for, while the scene travels, while it renders."""
        spp = 400
        chance = random.Random(7)
        worker = Worker()
        try:
            render = Render(SCENE, [worker], spp=spp)
            for _ in range(20):
                time.sleep(chance.uniform(0, 0.6))
                worker.kill()
                assert not render.finished
                worker = Worker(port=worker.port)
            assert bits(render.result(120)) == local_bits(spp)
        finally:
            worker.kill()

    def test_dead_worker_is_noticed_within_three_seconds(self):
        with Worker() as worker:
            render = Render(SCENE, [worker], spp=0, local=1)
            render.wait_for(lambda: render.says("the worker renders"))
            worker.kill()
            render.wait_for(lambda: render.says("the worker is lost"), 3)
            render.renderer.stop()
            render.result()

    def test_silent_workers_are_noticed_within_fifteen_seconds_and_their_work_done_anew(self, local_bits):
        """One that hangs, and one whose machine is gone: nothing arrives on either way, and no connection is closed. That one misses
        its client as well."""
        with Worker() as hung, Worker() as gone, Worker() as other, Proxy(gone.port) as proxy:
            render = Render(SCENE, [hung, f"127.0.0.1:{proxy.port}", other], spp=400)
            render.wait_for(lambda: sum("the worker renders" in text for _, text, _ in render.messages) == 3)
            hung.signal(signal.SIGSTOP)
            proxy.swallow()
            lost = [f"worker 127.0.0.1:{port}" for port in (hung.port, proxy.port)]
            render.wait_for(lambda: all(any(source == name and "the worker is lost" in text for source, text, _ in list(render.messages))
                                        for name in lost), 15)
            render.wait_for(lambda: gone.states[-1:] == ["idle"], 15)
            hung.signal(signal.SIGCONT)
            assert bits(render.result(120)) == local_bits(400)

    def test_all_workers_killed_ends_with_what_was_merged(self):
        workers = [Worker(), Worker()]
        render = Render(SCENE, workers, spp=0, remote_patience="1")
        render.wait_for_spp(2)
        for worker in workers:
            worker.kill()
        raw = render.result(20)
        assert raw.SPP() >= 2
        assert render.says("no render worker is left")

    def test_worker_that_comes_back_takes_part_again(self):
        worker = Worker()
        render = Render(SCENE, [worker], spp=0, local=1)
        render.wait_for(lambda: render.says("the worker renders"))
        worker.kill()
        render.wait_for(lambda: render.says("the worker is lost"))
        time.sleep(1)
        render.messages.clear()
        with Worker(port=worker.port):
            render.wait_for(lambda: render.says("the worker renders"))
            render.renderer.stop()
            render.result()

    def test_client_killed_leaves_the_worker_free(self, local_bits):
        with Worker() as worker:
            package = pathlib.Path(sarvo.__file__).parent.parent
            script = (f"import sys, time; sys.path[:0] = [{str(package)!r}, {str(pathlib.Path(__file__).parent)!r}]\n"
                      "from workers import Render\n"
                      f"render = Render(open({sarvo.examples['cornellbox']!r}, 'rb').read(), ['{worker.address}'], spp=0)\n"
                      "render.wait_for_spp(1); print('.', flush=True); time.sleep(60)")
            with subprocess.Popen([sys.executable, "-c", script], stdout=subprocess.PIPE) as client:
                assert client.stdout.readline()
                client.kill()
            assert bits(Render(SCENE, [worker], spp=2).result()) == local_bits(2)

    def test_connection_cut_and_restored(self, local_bits):
        """By a proxy in the middle that closes every connection a few times."""
        with Worker() as worker, Proxy(worker.port) as proxy:
            render = Render(SCENE, [f"127.0.0.1:{proxy.port}"], spp=400)
            for _ in range(3):
                render.wait_for(lambda: render.says("the worker renders"))
                proxy.cut()
                render.wait_for(lambda: render.says("the worker is lost"))
                render.messages.clear()
            assert bits(render.result(120)) == local_bits(400)

    def test_connection_cut_while_the_scene_travels(self, local_bits):
        """A scene of several megabytes that no compression makes small."""
        mesh = "".join(f"{x:.9f} " for x in numpy.random.default_rng(1).random(300_000))
        large = SCENE.replace(b"</scene>", f'<mesh name="dust"><vertices>{mesh}</vertices><triangles>0 1 2</triangles></mesh></scene>'.encode())
        with Worker() as worker, Proxy(worker.port, after=500_000) as proxy:
            render = Render(large, [f"127.0.0.1:{proxy.port}"], spp=2)
            assert bits(render.result()) == local_bits(2)
            assert render.says("the worker is lost")


class Proxy:
    """Passes bytes between a port of its own and another one, until it swallows all that comes, on both ways, or cuts all connections:
    when it is told to, or by itself after that many bytes have passed to the other port."""

    def __init__(self, to, after=None):
        self._to, self._after, self._open, self._swallows = to, after, [], False
        self._listener = socket.create_server(("127.0.0.1", 0))
        self.port = self._listener.getsockname()[1]
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            try:
                near, _ = self._listener.accept()
                far = socket.create_connection(("127.0.0.1", self._to))
            except OSError:
                return
            self._open += [near, far]
            for one, other, counts in ((near, far, True), (far, near, False)):
                threading.Thread(target=self._pass, args=(one, other, counts), daemon=True).start()

    def _pass(self, one, other, counts):
        try:
            while data := one.recv(65536):
                if counts and self._after is not None:
                    self._after -= len(data)
                    if self._after < 0:
                        self._after = None
                        self.cut()
                if not self._swallows:
                    other.sendall(data)
        except OSError:
            pass
        for end in (one, other):
            end.close()

    def swallow(self):
        self._swallows = True

    def cut(self):
        while self._open:
            end = self._open.pop()
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
            end.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._listener.close()
        self.cut()


class TestHostilePeers:
    """What isn't a client is turned away, and the worker goes on to serve those that are."""

    GREETING = b"\xff\x00\x00\x00\x00\x00\x00\x00\x01\x7f\x03\x01CURVE" + b"\0" * 15 + b"\0" + b"\0" * 31

    def test_garbage_cut_greetings_and_huge_lengths(self, local_bits):
        chance = random.Random(3)
        with Worker() as worker:
            sent = [b"", chance.randbytes(4096), b"GET / HTTP/1.1\r\n\r\n", self.GREETING + b"\x06" + b"\xff" * 8,
                    self.GREETING + b"\x06" + (2**62).to_bytes(8, "big") + b"x" * 65536]
            sent += [self.GREETING[:length] for length in range(1, len(self.GREETING))]
            for content in sent:
                with socket.create_connection(("127.0.0.1", worker.port)) as peer:
                    peer.sendall(content)
            assert bits(Render(SCENE, [worker], spp=1).result()) == local_bits(1)

    def test_peer_that_says_nothing_is_cut_off_in_ten_seconds(self):
        with Worker() as worker, socket.create_connection(("127.0.0.1", worker.port)) as peer:
            peer.settimeout(15)
            began = time.monotonic()
            while peer.recv(4096):
                pass
            assert time.monotonic() - began < 10.5

    def test_a_thousand_connections_do_not_keep_a_client_out(self, local_bits):
        with Worker() as worker:
            peers = []
            try:
                for _ in range(900):
                    peers.append(socket.create_connection(("127.0.0.1", worker.port), timeout=5))
                assert bits(Render(SCENE, [worker], spp=1).result()) == local_bits(1)
                status = pathlib.Path(f"/proc/{worker.process.pid}/status").read_text()
                memory = int(status.split("VmRSS:")[1].split()[0]) / 1024
                assert memory < (512 if SLOW == 1 else 2048)  # a sanitizer keeps what was freed
            finally:
                for peer in peers:
                    peer.close()


class TestExit:
    """A script may end while it serves or is served: with its own exit code, nothing on stderr, and soon."""

    SERVE = """
server = nemra.Server()
server.onBusyStateChange(lambda busy: time.sleep(0.01))
port = server.open(0)
render = Render(SCENE, [f"127.0.0.1:{port}"], spp=0, password="")
render.wait_for_spp(1)
"""

    @pytest.mark.parametrize("end", ["", "del render", "del server", "server.close()", "render.renderer.togglePause(True)",
                                     "render.renderer.stop()", "sys.exit()"])
    def test_in_each_state(self, end):
        folder = str(pathlib.Path(__file__).parent)
        script = (f"import sys, time; sys.path[:0] = [{folder!r}]\nfrom sarvo import nemra\nfrom workers import Render\n"
                  f"nemra.onMessage(lambda text, level: None)\nSCENE = {SCENE!r}\n{self.SERVE}\nbegan = time.monotonic()\n{end}")
        package = str(pathlib.Path(sarvo.__file__).parent.parent)
        child = subprocess.Popen([sys.executable, "-c", script], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                 env={**os.environ, "PYTHONPATH": package})
        _, errors = child.communicate(timeout=60 * SLOW)
        assert child.returncode == 0
        # A server that goes before its client may still be missed in time.
        assert all("the worker is lost" in line for line in errors.splitlines()), errors

    def test_fork_while_serving(self):
        """The child has none of the parent's threads: it answers and ends."""
        with Worker() as worker:
            folder = str(pathlib.Path(__file__).parent)
            script = (f"import os, sys, time; sys.path[:0] = [{folder!r}]\nfrom sarvo import nemra\nfrom workers import Render\n"
                      f"server = nemra.Server(); port = server.open(0)\n"
                      f"render = Render({SCENE!r}, ['{worker.address}'], spp=0)\nrender.wait_for_spp(1)\n"
                      "child = os.fork()\n"
                      "if child == 0:\n"
                      "    server.close(); render.renderer.stop(); server.sendMessage('x', 4)\n"
                      "    os._exit(0 if server.open(0) == 0 else 1)\n"
                      "assert os.waitpid(child, 0)[1] == 0\n"
                      "render.renderer.stop(); render.result(); server.close()")
            package = str(pathlib.Path(sarvo.__file__).parent.parent)
            child = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True, timeout=60 * SLOW,
                                   env={**os.environ, "PYTHONPATH": package})
            assert child.returncode == 0, child.stderr


class TestManyTimes:
    def test_a_hundred_starts_and_stops(self):
        with Worker() as worker:
            for turn in range(100):
                render = Render(SCENE, [worker], spp=0)
                assert render.start_result
                if turn % 3 == 0:
                    time.sleep(0.02)
                render.renderer.stop()
                render.result()

    def test_servers_that_come_and_go_leave_no_thread_and_no_descriptor(self):
        def count():
            return len(list(pathlib.Path("/proc/self/task").iterdir())), len(list(pathlib.Path("/proc/self/fd").iterdir()))

        def turn():
            server = nemra.Server()
            server.onBusyStateChange(lambda busy: None)
            assert server.open(0)
            server.close()

        turn()
        time.sleep(0.5)
        before = count()
        for _ in range(20):
            turn()
        until = time.monotonic() + 10
        while count() > before and time.monotonic() < until:
            time.sleep(0.05)
        assert count() <= before
