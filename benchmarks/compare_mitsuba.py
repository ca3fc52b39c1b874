"""The Cornell box beside Mitsuba 3 (llvm_ad_spectral): samples per second, and error after equal time, in one run.

    python benchmarks/compare_mitsuba.py [--seconds 10] [--threads 2]

Run it by a Python that has `mitsuba` and `numpy` (in an environment of its own) on a machine with LLVM's shared library; our side is the native program
build/benchmarks/cornell_rate. Both trace 256 x 256 pixels, four wavelengths a path, unlimited depth with Russian roulette from the
fifth bounce, a box filter, next-event estimation with multiple importance sampling; the peer takes its independent and its
multi-jittered sampler. Renders of both alternate, so that a machine that drifts is unfair to neither.

Error: two renders a, b of an engine with different seeds give its mean squared error without a reference, (a - b)^2 / 2 per pixel and
channel; it is set in relation to the square of the mean over all renders. That the engines agree is checked on blocks of
16 x 16 pixels.
"""

import argparse
import csv
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
DATA = ROOT / "benchmarks" / "data" / "cornell"
SIZE = 256


def find_llvm():
    """Mitsuba takes LLVM 16 or newer; Debian installs it under its version. DRJIT_LIBLLVM_PATH names one elsewhere."""
    if "DRJIT_LIBLLVM_PATH" in os.environ:
        return
    for version in range(22, 15, -1):
        for pattern in (f"libLLVM-{version}.so*", f"libLLVM.so.{version}*"):
            found = sorted(pathlib.Path("/usr/lib/x86_64-linux-gnu").glob(pattern))
            if found:
                os.environ["DRJIT_LIBLLVM_PATH"] = str(found[0])
                return
    sys.exit("no LLVM 16 or newer: install libllvm19, or name it in DRJIT_LIBLLVM_PATH")


def read_columns(path):
    with open(path, encoding="ascii") as file:
        rows = list(csv.reader(line for line in file if not line.startswith("#")))
    return {name: [row[i] for row in rows[1:]] for i, name in enumerate(rows[0])}


def cut_ceiling(ceiling, light):
    """The ceiling as eight quads about the lamp: nothing is coplanar with it, and the box stays closed."""
    xs = sorted({p[0] for p in ceiling} | {p[0] for p in light})
    zs = sorted({p[2] for p in ceiling} | {p[2] for p in light})
    y = ceiling[0][1]
    quads = []
    for i in range(3):
        for k in range(3):
            if i == 1 and k == 1:
                continue
            quads.append([[xs[i], y, zs[k]], [xs[i + 1], y, zs[k]], [xs[i + 1], y, zs[k + 1]], [xs[i], y, zs[k + 1]]])
    return quads


def mitsuba_scene(mi, sampler):
    geometry = json.loads((DATA / "geometry.json").read_text(encoding="ascii"))
    reflectance = read_columns(DATA / "reflectance.csv")
    light = read_columns(DATA / "light.csv")

    def spectrum(columns, name):
        return {"type": "irregular", "wavelengths": ",".join(columns["wavelength_nm"]), "values": ",".join(columns[name])}

    scene = {"type": "scene", "integrator": {"type": "path", "max_depth": -1, "rr_depth": 5}}
    camera = geometry["camera"]
    origin = [c / 1000 for c in camera["position"]]
    target = [o + d for o, d in zip(origin, camera["direction"], strict=True)]
    scene["sensor"] = {
        "type": "perspective", "fov": camera["fov_deg"], "fov_axis": "x",
        "to_world": mi.ScalarTransform4f().look_at(origin=origin, target=target, up=camera["up"]),
        "film": {"type": "hdrfilm", "width": SIZE, "height": SIZE, "pixel_format": "xyz", "component_format": "float32",
                 "rfilter": {"type": "box"}},
        "sampler": {"type": sampler},
    }
    for name in ("white", "green", "red"):
        scene[name] = {"type": "twosided", "bsdf": {"type": "diffuse", "reflectance": spectrum(reflectance, name)}}
    lamp = next(s for s in geometry["surfaces"] if s["name"] == "light")["quads"][0]
    for surface in geometry["surfaces"]:
        quads = cut_ceiling(surface["quads"][0], lamp) if surface["name"] == "ceiling" else surface["quads"]
        vertices = [c / 1000 for quad in quads for point in quad for c in point]
        faces = [4 * i + k for i in range(len(quads)) for k in (0, 1, 2, 0, 2, 3)]
        mesh = mi.Mesh(surface["name"], 4 * len(quads), 2 * len(quads))
        parameters = mi.traverse(mesh)
        parameters["vertex_positions"] = vertices
        parameters["faces"] = faces
        parameters.update()
        path = os.path.join(tempfile.mkdtemp(), surface["name"] + ".ply")
        mesh.write_ply(path)
        scene["mesh_" + surface["name"]] = {"type": "ply", "filename": path, "face_normals": True}
        if surface["name"] == "light":
            scene["mesh_light"]["bsdf"] = {"type": "twosided", "bsdf": {"type": "diffuse", "reflectance": {"type": "uniform", "value": 0.78}}}
            scene["mesh_light"]["emitter"] = {"type": "area", "radiance": spectrum(light, "radiance")}
        else:
            scene["mesh_" + surface["name"]]["bsdf"] = {"type": "ref", "id": surface["material"]}
    return mi.load_dict(scene)


class Mitsuba:
    def __init__(self, mi, dr, np, sampler):
        self.mi, self.dr, self.np = mi, dr, np
        self.name = f"Mitsuba {mi.__version__}, {sampler}"
        self.scene = mitsuba_scene(mi, sampler)
        self.spp = 16
        for seed in (1000, 1001):  # compiles, and fills the caches
            self.np.array(mi.render(self.scene, spp=self.spp, seed=seed))

    def render(self, seconds, seed):
        total = 0.0
        passes = 0
        start = time.perf_counter()
        while time.perf_counter() - start < seconds:
            total = total + self.np.array(self.mi.render(self.scene, spp=self.spp, seed=seed * 100000 + passes)).astype(float)
            passes += 1
        taken = time.perf_counter() - start
        return total / passes, passes * self.spp * SIZE * SIZE / taken


class Nemra:
    name = "nemra"

    def __init__(self, np, threads):
        self.np, self.threads = np, threads

    def render(self, seconds, seed):
        with tempfile.NamedTemporaryFile() as file:
            out = subprocess.run(
                [ROOT / "build/benchmarks/cornell_rate", ROOT / "sarvo/examples/cornellbox.svxml", "--image", str(seconds), str(seed),
                 str(self.threads), file.name], check=True, capture_output=True, text=True)
            return self.np.fromfile(file.name).reshape(SIZE, SIZE, 3), float(out.stdout.split()[0])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--seconds", type=float, default=10.0)
    parser.add_argument("--threads", type=int, default=os.cpu_count())
    arguments = parser.parse_args()
    find_llvm()
    import drjit as dr
    import mitsuba as mi
    import numpy as np

    mi.set_variant("llvm_ad_spectral")
    dr.set_thread_count(arguments.threads)
    engines = [Nemra(np, arguments.threads), Mitsuba(mi, dr, np, "independent"), Mitsuba(mi, dr, np, "multijitter")]
    images = {engine.name: [] for engine in engines}
    rates = {engine.name: [] for engine in engines}
    for seed in (1, 2):
        for engine in engines:
            image, rate = engine.render(arguments.seconds, seed)
            images[engine.name].append(image / image.mean())
            rates[engine.name].append(rate)

    # Units differ (cd/m2 here, a normalised Y there): each image was divided by its mean. Means over blocks must agree then, but for noise.
    def blocked(image):
        return image.reshape(16, 16, 16, 16, 3).mean(axis=(1, 3))

    reference = np.mean([image for pair in images.values() for image in pair], axis=0)
    scale = blocked(reference) + 0.01 * reference.mean()
    means = {name: blocked((a + b) / 2) for name, (a, b) in images.items()}
    noise = {name: np.mean((blocked(a - b) / 2 / scale) ** 2) for name, (a, b) in images.items()}
    floor = 1e-3 * reference.mean()
    ours = engines[0].name
    print(f"{arguments.threads} threads, {arguments.seconds:g} s each, {SIZE} x {SIZE}")
    errors = {}
    for name, (a, b) in images.items():
        errors[name] = float(np.mean((a - b) ** 2 / 2 / (reference**2 + floor**2)))
        apart = 0.0
        if name != ours:
            apart = float(np.mean(((means[name] - means[ours]) / scale) ** 2) - noise[name] - noise[ours])
            apart = max(0.0, apart) ** 0.5
        print(f"{name:28s} {np.mean(rates[name]) / 1e6:7.3f} M samples/s   relative MSE {errors[name]:.3e}   "
              f"blocks differ by {100 * apart:.2f} % beyond noise")
        if apart > 0.01:
            print("the engines disagree: the comparison is void")
            return 1
    peers = [engine.name for engine in engines[1:]]
    best = min(errors[name] for name in peers)
    fastest = max(np.mean(rates[name]) for name in peers)
    print(f"rate  {np.mean(rates[ours]) / fastest:5.2f} x the fastest peer's")
    print(f"error {errors[ours] / best:5.3f} of the best peer's")
    return 0


if __name__ == "__main__":
    sys.exit(main())
