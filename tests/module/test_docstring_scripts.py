"""Scripts that the documentation prints are run as they are printed."""

import os
import re
import subprocess
import sys
import textwrap
from pathlib import Path

import pytest

from sarvo import nemra

SOURCE = Path(__file__).resolve().parents[2]
ENVIRONMENT = dict(os.environ, PYTHONPATH=str(Path(nemra.__file__).parents[1]))


def code_of_docstring(text: str) -> str:
    """The example of a docstring: what stands indented below a line that ends in '::' or a code directive."""
    lines = text.expandtabs().splitlines()
    start = next(i for i, line in enumerate(lines) if re.search(r"(::|code-block:: *python\w*)\s*$", line))
    margin = len(lines[start]) - len(lines[start].lstrip())
    block = []
    for line in lines[start + 1:]:
        if line.strip() and len(line) - len(line.lstrip()) <= margin:
            break
        block.append(line)
    return textwrap.dedent("\n".join(block))


def test_renderer_example_writes_its_picture(tmp_path):
    script = code_of_docstring(nemra.Renderer.__doc__)
    assert 'examples["cornellbox"]' in script
    result = subprocess.run([sys.executable, "-c", script], env=ENVIRONMENT, cwd=tmp_path, capture_output=True, text=True, timeout=300)
    assert (result.returncode, result.stderr) == (0, "")
    assert (tmp_path / "cornellbox.png").read_bytes().startswith(b"\x89PNG")


def scripts_of(page: str) -> list[str]:
    return re.findall(r"```python\n(.*?)```", (SOURCE / page).read_text(), re.S)


@pytest.fixture(scope="module")
def reader(tmp_path_factory):
    """The folder of somebody who tries a page's scripts one after the other."""
    return tmp_path_factory.mktemp("reader")


@pytest.mark.parametrize("script", scripts_of("README.md") + scripts_of("docs/scene.md"))
def test_script_of_a_page(script, reader):
    result = subprocess.run([sys.executable, "-c", script], env=ENVIRONMENT, cwd=reader, capture_output=True, text=True, timeout=300)
    assert (result.returncode, result.stderr) == (0, "")


def test_readme_names_what_exists():
    text = (SOURCE / "README.md").read_text()
    targets = re.findall(r"^([a-z]+):", (SOURCE / "Makefile").read_text(), re.M)
    for target in re.findall(r"`make ([a-z]+)`", text):
        assert target in targets
    for link in re.findall(r"\]\(([^)#:]+)\)", text):
        assert (SOURCE / link).exists(), link
    for folder in re.findall(r"^\| `([a-z_./-]+/)`", text, re.M):
        assert (SOURCE / folder).is_dir(), folder
