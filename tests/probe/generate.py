"""Writes the probe's recording functions from the headers of the flat interface: `generate.py output.cpp header...`"""

import re
import sys

PAIRS = re.compile(r"const (char|float|double|int32_t)\* (\w+), (?:unsigned int|int|int32_t|int64_t|uint32_t) (count|size)\b")
# A mesh has two counts for four arrays.
IRREGULAR = {
    "nemraMesh_create": "name, probe::elements(vertices, verticesCount), probe::elements(normals, verticesCount), "
    "probe::elements(uvs, verticesCount / 3 * 2), verticesCount, probe::elements(triangles, trianglesCount), trianglesCount",
    "nemraInstance_setTransform": "instance, probe::elements(matrix, 16)",
    # The layout of the 8-bit form: the four numbers are the probe's own.
    "nemraRawGetImage8bitInfo": "raw",
}


def definition(result, name, parameters):
    names = [] if parameters == "void" else [re.search(r"(\w+)$", p.strip()).group(1) for p in parameters.split(",")]
    if name in IRREGULAR:
        arguments = IRREGULAR[name].split(", ") if "elements" not in IRREGULAR[name] else [IRREGULAR[name]]
    else:
        arrays = {array: count for _, array, count in PAIRS.findall(parameters)}
        outs = re.findall(r"(?<!const )\b(?:uint32_t|int32_t|int)\* (\w+)", parameters)
        arguments = []
        for n in names:
            if n in arrays:
                arguments.append(f"probe::elements({n}, {arrays[n]})")
            elif n in outs:
                arguments.append(f"probe::Count{{{n}}}")
            else:
                arguments.append(n)
    body = f"return probe::call<{result}>({', '.join([chr(34) + name + chr(34)] + arguments)});"
    if "sink" in names:
        body = f'return probe::pour("{name}", {names[0]}, user, sink);'
    elif "callback" in names:
        shown = [a for a in arguments if a not in ("callback", "user")]
        body = f'probe::keepCallback("{name}", reinterpret_cast<void*>(callback), user); ' + (
            f"return probe::call<{result}>({', '.join([chr(34) + name + chr(34)] + shown)});"
        )
    if name == "nemraRawGetImage8bitInfo":
        body = "*width = 3; *height = 2; *stride = 12; *alignment = 4; " + body
    if field := re.search(r"\*\* (\w+),(?:.*,)? bool keepOriginal$", parameters):
        call = body.removeprefix("return ")
        answered = "" if result == "void" else "return answered;"
        body = f"{'' if result == 'void' else 'auto answered = '}{call} probe::takeAway({field[1]}, keepOriginal); {answered}"
    return f"NEMRA_API {result} {name}({parameters}) {{ {body} }}"


def main(output, headers):
    lines = ['#include "tests/probe/probe.h"'] + [f'#include "{h}"' for h in headers]
    for header in headers:
        text = re.sub(r"/\*.*?\*/", "", open(header).read(), flags=re.S)
        for result, name, parameters in re.findall(r"NEMRA_API ([\w ]+?\**) ?(\w+)\(([^)]*)\);", text):
            lines.append(definition(result, name, " ".join(parameters.split())))
    with open(output, "w") as out:
        out.write("\n".join(lines) + "\n")


main(sys.argv[1], sys.argv[2:])
