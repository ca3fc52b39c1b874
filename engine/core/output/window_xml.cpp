#include "engine/core/output/window_xml.h"

#include <charconv>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include "engine/core/output/markup.h"

namespace nemra::core {

namespace {

class Xml {
public:
    Xml() : text_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") {}
    void open(const char* name, const char* attributes = "") {
        indent();
        text_ += std::string("<") + name + attributes + ">\n";
        open_.emplace_back(name);
    }
    void close() {
        const std::string name = open_.back();
        open_.pop_back();
        indent();
        text_ += "</" + name + ">\n";
    }
    void element(const char* name, std::string_view content, const std::string& attributes = "") {
        indent();
        text_ += std::string("<") + name + attributes + ">" + escapedMarkup(content) + "</" + name + ">\n";
    }
    void number(const char* name, double value, const std::string& attributes = "") {
        char text[32];
        element(name, std::string_view(text, std::to_chars(text, text + sizeof text, value).ptr), attributes);
    }
    std::string& text() { return text_; }

private:
    void indent() { text_.append(open_.size(), '\t'); }

    std::string text_;
    std::vector<std::string> open_;
};

void describeBasis(Xml& xml, const std::string& name, const std::vector<PatchRing>& rings) {
    xml.open("DataDefinition");
    xml.element("IncidentDataStructure", "Columns");
    xml.open("AngleBasis");
    xml.element("AngleBasisName", name);
    double lower = 0.0;
    for (const PatchRing& ring : rings) {
        xml.open("AngleBasisBlock");
        xml.number("Theta", ring.middle);
        xml.number("nPhis", ring.patches);
        xml.open("ThetaBounds");
        xml.number("LowerTheta", lower);
        xml.number("UpperTheta", ring.upper);
        xml.close();
        xml.close();
        lower = ring.upper;
    }
    xml.close();
    xml.close();
}

/// Which patch of ours is the file's patch of each number.
std::vector<int> patchesByFile(const DirectionBasis& basis, bool arriving) {
    std::vector<int> ours;
    for (int i = 0; i < basis.count(); ++i) {
        const DirectionPatch patch = basis.patch(i);
        // The file's azimuths turn the other way; and ours of arriving light are those of where it comes from.
        ours.push_back(basis.find(patch.theta, arriving ? std::numbers::pi - patch.phi : -patch.phi));
    }
    return ours;
}

/// A line for each direction in which light leaves.
void appendMatrix(std::string& text, const std::vector<float>& values, const ScatterLayout& layout, int firstRow) {
    const auto columns = patchesByFile(*layout.incident, true);
    const auto rows = patchesByFile(*layout.outgoing, false);
    for (const int row : rows) {
        for (const int column : columns) {
            const std::size_t at = std::size_t(firstRow + row) * columns.size() + std::size_t(column);
            const float value = values[at];
            if (!std::isfinite(value)) {
                throw std::runtime_error("the value in column " + std::to_string(column) + " and row " +
                                         std::to_string(firstRow + row) + " is no number");
            }
            char digits[32];
            text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
            text += ',';
        }
        text += '\n';
    }
    text.erase(text.size() - 2, 1);  // no comma behind the last one
}

void writeBlock(Xml& xml, const WindowSpectrum& spectrum, const std::string& basis, const ScatterLayout& layout,
                bool transmitted) {
    xml.open("WavelengthData");
    xml.element("LayerNumber", "System");
    xml.element("Wavelength", spectrum.wavelength, " unit=\"" + spectrum.unit + "\"");
    xml.element("SourceSpectrum", spectrum.source);
    xml.element("DetectorSpectrum", spectrum.detector);
    xml.open("WavelengthDataBlock");
    xml.element("WavelengthDataDirection",
                std::string(transmitted ? "Transmission " : "Reflection ") + (layout.isFrontLit ? "Front" : "Back"));
    xml.element("ColumnAngleBasis", basis);
    xml.element("RowAngleBasis", basis);
    xml.element("ScatteringDataType", transmitted ? "BTDF" : "BRDF");
    xml.open("ScatteringData");
    appendMatrix(xml.text(), spectrum.values, layout, layout.firstRow(transmitted));
    xml.close();
    xml.close();
    xml.close();
}

}  // namespace

std::string windowXml(const node::Node& instrument, const WindowProduct& product, std::span<const WindowSpectrum> spectra) {
    const std::string& patches = instrument.choice("klems_patches");
    const std::string basis = patches == "half"      ? "LBNL/Klems Half"
                              : patches == "quarter" ? "LBNL/Klems Quarter"
                                                     : "LBNL/Klems Full";
    const ScatterLayout layout = scatterLayoutOf(instrument);
    Xml xml;
    xml.open("WindowElement",
             " xmlns=\"http://windows.lbl.gov\" xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\""
             " xsi:schemaLocation=\"http://windows.lbl.gov/BSDF-v1.4.xsd\"");
    xml.element("WindowElementType", "System");
    xml.element("FileType", "BSDF");
    xml.open("Optical");
    xml.open("Layer");
    xml.open("Material");
    xml.element("Name", product.name);
    xml.element("Manufacturer", product.manufacturer);
    xml.number("Thickness", product.thickness, " unit=\"Meter\"");
    xml.element("DeviceType", "Other");
    xml.close();
    describeBasis(xml, basis, klemsRings(patches));
    for (const WindowSpectrum& spectrum : spectra) {
        if (layout.transmission) writeBlock(xml, spectrum, basis, layout, true);
        if (layout.reflection) writeBlock(xml, spectrum, basis, layout, false);
    }
    for (int i = 0; i < 3; ++i) xml.close();
    return std::move(xml.text());
}

}  // namespace nemra::core
