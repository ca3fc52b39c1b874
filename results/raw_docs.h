/// Docstrings of `Raw` that are longer than a line. Those that name the package take its name.
#pragma once

#include <string>

namespace Nemra::rawDocs {

std::string classDoc(const std::string& packageName);
std::string pixelsDoc(const std::string& packageName);
std::string getLightQuantityDoc(const std::string& packageName);
std::string getImage8bitInfoDoc(const std::string& packageName);

inline constexpr const char* kGetUGR = R"(Returns Unified Glare Rating

The coordinates values are clamped to image resolution.

For the UGR on the entire image:

.. code-block:: python

    ugr=aRaw.getUGR(0, 0, 1e100, 1e100)
)";

inline constexpr const char* kGetInstrumentOutput = R"(Returns the instrument output's name by index

An instrument may have multiple outputs presets or nullptr if index out of bounds)";

inline constexpr const char* kGetOutputFormat = R"(Gets the file formats

\"jpg\", \"exr\", etc..., supported)";

inline constexpr const char* kGetDefaultFormat = R"(Gets the default file format 

\"jpg\", \"exr\", etc..., of the current output)";

inline constexpr const char* kWriteResult = R"(Writes output result to a file in given format

Possible formats:

- Images

    - jpg
    - png
    - exr
    - hdr

- Table

    - csv

- Glare report UGR (Unified Glare Rating)

    - csv
    - txt
    - html

.. code-block:: python

    aRaw.writeResult("/somewhere/output.jpeg", "jpg")
)";

inline constexpr const char* kWriteResultBytes = R"(Writes output result to a stream in given format

Possible formats:

- Images

    - jpg
    - png
    - exr
    - hdr

- Table

    - csv

- Glare report UGR (Unified Glare Rating)

    - csv
    - txt
    - html
)";

inline constexpr const char* kMetaPixels = R"(Retrieves a copy of meta pixels data as a numpy array

Shape is (width, height)

Possible meta channels are:

- "variance" : the variance
- "spp" : samples per pixel
- "snr" : signal to noise ratio
- "depth" : distance [m] between camera optical center and first encounter surfaces
)";

inline constexpr const char* kWriteRaw = R"(Writes the raw buffer to a file using given format

Possible formats:

- svraw
- csv
- exr
- hdr

.. code-block:: python

    aRaw.writeRaw("/somewhere/output.svraw", "svraw")
)";

inline constexpr const char* kWriteAuto = R"(Write result to file

Format is guessed from extension.

.. code-block:: python

    aRaw.writeAuto("/somewhere/output.jpg")
)";

inline constexpr const char* kRemoveChannels = R"(Removes all channels from an nemra raw object

Basically only the metadata is kept)";

inline constexpr const char* kFilter = R"(Applies output filters to an nemra raw

.. code-block:: python

    aRaw.filter()
)";

inline constexpr const char* kGetImage8bitProfile = R"(Retrieves the ICC profile corresponding to the output

.. code-block:: python

    rawICCProfile = aRaw.getImage8bitProfile()
)";

inline constexpr const char* kGetInstrument = R"(Gets the instrument associated with the raw buffer

Instrument node is returned serialized, so you can write it as an svbin file:

.. code-block:: python

    instru = aRaw.getInstrument()
    with open("instru.svbin", "wb") as f:
        f.write(instru)
)";

inline constexpr const char* kSetInstrument = R"(Sets the instrument associated with the raw buffer

Instrument node is passed serialized in a bytes object)";

inline constexpr const char* kGetOutput = R"(Gets the output associated with the raw buffer

Output node is returned serialized, so you can write it as an svbin file:

.. code-block:: python

    output = aRaw.getOutput()
    with open("output.svbin", "wb") as f:
        f.write(output)
)";

inline constexpr const char* kSetOutput = R"(Sets the output associated with the raw buffer

Output node is passed serialized in a buffer)";

}  // namespace Nemra::rawDocs
