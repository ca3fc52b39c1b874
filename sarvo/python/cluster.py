"""One render by many processes that know nothing of one another, such as the tasks of a cluster's scheduler.

    from concurrent.futures import ProcessPoolExecutor
    from sarvo import cluster, examples

    if __name__ == "__main__":
        raw = cluster.render(examples["cornellbox"], 256, ProcessPoolExecutor, ranges=8)
        raw.writeAuto("box.png")

Each task renders a range of sample indices of every pixel; results add up exactly, so the sum is that of a single render, bit for bit,
in whatever order the tasks end and however often one had to be done again. With Dask, `dask.distributed.Client(...)` takes the place of
the pool. Nothing but sarvo has to be installed where the tasks run.
"""

import os
import pathlib
import queue
import tempfile
import threading
from collections.abc import Callable, Mapping
from concurrent.futures import BrokenExecutor
from typing import Any

from . import nemra

__all__ = ["RenderError", "render", "render_range"]


class RenderError(Exception):
    """A render that can't be done anywhere: doing it again wouldn't help."""


def render(scene: str | os.PathLike | bytes, spp: int, executor: Any, *, ranges: int = 8, threads: int = 1,
           parameters: Mapping[str, str] | None = None, retries: int = 3,
           progress: Callable[[int, nemra.Raw], None] | None = None) -> nemra.Raw:
    """Renders samples 0 to `spp` of each pixel in `ranges` tasks, and gives the merged result.

    `scene` is a file or the contents of one, which go to each task; files that it imports have to be found there. `executor` is any
    object with `submit(function, *arguments)` whose futures have `add_done_callback` and `result`, such as a pool of
    concurrent.futures or a client of dask.distributed; or a function without arguments that makes one, which is asked for another
    when a process that died has broken the first. `threads` is for each task, 0 for all cores; `parameters` are further ones of the
    renderer. A task that fails, or whose process is lost, is submitted anew up to `retries` times.
    `progress` is told the samples per pixel merged so far, and their sum, after each range.

    Raises RenderError for a scene that can't be rendered, and what the last attempt raised for a range that is lost every time.
    Each result that comes stays in memory, or on the disk of TMPDIR, until this process ends, as all do: prefer few ranges of many
    samples where pictures are large.
    """
    data = scene if isinstance(scene, bytes) else pathlib.Path(scene).read_bytes()
    if spp < 1 or ranges < 1:
        raise ValueError("a render needs at least one sample per pixel and one range")
    ranges = min(ranges, spp)
    edges = [spp * i // ranges for i in range(ranges + 1)]
    tasks = _Tasks(executor, data, threads, dict(parameters or {}), retries)
    total, merged = None, 0
    try:
        for first, end in zip(edges, edges[1:]):  # noqa: B905  # one shorter than the other by intention
            tasks.submit(first, end)
        while merged < spp:
            first, end, part = tasks.next()
            if total is None:
                total = part
            elif not total.add(part):
                raise RenderError(f"samples {first} to {end} came with another size or other channels")
            merged += end - first
            if progress:
                progress(merged, total)
    finally:
        tasks.close()
    return total


def render_range(scene: bytes, first: int, end: int, threads: int = 1, parameters: Mapping[str, str] | None = None,
                 attempt: int = 0) -> tuple[str, bytes]:
    """Renders samples `first` to `end`, excluded, of each pixel: the version of the engine, and the result as the bytes of a svraw
    file. What a task of `render` does. `attempt` changes nothing; schedulers that know a task by its arguments need it."""
    said: list[str] = []
    finished = threading.Event()
    with tempfile.TemporaryDirectory(prefix="sarvo-") as folder:
        file = os.path.join(folder, "range.svraw")
        renderer = nemra.Renderer()
        renderer.onMessage(lambda source, text, level: said.append(f"{source}: {text}") if level >= nemra.Error else None)
        renderer.onFinish(lambda raw: finished.set())
        for name, value in {**(parameters or {}), "output_file_name": file, "output_raw": "true", "first_sample": str(first)}.items():
            renderer.setParameter(name, value)
        renderer.setParameter("num_threads", threads)
        renderer.addLocalNode()
        renderer.setHaltCondition(0, end, nemra.Renderer.halt_cond.stops)
        if not renderer.startData(scene, len(scene)):
            finished.wait(1.0)  # messages come from a thread of the engine's
            raise RenderError("; ".join(said) or "the scene can't be rendered")
        finished.wait()
        try:
            return nemra.version(), pathlib.Path(file).read_bytes()
        except OSError as fault:
            raise OSError("; ".join(said) or str(fault)) from fault


class _Tasks:
    """Ranges that are being rendered somewhere."""

    def __init__(self, executor: Any, scene: bytes, threads: int, parameters: dict[str, str], retries: int) -> None:
        self._make = None if hasattr(executor, "submit") else executor
        self._executor = None if self._make else executor
        self._scene, self._threads, self._parameters, self._retries = scene, threads, parameters, retries
        self._sent: Any = None  # the scene as tasks get it
        self._open: dict[Any, tuple[int, int, int, Any]] = {}  # future: first, end, attempt, executor
        self._ended: queue.SimpleQueue = queue.SimpleQueue()

    def submit(self, first: int, end: int, attempt: int = 0) -> None:
        executor = self._usable()
        try:
            future = executor.submit(render_range, self._sent, first, end, self._threads, self._parameters, attempt)
        except BrokenExecutor:
            if not self._make or attempt >= self._retries:
                raise
            self._drop(executor)
            self.submit(first, end, attempt + 1)
            return
        self._open[future] = (first, end, attempt, executor)
        future.add_done_callback(self._ended.put)

    def next(self) -> tuple[int, int, nemra.Raw]:
        """The next range that is there. Those that were lost meanwhile are on their way again."""
        while True:
            future = self._ended.get()
            first, end, attempt, executor = self._open.pop(future)
            try:
                return first, end, self._read(future.result(), first, end)
            except RenderError:
                raise
            except Exception as fault:
                if attempt >= self._retries:
                    raise
                if isinstance(fault, BrokenExecutor):
                    if not self._make:
                        raise
                    self._drop(executor)
                self.submit(first, end, attempt + 1)

    def close(self) -> None:
        for future in self._open:
            future.cancel()
        if self._make and self._executor:
            self._drop(self._executor)

    def _usable(self) -> Any:
        if self._executor is None:
            self._executor = self._make()
            self._sent = None
        if self._sent is None:
            # Dask sends what tasks have in common to each of its workers once.
            scatter = getattr(self._executor, "scatter", None)
            self._sent = scatter(self._scene) if scatter else self._scene
        return self._executor

    def _drop(self, executor: Any) -> None:
        if executor is not self._executor:
            return  # another of its futures has said so already
        self._executor = None
        close = getattr(executor, "shutdown", None)
        if close:
            close(wait=False, cancel_futures=True)

    @staticmethod
    def _read(result: tuple[str, bytes], first: int, end: int) -> nemra.Raw:
        version, data = result
        if version != nemra.version():
            raise RenderError(f"a task has the engine {version}, and here is {nemra.version()}: their samples don't add up")
        with tempfile.NamedTemporaryFile(prefix="sarvo-", suffix=".svraw") as file:
            file.write(data)
            file.flush()
            raw = nemra.Raw.readSvraw(file.name)
        if raw.SPP() != end - first:
            raise OSError(f"samples {first} to {end} came incomplete")
        return raw
