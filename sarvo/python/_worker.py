"""A render worker in a process of its own: it opens a port and serves until it is told to end."""

import os
import signal
import sys
import threading

from . import SVLIB_PATH, nemra
from ._messages import is_complaint, line_of

PASSWORD_VARIABLE = "SARVO_PASSWORD"


def read_password(file: str | None) -> str:
    """The first line of the file, else what the environment says; empty for none. Never from the command line, which others can read."""
    if file is None:
        return os.environ.get(PASSWORD_VARIABLE, "")
    with open(file, encoding="utf-8") as lines:
        return lines.readline().rstrip("\r\n")


def serve(port: int, password: str, threads: int, quiet: bool) -> int:
    """Serves until SIGINT or SIGTERM; returns an exit code."""
    ended = threading.Event()
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: ended.set())

    def show(message: str, level) -> None:
        if is_complaint(level) or not quiet:
            print(line_of(message, level), file=sys.stderr, flush=True)

    nemra.onMessage(show)
    server = nemra.Server()
    server.setParameter("num_threads", str(threads))
    server.setParameter("library_paths", SVLIB_PATH)
    if password:
        server.setParameter("password", password)
    opened = server.open(port)
    if not opened:
        ended.wait(0.5)  # the reason comes as a message, from the engine's thread
        return 1
    print(f"listening on port {opened}", flush=True)
    while not ended.wait(1.0):
        pass
    server.close()
    return 0
