"""Spectral light simulation: build a scene in physical units, render it, read radiance, luminance and spectra.

    from sarvo import *

gives `nemra` (the simulation module), `examples` (name to scene file) and `SVLIB_PATH` (folder of the shipped libraries).
"""

from pathlib import Path as _Path

try:
    from . import nemra
except ImportError as _fault:
    # The binding layer calls whatever ends the module's start an ImportError, Ctrl-C too.
    _cause: BaseException | None = _fault
    while _cause is not None and not isinstance(_cause, KeyboardInterrupt):
        _cause = _cause.__cause__ or _cause.__context__
    if _cause is not None:
        raise KeyboardInterrupt from _fault
    raise
from ._examples import Examples as _Examples
from ._exit_gate import register as _register_exit_gate

__all__ = ["SVLIB_PATH", "examples", "nemra"]

_folder = _Path(__file__).resolve().parent

#: Folder of the libraries (.svlib) that the package ships, for the renderer's parameter "library_paths".
SVLIB_PATH: str = str(_folder / "svlib")

#: Scene files that the package ships, by name: examples["cornellbox"].
examples = _Examples(_folder / "examples")

# After the module's own clean-up function, so that it runs before it: atexit goes backwards.
_register_exit_gate()
