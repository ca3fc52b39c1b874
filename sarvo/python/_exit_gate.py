"""Engine threads call Python; here the engine is told what it can't know of the interpreter.

No callback may be running while the interpreter goes down.

Up to Python 3.13 an engine thread that asks for the interpreter lock during finalization is ended in the middle of the call, and
the C++ frames on its stack then let go of Python objects without the lock: the process aborts or hangs. So the engine is told, as
early in the exit as possible, to start no further callback, and those in flight get a moment to end.

And no callback may be on its way to a renderer that is being destroyed. Python destroys objects under the interpreter lock, so the
engine gets that lock's two functions, and looks whether the renderer is still there with the lock in its hand.
"""

import atexit
import ctypes
import os

ENGINE = "libnemra.so"
TIMEOUT_MS = 2000


def register() -> None:
    """Arranges for the gate to close at exit, and gives the engine the interpreter lock; each if the loaded engine takes it."""
    try:
        # Only what the module has loaded already, wherever it came from: a name search of our own might find another engine.
        engine = ctypes.CDLL(ENGINE, mode=os.RTLD_NOLOAD | os.RTLD_NOW)
    except OSError:
        return
    close = getattr(engine, "nemraGlobalCloseCallbacks", None)
    if close is None:
        return  # without a gate the lock would be asked for during finalization as well
    close.argtypes = [ctypes.c_int]
    close.restype = ctypes.c_bool
    atexit.register(_close, close, os.getpid())
    set_lock = getattr(engine, "nemraGlobalSetHostLock", None)
    if set_lock is not None:
        set_lock.argtypes = [ctypes.c_void_p, ctypes.c_void_p]
        set_lock.restype = None
        lock = (ctypes.pythonapi.PyGILState_Ensure, ctypes.pythonapi.PyGILState_Release)
        set_lock(*(ctypes.cast(function, ctypes.c_void_p) for function in lock))


def _close(close, pid: int) -> None:
    # ctypes gives the interpreter lock up for the call, so that callbacks in flight can come to an end. A forked child has the
    # parent's count of these but none of its threads: nothing would ever end there, so it doesn't wait.
    close(TIMEOUT_MS if os.getpid() == pid else 0)
