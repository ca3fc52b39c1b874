"""Command line: python -m sarvo render SCENE -o picture.png"""

import argparse
import contextlib
import math
import os
import sys

from . import SVLIB_PATH, examples, nemra
from ._render import EXIT_FAILED, RenderJob
from ._worker import PASSWORD_VARIABLE, read_password, serve

KINDS = ("png", "jpg", "jpeg", "exr", "hdr", "svraw", "csv")


def build_parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m sarvo", description="Spectral light simulation.")
    commands = parser.add_subparsers(dest="command", required=True, metavar="COMMAND")

    render = commands.add_parser(
        "render", help="render a scene to a picture",
        description="Renders a scene. Ctrl-C stops early and writes what was computed; a second Ctrl-C gives up.",
        epilog="Exit codes: 0 written, 1 failed, 2 wrong usage, 130 stopped by Ctrl-C (the picture is written).")
    render.add_argument("scene", metavar="SCENE", help="scene file, or the name of an example")
    render.add_argument("-o", "--output", metavar="FILE", help="picture to write, kind by its extension (default: SCENE.png)")
    render.add_argument("--spp", type=positive_number, metavar="N", help="samples per pixel (default: 64, or none with --time)")
    render.add_argument("--time", type=positive_number, metavar="SECONDS", help="stop after this time")
    render.add_argument("--threads", type=positive_integer, metavar="N", default=usable_cores(),
                        help="render threads (default: %(default)s, all cores)")
    render.add_argument("--worker", metavar="HOST:PORT", action="append", default=[], dest="workers",
                        help="render worker to use besides this machine; may be given several times")
    render.add_argument("--no-local", action="store_true", help="render on the workers alone")
    add_password(render)
    render.add_argument("--setup", metavar="NAME", help="setup to render, when the scene has several")
    render.add_argument("-q", "--quiet", action="store_true", help="no progress, only warnings and errors")

    worker = commands.add_parser(
        "worker", help="serve renders of other machines",
        description="Opens a port and renders for whoever knows the password, until Ctrl-C. Without one, for this machine alone.")
    worker.add_argument("--port", type=port_number, default=0, metavar="N", help="port to open (default: any that is free)")
    worker.add_argument("--threads", type=positive_integer, metavar="N", default=usable_cores(),
                        help="render threads (default: %(default)s, all cores)")
    add_password(worker)
    worker.add_argument("-q", "--quiet", action="store_true", help="only warnings and errors")

    library = commands.add_parser("library", help="list what the shipped libraries hold")
    library.add_argument("words", metavar="WORD", nargs="*", help="only entries with all of these words")

    commands.add_parser("version", help="print the version")
    commands.add_parser("examples", help="list the example scenes and their files")
    return parser


def add_password(command: argparse.ArgumentParser) -> None:
    command.add_argument("--password-file", metavar="FILE",
                         help=f"file whose first line is the workers' password (default: the variable {PASSWORD_VARIABLE})")


def port_number(text: str) -> int:
    with contextlib.suppress(ValueError):
        if 0 <= int(text) < 2**16:
            return int(text)
    raise argparse.ArgumentTypeError(f"{text} isn't a port, which goes from 0 to 65535")


def positive_number(text: str) -> float:
    with contextlib.suppress(ValueError):
        if 0 < float(text) < math.inf:
            return float(text)
    raise argparse.ArgumentTypeError(f"{text} isn't a number above 0")


def positive_integer(text: str) -> int:
    with contextlib.suppress(ValueError):
        if 0 < int(text) < 2**31:
            return int(text)
    raise argparse.ArgumentTypeError(f"{text} isn't a whole number above 0")


def usable_cores() -> int:
    return len(os.sched_getaffinity(0))


def find_scene(scene: str) -> str:
    """File of a scene given by file name or by the name of an example. A file wins."""
    if os.path.exists(scene) or scene not in examples:
        return scene
    return examples[scene]


def why_unwritable(output: str) -> str:
    """Why no picture can be written there; empty if nothing stands against it."""
    folder, name = os.path.split(output)
    kind = os.path.splitext(name)[1].removeprefix(".").lower()
    if kind not in KINDS:
        return f"{output}: the extension must say the kind of file, one of {', '.join(KINDS)}"
    if not os.path.isdir(folder or "."):
        return f"no folder {folder} to write {name} to"
    if os.path.isdir(output):
        return f"{output} is a folder"
    if not os.access(output if os.path.exists(output) else folder or ".", os.W_OK):
        return f"no permission to write {output}"
    return ""


def render(options: argparse.Namespace) -> int:
    scene = find_scene(options.scene)
    if not os.path.isfile(scene):
        known = ", ".join(examples)
        print(f"sarvo: no scene file {scene} (examples: {known})", file=sys.stderr)
        return EXIT_FAILED
    output = options.output or os.path.splitext(os.path.basename(scene))[0] + ".png"
    if fault := why_unwritable(output):  # Better told now than after an hour of rendering.
        print(f"sarvo: {fault}", file=sys.stderr)
        return EXIT_FAILED

    spp = options.spp or (0 if options.time else 64)
    job = RenderJob(output, spp=spp, seconds=options.time or 0, quiet=options.quiet)
    if options.no_local and not options.workers:
        print("sarvo: --no-local needs a --worker", file=sys.stderr)
        return EXIT_FAILED
    job.set_parameter("num_threads", options.threads)
    job.set_parameter("library_paths", SVLIB_PATH)
    if options.setup:
        job.set_parameter("setup", options.setup)
    if options.workers:
        job.set_parameter("password", read_password(options.password_file))
    for address in options.workers:
        job.add_worker(address)
    if not options.no_local:
        job.add_local()
    return job.run(scene)


def main(arguments: list[str] | None = None) -> int:
    options = build_parser().parse_args(arguments)
    if options.command == "version":
        print(nemra.version())
        return 0
    if options.command == "examples":
        for name, file in examples.items():
            print(f"{name}  {file}")
        return 0
    if options.command == "library":
        return list_library(options.words)
    if options.command == "worker":
        return serve(options.port, read_password(options.password_file), options.threads, options.quiet)
    return render(options)


def list_library(words: list[str]) -> int:
    from . import library  # the only command that reads them

    found = library.search(" ".join(words))
    for entry in found:
        print(f"{entry.name}  {entry.family}  {entry.summary}")
    return 0 if found else EXIT_FAILED


if __name__ == "__main__":
    sys.exit(main())
