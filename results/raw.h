/// Result buffer of a simulation, as scripts see it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "module/binding.h"
#include "module/handle.h"

namespace Nemra {

/// Light quantities that a sample can be read as. The numbers are the engine's.
enum Quantity : int {
    Raw = NEMRA_QUANTITY_RAW,
    SensorIrradiance = NEMRA_QUANTITY_SENSOR_IRRADIANCE,
    SceneRadiance = NEMRA_QUANTITY_SCENE_RADIANCE,
    SceneIrradiance = NEMRA_QUANTITY_SCENE_IRRADIANCE,
    SensorPower = NEMRA_QUANTITY_SENSOR_POWER,
    SensorExposure = NEMRA_QUANTITY_SENSOR_EXPOSURE,
    ComputedBSDF = NEMRA_QUANTITY_COMPUTED_BSDF
};

/// One engine raw. The engine keeps every raw that it hands out, so no wrapper of this class ever owns its handle; the only
/// duplicate of the data is the one that copy() makes. A null handle goes to the engine as it is.
class NemraRaw : public CHandler<nemra_raw_t> {
public:
    using CHandler::CHandler;

    // ---- Made by the engine ----
    NemraRaw copy() const { return NemraRaw(nemraRawCopy(handle)); }
    /// A file that can't be read gives a raw with a null handle.
    static NemraRaw readSvraw(const std::string& filename) { return NemraRaw(nemraRawReadSvraw(filename.c_str())); }
    static NemraRaw readOpenExr(const std::string& filename) { return NemraRaw(nemraRawReadOpenExr(filename.c_str())); }
    /// `data`: serialised node of the image family, `size` bytes; may be null.
    static NemraRaw fromImageNode(const char* data, int size) {
        return NemraRaw(nemraRawFromImageNode(data, static_cast<std::int64_t>(size)));
    }

    // ---- Metadata (raw_metadata.cpp) ----
    int width() const;
    int height() const;
    double renderTime() const;
    double SPS() const;
    double SPP() const;
    bool isDraft() const;
    int channelCount() const;
    bool hasChannel(const std::string& name) const;
    bool hasMetaChannel(const std::string& name) const;
    /// This and the other texts throw std::logic_error where the engine answers null.
    std::string channelName(int index) const;
    int channelIndex(const std::string& name) const;
    bool isChannelLuminous(int index) const;
    bool isChannelEnergy(int index) const;
    bool isChannelSpectral(int index) const;
    double channelWavelength(int index) const;
    /// Null, unlike the other texts, where the engine answers null.
    const char* channelResponse(int index) const;
    double getAutoRangeValue() const;
    double getUGR(int x1, int y1, int x2, int y2) const;
    std::string getInstrumentName() const;
    std::string getInstrumentOutput(int index) const;
    std::string getOutputName() const;
    double getLightQuantity(int channel, int x, int y, Quantity quantity) const;
    std::string getXHeaderName(int x) const;
    std::string getYHeaderName(int y) const;
    int getQuantityCount() const;
    Quantity getQuantity(int index) const;

    // ---- Arrays (raw_pixels.cpp) ----
    /// float32, shape (width, height, channel). The array owns its data.
    py::array pixels(Quantity quantity) const;
    /// float32, shape (width, height); an unknown name prints a line and gives an empty array.
    py::array metaPixels(const std::string& name) const;

    // ---- Output, files, merging (raw_output.cpp) ----
    bool importOutput(const NemraRaw& other, const std::string& outputName) const;
    std::vector<std::string> getOutputFormat() const;
    std::string getDefaultFormat() const;
    bool writeResult(const std::string& filename, const std::string& format) const;
    py::bytes writeResultBytes(const std::string& format) const;
    bool writeRaw(const std::string& filename, const std::string& format) const;
    bool writeAuto(const std::string& filename) const;
    py::bytes getInstrument();
    bool setInstrument(const char* data, int size) const;
    py::bytes getOutput();
    bool setOutput(const char* data, int size) const;
    bool isCompatible(const NemraRaw& other) const;
    bool add(const NemraRaw& other) const;
    bool filter(bool fast) const;
    void removeChannels() const;

    // ---- The 8-bit rendering of the output (raw_output.cpp) ----
    /// "succeed", and if that isn't 0 "width", "height", "stride", "alignment".
    std::unordered_map<std::string, int> getImage8bitInfo() const;
    py::bytes getImage8bitProfile();

private:
    using SerializedRead = int (*)(nemra_raw_t*, void*, nemra_byte_sink);

    /// The byte sink; `user` is the NemraRaw that collects.
    static int takeByte(void* user, char byte);

    /// Runs `read` with the sink, and leaves the buffer empty.
    py::bytes readSerialized(SerializedRead read);

    std::vector<char> byteBuffer;  ///< empty but during a serialised read
};

}  // namespace Nemra
