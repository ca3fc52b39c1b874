#include "engine/core/output/final_file.h"

#include <string_view>

#include "engine/common/log.h"
#include "engine/core/output/write_file.h"
#include "engine/core/output/write_result.h"

namespace nemra::core {

namespace {

std::string withoutExtension(const std::string& path) { return path.substr(0, path.rfind('.')); }

std::string withoutPointsAtEnd(std::string path) {
    path.resize(path.find_last_not_of('.') + 1);
    return path;
}

}  // namespace

FinalFile finalFile(const std::string& wanted, bool asRaw, const node::Node* output) {
    const auto offered = output ? outputFormats(*output) : std::span<const char* const>();
    const std::string chosen = asRaw || offered.empty() ? "svraw" : offered.front();
    const std::string format = formatOf(wanted);
    const bool isKnown = isResultFormat(format) || isRawFormat(format);
    if (!isKnown) return {withoutPointsAtEnd(format == "auto" ? withoutExtension(wanted) : wanted) + "." + chosen, ""};
    if (isRawFormat(format) || (!asRaw && isOffered(offered, format))) return {wanted, ""};
    const std::string path = withoutExtension(wanted) + "." + chosen;
    return {path, (asRaw ? "results aren't written as they are in the format " : "this output isn't written in the format ") +
                      format + ": this one goes to " + path};
}

bool settleFinalFile(std::string& path, bool asRaw, const node::Node* output) {
    const FinalFile file = finalFile(path, asRaw, output);
    // The last part of the name may be nothing but points.
    const bool isFolder = path.ends_with('/') || withoutPointsAtEnd(path).ends_with('/');
    const std::string why = isFolder ? "it is a folder" : whyNotWritable(file.path);
    if (!why.empty()) {
        log::error(file.path, "the render doesn't start, since its result can't be written here: " + why);
        return false;
    }
    if (!file.warning.empty()) log::warning(path, file.warning);
    path = file.path;
    return true;
}

}  // namespace nemra::core
