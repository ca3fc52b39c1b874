"""The Cornell box computed a second time, straight from the measured data, with nothing of the engine in it.

Path tracing in numpy with own intersections (Pluecker coordinates), light sampling by area, cosine-weighted reflection and
Russian roulette. Diffuse reflection sends light the same way at every wavelength, so a path is traced once for all of them: what
it needs to know is only how often it met each kind of paint. Its spectrum is the light's times powers of their reflectances.
"""

import csv
import json
from dataclasses import dataclass
from pathlib import Path

import numpy as np

DATA = Path(__file__).resolve().parents[2] / "sarvo" / "data" / "cornell"
CMF = Path(__file__).resolve().parents[1] / "data" / "cmf" / "cie1931_2deg_xyz_1nm.csv"

KM = 683.002  # lm/W, luminous efficacy of the CIE 1931 observer's ybar at its peak (CIE 018:2019)
PAINTS = ("white", "green", "red", "light")
ROULETTE_FROM = 3
SURVIVAL = 0.75  # about the reflectance of the white paint
COUNT_BITS = 10


def read_table(path: Path) -> dict[str, np.ndarray]:
    with path.open() as lines:
        rows = list(csv.DictReader(line for line in lines if not line.startswith("#")))
    return {name: np.array([float(row[name]) for row in rows]) for name in rows[0]}


@dataclass(frozen=True)
class Patch:
    """A rectangle of the picture: shares of its width from the left and of its height from the top, and what is seen there."""

    surface: str
    left: float
    right: float
    top: float
    bottom: float


PATCHES = {
    "red wall": Patch("left_wall", 0.115, 0.175, 0.40, 0.60),
    "green wall": Patch("right_wall", 0.825, 0.885, 0.40, 0.60),
    "back wall": Patch("back_wall", 0.35, 0.68, 0.27, 0.36),
    "floor": Patch("floor", 0.20, 0.36, 0.91, 0.945),
    "ceiling": Patch("ceiling", 0.30, 0.70, 0.055, 0.10),
    "top of the short block": Patch("short_block_top", 0.60, 0.67, 0.646, 0.668),
    "front of the tall block": Patch("tall_block_side4", 0.36, 0.45, 0.50, 0.62),
    "light": Patch("light", 0.43, 0.57, 0.131, 0.152),
}


class CornellBox:
    """Polygons and camera of the box, in millimetres as published."""

    def __init__(self) -> None:
        published = json.loads((DATA / "cornell_geometry.json").read_text())
        self.names: list[str] = []
        self.paint: list[int] = []
        corners: list[list] = []
        for surface in published["surfaces"]:
            vertices = surface["vertices"]
            if surface["name"] == "light":
                self.light = np.array(vertices)
                continue
            # The published left wall isn't quite flat: two triangles, each with its last corner twice.
            pieces = [vertices]
            if surface["name"] == "left_wall":
                pieces = [[vertices[0], vertices[1], vertices[2], vertices[2]], [vertices[0], vertices[2], vertices[3], vertices[3]]]
            for piece in pieces:
                self.names.append(surface["name"])
                self.paint.append(PAINTS.index(surface["material"]))
                corners.append(piece)
        # The light lies in the plane of the ceiling: a ray that meets the ceiling inside the light's outline meets the light.
        self.names.append("light")
        self.paint.append(PAINTS.index("light"))
        self.ceiling = self.names.index("ceiling")
        self.lamp = len(self.names) - 1
        self.paint = np.array(self.paint)

        a = np.array(corners, dtype=float)
        b = np.roll(a, -1, axis=1)
        self.edges = np.concatenate([np.cross(a, b), b - a], axis=2).reshape(-1, 6).T  # pairs with (direction, moment) of a ray
        normals = np.cross(a[:, 1] - a[:, 0], a[:, 2] - a[:, 0])
        self.normals = normals / np.linalg.norm(normals, axis=1, keepdims=True)
        self.offsets = np.einsum("ij,ij->i", self.normals, a[:, 0])
        self.lamp_normal = np.array([0.0, -1.0, 0.0])
        self.low, self.high = self.light.min(axis=0), self.light.max(axis=0)
        self.lamp_area = (self.high[0] - self.low[0]) * (self.high[2] - self.low[2])

        camera = published["camera"]
        self.eye = np.array(camera["position"], dtype=float)
        self.film = camera["film_width"] / camera["focal_length"]  # width of the film at distance 1

    def camera_rays(self, patch: Patch, count: int, random: np.random.Generator) -> np.ndarray:
        """Directions through points of the patch. The camera looks along +z with +y up, and so has +x on its left."""
        side = int(np.sqrt(count))
        cell = np.arange(side * side)
        u = patch.left + (patch.right - patch.left) * (cell % side + random.random(side * side)) / side
        v = patch.top + (patch.bottom - patch.top) * (cell // side + random.random(side * side)) / side
        return unit(np.stack([(0.5 - u) * self.film, (0.5 - v) * self.film, np.ones(side * side)], axis=1))

    def closest(self, origins: np.ndarray, directions: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
        """Index of the first polygon met, -1 for none, and the distance."""
        rays = np.concatenate([directions, np.cross(origins, directions)], axis=1)
        side = (rays @ self.edges).reshape(len(rays), len(self.offsets), 4)
        inside = (side >= 0).all(axis=2) | (side <= 0).all(axis=2)
        with np.errstate(divide="ignore", invalid="ignore"):
            distance = (self.offsets - origins @ self.normals.T) / (directions @ self.normals.T)
        distance = np.where(inside & (distance > 1e-6), distance, np.inf)
        index = distance.argmin(axis=1)
        distance = distance[np.arange(len(index)), index]
        index[np.isinf(distance)] = -1
        at_ceiling = np.flatnonzero(index == self.ceiling)
        x, z = (origins[at_ceiling] + distance[at_ceiling, None] * directions[at_ceiling])[:, [0, 2]].T
        in_lamp = (x > self.low[0]) & (x < self.high[0]) & (z > self.low[2]) & (z < self.high[2])
        index[at_ceiling[in_lamp]] = self.lamp
        return index, distance

    def normals_against(self, index: np.ndarray, directions: np.ndarray) -> np.ndarray:
        """Unit normals of polygons on the side that the rays come from."""
        normals = self.normals[np.where(index == self.lamp, self.ceiling, index)]
        return np.where(np.einsum("ij,ij->i", normals, directions)[:, None] > 0, -normals, normals)

    def trace(self, directions: np.ndarray, random: np.random.Generator):
        """Yields what the paths bring from the light: (path, factor, counts of met paints, packed). The first item is the index of
        the polygon that each camera ray met."""
        path = np.arange(len(directions))
        origins = np.broadcast_to(self.eye, directions.shape)
        counts = np.zeros(len(directions), dtype=np.int64)
        weight = np.ones(len(directions))
        index, distance = self.closest(origins, directions)
        yield index
        at_lamp = path[index == self.lamp]
        yield at_lamp, np.ones(len(at_lamp)), counts[at_lamp]

        bounce = 0
        while True:
            # Escaped paths end here; the box is open at the front and dark outside.
            alive = index >= 0
            path, counts, weight, index = path[alive], counts[alive], weight[alive], index[alive]
            if not len(path):
                return
            points = origins[alive] + distance[alive, None] * directions[alive]
            normals = self.normals_against(index, directions[alive])
            counts = counts + (1 << (COUNT_BITS * self.paint[index]))

            factor = weight * self.direct_light(points, normals, random)
            lit = factor > 0
            yield path[lit], factor[lit], counts[lit]

            bounce += 1
            directions = cosine_directions(normals, random)
            origins = points
            if bounce >= ROULETTE_FROM:
                go_on = random.random(len(path)) < SURVIVAL
                path, counts, weight = path[go_on], counts[go_on], weight[go_on] / SURVIVAL
                origins, directions = origins[go_on], directions[go_on]
            index, distance = self.closest(origins, directions)

    def direct_light(self, points: np.ndarray, normals: np.ndarray, random: np.random.Generator) -> np.ndarray:
        """Radiance reflected by a white diffuser at the points, for a light of radiance 1 that shines downwards."""
        targets = self.low + (self.high - self.low) * random.random(points.shape)
        way = targets - points
        square = np.einsum("ij,ij->i", way, way)
        square[square == 0] = np.inf
        towards = way / np.sqrt(square)[:, None]
        cosines = np.maximum(np.einsum("ij,ij->i", towards, normals), 0) * np.maximum(-towards @ self.lamp_normal, 0)
        result = cosines * self.lamp_area / (np.pi * square)
        maybe = np.flatnonzero(result > 0)
        index, _ = self.closest(points[maybe], towards[maybe])
        result[maybe[index != self.lamp]] = 0
        return result


class Colours:
    """XYZ (Y in cd/m2) of light that has met the paints a given number of times."""

    def __init__(self) -> None:
        cmf = read_table(CMF)
        # Linear between the measured wavelengths, and so exact on the grid of 1 nm. The light ends at 400 and 700 nm.
        self.wavelengths = np.arange(400, 701)
        paint = read_table(DATA / "cornell_reflectances.csv")
        light = read_table(DATA / "cornell_light.csv")
        self.emission = np.interp(self.wavelengths, light["wavelength_nm"], light["emission"])
        published = json.loads((DATA / "cornell_geometry.json").read_text())
        flat = {"light": np.full(len(self.wavelengths), published["light_reflectance"])}
        self.reflectances = [flat[name] if name in flat else np.interp(self.wavelengths, paint["wavelength_nm"], paint[name])
                             for name in PAINTS]
        observer = np.stack([np.interp(self.wavelengths, cmf["wavelength_nm"], cmf[name]) for name in ("xbar", "ybar", "zbar")])
        step = np.ones(len(self.wavelengths))
        step[[0, -1]] = 0.5
        self.observer = KM * observer * step

    def xyz(self, packed: np.ndarray) -> np.ndarray:
        kinds, back = np.unique(packed, return_inverse=True)
        spectra = np.broadcast_to(self.emission, (len(kinds), len(self.emission)))
        for i, reflectance in enumerate(self.reflectances):
            times = (kinds >> (COUNT_BITS * i)) & ((1 << COUNT_BITS) - 1)
            spectra = spectra * reflectance ** times[:, None]
        return (spectra @ self.observer.T)[back]


def unit(vectors: np.ndarray) -> np.ndarray:
    return vectors / np.linalg.norm(vectors, axis=1, keepdims=True)


def cosine_directions(normals: np.ndarray, random: np.random.Generator) -> np.ndarray:
    """A unit vector to a point of the sphere that touches the plane: cosine-weighted (Malley's method in another form)."""
    return unit(normals + unit(random.standard_normal(normals.shape)))


def patch_xyz(patch: Patch, count: int, seed: int) -> tuple[np.ndarray, np.ndarray]:
    """Mean XYZ radiance of a patch and its standard error. Fails if the patch shows anything else than its surface."""
    box, colours = CornellBox(), Colours()
    random = np.random.default_rng(seed)
    directions = box.camera_rays(patch, count, random)
    items = box.trace(directions, random)
    seen = {box.names[i] for i in np.unique(next(items))}
    assert seen == {patch.surface}, f"the patch shows {seen}"
    total = np.zeros((len(directions), 3))
    for path, factor, packed in items:
        total[path] += factor[:, None] * colours.xyz(packed)  # each path at most once per item
    return total.mean(axis=0), total.std(axis=0, ddof=1) / np.sqrt(len(total))


if __name__ == "__main__":
    for name, patch in PATCHES.items():
        mean, error = patch_xyz(patch, 10_000, seed=1)
        print(f"{name:26s}", np.round(mean, 1), "+-", np.round(100 * error / mean, 2), "%")
