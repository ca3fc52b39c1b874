"""The scene files that come with the package."""

from collections.abc import Iterator, Mapping
from pathlib import Path


class Examples(Mapping[str, str]):
    """Names of the shipped scenes and their files. Can't be changed."""

    __slots__ = ("_files",)

    def __init__(self, folder: Path) -> None:
        self._files = {file.stem: str(file) for file in sorted(folder.glob("*.svxml"))}

    def __getitem__(self, name: str) -> str:
        try:
            return self._files[name]
        except (KeyError, TypeError):
            known = ", ".join(self._files) or "none"
            raise KeyError(f"no example named {name!r}; there are: {known}") from None

    def __contains__(self, name: object) -> bool:
        return isinstance(name, str) and name in self._files

    def __iter__(self) -> Iterator[str]:
        return iter(self._files)

    def __len__(self) -> int:
        return len(self._files)

    def __repr__(self) -> str:
        return f"Examples({self._files!r})"
