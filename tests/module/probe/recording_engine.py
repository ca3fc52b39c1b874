"""Drives the recording engine: scripts its answers, reads its calls, fires its callbacks."""

import ctypes
import json

import numpy

import sarvo  # noqa: F401  the module loads the engine's libraries


class RecordingEngine:
    def __init__(self):
        self._common = ctypes.CDLL("libnemraCommon.so")
        self._engine = ctypes.CDLL("libnemra.so")
        self._common.probeTakeCalls.restype = ctypes.c_char_p
        self._common.probeAnswerNumber.argtypes = [ctypes.c_char_p, ctypes.c_int64, ctypes.c_double]
        self._common.probeAnswerBytes.argtypes = [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int64]
        self._seen = []

    def reset(self):
        self._common.probeReset()
        self._seen = []

    def calls(self, function=None):
        """Calls since the reset: lists of the function's name and its arguments; or the arguments of one function's calls."""
        self._seen += json.loads(self._common.probeTakeCalls())
        return list(self._seen) if function is None else [c[1:] for c in self._seen if c[0] == function]

    def names(self, prefix=""):
        return [call[0] for call in self.calls() if call[0].startswith(prefix)]

    def forget(self):
        """Forgets the calls, keeps the answers."""
        self.calls()
        self._seen = []

    def answer(self, **answers):
        """What functions answer from now on: numbers, text, bytes, None for null, arrays or lists of handles for pointers."""
        for function, value in answers.items():
            name = function.encode()
            if value is None:
                self._common.probeAnswerBytes(name, None, 0)
            elif isinstance(value, bool | int | float):
                self._common.probeAnswerNumber(name, int(value), float(value))
            else:
                if isinstance(value, str):
                    value = value.encode()
                elif isinstance(value, list):
                    value = numpy.array(value, numpy.uint64).tobytes()
                elif isinstance(value, numpy.ndarray):
                    value = value.tobytes()
                self._common.probeAnswerBytes(name, value, len(value))

    def fire(self, event, *arguments):
        """Lets the engine call a callback on a thread of its own. The text of what left the callback, "" if nothing did."""
        function = getattr(self._engine, "probe" + event)
        function.restype = ctypes.c_char_p
        function.argtypes = {
            "Update": [ctypes.c_uint64, ctypes.c_bool],
            "Finish": [ctypes.c_uint64, ctypes.c_bool],
            "State": [ctypes.c_int, ctypes.c_bool],
            "Statistics": [ctypes.c_bool],
            "Message": [ctypes.c_char_p, ctypes.c_char_p, ctypes.c_int, ctypes.c_bool],
            "Busy": [ctypes.c_bool, ctypes.c_bool],
            "Log": [ctypes.c_char_p, ctypes.c_int],
        }[event]
        if len(arguments) < len(function.argtypes):
            arguments += (True,)  # the user pointer that the module gave
        return function(*arguments).decode()
