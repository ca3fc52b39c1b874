"""What adaptive sampling gains: relative squared error beside uniform sampling at equal samples and at equal time of the processor, over
several seeds, against a reference of many samples; and whether it stays unbiased. The box has noise nearly everywhere; the box with a
partition, behind which only indirect light comes, is made for it.

    PYTHONPATH=build/python python benchmarks/adaptive_gain.py [--size 96] [--spp 128 512] [--seeds 12] [--reference 8192]
"""

import argparse
import math
import pathlib
import threading
import time

import numpy

from sarvo import examples, nemra

BOX = pathlib.Path(examples["cornellbox"]).read_text()
PARTITION = """
    <mesh name="partition" material="white">
        <vertices>0.16 0 0.001  0.16 0 0.559  0.16 0.5 0.559  0.16 0.5 0.001</vertices>
        <triangles>0 1 2  0 2 3</triangles>
    </mesh>
    <instance geometry="partition"/>
"""
FLOOR = 0.01  # of the picture's mean, as for the parameter halt_noise


def scene(partition, size, seed):
    text = BOX.replace('value="512"', f'value="{size}"')
    if partition:
        text = text.replace("</scene>", PARTITION + "</scene>")
    setup = text.index('<node family="setup"')
    at = text.index(">", setup) + 1
    return (text[:at] + f'<parameter name="seed" value="{seed}"/>' + text[at:]).encode()


def render(data, spp, adaptive):
    """Luminance of the pixels, their samples, and the processor's seconds that it took."""
    found, ended = [], threading.Event()
    renderer = nemra.Renderer()
    renderer.setParameter("adaptive", "true" if adaptive else "false")
    renderer.addLocalNode()
    renderer.setHaltCondition(0, spp, nemra.Renderer.halt_cond.stops)

    def finish(raw):
        found.extend([raw.pixels()[:, :, 1].astype(float), raw.metaPixels("spp").astype(float)])
        ended.set()

    renderer.onFinish(finish)
    began = time.process_time()
    assert renderer.startData(data, len(data))
    ended.wait()
    return (*found, time.process_time() - began)


def spread(values):
    """Mean and its standard error."""
    values = numpy.asarray(values, float)
    return values.mean(), values.std(ddof=1) / math.sqrt(len(values))


def ratio(ours, theirs):
    """Of two means over the same seeds, and its standard error (delta method)."""
    ours, theirs = numpy.asarray(ours), numpy.asarray(theirs)
    value = ours.mean() / theirs.mean()
    return value, (ours - value * theirs).std(ddof=1) / math.sqrt(len(ours)) / theirs.mean()


def measure(name, partition, options):
    truth, _, _ = render(scene(partition, options.size, 1_000_000), options.reference, False)
    scale = truth + FLOOR * truth.mean()
    for spp in options.spp:
        errors, means, seconds = {}, {}, {}

        def take(kind, spp, adaptive, seed):
            luminance, samples, took = render(scene(partition, options.size, seed), spp, adaptive)
            assert abs(samples.mean() - spp) <= 0.5 + 0.001 * spp, "equal samples, or nothing is compared"
            relative = (luminance - truth) / scale
            errors.setdefault(kind, []).append((relative**2).mean())  # noqa: B023
            means.setdefault(kind, []).append(relative.mean())  # noqa: B023
            seconds[kind] = seconds.get(kind, 0.0) + took  # noqa: B023
            return samples

        for seed in range(1, options.seeds + 1):
            take("uniform", spp, False, seed)
            samples = take("adaptive", spp, True, seed)
        slower = seconds["adaptive"] / seconds["uniform"]
        for seed in range(1, options.seeds + 1):
            take("as long", max(1, round(spp * slower)), False, seed)
        equal, equal_error = ratio(errors["adaptive"], errors["uniform"])
        timed, timed_error = ratio(errors["adaptive"], errors["as long"])
        print(f"{name}, {spp} samples per pixel ({samples.min():.0f} to {samples.max():.0f}): squared error {equal:.3f} +- {equal_error:.3f} of "
              f"uniform at equal samples, {timed:.3f} +- {timed_error:.3f} at equal time ({slower:.2f} times as long per sample)")
        # The reference's own error is common to both, so the difference of the two is what tells.
        bias, error = spread(numpy.subtract(means["adaptive"], means["uniform"]))
        print(f"    mean relative deviation from uniform sampling {100 * bias:.4f} +- {100 * error:.4f} %")
        assert abs(bias) < 4 * error, "adaptive sampling is biased"


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--size", type=int, default=96, help="pixels a side")
    parser.add_argument("--spp", type=int, nargs="+", default=[128, 512])
    parser.add_argument("--seeds", type=int, default=12)
    parser.add_argument("--reference", type=int, default=8192, help="samples per pixel")
    options = parser.parse_args()
    measure("box", False, options)
    measure("box with a partition", True, options)


if __name__ == "__main__":
    main()
