#include "module/binders.h"
#include "module/bound_class.h"
#include "results/raw.h"
#include "results/raw_docs.h"

namespace Nemra {

namespace {

using RawClass = Nemra::BoundClass<NemraRaw, CHandler<nemra_raw_t>, std::shared_ptr<NemraRaw>>;

void bindQuantity(const RawClass& raw) {
    py::enum_<Quantity>(raw, "quantity", py::arithmetic(), "Enumerator for raw quantities")
        .value("Raw", Quantity::Raw)
        .value("SensorIrradiance", Quantity::SensorIrradiance)
        .value("SceneRadiance", Quantity::SceneRadiance)
        .value("SceneIrradiance", Quantity::SceneIrradiance)
        .value("SensorPower", Quantity::SensorPower)
        .value("SensorExposure", Quantity::SensorExposure)
        .value("ComputedBSDF", Quantity::ComputedBSDF)
        .export_values();
}

void bindMetadata(RawClass& raw) {
    raw.def("copy", &NemraRaw::copy, "Returns a copy of this raw")
        .def("width", &NemraRaw::width, "Returns buffer width")
        .def("height", &NemraRaw::height, "Returns buffer height")
        .def("renderTime", &NemraRaw::renderTime, "Returns render time in seconds")
        .def("SPS", &NemraRaw::SPS, "Returns sample per second rate")
        .def("SPP", &NemraRaw::SPP, "Returns samples per pixel average")
        .def("isDraft", &NemraRaw::isDraft, "Returns if the posprocessing is in draft mode")
        .def("channelCount", &NemraRaw::channelCount, "Returns the number of channels")
        .def("hasChannel", &NemraRaw::hasChannel, py::arg("name"), "Returns true if a channel exists with given name")
        .def("hasMetaChannel", &NemraRaw::hasMetaChannel, py::arg("name"),
             R"(Returns true if a meta channel exists with this name ("variance", "spp", "snr", "depth"))")
        .def("channelName", &NemraRaw::channelName, py::arg("idx"), "Returns channel name by index")
        .def("channelIndex", &NemraRaw::channelIndex, py::arg("name"), "Returns channel index by name or -1 if it doesn't exist")
        .def("isChannelLuminous", &NemraRaw::isChannelLuminous, py::arg("idx"),
             "Returns true if the channel by index has luminous information (photometric)")
        .def("isChannelEnergy", &NemraRaw::isChannelEnergy, py::arg("idx"),
             "Returns true if the channel by index has energy information")
        .def("isChannelSpectral", &NemraRaw::isChannelSpectral, py::arg("idx"),
             "Returns true if the channel by index has spectral information")
        .def("channelWavelength", &NemraRaw::channelWavelength, py::arg("idx"),
             "Return the channel wavelength [m] for a spectral channel, zero otherwise")
        .def("channelResponse", &NemraRaw::channelResponse, py::arg("idx"),
             R"(Return the channel response type ("unknown", "energy", "luminous", "spectral"))")
        .def("getAutoRangeValue", &NemraRaw::getAutoRangeValue, "Returns the channel automatic range value")
        .def("getUGR", &NemraRaw::getUGR, py::arg("x1"), py::arg("y1"), py::arg("x2"), py::arg("y2"), rawDocs::kGetUGR)
        .def("getInstrumentName", &NemraRaw::getInstrumentName, "Returns the instrument name")
        .def("getInstrumentOutput", &NemraRaw::getInstrumentOutput, py::arg("idx"), rawDocs::kGetInstrumentOutput)
        .def("getOutputName", &NemraRaw::getOutputName, "Returns the current output name");
}

void bindResults(RawClass& raw, const std::string& packageName) {
    raw.def("importOutput", &NemraRaw::importOutput, py::arg("other"), py::arg("output_name"),
            "Sets the output node to the 'raw' raw, from another 'other' raw and an output name")
        .def("getOutputFormat", &NemraRaw::getOutputFormat, rawDocs::kGetOutputFormat)
        .def("getDefaultFormat", &NemraRaw::getDefaultFormat, rawDocs::kGetDefaultFormat)
        .def("writeResult", &NemraRaw::writeResult, py::arg("filename"), py::arg("format"), rawDocs::kWriteResult)
        .def("writeResultBytes", &NemraRaw::writeResultBytes, py::arg("format"), rawDocs::kWriteResultBytes)
        .def("metaPixels", &NemraRaw::metaPixels, py::arg("name"), rawDocs::kMetaPixels)
        .def("pixels", &NemraRaw::pixels, py::arg("quantity") = Quantity::Raw, rawDocs::pixelsDoc(packageName).c_str())
        .def("writeRaw", &NemraRaw::writeRaw, py::arg("filename"), py::arg("format"), rawDocs::kWriteRaw)
        .def("writeAuto", &NemraRaw::writeAuto, py::arg("filename"), rawDocs::kWriteAuto);
}

void bindReaders(RawClass& raw) {
    raw.def_static("readSvraw", &NemraRaw::readSvraw, py::arg("filename"), "Reads an SVRAW file and returns the created handle")
        .def_static("readOpenExr", &NemraRaw::readOpenExr, py::arg("filename"),
                    "Reads an EXR file to an nemra raw and returns the created handle")
        .def_static("fromImageNode", &NemraRaw::fromImageNode, py::arg("data"), py::arg("size"),
                    R"(Creates an nemra raw from an "image" nemra node)");
}

void bindProcessing(RawClass& raw, const std::string& packageName) {
    raw.def("removeChannels", &NemraRaw::removeChannels, rawDocs::kRemoveChannels)
        .def("filter", &NemraRaw::filter, py::arg("fast") = false, rawDocs::kFilter)
        .def("getImage8bitInfo", &NemraRaw::getImage8bitInfo, rawDocs::getImage8bitInfoDoc(packageName).c_str())
        .def("getImage8bitProfile", &NemraRaw::getImage8bitProfile, rawDocs::kGetImage8bitProfile)
        .def("getInstrument", &NemraRaw::getInstrument, rawDocs::kGetInstrument)
        .def("setInstrument", &NemraRaw::setInstrument, py::arg("data"), py::arg("size"), rawDocs::kSetInstrument)
        .def("getOutput", &NemraRaw::getOutput, rawDocs::kGetOutput)
        .def("setOutput", &NemraRaw::setOutput, py::arg("data"), py::arg("size"), rawDocs::kSetOutput)
        .def("getLightQuantity", &NemraRaw::getLightQuantity, py::arg("chan"), py::arg("x"), py::arg("y"), py::arg("quantity"),
             rawDocs::getLightQuantityDoc(packageName).c_str())
        .def("getXHeaderName", &NemraRaw::getXHeaderName, py::arg("x"), "Gets the result x header name for table views")
        .def("getYHeaderName", &NemraRaw::getYHeaderName, py::arg("y"), "Gets the result y header name for table views")
        .def("isCompatible", &NemraRaw::isCompatible, py::arg("other"),
             "Returns true if the two raws can be merged (same size and channels)")
        .def("getQuantityCount", &NemraRaw::getQuantityCount, "Get the number of quantities provided by a raw buffer")
        .def("getQuantity", &NemraRaw::getQuantity, py::arg("idx"), "Get the nth quantity type provided by a raw buffer")
        .def("add", &NemraRaw::add, py::arg("other"), "Merge result from other to this :class:`nemra.Raw`");
}

}  // namespace

void bindRaw(py::module_& module, const std::string& packageName) {
    py::class_<CHandler<nemra_raw_t>, std::shared_ptr<CHandler<nemra_raw_t>>>(module, "CRawHandler");
    RawClass raw(module, "Raw");
    bindQuantity(raw);
    bindMetadata(raw);
    bindResults(raw, packageName);
    bindReaders(raw);
    bindProcessing(raw, packageName);
    raw.doc() = rawDocs::classDoc(packageName);
}

}  // namespace Nemra
