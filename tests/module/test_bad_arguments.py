"""Every bound method and function with arguments that nobody should give it: an answer or an exception, never the end of the
process. With the real engine and with the probe engine, whose answers are all zero or null."""

import pytest

# Left out: what waits or writes by design. `openBlocking` waits for a network, `write...` and `set...Dir` touch the disk.
SCRIPT = """
import faulthandler, inspect, itertools, sys
faulthandler.enable()
import numpy
from sarvo import nemra

SKIPPED = {"openBlocking", "openAsync", "setWorkDir"}
big = numpy.zeros(1).reshape(())
ARGUMENTS = [None, "", "\\0\\udc80", b"\\0", -1, 2**31, 2**64, float("nan"), [], {}, {"coord": [1], "space": "x"}, ["a", 1],
             object(), numpy.zeros((0, 3)), numpy.zeros((3, 0)), numpy.zeros(5)[::-1], numpy.broadcast_to(0.5, (3, 3)), big,
             numpy.zeros((2, 2, 2), "complex64"), nemra.nodes.Node("no", "such", "node"), nemra.nodes.bsdf.Lambertian("l"), len]

def classes(module, seen):
    for value in vars(module).values():
        if inspect.ismodule(value) and value not in seen:
            seen.add(value)
            yield from classes(value, seen)
        elif inspect.isclass(value):
            yield value

count = 0
def attempt(function, *arguments):
    global count
    count += 1
    try:
        function(*arguments)
    except (TypeError, RuntimeError, ValueError, IndexError, AttributeError, OverflowError):
        pass

def instances(python_class):
    for arguments in ((), ("n",), ("a", "b", "c"), ("n", 1.0), ("n", 1.0, False)):
        try:
            return [python_class(*arguments)]
        except (TypeError, ValueError):
            pass
    return []

sys.stdout = open("/dev/null", "w")
for python_class in dict.fromkeys(classes(nemra, {nemra})):
    methods = [(name, value) for name, value in inspect.getmembers(python_class, callable)
               if (not name.startswith("__") or name in ("__init__", "__repr__")) and name not in SKIPPED
               and type(value).__name__ == "instancemethod"]
    made = instances(python_class)
    generated = python_class.__module__.count(".") > 2
    for number, (name, method) in enumerate(methods):
        if generated and name not in vars(python_class):
            continue  # what a node class inherits is tried on Node
        attempt(method)
        # Generated methods come in a few kinds, thousands of them: each gets its share of the arguments in turn.
        for argument in ARGUMENTS[number % 4::4] if generated else ARGUMENTS:
            if name == "__init__":
                # As the class is called. By hand on an object of another class, the binding library ends the process.
                attempt(python_class, argument)
                attempt(python_class, argument, argument)
                attempt(python_class, "n", argument, argument, argument, argument)
                continue
            attempt(method, argument)
            for instance in made:
                attempt(method, instance, argument)
                if not generated:  # generated methods take one argument
                    attempt(method, instance, argument, argument)
for name in ("version", "init", "getWorkDir", "onMessage", "listOpenCLDevices"):
    for argument in ARGUMENTS:
        attempt(getattr(nemra, name), argument)
nemra.onMessage(None)
sys.__stdout__.write(str(count))
"""


@pytest.mark.parametrize("real_engine", [True, False], ids=["engine", "probe"])
def test_no_bad_argument_ends_the_process(run_python, tmp_path, real_engine):
    process = run_python(SCRIPT, real_engine=real_engine, cwd=tmp_path)
    assert process.returncode == 0, process.stderr[-4000:]
    assert int(process.stdout) > (20000 if real_engine else 10000)
