"""Results the way numpy and notebooks take them: rows first, faults as exceptions.

    from sarvo import nemra, results
    raw = nemra.Raw.readSvraw("room.svraw")
    luminance = results.image(raw)[:, :, results.names(raw).index("Y")]     # cd/m2, [row, column]
    doubt = results.standard_error(raw)                                    # of the same, in the same unit
    results.preview(raw)                                                   # shows it in a notebook
"""

from dataclasses import dataclass

import numpy as np
from numpy.typing import NDArray

from . import nemra

__all__ = ["Preview", "image", "meta", "names", "preview", "standard_error", "ugr", "wavelengths"]

_META = ("variance", "spp", "snr", "depth")
_LAST_PIXEL = 2**31 - 1  # what lies outside of a picture is clamped to it


def image(raw: nemra.Raw, quantity: nemra.Raw.quantity = nemra.Raw.quantity.Raw) -> NDArray[np.float32]:
    """All pixels as float32 of shape (rows, columns, channels); [0, 0] is the top left one.

    A transposed view of what `raw.pixels(quantity)` copies, so its memory runs down the columns; `numpy.ascontiguousarray` changes that.
    Raises ValueError for a result that is empty or gone, and for a quantity that its instrument doesn't provide.
    """
    _check(raw)
    if quantity not in _quantities(raw):
        provided = ", ".join(q.name for q in _quantities(raw))
        raise ValueError(f"this result has no {quantity.name}, only {provided}")
    return raw.pixels(quantity).swapaxes(0, 1)


def meta(raw: nemra.Raw, name: str) -> NDArray[np.float32]:
    """A meta channel as float32 of shape (rows, columns): "variance" of a sample, "spp", "snr" or "depth" in m (0: nothing was met).

    "variance" and "snr" are those of Y (luminance), else E (energy), else the mean of the channels.
    Raises ValueError for another name, and for a result that is empty, gone or without channels.
    """
    _check(raw)
    if name not in _META:
        raise ValueError(f"there is no meta channel {name!r}, only {', '.join(_META)}")
    return raw.metaPixels(name).swapaxes(0, 1)


def standard_error(raw: nemra.Raw) -> NDArray[np.float32]:
    """Standard error of each pixel's Y, else E, else mean of the channels, in their unit: float32 of shape (rows, columns).

    The square root of variance / spp, as of independent samples. Those of a render are stratified, so its true errors are mostly smaller.
    Not a number where a pixel has fewer than two samples.
    """
    samples = meta(raw, "spp")
    with np.errstate(divide="ignore", invalid="ignore"):
        return np.where(samples > 1, np.sqrt(meta(raw, "variance") / samples), np.float32(np.nan))


def names(raw: nemra.Raw) -> list[str]:
    """Names of the channels, in the order of the last axis of `image`."""
    return [raw.channelName(index) for index in range(raw.channelCount())]


def wavelengths(raw: nemra.Raw) -> NDArray[np.float64]:
    """Middles of the spectral channels' bands in nm, in the order of the channels. Empty for a result without bands."""
    return np.array([raw.channelWavelength(i) * 1e9 for i in range(raw.channelCount()) if raw.isChannelSpectral(i)])


def ugr(raw: nemra.Raw) -> float:
    """Unified Glare Rating (CIE 117:1995) of the whole picture: minus infinity without a source of glare, not a number where the
    result can't be rated (a message says why). Raises ValueError for a result that is empty or gone."""
    _check(raw)
    return raw.getUGR(0, 0, _LAST_PIXEL, _LAST_PIXEL)


@dataclass(frozen=True)
class Preview:
    """A picture that notebooks show."""

    png: bytes
    alternative: str  # text, for those who can't see it

    def _repr_png_(self) -> bytes:
        return self.png

    def __repr__(self) -> str:
        return self.alternative


def preview(raw: nemra.Raw) -> Preview:
    """What the result's output makes of it, as a PNG picture; see `importOutput` and `setOutput` for other outputs.

    Raises ValueError for a result that is empty or gone, and for outputs that aren't pictures.
    """
    _check(raw)
    formats = raw.getOutputFormat()
    if "png" not in formats:
        raise ValueError(f"the output {raw.getOutputName()!r} isn't a picture: it has {', '.join(formats) or 'no formats'}")
    try:
        png = raw.writeResultBytes("png")
    except RuntimeError as fault:
        raise ValueError(f"the output {raw.getOutputName()!r} made no picture; a message says why") from fault
    return Preview(png, f"{raw.getOutputName()}: {raw.width()} x {raw.height()} pixels, {raw.SPP():g} samples per pixel")


def _quantities(raw: nemra.Raw) -> list[nemra.Raw.quantity]:
    return [raw.getQuantity(index) for index in range(raw.getQuantityCount())]


def _check(raw: nemra.Raw) -> None:
    if raw.width() == 0 or raw.channelCount() == 0:
        raise ValueError("there is no result: the file couldn't be read, its channels were removed, or it belonged to a renderer and is gone")
