"""Render workers in processes of their own, and what a render of theirs comes to."""

import contextlib
import os
import signal
import subprocess
import sys
import threading
import time

import sarvo
from sarvo import nemra

SLOW = 8 if "NEMRA_SANITIZED" in os.environ else 1
PASSWORD = "only for tests, and long enough"

SERVE = """
import sys, time
from sarvo import nemra
server = nemra.Server()
server.setParameter("num_threads", sys.argv[2])
server.setParameter("password", sys.argv[3])
server.onBusyStateChange(lambda busy: print("busy" if busy else "idle", flush=True))
print(server.open(int(sys.argv[1])), flush=True)
for line in sys.stdin:
    server.sendMessage(line.rstrip(), int(nemra.Warning))
"""


class Worker:
    """A worker, listening when it is made."""

    def __init__(self, port=0, threads=1, password=PASSWORD, **environment):
        package = os.path.dirname(os.path.dirname(sarvo.__file__))
        self.process = subprocess.Popen([sys.executable, "-c", SERVE, str(port), str(threads), password], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                        env={**os.environ, "PYTHONPATH": package, **environment})
        self.port = int(self.process.stdout.readline())
        self.states = []
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stdout:
            self.states.append(line.strip())

    @property
    def address(self):
        return f"127.0.0.1:{self.port}"

    def tell(self, text):
        self.process.stdin.write(text + "\n")
        self.process.stdin.flush()

    def signal(self, number):
        self.process.send_signal(number)

    def kill(self):
        with contextlib.suppress(ProcessLookupError):
            self.process.send_signal(signal.SIGCONT)
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.kill()


class Render:
    """A render on workers, and on `local` threads of this process if there are any, with everything that is heard of it."""

    def __init__(self, scene, workers, *, spp, local=0, password=PASSWORD, **parameters):
        self.messages, self.states, self.finished = [], [], []
        self.renderer = nemra.Renderer()
        self.renderer.onMessage(lambda source, text, level: self.messages.append((source, text, int(level))))
        self.renderer.onChange(lambda state: self.states.append(int(state)))
        self.renderer.onFinish(lambda raw: self.finished.append(raw.copy()))
        self.renderer.setParameter("password", password)
        for name, value in parameters.items():
            self.renderer.setParameter(name, value)
        for worker in workers:
            self.renderer.setParameter("remote_host", worker if isinstance(worker, str) else worker.address)
            self.renderer.addRemoteNode()
        if local:
            self.renderer.setParameter("num_threads", local)
            self.renderer.addLocalNode()
        self.renderer.setHaltCondition(time=0, spp=spp, action=nemra.Renderer.halt_cond.stops)
        self.start_result = self.renderer.startData(scene, len(scene))

    def wait_for(self, condition, seconds=30):
        until = time.monotonic() + seconds * SLOW
        while not condition():
            assert time.monotonic() < until, (self.messages, self.states, self.spp())
            time.sleep(0.01)

    def says(self, part):
        return any(part in text for _, text, _ in list(self.messages))

    def spp(self):
        return self.renderer.getStatistic(nemra.Renderer.spp)

    def wait_for_spp(self, spp):
        self.wait_for(lambda: self.spp() >= spp)

    def result(self, seconds=60):
        """The last raw."""
        self.wait_for(lambda: self.finished, seconds)
        return self.finished[-1]
