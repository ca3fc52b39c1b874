#include "nodes/documentation.h"

#include <unordered_map>

namespace NemraNode::nodes {

namespace {

// Pages of the manual that have another name than their class; empty where there is no page.
const std::unordered_map<std::string, std::string> docAliases = {
    {"avspectrum/table", "avspectrum"},
    {"avspectrum/linked", ""},
    {"bsdf/lambertian_transmitter", "bsdf/lambertiantransmitter"},
    {"colloid/default", "colloid"},
    {"colloid/linked", ""},
    {"dielectricfunc/na", "dielectricfunc/absorbance"},
    {"dielectricfunc/nk", "dielectricfunc/complex"},
    {"emitter/linked", ""},
    {"environment/black", ""},
    {"filter/linked", ""},
    {"filter/purkinje", ""},
    {"filtershader/linked", ""},
    {"instrument/fouriercam", ""},
    {"intlaw/mm44", ""},
    {"intlaw/linked", ""},
    {"material/axf_svbrdf", "material/axf-svbrdf"},
    {"material/clone", ""},
    {"material/multi", ""},
    {"normalshader/blend", "normalshader/blendnormal"},
    {"normalshader/switch", "normalshader/switchnormal"},
    {"normalshader/uniform", "normalshader/uniformnormal"},
    {"normalshader/linked", ""},
    {"output/linked", ""},
    {"output/special", "output/specialdisplay"},
    {"roughness/linked", ""},
    {"scattering/linked", ""},
    {"scalarshader/linked", ""},
    {"sensor/linked", ""},
    {"setup/default", "setup"},
    {"setup/linked", ""},
    {"spectrum/cie_xyz", "spectrum/cie-xyz"},
    {"spectrum/triangle", ""},
    {"spectrum/linked", ""},
    {"text/default", ""},
};

}  // namespace

std::string nodeDocString(const std::string& name, const std::string& path) {
    std::string page = path;
    if (const auto alias = docAliases.find(page); alias != docAliases.end()) page = alias->second;
    if (page.empty()) return name;
    const std::string url = std::string(NEMRA_DOCS_ROOT) + "2024" + "-docs/reference/nodes/" + page + ".html";
    return "\n    " + name + "\n    \n    .. raw:: html\n\n        <iframe id=" + name + "\" src=\"" + url +
           "\"loading=\"lazy\" alt=\"" + url + "\"></iframe>\n\n    ";
}

}  // namespace NemraNode::nodes
