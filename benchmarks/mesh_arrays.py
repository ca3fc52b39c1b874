"""Arrays of a large mesh into the engine and back, beside copies of the same bytes by numpy.

A copy into fresh memory is what any new array costs; one into warm memory, touched before, is the least that a copy can take. The
mesh's own memory is fresh each time, in and out.
"""

import argparse
import statistics
import time

import numpy as np

from sarvo import nemra

Mesh = nemra.nodes.geometries.Mesh


def grid(triangles: int) -> tuple[np.ndarray, np.ndarray, np.ndarray]:
    """Vertices, normals and triangles of a grid of squares, two triangles each."""
    side = max(1, round((triangles / 2) ** 0.5))
    steps = np.linspace(0.0, 1.0, side + 1)
    x, y = (axis.ravel() for axis in np.meshgrid(steps, steps))
    vertices = np.stack([x, y, 0.1 * np.sin(7.0 * x)], axis=1)
    normals = np.tile(np.float32([0.0, 0.0, 1.0]), (len(vertices), 1))
    corner = (np.arange(side)[:, None] * (side + 1) + np.arange(side)).ravel().astype(np.int32)
    below = corner + np.int32(side + 1)
    both = np.stack([corner, corner + 1, below, corner + 1, below + 1, below], axis=1)
    return vertices, normals, both.reshape(-1, 3)


def cpu_time(call, repeats: int) -> tuple[float, float]:
    """Least and median time of the calling thread in seconds."""
    times = []
    for _ in range(repeats):
        began = time.thread_time()
        kept = call()
        times.append(time.thread_time() - began)
        del kept
    return min(times), statistics.median(times)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--triangles", type=int, default=2_000_000)
    parser.add_argument("--repeats", type=int, default=7)
    arguments = parser.parse_args()

    arrays = grid(arguments.triangles)
    vertices, normals, triangles = arrays
    warm = [array.copy() for array in arrays]
    scene = nemra.nodes.Scene("s")

    def fill_warm() -> None:
        for target, array in zip(warm, arrays, strict=True):
            np.copyto(target, array)

    def get(mesh: "Mesh") -> list[np.ndarray]:
        return [mesh.getVertices(), mesh.getVextexNormals(), mesh.getTriangles()]

    def create_and_drop() -> None:
        # Free-standing meshes stay until the process ends: a scene that takes one for its own gives it back.
        mesh = Mesh("m", *arrays)
        scene.add(mesh, False)
        scene.clear()

    mesh = Mesh("m", vertices, normals, triangles)
    for given, got in zip(arrays, get(mesh), strict=True):
        assert np.array_equal(given, got)

    size = sum(array.nbytes for array in arrays)
    print(f"{len(triangles)} triangles, {size / 1e6:.0f} MB; CPU time, least (median) of {arguments.repeats}")
    least = {}
    for name, call in (
        ("numpy copy, fresh memory", lambda: [array.copy() for array in arrays]),
        ("numpy copy, warm memory", fill_warm),
        ("Mesh(...) into a scene", create_and_drop),
        ("Scene.add of a copy", lambda: scene.add(mesh, True)),
        ("arrays of the mesh", lambda: get(mesh)),
    ):
        least[name], median = cpu_time(call, arguments.repeats)
        print(f"{name:26}{1e3 * least[name]:8.1f} ms ({1e3 * median:.1f}) {size / 1e9 / max(least[name], 1e-9):7.1f} GB/s")
    for what in ("Mesh(...) into a scene", "arrays of the mesh"):
        ratios = [least[what] / least[f"numpy copy, {memory} memory"] for memory in ("fresh", "warm")]
        print(f"{what} takes {ratios[0]:.2f} times a copy into fresh memory, {ratios[1]:.2f} times one into warm memory")


if __name__ == "__main__":
    main()
