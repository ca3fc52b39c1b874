"""What grows when a process renders again and again: renders of 16 x 16 pixels that are written and dropped in a loop, with callbacks that
are replaced meanwhile; here, or on two workers of which one goes up and down. Ends with 1 and says what is wrong unless

- memory (resident, without what is on files) grows by less than 1 kB for each render after the warm-up, here and in the worker that stays,
- both have as many threads and descriptors between renders as after the warm-up,
- the last image has the bits of the first.

    PYTHONPATH=build/python python tests/long/soak.py --minutes 2 [--form local|workers]
"""

import argparse
import contextlib
import hashlib
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading
import time

from sarvo import examples, nemra

BOX = pathlib.Path(examples["cornellbox"]).read_bytes().replace(b'value="512"', b'value="16"')
SPP = 4
PASSWORD = "only for this soak"
KINDS = ("png", "exr", "svraw", "csv", "hdr")
RENDERS_OF_A_WORKER = 40
WARM_UP = 1000  # renders: until then the allocator makes itself at home, with each kind of file and each thread
LEAST = 2500  # renders in all, however long they take
MOST_GROWTH = 1000.0  # bytes per render


class Worker:
    """A process that listens, on the port of an earlier one if it is given."""

    def __init__(self, port=0):
        self.process = subprocess.Popen([sys.executable, "-m", "sarvo", "worker", "--port", str(port), "--threads", "1", "-q"], text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env={**os.environ, "SARVO_PASSWORD": PASSWORD})
        self.port = int(self.process.stdout.readline().split()[-1])

    def end(self, kill=False):
        if kill:
            self.process.kill()
        else:
            self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


def state_of(pid):
    """Resident bytes that stand on no file, threads, descriptors."""
    status = pathlib.Path(f"/proc/{pid}/status").read_text()
    return int(status.split("RssAnon:")[1].split()[0]) * 1024, len(os.listdir(f"/proc/{pid}/task")), len(os.listdir(f"/proc/{pid}/fd"))


def settled(pid, least):
    """The state between renders: threads of the last one take a moment to end. `least` is what was seen of threads and descriptors so far."""
    until = time.monotonic() + 0.5
    while True:
        state = state_of(pid)
        if all(now <= before for now, before in zip(state[1:], least, strict=True)) or time.monotonic() > until:
            return state
        time.sleep(0.005)


def render(addresses, turn, folder):
    """Renders and writes; the hash of all that the result says of its pixels."""
    ended = threading.Event()
    said = []

    def on_finish(raw):
        digest = hashlib.sha256(raw.pixels().tobytes() + b"".join(raw.metaPixels(name).tobytes() for name in ("variance", "spp", "depth")))
        written = raw.writeAuto(str(folder / f"image.{KINDS[turn % len(KINDS)]}"))
        said.extend([digest.hexdigest(), written])
        ended.set()

    made = nemra.Renderer()
    made.onMessage(lambda source, text, level: None)
    made.onUpdate(lambda raw: raw.pixels())
    made.onChange(lambda state: None)
    made.onFinish(lambda raw: None)
    made.setHaltCondition(time=0, spp=SPP, action=nemra.Renderer.halt_cond.stops)
    if addresses:
        made.setParameter("password", PASSWORD)
        for address in addresses:
            made.setParameter("remote_host", address)
            made.addRemoteNode()
    else:
        made.setParameter("num_threads", "2")
        made.addLocalNode()
    made.onFinish(on_finish)
    if not made.startData(BOX, len(BOX)):
        sys.exit("the render doesn't start")
    for _ in range(3):  # others in their place while they may be called
        made.onUpdate(lambda raw: raw.pixels())
        made.onChange(lambda state: None)
        made.onMessage(lambda source, text, level: None)
    if not ended.wait(60):
        sys.exit("the render doesn't end")
    if not said[1]:
        sys.exit("the image isn't written")
    return said[0]


class Account:
    """How a process does over the renders."""

    def __init__(self, name, pid):
        self.name, self.pid, self.states, self.least = name, pid, [], (0, 0)

    def note(self, turn):
        state = settled(self.pid, self.least)
        self.least = state[1:] if not self.states else tuple(map(min, self.least, state[1:]))
        self.states.append((turn, state))

    def faults(self):
        """Of the states after the warm-up."""
        late = [(turn, state) for turn, state in self.states if turn >= WARM_UP]
        before = [min(state[index] for turn, state in self.states if turn <= late[0][0]) for index in (1, 2)]
        quarter = max(1, len(late) // 4)
        middle = lambda part, what: statistics.median(what(entry) for entry in part)  # noqa: E731
        more = middle(late[-quarter:], lambda entry: entry[1][0]) - middle(late[:quarter], lambda entry: entry[1][0])
        renders = middle(late[-quarter:], lambda entry: entry[0]) - middle(late[:quarter], lambda entry: entry[0])
        growth = more / max(1, renders)
        print(f"{self.name}: {growth:+.0f} bytes for each render, {late[-1][1][0] / 1e6:.1f} MB at the end; "
              f"{late[-1][1][1]} threads and {late[-1][1][2]} descriptors (after the warm-up {before[0]} and {before[1]})")
        if growth >= MOST_GROWTH:
            yield f"{self.name} grows by {growth:.0f} bytes for each render"
        for index, what in ((1, "threads"), (2, "descriptors")):
            if late[-1][1][index] > before[index - 1]:
                yield f"{self.name} has {late[-1][1][index]} {what} at the end, {before[index - 1]} after the warm-up"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--minutes", type=float, default=2.0, help=f"at least, and until there are {LEAST} renders")
    parser.add_argument("--form", choices=["local", "workers"], default="local")
    options = parser.parse_args()

    began = time.monotonic()
    seconds = 60.0 * options.minutes
    with contextlib.ExitStack() as stack:
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory()))
        accounts, addresses, staying, changing = [Account("this process", os.getpid())], [], None, None
        if options.form == "workers":
            staying, changing = Worker(), Worker()
            stack.callback(staying.end)
            addresses = [f"127.0.0.1:{one.port}" for one in (staying, changing)]
            accounts.append(Account("the worker", staying.process.pid))
        images, turn, ups = set(), 0, 0
        while time.monotonic() < began + seconds or turn < LEAST:
            images.add(render(addresses, turn, folder))
            if changing and turn % RENDERS_OF_A_WORKER == RENDERS_OF_A_WORKER - 1:
                changing.end(kill=ups % 2 == 0)
                images.add(render(addresses, turn, folder))  # while it is away
                changing = Worker(changing.port)
                ups += 1
            for account in accounts:
                if turn % 10 == 0:
                    account.note(turn)
            turn += 1
        for account in accounts:
            account.note(turn)
        faults = [fault for account in accounts for fault in account.faults()]
        if changing:
            changing.end()
    print(f"{turn} renders in {time.monotonic() - began:.0f} s" + (f", a worker went down and up {ups} times" if ups else ""))
    if len(images) != 1:
        faults.append(f"there are {len(images)} different images")
    sys.exit("\n".join(faults) if faults else 0)


if __name__ == "__main__":
    main()
