"""No callback of the engine may be running while the interpreter goes down.

Up to Python 3.13 an engine thread that asks for the interpreter lock during finalization is ended in the middle of the call, and
the C++ frames on its stack then let go of Python objects without the lock: the process aborts or hangs. So the engine is told, as
early in the exit as possible, to start no further callback, and those in flight get a moment to end.
"""

import atexit
import ctypes
import os

ENGINE = "libnemra.so"
TIMEOUT_MS = 2000


def register() -> None:
    """Arranges for the gate to close at exit, if the engine that is loaded has one."""
    try:
        # Only what the module has loaded already, wherever it came from: a name search of our own might find another engine.
        engine = ctypes.CDLL(ENGINE, mode=os.RTLD_NOLOAD | os.RTLD_NOW)
        close = engine.nemraGlobalCloseCallbacks
    except (OSError, AttributeError):
        return
    close.argtypes = [ctypes.c_int]
    close.restype = ctypes.c_bool
    atexit.register(_close, close, os.getpid())


def _close(close, pid: int) -> None:
    # ctypes gives the interpreter lock up for the call, so that callbacks in flight can come to an end. A forked child has the
    # parent's count of these but none of its threads: nothing would ever end there, so it doesn't wait.
    close(TIMEOUT_MS if os.getpid() == pid else 0)
