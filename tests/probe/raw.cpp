// Results of the recording engine.
#include "module/flat/nemra_raw.h"

#include "tests/probe/recorder.h"

using probe::call;
using probe::jsonText;
using probe::Ready;

namespace {

/// The scripted bytes, one call of the sink each; notes what the sink answers.
int feed(const char* function, nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    int refused = 0;
    const std::string bytes = probe::scriptedBytes(function);
    for (const char byte : bytes) refused += sink(user, byte) != 1;
    probe::record(function, raw, refused);
    return 0;
}

Ready bytesOf(const char* data, std::int64_t size) {
    return {data ? jsonText(data, static_cast<std::size_t>(size)) : "null"};
}

}  // namespace

extern "C" {

nemra_raw_t* nemraRawCopy(nemra_raw_t* raw) { return call<nemra_raw_t*>("nemraRawCopy", raw); }
nemra_raw_t* nemraRawReadSvraw(const char* filename) { return call<nemra_raw_t*>("nemraRawReadSvraw", filename); }
nemra_raw_t* nemraRawReadOpenExr(const char* filename) { return call<nemra_raw_t*>("nemraRawReadOpenExr", filename); }
nemra_raw_t* nemraRawFromImageNode(const char* data, int64_t size) {
    return call<nemra_raw_t*>("nemraRawFromImageNode", bytesOf(data, size), size);
}
void nemraRawRelease(nemra_raw_t** handle) { call<void>("nemraRawRelease", handle); }

int nemraRawWidth(nemra_raw_t* raw) { return call<int>("nemraRawWidth", raw); }
int nemraRawHeight(nemra_raw_t* raw) { return call<int>("nemraRawHeight", raw); }
int nemraRawChannelCount(nemra_raw_t* raw) { return call<int>("nemraRawChannelCount", raw); }
double nemraRawRenderTime(nemra_raw_t* raw) { return call<double>("nemraRawRenderTime", raw); }
double nemraRawSPS(nemra_raw_t* raw) { return call<double>("nemraRawSPS", raw); }
double nemraRawSPP(nemra_raw_t* raw) { return call<double>("nemraRawSPP", raw); }
bool nemraRawIsDraft(nemra_raw_t* raw) { return call<bool>("nemraRawIsDraft", raw); }
bool nemraRawHasChannel(nemra_raw_t* raw, const char* name) { return call<bool>("nemraRawHasChannel", raw, name); }
bool nemraRawHasMetaChannel(nemra_raw_t* raw, const char* name) { return call<bool>("nemraRawHasMetaChannel", raw, name); }
int nemraRawChannelIndex(nemra_raw_t* raw, const char* name) { return call<int>("nemraRawChannelIndex", raw, name); }
const char* nemraRawChannelName(nemra_raw_t* raw, int index) { return call<const char*>("nemraRawChannelName", raw, index); }
const char* nemraRawChannelResponse(nemra_raw_t* raw, int index) {
    return call<const char*>("nemraRawChannelResponse", raw, index);
}
bool nemraRawIsChannelLuminous(nemra_raw_t* raw, int index) { return call<bool>("nemraRawIsChannelLuminous", raw, index); }
bool nemraRawIsChannelEnergy(nemra_raw_t* raw, int index) { return call<bool>("nemraRawIsChannelEnergy", raw, index); }
bool nemraRawIsChannelSpectral(nemra_raw_t* raw, int index) { return call<bool>("nemraRawIsChannelSpectral", raw, index); }
double nemraRawChannelWavelength(nemra_raw_t* raw, int index) { return call<double>("nemraRawChannelWavelength", raw, index); }
double nemraRawGetAutoRangeValue(nemra_raw_t* raw) { return call<double>("nemraRawGetAutoRangeValue", raw); }
double nemraRawGetUGR(nemra_raw_t* raw, int x1, int y1, int x2, int y2) {
    return call<double>("nemraRawGetUGR", raw, x1, y1, x2, y2);
}
/// A number in which each argument has its own digits, so that a mix-up shows.
double nemraRawGetLightQuantity(nemra_raw_t* raw, int channel, int x, int y, int quantity) {
    probe::record("nemraRawGetLightQuantity", raw, channel, x, y, quantity);
    return 1000.0 * x + 100.0 * y + 10.0 * channel + quantity + 0.1;
}
int nemraRawGetQuantityCount(nemra_raw_t* raw) { return call<int>("nemraRawGetQuantityCount", raw); }
nemra_quantity_t nemraRawGetQuantity(nemra_raw_t* raw, int index) {
    return call<nemra_quantity_t>("nemraRawGetQuantity", raw, index);
}
void nemraRawGenerateSNR(nemra_raw_t* raw) { call<void>("nemraRawGenerateSNR", raw); }
const char* nemraRawGetInstrumentName(nemra_raw_t* raw) { return call<const char*>("nemraRawGetInstrumentName", raw); }
const char* nemraRawGetInstrumentOutput(nemra_raw_t* raw, int index) {
    return call<const char*>("nemraRawGetInstrumentOutput", raw, index);
}
const char* nemraRawGetOutputName(nemra_raw_t* raw) { return call<const char*>("nemraRawGetOutputName", raw); }
const char* nemraRawGetXHeaderName(nemra_raw_t* raw, int x) { return call<const char*>("nemraRawGetXHeaderName", raw, x); }
const char* nemraRawGetYHeaderName(nemra_raw_t* raw, int y) { return call<const char*>("nemraRawGetYHeaderName", raw, y); }
int nemraRawGetOutputFormatSize(nemra_raw_t* raw) { return call<int>("nemraRawGetOutputFormatSize", raw); }
const char* nemraRawGetOutputFormat(nemra_raw_t* raw, int index) {
    return call<const char*>("nemraRawGetOutputFormat", raw, index);
}
const char* nemraRawGetDefaultFormat(nemra_raw_t* raw) { return call<const char*>("nemraRawGetDefaultFormat", raw); }
int nemraRawImportOutput(nemra_raw_t* raw, nemra_raw_t* other, const char* output) {
    return call<int>("nemraRawImportOutput", raw, other, output);
}
int nemraRawWriteResult(nemra_raw_t* raw, const char* filename, const char* format) {
    return call<int>("nemraRawWriteResult", raw, filename, format);
}
int nemraRawWriteRaw(nemra_raw_t* raw, const char* filename, const char* format) {
    return call<int>("nemraRawWriteRaw", raw, filename, format);
}
int nemraRawWriteAuto(nemra_raw_t* raw, const char* filename) { return call<int>("nemraRawWriteAuto", raw, filename); }
/// The size is scripted apart, under "size": a test may want 0 with bytes.
char* nemraRawWriteResultBytes(nemra_raw_t* raw, uint32_t* size, const char* format) {
    *size = probe::answerOr<uint32_t>("size", 0);
    return call<char*>("nemraRawWriteResultBytes", raw, format);
}
int nemraRawGetInstrument(nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    return feed("nemraRawGetInstrument", raw, user, sink);
}
int nemraRawGetOutput(nemra_raw_t* raw, void* user, nemra_byte_sink sink) { return feed("nemraRawGetOutput", raw, user, sink); }
bool nemraRawSetInstrument(nemra_raw_t* raw, const char* data, int size) {
    return call<bool>("nemraRawSetInstrument", raw, bytesOf(data, size), size);
}
bool nemraRawSetOutput(nemra_raw_t* raw, const char* data, int size) {
    return call<bool>("nemraRawSetOutput", raw, bytesOf(data, size), size);
}
bool nemraRawIsCompatible(nemra_raw_t* raw, nemra_raw_t* other) { return call<bool>("nemraRawIsCompatible", raw, other); }
bool nemraRawAdd(nemra_raw_t* raw, nemra_raw_t* other) { return call<bool>("nemraRawAdd", raw, other); }
bool nemraRawFilter(nemra_raw_t* raw, bool fast) { return call<bool>("nemraRawFilter", raw, fast); }
void nemraRawRemoveChannels(nemra_raw_t* raw) { call<void>("nemraRawRemoveChannels", raw); }
bool nemraRawGetImage8bitInfo(nemra_raw_t* raw, int* width, int* height, int* stride, int* alignment) {
    const bool result = call<bool>("nemraRawGetImage8bitInfo", raw);
    if (result) {
        *width = 5;
        *height = 3;
        *stride = 16;
        *alignment = 4;
    }
    return result;
}
int nemraRawGetImage8bitProfile(nemra_raw_t* raw, void* user, nemra_byte_sink sink) {
    return feed("nemraRawGetImage8bitProfile", raw, user, sink);
}

}  // extern "C"
