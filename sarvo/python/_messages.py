"""How the command line prints the engine's messages."""

from . import nemra

_LEVEL_NAMES = {int(nemra.Warning): "warning: ", int(nemra.Error): "error: ", int(nemra.Critcal): "error: "}


def is_complaint(level) -> bool:
    """Warnings and errors: they are printed also where no news is wanted."""
    return int(level) in _LEVEL_NAMES


def is_error(level) -> bool:
    return int(level) in (int(nemra.Error), int(nemra.Critcal))


def line_of(message: str, level) -> str:
    return "sarvo: " + _LEVEL_NAMES.get(int(level), "") + message
