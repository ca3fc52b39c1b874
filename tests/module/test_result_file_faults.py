"""What becomes of a result's file when writing it goes wrong: the old file or the new one, whole, and nothing beside it. Each case runs
in a process of its own; what needs a file system that is full or can't be written has one, where the system lets us mount it."""

import os
import shlex
import shutil
import subprocess
import sys

import pytest
from conftest import environment
from made_results import FORMATS

KILL = """
import os, random, signal, time
from made_results import made_result
form, folder, moments = {form!r}, {folder!r}, {moments}
results = [made_result(seed) for seed in (1, 2)]
whole = []
for i, result in enumerate(results):
    name = os.path.join(folder, f"whole{{i}}.{{form}}")
    began = time.perf_counter()
    assert result.writeAuto(name)
    lasts = time.perf_counter() - began
    whole.append(open(name, "rb").read())
    os.remove(name)
assert whole[0] != whole[1]
name = os.path.join(folder, "a." + form)
assert results[0].writeAuto(name)
random.seed(3)
try:
    os.close(os.open(folder, os.O_TMPFILE | os.O_WRONLY))
    nameless = True
except OSError:
    nameless = False
left = changed = 0
for moment in range(moments):
    child = os.fork()
    if child == 0:
        for i in range(10 ** 9):
            results[(i + 1) % 2].writeAuto(name)
    time.sleep(random.uniform(0.0, 4.0 * lasts + 0.005))
    os.kill(child, signal.SIGKILL)
    os.waitpid(child, 0)
    with open(name, "rb") as file:
        found = file.read()
    assert found in whole, f"{{len(found)}} bytes"
    changed += found != whole[0]
    for other in set(os.listdir(folder)) - {{"a." + form}}:  # it couldn't clear up, and says so by the name
        assert other.startswith(".nemra-") and other.endswith(".part"), other
        if nameless:  # killed between its last two steps
            with open(os.path.join(folder, other), "rb") as file:
                assert file.read() in whole
        os.remove(os.path.join(folder, other))
        left += 1
assert results[0].writeAuto(name) and os.listdir(folder) == ["a." + form]
print(int(nameless), left, changed)
"""

REFUSED = """
import os, resource, signal, sys
from made_results import FORMATS, made_result
from sarvo import nemra
folder, reason, limit = {folder!r}, {reason!r}, {limit}
heard = []
nemra.onMessage(lambda message, kind: heard.append(message))
result = made_result(1)
before = {{name: open(os.path.join(folder, name), "rb").read() for name in os.listdir(folder)}}
if limit:
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
    resource.setrlimit(resource.RLIMIT_FSIZE, (limit, resource.RLIM_INFINITY))
for form in FORMATS:
    for name in ("old.", "new."):
        heard.clear()
        assert result.writeAuto(os.path.join(folder, name + form)) is False, form
        assert len(heard) == 1 and reason in heard[0] and name + form in heard[0], (form, heard)
        assert sorted(os.listdir(folder)) == sorted(before), (form, os.listdir(folder))
if limit:
    resource.setrlimit(resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
assert {{name: open(os.path.join(folder, name), "rb").read() for name in os.listdir(folder)}} == before
nemra.onMessage(None)
print("refused", len(FORMATS))
"""


@pytest.mark.parametrize("form", FORMATS)
def test_a_kill_leaves_the_old_file_or_the_new_one(run_python, tmp_path, form):
    done = run_python(KILL.format(form=form, folder=str(tmp_path), moments=20), real_engine=True)
    assert done.returncode == 0, done.stderr
    nameless, left, changed = map(int, done.stdout.split())
    assert left + changed > 0, "no kill came while anything was written"
    if nameless:  # but for the instant in which a whole file has a name of its own, before it takes the old one's place
        assert left <= 4


def refused(run, folder, reason, limit=0):
    done = run(REFUSED.format(folder=str(folder), reason=reason, limit=limit))
    assert done.returncode == 0, done.stderr
    assert done.stdout.split() == ["refused", str(len(FORMATS))]


def fill(folder):
    for form in FORMATS:
        (folder / f"old.{form}").write_text("old")


@pytest.mark.parametrize("limit", [1, 4096, 20000])
def test_a_limit_on_the_size_of_files(run_python, tmp_path, limit):
    fill(tmp_path)
    refused(lambda script: run_python(script, real_engine=True), tmp_path, "File too large", limit)


def in_file_system(script, prepare, folder):
    """Runs Python where `prepare`, shell commands, have mounted something on the folder that no other process sees."""
    if os.geteuid() != 0 or shutil.which("unshare") is None:
        pytest.skip("only root can mount")
    path = os.pathsep.join([environment()["PYTHONPATH"], os.path.dirname(__file__)])
    command = f"mount -t tmpfs -o size=64k none {shlex.quote(str(folder))} || exit 77\n{prepare}\nexec {shlex.quote(sys.executable)} -c {shlex.quote(script)}"
    done = subprocess.run(["unshare", "-m", "sh", "-c", command], env=environment(PYTHONPATH=path), capture_output=True, text=True,
                          timeout=120)  # fmt: skip
    if done.returncode == 77 or "unshare failed" in done.stderr:
        pytest.skip("this system lets nobody mount")
    return done


def test_a_full_disk(tmp_path):
    olds = "\n".join(f"echo old > {tmp_path}/old.{form}" for form in FORMATS)
    refused(lambda script: in_file_system(script, f"{olds}\nhead -c 20000 /dev/zero > {tmp_path}/more", tmp_path), tmp_path,
            "No space left on device")  # fmt: skip


def test_a_folder_that_cannot_be_written(run_python, tmp_path):
    if os.geteuid() != 0:
        fill(tmp_path)
        tmp_path.chmod(0o555)
        refused(lambda script: run_python(script, real_engine=True), tmp_path, "Permission denied")
        tmp_path.chmod(0o755)
        return
    olds = "\n".join(f"echo old > {tmp_path}/old.{form}" for form in FORMATS)
    refused(lambda script: in_file_system(script, f"{olds}\nmount -o remount,ro {tmp_path}", tmp_path), tmp_path, "Read-only file system")
