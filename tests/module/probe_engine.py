"""The probe engine from Python. Only for a process whose LD_LIBRARY_PATH leads to it, before the module is imported."""

import ctypes


def encoded(text):
    """As an engine's text: bytes go as they are, None is null."""
    return text.encode() if isinstance(text, str) else text


class Probe:
    def __init__(self):
        self._library = ctypes.CDLL("libnemraCommon.so")
        # The firing functions give the interpreter lock up, as an engine's threads need it.
        self._library.probeFireRaw.argtypes = [ctypes.c_char_p, ctypes.c_uint64, ctypes.c_bool]
        for event in ("Log", "Raw", "State", "Statistics", "Message", "Busy"):
            getattr(self._library, "probeFire" + event).restype = ctypes.c_char_p

    def answer(self, script=None, **functions):
        """Adds answers; keywords are for functions whatever their arguments. A call
        with "once " before it is answered so one time."""
        for call, text in {**(script or {}), **functions}.items():
            data = text if isinstance(text, bytes) else str(text).encode()
            self._library.probeAnswer(call.encode(), data, len(data))

    def calls(self, function=""):
        """The recorded calls, or those of one function, in order."""
        buffer = ctypes.create_string_buffer(1 << 16)
        result = []
        for index in range(self._library.probeCallCount()):
            length = self._library.probeCall(index, buffer, len(buffer))
            result.append(buffer.raw[: min(length, len(buffer))].decode("utf-8", "replace"))
        return [call for call in result if not function or call.startswith(function + "(")]

    def forget(self):
        self._library.probeForgetCalls()

    def forget_answer(self, *calls):
        for call in calls:
            self._library.probeForgetAnswer(call.encode())

    # The engine calls a callback, by default on a thread that Python has never seen. The result is the text of what left the
    # callback, empty if nothing did.

    def log(self, message, level, foreign=True):
        return self._library.probeFireLog(encoded(message), level, foreign).decode()

    def raw(self, setter, handle, foreign=True):
        return self._library.probeFireRaw(setter.encode(), handle, foreign).decode()

    def state(self, state, foreign=True):
        return self._library.probeFireState(state, foreign).decode()

    def statistics(self, foreign=True):
        return self._library.probeFireStatistics(foreign).decode()

    def message(self, source, message, level, foreign=True):
        source, message = encoded(source), encoded(message)
        return self._library.probeFireMessage(source, message, level, foreign).decode()

    def busy(self, busy, foreign=True):
        return self._library.probeFireBusy(busy, foreign).decode()
