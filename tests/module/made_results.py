"""Results for tests of files: noise, so that every format has to write much."""

import os
import tempfile

import numpy as np

from sarvo import nemra

FORMATS = ("svraw", "csv", "exr", "hdr", "png", "png16", "jpg")


def made_result(seed, width=160, height=120):
    """A nemra.Raw of three channels, the same for the same seed."""
    node = nemra.nodes.image.Inline("noise")
    node.setWidth(width), node.setHeight(height)
    node.setRawPixels(np.random.default_rng(seed).random(3 * width * height, np.float32))
    with tempfile.TemporaryDirectory() as folder:
        with open(os.path.join(folder, "i.svbin"), "wb") as file:
            node.write(file)
        with open(os.path.join(folder, "i.svbin"), "rb") as file:
            data = file.read()
    return nemra.Raw.fromImageNode(data, len(data))
