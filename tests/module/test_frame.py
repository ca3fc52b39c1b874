"""Entry point, global functions, messages, and the exit. Each script runs in a fresh interpreter with the probe engine."""

import os
import re
import shutil
import subprocess

import pytest

PROBE = "from probe_engine import Probe; probe = Probe(); "


def run(run_python, script, **more):
    process = run_python(PROBE + script, **more)
    assert process.returncode == 0, process.stderr
    return process.stdout


class TestGlobals:
    def test_levels(self, run_python):
        out = run(run_python, """
from sarvo import nemra
t = nemra.messageType
print([(name, int(value), t.__dict__['__entries'][name][1]) for name, value in t.__members__.items()])
print(int(t.Default & t.Info), nemra.Info is t.Info, getattr(nemra, "None") is getattr(t, "None"), hasattr(t, "Critical"))
print(t.__doc__.split(chr(10))[0])
""")
        lines = out.splitlines()
        assert lines[0] == str([("None", 0, "no type"), ("Debug", 2, "Debug only "), ("Info", 4, "Info only"),
                                ("Warning", 8, "Warning only"), ("Error", 16, "Error only"), ("Critcal", 32, "Critcal only"),
                                ("All", 63, "All types"), ("Default", 60, "Info Warning and Error")])
        assert lines[1:] == ["4 True True False", "Enumerator for message log level"]

    def test_answers_and_defaults(self, run_python):
        out = run(run_python, """
probe.answer({"nemraGlobalGetVersionString": "V", "nemraGlobalGetWorkdir": "/w", "nemraGlobalInitialize(true, gpu)": "true"})
from sarvo import nemra
probe.forget()
print(nemra.version(), nemra.getWorkDir(), nemra.setWorkDir(work_dir="/x"), nemra.init(),
      nemra.init(ocl_device="gpu", ocl_support=True))
print(probe.calls())
for text in ("a|b", "", "a|"):
    probe.answer(pyNemraGlobalListOpenCLDevices=text)
    print(nemra.listOpenCLDevices())
print(len(probe.calls("freeCharArray")))
for f in (nemra.version, nemra.init, nemra.getWorkDir, nemra.setWorkDir, nemra.onMessage, nemra.listOpenCLDevices):
    print(f.__doc__.split(chr(10))[0])
    assert "from sarvo import nemra" in f.__doc__
for f, texts in ((nemra.version, ("Gets the full version of nemra", "nemra.version()")),
                 (nemra.init, ("Initialize nemra", "Call this to initialize nemra, You can enable OpenCL here and choose the "
                               "OpenCL device by its name", "nemra.init(ocl_device=devicename[0], ocl_support=True)",
                               "Opencl is only used when post processing outputs. (image denoiser, human vision filters, ...)")),
                 (nemra.getWorkDir, ("Get the current working directory",)),
                 (nemra.setWorkDir, ("Sets the current working directory", "For network rendering scene files must be on the same "
                                     "path relative to working directory on every node.")),
                 (nemra.onMessage, ("Sets the global message callback", "All messages sent by nemra are handle via this user "
                                    "defined call_back function.", ":meth:`sarvo.nemra.messageType`",
                                    "msg_type > nemra.messageType.Info")),
                 (nemra.listOpenCLDevices, ("Get available OpenCL Devices in a list",))):
    doc = f.__doc__.partition(chr(10) * 2)[2].strip()
    assert doc.startswith(texts[0]), doc
    for text in texts: assert text in doc, (text, doc)
""")
        assert out.splitlines() == [
            "V /w None False True",
            "['nemraGlobalGetVersionString()', 'nemraGlobalGetWorkdir()', 'nemraGlobalSetWorkdir(/x)', "
            "'nemraGlobalInitialize(false, )', 'nemraGlobalInitialize(true, gpu)']",
            "['a', 'b']", "['']", "['a', '']", "3",
            "version() -> str", "init(ocl_support: bool = False, ocl_device: str = '') -> bool", "getWorkDir() -> str",
            "setWorkDir(work_dir: str) -> None", "onMessage(call_back: Callable[[str, sarvo.nemra.messageType], None]) -> None",
            "listOpenCLDevices() -> list[str]"]

    def test_null_texts_are_errors(self, run_python):
        out = run(run_python, """
probe.answer({"nemraGlobalGetVersionString": "<null>", "nemraGlobalGetWorkdir": "<null>", "pyNemraGlobalListOpenCLDevices": "<null>"})
from sarvo import nemra
for f in (nemra.version, nemra.getWorkDir, nemra.listOpenCLDevices):
    try: f()
    except RuntimeError as e: print(e)
""")
        assert out == "basic_string: construction from null is not valid\n" * 3


class TestMessages:
    def test_from_a_foreign_thread_and_replaced(self, run_python):
        out = run(run_python, """
import sys, weakref
from sarvo import nemra
class Sink:
    def __call__(self, *arguments): print(arguments)
first, second = Sink(), Sink()
gone = weakref.ref(first)
nemra.onMessage(first)
probe.log("grüße", 8)
nemra.onMessage(second)
del first
print(gone() is None)
probe.log(None, 12)
probe.log("same thread", 4, foreign=False)
nemra.onMessage(None)
print(sys.getrefcount(second))
print(probe.calls("addNemraLogMessageCallbackSink").__len__())
""")
        assert out.splitlines() == ["('grüße', <messageType.Warning: 8>)", "True", "(None, <messageType.???: 12>)",
                                    "('same thread', <messageType.Info: 4>)", "2", "3"]

    def test_raising_callable_goes_to_the_engine(self, run_python):
        out = run(run_python, """
from sarvo import nemra
nemra.onMessage(lambda *a: 1 / 0)
print("division by zero" in probe.log("m", 4))
nemra.onMessage(None)
print(probe.log("m", 4))
try: nemra.onMessage(3)
except TypeError as e: print("incompatible function arguments" in str(e))
""")
        assert out.splitlines() == ["True", "bad_function_call", "True"]

    def test_callable_is_let_go_before_the_interpreter_ends(self, run_python):
        out = run(run_python, """
from sarvo import nemra
class Sink:
    def __call__(self, *arguments): pass
    def __del__(self, print=print): print("gone")
nemra.onMessage(Sink())
""")
        assert out == "gone\n"

    def test_outside_the_package_the_clean_up_reports(self, run_python, tmp_path):
        copy_module(tmp_path)
        process = run_python(f"""
import sys
sys.path[:] = [p for p in sys.path if p and not p.endswith("python")] + [{str(tmp_path)!r}]
import nemra
print(nemra.nodes.Node("a", "b", "c"))
""")
        assert process.returncode == 0, process.stderr
        assert "deleted" in process.stdout and "No module named 'sarvo'" in process.stderr


def copy_module(folder):
    from conftest import BUILD

    for path in (BUILD / "python" / "sarvo").glob("nemra*.so"):
        shutil.copy(path, folder)


class TestImportFailures:
    def test_null_parameter_name(self, run_python):
        out = run(run_python, """
probe.answer({"nemraNode_create(intlaw, advfoil, dummy)": "5", "nemraNode_getParameters(5)": "6",
              "nemraParameter_name(6)": "<null>"})
try:
    from sarvo import nemra
except ImportError as e:
    print(e, e.__cause__)
""")
        assert out == "basic_string: construction from null is not valid None\n"

    def test_python_error_is_chained(self, run_python):
        out = run(run_python, """
import atexit
def register(*a): raise KeyError("no")
atexit.register = register
try:
    from sarvo import nemra
except ImportError as e:
    print(e, repr(e.__cause__))
print(len(probe.calls("nemraGlobalInitialize")))
""")
        assert out == "initialization failed KeyError('no')\n1\n"

    @pytest.mark.skipif("NEMRA_SANITIZED" in os.environ, reason="AddressSanitizer refuses RTLD_DEEPBIND")
    @pytest.mark.parametrize("version, accepted", [("3.120.1", False), ("3.12.9+", True), ("3.12", True), ("3.13.0", False)])
    def test_interpreter_version(self, run_python, tmp_path, version, accepted):
        """A library that the module finds before the interpreter says that it is another one."""
        from conftest import BUILD

        source = tmp_path / "version.c"
        source.write_text(f'const char* Py_GetVersion(void) {{ return "{version}"; }}\n')
        compiler = shutil.which("cc") or shutil.which("gcc")
        if not compiler:
            pytest.skip("no C compiler")
        probe_folder = BUILD / "probe"
        for library in ("libnemra.so", "libnemraNode.so"):
            shutil.copy(probe_folder / library, tmp_path)
        # Under RTLD_DEEPBIND the module asks its own libraries first: one of them gets a stand-in, which brings it along.
        name = b"libnemraCommon.so"
        (tmp_path / "libnemraCommoX.so").write_bytes(
            (probe_folder / name.decode()).read_bytes().replace(name + b"\0", b"libnemraCommoX.so\0"))
        subprocess.run([compiler, "-shared", "-fPIC", "-Wl,-soname," + name.decode(), "-o", tmp_path / name.decode(), source,
                        "-Wl,--no-as-needed", tmp_path / "libnemraCommoX.so", "-Wl,-rpath,$ORIGIN"], check=True)
        process = run_python("""
import sys, os
sys.setdlopenflags(os.RTLD_NOW | os.RTLD_DEEPBIND)
try:
    from sarvo import nemra
    print("accepted")
except ImportError as e:
    print(e)
""", LD_LIBRARY_PATH=str(tmp_path))
        refusal = ("Python version mismatch: module was compiled for Python 3.12, but the interpreter version is incompatible: "
                   f"{version}.")
        assert process.stdout == ("accepted\n" if accepted else refusal + "\n"), process.stderr


def test_module_needs_exactly_the_fixed_interface():
    """Any engine that has these functions, and no more, can stand in for ours."""
    from conftest import BUILD, ROOT

    nm = shutil.which("nm")
    if not nm:
        pytest.skip("no nm")
    declared = set()
    for header in (ROOT / "module" / "flat").glob("*.h"):
        declared |= set(re.findall(r"^NEMRA_API [^;(]*?\b(\w+)\(", header.read_text(), re.M))
    (module,) = (BUILD / "python" / "sarvo").glob("nemra*.so")
    symbols = subprocess.run([nm, "-D", "--undefined-only", module], capture_output=True, text=True, check=True).stdout
    needed = {line.split()[-1] for line in symbols.splitlines() if re.search(r"\b(nemra|addNemra|pyNemra|freeCharArray)", line)}
    assert needed == declared - {"nemraGlobalCloseCallbacks", "nemraGlobalSetHostLock"}
