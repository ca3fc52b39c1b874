"""Two kinds of tests. Most import the module with the real engine. A test that takes the fixture `probe` runs in a fresh
interpreter with the probe engine in the real one's place: one interpreter for each file, whose ENGINE is the script of answers
for the import. Such a file must not import the module itself: it takes the fixture `nemra`."""

import importlib
import json
import os
import pathlib
import subprocess
import sys

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("NEMRA_BUILD_DIR", ROOT / "build")).resolve()
IN_PROBE = "NEMRA_PROBE_REPORT" in os.environ
PROBE = pytest.StashKey()
RESULTS = {}  # of the files that ran under the probe engine: path -> (name -> (outcome, text), output)

sys.path.insert(0, str(BUILD / "python"))


def environment(**more):
    """For a child process: the package on the path."""
    return {**os.environ, "PYTHONPATH": str(BUILD / "python"), **more}


def probe_environment(**more):
    return environment(**{"LD_LIBRARY_PATH": str(BUILD / "probe"), **more})


@pytest.fixture
def run_python():
    """Runs a script in a fresh interpreter, by default with the probe engine, and returns the finished process."""

    def run(script, real_engine=False, cwd=None, **more):
        env = environment(**more) if real_engine else probe_environment(**more)
        env["PYTHONPATH"] += os.pathsep + str(pathlib.Path(__file__).parent)
        limit = 480 if "NEMRA_SANITIZED" in os.environ else 60
        return subprocess.run([sys.executable, "-c", script], env=env, cwd=cwd, capture_output=True, text=True, timeout=limit)

    return run


@pytest.fixture
def probe(request):
    """The probe engine without the calls of earlier tests. `probe.import_calls` are those of the import."""
    if not IN_PROBE:
        return None
    engine = request.config.stash.get(PROBE, None)
    if engine is None:
        from probe_engine import Probe

        engine = request.config.stash[PROBE] = Probe()
        engine.answer(request.module.ENGINE)
        importlib.import_module("sarvo.nemra")
        engine.import_calls = engine.calls()
    engine.forget()
    return engine


@pytest.fixture
def nemra(probe):
    return importlib.import_module("sarvo.nemra") if IN_PROBE else None


def pytest_runtest_logreport(report):
    if IN_PROBE and (report.when == "call" or report.outcome != "passed"):
        with open(os.environ["NEMRA_PROBE_REPORT"], "a") as out:
            out.write(json.dumps([report.nodeid.split("::", 1)[-1], report.outcome, report.longreprtext]) + "\n")


def results_under_probe(item):
    """What the tests of the item's file did in the child: name -> (outcome, text). The child runs once for each file."""
    if item.path not in RESULTS:
        directory = item.config._tmp_path_factory.mktemp("probe")
        report = directory / "report"
        report.touch()
        child = subprocess.run(
            [sys.executable, "-m", "pytest", "-q", "-p", "no:cacheprovider", "--rootdir", str(ROOT), "--basetemp",
             str(directory / "tmp"), str(item.path)],
            env=probe_environment(NEMRA_PROBE_REPORT=str(report)), capture_output=True, text=True, timeout=300,
        )
        lines = [json.loads(line) for line in report.read_text().splitlines()]
        RESULTS[item.path] = {name: (outcome, text) for name, outcome, text in lines}, child.stdout + child.stderr
    return RESULTS[item.path]


def pytest_pyfunc_call(pyfuncitem):
    if IN_PROBE or "probe" not in pyfuncitem.fixturenames:
        return None
    results, output = results_under_probe(pyfuncitem)
    outcome, text = results.get(pyfuncitem.nodeid.split("::", 1)[-1], ("failed", "The child never got here:\n" + output))
    if outcome == "failed":
        pytest.fail(text, pytrace=False)
    if outcome == "skipped":
        pytest.skip(text)
    return True
