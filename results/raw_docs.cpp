#include "results/raw_docs.h"

namespace Nemra::rawDocs {

std::string classDoc(const std::string& packageName) {
    return R"(Aims to handle Sarvo's outputs

There is no explicit constructor for this class. You can only copy an existing :class:`nemra.Raw`,
load one from file or get one from an nemra callback.

.. code-block:: python

    from )" +
           packageName + R"( import nemra

    # load from a file
    aRaw = nemra.Raw.readSvraw("/somewhere/result.svraw")

    # load a .exr
    anExr = nemra.Raw.readOpenExr("/somewhere/result.exr")

    # copy
    aCopy = aRaw.copy()

    # get one from a renderer: it is the renderer's, copy it to keep it
    renderer = nemra.Renderer()
    kept = []

    def onUpdate(raw):
        kept.append(raw.copy())

    renderer.onUpdate(onUpdate)
)";
}

std::string pixelsDoc(const std::string& packageName) {
    return R"(Retrieves a copy of pixels data as a numpy array

Shape is (width, height, channel)

Number of channels depends on your sensor :

- CIE-XYZ: 3 channels (X, Y, Z)
- Spectral boxes: N channels, depends on your discretization (default: 41)
- Energy: 1 channel, E

.. note::

    For spectral boxes sensor you can retrieve the wavelength of a channel, using :meth:`)" +
           packageName + R"(.nemra.Raw.channelWavelength`

.. code-block:: python

    from )" +
           packageName + R"( import *

    r = nemra.Raw.readSvraw("/somewhere/result.svraw")
    pixels = r.pixels()
    print(pixels.shape)
    wavelengths = [r.channelWavelength(i) for i in range(0, r.channelCount())]
)";
}

std::string getLightQuantityDoc(const std::string& packageName) {
    return R"(Gets a light quantity for given channel, x/y position, and quantity

Quantity is on of a :meth:`)" +
           packageName + ".nemra.Raw.quantity` enumerator ";
}

std::string getImage8bitInfoDoc(const std::string& packageName) {
    return R"(Gets buffer properties

Gets the necessary buffer properties for allocating a buffer compatible with :meth:`)" +
           packageName + R"(.nemra.Raw.getImage8bit` calls

.. code-block:: python

    from )" +
           packageName + R"( import nemra

    aRaw = nemra.Raw.readSvraw("/somewhere/result.svraw")
    rawInfo = aRaw.getImage8bitInfo()
    if rawInfo['succeed']:
        print(rawInfo['width'], rawInfo['height'], rawInfo['stride'], rawInfo['alignment'])
    else:
        print("aRaw", " is invalid (freed) or stride is negative or null ")
)";
}

}  // namespace Nemra::rawDocs
