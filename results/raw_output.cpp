#include "module/engine_text.h"
#include "results/raw.h"

namespace Nemra {

namespace {

/// The engine's writers answer 0 for success.
constexpr bool succeeded(int result) { return result == 0; }

}  // namespace

bool NemraRaw::importOutput(const NemraRaw& other, const std::string& outputName) const {
    return succeeded(nemraRawImportOutput(handle, other.handle, outputName.c_str()));
}

std::vector<std::string> NemraRaw::getOutputFormat() const {
    const int count = nemraRawGetOutputFormatSize(handle);
    std::vector<std::string> formats;
    for (int i = 0; i < count; ++i) formats.emplace_back(nemraRawGetOutputFormat(handle, i));
    return formats;
}

std::string NemraRaw::getDefaultFormat() const { return nemraRawGetDefaultFormat(handle); }

bool NemraRaw::writeResult(const std::string& filename, const std::string& format) const {
    return succeeded(nemraRawWriteResult(handle, filename.c_str(), format.c_str()));
}

py::bytes NemraRaw::writeResultBytes(const std::string& format) const {
    std::uint32_t size = 0;
    char* const result = nemraRawWriteResultBytes(handle, &size, format.c_str());
    return takeText(result, size);
}

bool NemraRaw::writeRaw(const std::string& filename, const std::string& format) const {
    return succeeded(nemraRawWriteRaw(handle, filename.c_str(), format.c_str()));
}

bool NemraRaw::writeAuto(const std::string& filename) const { return succeeded(nemraRawWriteAuto(handle, filename.c_str())); }

int NemraRaw::takeByte(void* user, char byte) {
    static_cast<NemraRaw*>(user)->byteBuffer.push_back(byte);
    return 1;
}

py::bytes NemraRaw::readSerialized(SerializedRead read) {
    read(handle, this, &NemraRaw::takeByte);
    const std::string bytes(byteBuffer.begin(), byteBuffer.end());
    byteBuffer.clear();
    return bytes;
}

py::bytes NemraRaw::getInstrument() { return readSerialized(&nemraRawGetInstrument); }

bool NemraRaw::setInstrument(const char* data, int size) const { return nemraRawSetInstrument(handle, data, size); }

py::bytes NemraRaw::getOutput() { return readSerialized(&nemraRawGetOutput); }

bool NemraRaw::setOutput(const char* data, int size) const { return nemraRawSetOutput(handle, data, size); }

bool NemraRaw::isCompatible(const NemraRaw& other) const { return nemraRawIsCompatible(handle, other.handle); }

bool NemraRaw::add(const NemraRaw& other) const { return nemraRawAdd(handle, other.handle); }

bool NemraRaw::filter(bool fast) const { return nemraRawFilter(handle, fast); }

void NemraRaw::removeChannels() const { nemraRawRemoveChannels(handle); }

std::unordered_map<std::string, int> NemraRaw::getImage8bitInfo() const {
    int width = 0;
    int height = 0;
    int stride = 0;
    int alignment = 0;
    const bool succeed = nemraRawGetImage8bitInfo(handle, &width, &height, &stride, &alignment);
    std::unordered_map<std::string, int> info{{"succeed", succeed ? 1 : 0}};
    if (succeed) {
        info["width"] = width;
        info["height"] = height;
        info["stride"] = stride;
        info["alignment"] = alignment;
    }
    return info;
}

py::bytes NemraRaw::getImage8bitProfile() { return readSerialized(&nemraRawGetImage8bitProfile); }

}  // namespace Nemra
