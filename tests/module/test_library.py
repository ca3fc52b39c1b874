"""The package's libraries of measured data: listed, named in scenes made by scripts, rendered."""

import os
import subprocess
import sys
import threading
from pathlib import Path

import numpy as np
import pytest

import sarvo
from sarvo import library, nemra

ROOT = Path(__file__).resolve().parents[2]
nodes = nemra.nodes


def one_pixel(reflectance, radiance, materials=()):
    """A camera straight down on a wide floor of that reflectance under an even sky of that radiance."""
    scene = nodes.Scene("floor")
    material = nodes.material.Generic("floor")
    bsdf = nodes.bsdf.Lambertian("bsdf")
    reflectance.setName("reflectance")
    assert bsdf.setChild(reflectance)
    assert material.setChild(bsdf)
    for node in (material, *materials):
        scene.add(node)
    corners = np.array([[-9, 0, -9], [-9, 0, 9], [9, 0, 9], [9, 0, -9]], float)
    floor = nodes.geometries.Mesh("floor", corners, np.zeros((0, 3), np.float32), np.array([[0, 1, 2], [0, 2, 3]], np.int32))
    floor.setMaterial("floor")
    scene.add(floor)
    instance = nodes.Instance()
    instance.setGeometryName("floor")
    scene.add(instance)
    setup = nodes.setup.Default("setup")
    sky = nodes.environment.Uniform("environment")
    radiance.setName("radiance")
    assert sky.setChild(radiance)
    assert setup.setChild(sky)
    camera = nodes.instrument.Idealrectcam("instrument")
    camera.setPosition([0, 1, 0])
    camera.setTarget([0, 0, 0])
    camera.setUp([0, 0, 1])
    camera.setHorizontal_fov(5.0)
    camera.setWidth(1)
    camera.setHeight(1)
    assert camera.setChild(nodes.sensor.Ciexyz("sensor"))
    assert setup.setChild(camera)
    scene.add(setup)
    return scene


def save(scene, path):
    with open(path, "w") as file:
        scene.write(file)


def render(scene, paths="", spp=256):
    """XYZ of the pixel, and what the renderer said."""
    messages, pixels, done = [], [], threading.Event()
    renderer = nemra.Renderer()
    renderer.setParameter("num_threads", 1)
    if paths:
        renderer.setParameter("library_paths", paths)
    renderer.addLocalNode()
    renderer.setHaltCondition(time=0, spp=spp, action=nemra.Renderer.halt_cond.stops)
    renderer.onMessage(lambda source, text, level: messages.append((source, text, int(level))))

    def finish(raw):
        pixels.append(raw.pixels()[0, 0].copy())
        done.set()

    renderer.onFinish(finish)
    data = scene.print()
    assert renderer.startData(data, len(data))
    assert done.wait(60)
    warnings = [m for m in messages if m[2] in (int(nemra.Warning), int(nemra.Error))]
    return pixels[0], warnings


def preset(name, scale=1.0):
    node = nodes.spectrum.Preset("preset")
    node.setPreset(name)
    node.setScale(scale)
    return node


def linked(name):
    node = nodes.spectrum.Linked("linked")
    node.setNode(name)
    return node


def grey(value):
    node = nodes.spectrum.Uniform("grey")
    node.setValue(value)
    return node


class TestListing:
    def test_entries_have_all_that_the_documentation_lists(self):
        found = {(e.name, e.family) for e in library.entries()}
        lines = [line.split("|") for line in (ROOT / "docs" / "library.md").read_text().partition("begin -->")[2].splitlines()]
        listed = {(cells[1].strip().strip("`"), cells[2].strip()) for cells in lines if len(cells) == 5 and "`" in cells[1]}
        assert found == listed

    def test_each_names_source_and_licence(self):
        for entry in library.entries():
            assert "\nSource: " in entry.comments and "\nLicence: " in entry.comments, entry.name
            assert entry.summary and entry.summary in entry.comments

    def test_search(self):
        assert [e.name for e in library.search("GOLD johnson")] == ["Au_johnson"]
        assert {e.family for e in library.search("N-BK7")} == {"spectrum", "dielectricfunc"}
        assert library.search("no such thing") == []

    def test_other_files(self, tmp_path):
        scene = nodes.Scene("mine")
        scene.add(grey(0.25))
        file = tmp_path / "mine.svlib"
        save(scene, file)
        assert [(e.name, e.family, e.type) for e in library.entries(tmp_path)] == [("grey", "spectrum", "uniform")]
        with pytest.raises(FileNotFoundError, match="nowhere"):
            library.entries(tmp_path / "nowhere")
        file.write_text("no scene")
        with pytest.raises(ValueError, match="mine.svlib"):
            library.entries(file)

    def test_import_leaves_it_alone(self):
        assert self.python("-c", "import sys, sarvo; print('sarvo.library' in sys.modules)") == "False\n"

    def test_command_line(self):
        assert self.python("-m", "sarvo", "library", "led", "b3").startswith("cie_led_b3  spectrum  ")

    def python(self, *arguments):
        environment = dict(os.environ, PYTHONPATH=str(Path(sarvo.__file__).parent.parent))
        return subprocess.run([sys.executable, *arguments], env=environment, capture_output=True, text=True, check=True).stdout


class TestRenders:
    """An even sky of luminance L over a floor of reflectance r has luminance r L everywhere."""

    def test_preset_of_the_package_needs_no_path(self):
        xyz, warnings = render(one_pixel(grey(0.5), preset("cie_a", 1000.0)))
        assert warnings == []
        assert xyz[1] == pytest.approx(500.0, rel=2e-3)
        assert xyz[0] / xyz.sum() == pytest.approx(0.44758, abs=1e-3)

    def test_linked_to_a_library_node(self):
        xyz, warnings = render(one_pixel(linked("colorchecker_22_neutral_5"), linked("cie_d65")), sarvo.SVLIB_PATH)
        assert warnings == []
        # Y of the patch is 0.198 (Munsell value 5, ASTM D1535: 0.19770).
        assert xyz[1] == pytest.approx(0.198, abs=0.008)

    def test_own_library_comes_before_the_packages_and_the_scene_before_both(self, tmp_path):
        mine = nodes.Scene("mine")
        light = grey(1.0 / (683.0 * 106.856))
        light.setName("cie_d65")
        mine.add(light)
        save(mine, tmp_path / "mine.svlib")
        xyz, warnings = render(one_pixel(grey(0.5), preset("cie_d65")), f"{tmp_path};{sarvo.SVLIB_PATH}")
        assert warnings == []
        assert xyz[0] / xyz.sum() == pytest.approx(1 / 3, abs=1e-3)
        light = preset("cie_a")
        light.setName("cie_d65")
        xyz, warnings = render(one_pixel(grey(0.5), preset("cie_d65"), [light]), str(tmp_path / "mine.svlib"))
        assert warnings == []
        assert xyz[0] / xyz.sum() == pytest.approx(0.44758, abs=1e-3)

    def test_missing_name_is_told_with_its_neighbours(self):
        xyz, warnings = render(one_pixel(grey(0.5), preset("cie_d56")), spp=1)
        assert xyz[1] == 0.0
        told = [text for _, text, _ in warnings if "cie_d56" in text]
        assert len(told) == 1 and '"cie_d55"' in told[0] and '"cie_d65"' in told[0]

    def test_broken_library_is_told_and_the_render_goes_on(self, tmp_path):
        (tmp_path / "broken.svlib").write_text('<scene version="1"><node')
        xyz, warnings = render(one_pixel(grey(0.5), preset("cie_d65")), str(tmp_path), spp=64)
        assert xyz[1] == pytest.approx(0.5, rel=1e-2)
        assert [Path(source).name.partition(":")[0] for source, _, _ in warnings] == ["broken.svlib"]


def test_files_are_what_the_data_give():
    command = [sys.executable, ROOT / "tools" / "make_svlib.py", "--check"]
    done = subprocess.run(command, capture_output=True, text=True, timeout=120)
    assert done.returncode == 0, done.stderr
