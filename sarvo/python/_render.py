"""One render from start to written picture, with progress on a terminal. The engine calls back from a thread of its own."""

import sys
import threading

from . import nemra
from ._messages import is_complaint, is_error, line_of

EXIT_WRITTEN = 0
EXIT_FAILED = 1
EXIT_INTERRUPTED = 130


class RenderJob:
    """Renders one scene and writes the result to `output`. `spp` and `seconds` of 0 set no limit."""

    def __init__(self, output: str, *, spp: float, seconds: float, quiet: bool) -> None:
        self._output = output
        self._spp = spp
        self._seconds = seconds
        self._progress = not quiet and sys.stderr.isatty()
        self._quiet = quiet
        self._finished = threading.Event()
        self._complained = threading.Event()
        self._written = False
        self._empty = False
        self._summary = ""
        self._renderer = nemra.Renderer()
        self._renderer.onFinish(self._on_finish)
        nemra.onMessage(self._log)  # what the renderer says comes here too

    def set_parameter(self, name: str, value: str | int) -> None:
        self._renderer.setParameter(name, value)

    def add_worker(self, address: str) -> None:
        self._renderer.setParameter("remote_host", address)
        self._renderer.addRemoteNode()

    def add_local(self) -> None:
        self._renderer.addLocalNode()

    def run(self, scene: str) -> int:
        """Renders and writes; returns an exit code."""
        renderer = self._renderer
        renderer.setHaltCondition(time=self._seconds, spp=self._spp, action=nemra.Renderer.halt_cond.stops)
        try:
            started = renderer.start(scene)
        except KeyboardInterrupt:
            self._say("sarvo: interrupted, nothing written")
            return EXIT_INTERRUPTED
        if not started:
            self._complained.wait(1.0)  # the reason comes as a message, from the engine's thread
            self._say(f"sarvo: {scene} can't be rendered")
            return EXIT_FAILED

        interrupted = False
        while True:
            try:
                if self._finished.wait(0.2):
                    break
                self._show_progress()
            except KeyboardInterrupt:
                if interrupted:
                    self._say("sarvo: given up, nothing written")
                    return EXIT_INTERRUPTED
                interrupted = True
                self._say("sarvo: stopping; what was computed will be written")
                renderer.stop()
        self._clear_progress()
        if self._empty:
            self._say("sarvo: nothing was rendered, nothing written")
            return EXIT_INTERRUPTED if interrupted else EXIT_FAILED
        if not self._written:
            self._say(f"sarvo: can't write {self._output}")
            return EXIT_FAILED
        if not self._quiet:
            print(self._summary)
        return EXIT_INTERRUPTED if interrupted else EXIT_WRITTEN

    def _on_finish(self, raw) -> None:
        try:
            self._empty = raw.SPP() == 0  # no worker could be reached
            if self._empty:
                return
            self._written = raw.writeAuto(self._output)
            self._summary = f"{self._output}: {raw.width()}x{raw.height()} pixels, {raw.SPP():g} samples per pixel, {raw.renderTime():.1f} s"
        finally:
            self._finished.set()

    def _log(self, message: str, level) -> None:
        if is_complaint(level):
            self._say(line_of(message, level))
        if is_error(level):
            self._complained.set()

    def _say(self, line: str) -> None:
        self._clear_progress()
        print(line, file=sys.stderr)

    def _show_progress(self) -> None:
        if not self._progress:
            return
        statistic = self._renderer.getStatistic
        kinds = nemra.Renderer.stat_type
        spp, seconds, rate = statistic(kinds.spp), statistic(kinds.time), statistic(kinds.spscurrent)
        done = max(spp / self._spp if self._spp else 0, seconds / self._seconds if self._seconds else 0)
        text = f"\r{min(done, 1):4.0%}  {spp:.0f} spp  {seconds:.0f} s  {rate / 1e6:.2f} M samples/s\x1b[K"
        print(text, end="", file=sys.stderr, flush=True)

    def _clear_progress(self) -> None:
        if self._progress:
            print("\r\x1b[K", end="", file=sys.stderr, flush=True)
