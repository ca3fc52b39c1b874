"""The Python package around the module: names, examples, command line, exit, how the libraries find each other."""

import ast
import os
import signal
import subprocess
import sys
import time
from collections.abc import Mapping, MutableMapping
from pathlib import Path

import pytest

import sarvo

PACKAGE = Path(sarvo.__file__).parent
SOURCE = Path(__file__).resolve().parents[2]

ENVIRONMENT = dict(os.environ, PYTHONPATH=str(PACKAGE.parent))
SLOW = 8 if "NEMRA_SANITIZED" in os.environ else 1


def run(*arguments: str, timeout: float = 60, **options) -> subprocess.CompletedProcess:
    return subprocess.run([sys.executable, *arguments], env=ENVIRONMENT, capture_output=True, text=True, timeout=timeout * SLOW, **options)


class TestNames:
    def test_star_import_gives_what_the_documentation_uses(self):
        names: dict = {}
        exec("from sarvo import *", names)
        assert {name for name in names if not name.startswith("__")} == {"nemra", "SVLIB_PATH", "examples"}
        assert names["nemra"].__name__ == "sarvo.nemra"

    def test_library_path_is_a_folder(self):
        assert isinstance(sarvo.SVLIB_PATH, str)
        assert os.path.isdir(sarvo.SVLIB_PATH)


class TestImport:
    def test_an_interrupted_import_says_so(self):
        """Ctrl-C while the module starts, which looks for numpy then."""
        result = run("-c", """
import sys
class Interrupted:
    def find_spec(self, name, path=None, target=None):
        if name == "numpy":
            raise KeyboardInterrupt
sys.meta_path.insert(0, Interrupted())
try:
    import sarvo
except KeyboardInterrupt:
    print("interrupted")
""")
        assert (result.returncode, result.stdout) == (0, "interrupted\n"), result.stderr


class TestTypeStub:
    """What an editor is told exists, with the same parameters, and nothing that exists is left out."""

    CLASSES = {node.name: node for node in ast.parse((PACKAGE / "nemra.pyi").read_text()).body if isinstance(node, ast.ClassDef)}

    @pytest.mark.parametrize("name", ["Raw", "Renderer", "Server"])
    def test_class_has_the_methods_of_the_module(self, name):
        real = getattr(sarvo.nemra, name)
        methods = {node.name: node for node in self.CLASSES[name].body if isinstance(node, ast.FunctionDef)}
        bound = {key for key, value in vars(real).items() if not key.startswith("_") and callable(value) and not isinstance(value, type)}
        assert set(methods) - {"__init__"} == bound
        for key in bound:
            parameters = [argument.arg for argument in methods[key].args.args]
            signature = getattr(real, key).__doc__
            for parameter in parameters[parameters[:1] == ["self"]:]:
                assert f"{parameter}: " in signature, f"{name}.{key}"


class TestExamples:
    def test_each_is_a_scene_file(self):
        assert isinstance(sarvo.examples, Mapping) and not isinstance(sarvo.examples, MutableMapping)
        assert "cornellbox" in sarvo.examples
        for file in sarvo.examples.values():
            assert isinstance(file, str) and file.endswith(".svxml") and os.path.isfile(file)

    def test_unknown_name_tells_the_known_ones(self):
        with pytest.raises(KeyError, match="cornelbox.*cornellbox"):
            sarvo.examples["cornelbox"]
        assert sarvo.examples.get("cornelbox") is None
        assert None not in sarvo.examples


class TestLibraries:
    """The package can be moved as a whole, and an engine given by LD_LIBRARY_PATH takes the place of the shipped one."""

    def dynamic_section(self, file: Path) -> str:
        return subprocess.run(["readelf", "-d", file], capture_output=True, text=True, check=True).stdout

    def test_libraries_are_looked_for_beside_the_module(self):
        module = self.dynamic_section(Path(sarvo.nemra.__file__))
        # RUNPATH and not RPATH: LD_LIBRARY_PATH comes first. No empty entry: that would be the current folder.
        assert "(RUNPATH)            Library runpath: [$ORIGIN/lib]" in module
        assert "(RPATH)" not in module
        for name in ("libnemra.so", "libnemraNode.so", "libnemraCommon.so"):
            assert f"[{name}]" in module
            library = self.dynamic_section(PACKAGE / "lib" / name)
            assert f"Library soname: [{name}]" in library
            assert "Library runpath: [$ORIGIN]" in library

    def test_nothing_may_be_written_and_run(self):
        for file in [Path(sarvo.nemra.__file__), *(PACKAGE / "lib").glob("*.so")]:
            segments = subprocess.run(["readelf", "-lW", file], capture_output=True, text=True, check=True).stdout
            stack = next(line for line in segments.splitlines() if "GNU_STACK" in line)
            assert "RWE" not in stack
            assert "GNU_RELRO" in segments


class TestExit:
    """An exit in the middle of a render is the script's own: its code, no crash, no message, no wait."""

    SCRIPT = """
import sys, time
from sarvo import examples, nemra
renderer = nemra.Renderer()
renderer.setParameter("num_threads", 4)
renderer.addLocalNode()
work = {{"empty": lambda: None, "busy": lambda: sum(range(20_000)), "sleeping": lambda: time.sleep(0.01)}}[sys.argv[1]]
renderer.onUpdate(lambda raw: work())
renderer.onStatisticsUpdate(work)
renderer.onChange(lambda state: work())
renderer.onMessage(lambda *message: work())
assert renderer.start(examples["cornellbox"])
for _ in range(3):
    renderer.updateRaw()
    time.sleep({pause})
{ending}
"""

    @pytest.mark.parametrize("work", ["empty", "busy", "sleeping"])
    def test_exit_while_rendering(self, work):
        for attempt in range(4):
            script = self.SCRIPT.format(pause=0.02 * attempt, ending="sys.exit(7)")
            began = time.monotonic()
            result = run("-c", script, work)
            assert (result.returncode, result.stderr) == (7, "")
            assert time.monotonic() - began < 6 * SLOW

    def test_forked_child_does_not_wait_at_exit(self):
        ending = """
import os, warnings
warnings.simplefilter("ignore")
child = os.fork()
if not child:
    sys.exit(0)
began = time.monotonic()
status = os.waitpid(child, 0)[1]
print(status, time.monotonic() - began)
"""
        result = run("-c", self.SCRIPT.format(pause=0.02, ending=ending), "sleeping")
        assert result.returncode == 0, result.stderr
        status, seconds = result.stdout.split()
        assert status == "0" and float(seconds) < 1.9 * SLOW  # a child that waits takes two seconds


class TestCommandLine:
    def test_version_and_examples(self):
        from sarvo import nemra

        assert run("-m", "sarvo", "version").stdout.strip() == nemra.version()
        assert f"cornellbox  {sarvo.examples['cornellbox']}" in run("-m", "sarvo", "examples").stdout

    def test_renders_an_example_by_name(self, tmp_path):
        result = run("-m", "sarvo", "render", "cornellbox", "-o", "box.png", "--spp", "1", "--threads", "2", cwd=tmp_path)
        assert result.returncode == 0, result.stderr
        assert "box.png" in result.stdout and "1 samples per pixel" in result.stdout
        assert (tmp_path / "box.png").read_bytes().startswith(b"\x89PNG")
        assert [file.name for file in tmp_path.iterdir()] == ["box.png"]

    @pytest.mark.parametrize("arguments, code, says", [
        (["missing.svxml"], 1, "missing.svxml"),
        (["cornellbox", "--spp", "-3"], 2, "-3"),
        (["cornellbox", "--spp", "nan"], 2, "nan"),
        (["cornellbox", "--spp", "many"], 2, "many isn't a number above 0"),
        (["cornellbox", "-o", "box"], 1, "the extension must say"),
        (["cornellbox", "-o", "/proc/box.png"], 1, "/proc/box.png"),
        (["cornellbox", "--threads", "0"], 2, "0"),
        (["cornellbox", "-o", "nowhere/box.png"], 1, "nowhere"),
        (["cornellbox", "-o", "box.unknown", "--spp", "1"], 1, "box.unknown"),
        (["cornellbox", "--setup", "no such setup"], 1, "no such setup"),
        (["broken.svxml"], 1, "error: "),
    ])
    def test_says_what_is_wrong(self, tmp_path, arguments, code, says):
        (tmp_path / "broken.svxml").write_text("<not a scene")
        result = run("-m", "sarvo", "render", *arguments, cwd=tmp_path)
        assert result.returncode == code
        assert result.stderr.count(says) >= 1 and result.stderr.count("error: ") <= 1
        assert "Traceback" not in result.stderr
        assert [file.name for file in tmp_path.iterdir()] == ["broken.svxml"]

    def test_interrupt_keeps_what_was_computed(self, tmp_path):
        process = subprocess.Popen(
            [sys.executable, "-m", "sarvo", "render", "cornellbox", "-o", "box.png", "--spp", "1e6"],
            env=ENVIRONMENT, cwd=tmp_path, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        try:
            time.sleep(3 * SLOW)
            process.send_signal(signal.SIGINT)
            _, errors = process.communicate(timeout=20 * SLOW)
        finally:
            process.kill()
        assert process.returncode == 130, errors
        assert "Traceback" not in errors
        assert (tmp_path / "box.png").read_bytes().startswith(b"\x89PNG")
