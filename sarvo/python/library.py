"""What libraries of named nodes hold: metals, glasses, illuminants, reflectances.

    from sarvo import library
    for entry in library.search("gold"):
        print(entry.family, entry.name, entry.summary)

A name of family spectrum goes into `setPreset` of `nemra.nodes.spectrum.Preset`, one of family dielectricfunc into that of
`nemra.nodes.dielectricfunc.Nk`, and any into `setNode` of its family's `Linked`.
"""

from dataclasses import dataclass
from functools import lru_cache
from pathlib import Path

from . import SVLIB_PATH, nemra

__all__ = ["Entry", "entries", "search"]


@dataclass(frozen=True, slots=True)
class Entry:
    """One named node. `comments` say what it is, where it comes from and under which licence; `summary` is their first line."""

    name: str
    family: str
    type: str
    comments: str
    file: str

    @property
    def summary(self) -> str:
        return self.comments.partition("\n")[0]


def entries(path: str | Path = SVLIB_PATH) -> list[Entry]:
    """All named nodes of a library file, or of the *.svlib files of a folder in the order of their names.

    Raises FileNotFoundError if there is no such file or folder, ValueError for a file that isn't a library.
    """
    path = Path(path)
    if not path.exists():
        raise FileNotFoundError(f"there is no library or folder of libraries {path}")
    files = sorted(path.glob("*.svlib")) if path.is_dir() else [path]
    return [entry for file in files for entry in _read(str(file.resolve()), file.stat().st_mtime_ns)]


def search(words: str, path: str | Path = SVLIB_PATH) -> list[Entry]:
    """Entries that have all of the words in their name, family or comments, in whatever case."""
    wanted = words.casefold().split()
    return [e for e in entries(path) if all(word in f"{e.name} {e.family} {e.comments}".casefold() for word in wanted)]


@lru_cache(maxsize=256)
def _read(file: str, changed: int) -> tuple[Entry, ...]:
    """`changed` makes a file that was written anew be read anew."""
    scene = nemra.nodes.Scene("library")
    if not scene.read(file):
        raise ValueError(f"{file} isn't a library of nodes")
    found = tuple(Entry(node.name(), node.className(), node.typeName(), node.comments(), file) for node in scene.getNodes())
    scene.clear()
    return found
