"""These tests watch what the module asks of an engine: they run against the recording engine, in processes of their own.

The engine is chosen as a process starts. So outside of it each file here is one test, which runs the file again where
LD_LIBRARY_PATH puts the recording engine first.
"""

import os
import subprocess
import sys
from pathlib import Path

import pytest

LIBRARIES = Path(os.environ.get("NEMRA_BUILD_DIR", Path(__file__).resolve().parents[3] / "build")) / "probe"
IS_CHILD = "NEMRA_PROBE" in os.environ


class ProbeRun(pytest.Item):
    def runtest(self):
        paths = [str(LIBRARIES), os.environ.get("LD_LIBRARY_PATH", "")]
        environment = os.environ | {"NEMRA_PROBE": "1", "LD_LIBRARY_PATH": ":".join(filter(None, paths))}
        command = [sys.executable, "-m", "pytest", "-q", "--no-header", "-p", "no:cacheprovider", str(self.path)]
        run = subprocess.run(command, capture_output=True, text=True, timeout=300, env=environment)
        if run.returncode:
            raise AssertionError(f"exit code {run.returncode}\n{run.stdout}\n{run.stderr}")

    def repr_failure(self, excinfo):
        return str(excinfo.value)

    def reportinfo(self):
        return self.path, None, f"{self.path.name} against the recording engine"


class ProbeFile(pytest.File):
    def collect(self):
        yield ProbeRun.from_parent(self, name="recording_engine")


def pytest_pycollect_makemodule(module_path, parent):
    if not IS_CHILD and module_path.parent == Path(__file__).parent:
        return ProbeFile.from_parent(parent, path=module_path)
    return None


@pytest.fixture
def probe():
    from recording_engine import RecordingEngine

    engine = RecordingEngine()
    engine.reset()
    yield engine
    engine.reset()
