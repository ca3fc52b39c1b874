"""OpenCL as a script sees it. Each script runs in a fresh interpreter, since the library is loaded once in a process."""

import pytest

SCRIPT = """
from sarvo import nemra

def isLoaded():
    with open("/proc/self/maps") as maps:
        return "libOpenCL" in maps.read()

messages = []
nemra.onMessage(lambda text, level: messages.append(text))
assert not isLoaded(), "import is no use"
assert nemra.init() and not isLoaded(), "nor is this"
"""


def run(run_python, script, **more):
    process = run_python(SCRIPT + script, real_engine=True, **more)
    assert process.returncode == 0, process.stderr
    return process.stdout


def test_devices_are_listed_and_chosen_by_name(run_python):
    out = run(run_python, """
names = nemra.listOpenCLDevices()
print(len(names) if any(names) else 0)
if any(names):
    assert isLoaded() and all(name and name == name.strip() for name in names)
    for name in ["", *names]:
        assert nemra.init(ocl_support=True, ocl_device=name), name
    assert not messages, messages
assert not nemra.init(True, "no such device") and len(messages) == 1 and "no such device" in messages[0], messages
assert nemra.init(False) and len(messages) == 1
""")
    if out.strip() == "0":
        pytest.skip("there is no OpenCL device on this machine")


def test_without_devices(run_python, tmp_path):
    # The loader looks for drivers in this folder.
    run(run_python, """
assert nemra.listOpenCLDevices() == [""]
assert nemra.init(True) is False and len(messages) == 1 and "there is no OpenCL device" in messages[0], messages
""", OCL_ICD_VENDORS=str(tmp_path))
