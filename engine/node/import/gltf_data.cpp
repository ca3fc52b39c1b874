#include "engine/node/import/gltf_data.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "engine/common/buffer.h"
#include "engine/node/encoding/limits.h"
#include "engine/node/import/file_bytes.h"
#include "engine/node/import/mesh_parts.h"
#include "engine/node/svxml/base64.h"

namespace nemra::node {

namespace {

/// What a document may unfold to, as a multiple of its bytes.
constexpr std::size_t kUnfolding = 32;
constexpr std::size_t kSmallBudget = 1U << 20U;

enum Component : int { int8 = 5120, uint8 = 5121, int16 = 5122, uint16 = 5123, uint32 = 5125, float32 = 5126 };

std::size_t bytesOf(int component) {
    switch (component) {
        case int8:
        case uint8:
            return 1;
        case int16:
        case uint16:
            return 2;
        case uint32:
        case float32:
            return 4;
        default:
            return 0;
    }
}

template <class Number>
double load(const char* at) {
    Number number;
    std::memcpy(&number, at, sizeof number);
    return static_cast<double>(number);
}

/// Whole numbers that stand for fractions: glTF 2.0, section 3.11.
double loadNumber(const char* at, int component, bool normalized) {
    switch (component) {
        case int8:
            return normalized ? std::max(load<std::int8_t>(at) / 127.0, -1.0) : load<std::int8_t>(at);
        case uint8:
            return load<std::uint8_t>(at) / (normalized ? 255.0 : 1.0);
        case int16:
            return normalized ? std::max(load<std::int16_t>(at) / 32767.0, -1.0) : load<std::int16_t>(at);
        case uint16:
            return load<std::uint16_t>(at) / (normalized ? 65535.0 : 1.0);
        case uint32:
            return load<std::uint32_t>(at);
        default:
            return load<float>(at);
    }
}

std::size_t widthOf(std::string_view type) {
    if (type == "SCALAR") return 1;
    if (type == "VEC2") return 2;
    if (type == "VEC3") return 3;
    return type == "VEC4" ? 4 : 0;
}

std::uint32_t wordAt(std::span<const char> bytes, std::size_t at) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data() + at, 4);
    return word;
}

/// RFC 3986, section 2.1.
std::string withoutPercents(std::string_view uri) {
    const auto digit = [](char c) {
        return c >= '0' && c <= '9' ? c - '0' : (c | 32) >= 'a' && (c | 32) <= 'f' ? (c | 32) - 'a' + 10 : -1;
    };
    std::string plain;
    for (std::size_t i = 0; i < uri.size(); ++i) {
        if (uri[i] == '%' && i + 2 < uri.size() && digit(uri[i + 1]) >= 0 && digit(uri[i + 2]) >= 0) {
            plain += static_cast<char>(16 * digit(uri[i + 1]) + digit(uri[i + 2]));
            i += 2;
        } else {
            plain += uri[i];
        }
    }
    return plain;
}

std::vector<char> bytesOfUri(const std::string& uri, const std::string& folder, const std::string& where) {
    std::vector<char> bytes;
    if (uri.starts_with("data:")) {
        const std::size_t comma = uri.find(";base64,");
        if (comma == std::string::npos || !svxml::fromBase64(std::string_view(uri).substr(comma + 8), bytes))
            throw MeshFault{where, "the data in it isn't sound base64"};
        return bytes;
    }
    const std::string name = withoutPercents(uri);
    const bool leavesFolder = name.find("..") != std::string::npos || name.find(':') != std::string::npos ||
                              name.starts_with('/') || name.find('\0') != std::string::npos;
    if (leavesFolder) throw MeshFault{where, "'" + name + "' isn't a file in the folder of this one or below it"};
    Buffer read;
    if (const std::string why = readFileBytes((std::filesystem::path(folder) / name).string(), read); !why.empty())
        throw MeshFault{where, "can't read '" + name + "': " + why};
    bytes.assign(read.data(), read.data() + read.size());
    return bytes;
}

std::string placeIn(const char* list, std::size_t index) { return std::string(list) + "[" + std::to_string(index) + "]"; }

}  // namespace

GltfData::GltfData(std::span<const char> bytes, std::string folder)
    : folder_(std::move(folder)), budget_(kUnfolding * bytes.size() + kSmallBudget) {
    const std::string_view all(bytes.data(), bytes.size());
    if (all.starts_with("glTF")) {
        takeGlb(bytes);
    } else {
        parse(all);
    }
    if (!root_.is_object()) throw MeshFault{"", "the document isn't an object"};
    const auto asset = root_.find("asset");
    if (asset == root_.end() || !asset->is_object() || !GltfData::text(*asset, "version").starts_with("2."))
        throw MeshFault{"asset", "version 2 of glTF expected"};
    for (const auto& extension : root_.value("extensionsRequired", Json::array())) {
        constexpr std::string_view kHarmless[] = {"KHR_mesh_quantization", "KHR_texture_transform"};
        const std::string name = extension.is_string() ? extension.get<std::string>() : "";
        const bool isMaterial = name.starts_with("KHR_materials_") || name.starts_with("KHR_texture_") ||
                                name.starts_with("EXT_texture_") || name.starts_with("KHR_lights_");
        if (!isMaterial && std::find(std::begin(kHarmless), std::end(kHarmless), name) == std::end(kHarmless))
            throw MeshFault{"extensionsRequired", "the extension '" + name + "' isn't known"};
    }
    buffers_.resize(count("buffers"));
    isLoaded_.resize(buffers_.size());
}

void GltfData::takeGlb(std::span<const char> bytes) {
    constexpr std::uint32_t kJson = 0x4E4F534A;
    constexpr std::uint32_t kBinary = 0x004E4942;
    if (bytes.size() < 20) throw MeshFault{"byte " + std::to_string(bytes.size()), "the file is cut off"};
    const std::size_t size = wordAt(bytes, 8);
    if (wordAt(bytes, 4) != 2) throw MeshFault{"byte 4", "version 2 of the container expected"};
    if (size > bytes.size()) throw MeshFault{"byte " + std::to_string(bytes.size()), "the file is cut off"};
    std::string_view text;
    for (std::size_t at = 12; at + 8 <= size;) {
        const std::size_t length = wordAt(bytes, at);
        const std::uint32_t type = wordAt(bytes, at + 4);
        if (length > size - at - 8) throw MeshFault{"byte " + std::to_string(at), "a chunk reaches beyond the end of the file"};
        const auto chunk = bytes.subspan(at + 8, length);
        if (at == 12 && type == kJson) text = {chunk.data(), chunk.size()};
        if (at != 12 && type == kBinary && chunk_.data() == nullptr) chunk_ = chunk;
        at += 8 + length;
    }
    if (text.empty()) throw MeshFault{"byte 12", "the chunk with the document is missing"};
    parse(text);
}

void GltfData::parse(std::string_view text) {
    try {
        root_ = Json::parse(text);
    } catch (const Json::parse_error& fault) {
        throw MeshFault{"byte " + std::to_string(fault.byte), "the JSON is damaged or cut off"};
    }
}

std::size_t GltfData::count(const char* list) const {
    const auto found = root_.find(list);
    return found == root_.end() || !found->is_array() ? 0 : found->size();
}

const Json& GltfData::entry(const char* list, std::size_t index) const {
    if (index >= count(list)) throw MeshFault{placeIn(list, index), "it is referred to and isn't there"};
    const Json& found = root_.at(list)[index];
    if (!found.is_object()) throw MeshFault{placeIn(list, index), "it isn't an object"};
    return found;
}

std::optional<std::size_t> GltfData::whole(const Json& object, const char* key, const std::string& where) {
    const auto found = object.find(key);
    if (found == object.end()) return std::nullopt;
    if (!found->is_number_unsigned() || found->get<std::uint64_t>() > kMaxFileBytes)
        throw MeshFault{where + "." + key, "a whole number from 0 to 2^31 - 1 expected"};
    return found->get<std::size_t>();
}

std::string GltfData::text(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found == object.end() || !found->is_string() ? std::string() : found->get<std::string>();
}

void GltfData::charge(std::size_t bytes) {
    if (bytes > budget_) throw MeshFault{"", "parts of the file are used too often: they would unfold to a multiple of its size"};
    budget_ -= bytes;
}

std::span<const char> GltfData::buffer(std::size_t index) {
    const Json& described = entry("buffers", index);
    const std::string where = placeIn("buffers", index);
    const std::size_t size = whole(described, "byteLength", where).value_or(0);
    const auto uri = described.find("uri");
    std::span<const char> bytes = chunk_;
    if (uri != described.end() && uri->is_string()) {
        if (!isLoaded_[index]) {
            buffers_[index] = bytesOfUri(uri->get<std::string>(), folder_, where);
            isLoaded_[index] = true;
            budget_ += kUnfolding * buffers_[index].size();
        }
        bytes = buffers_[index];
    } else if (index != 0) {
        throw MeshFault{where, "it has neither a file nor data"};
    }
    if (size > bytes.size())
        throw MeshFault{where, "it has " + std::to_string(bytes.size()) + " bytes, the document says " + std::to_string(size)};
    return bytes.first(size);
}

GltfData::View GltfData::view(std::size_t index) {
    const Json& described = entry("bufferViews", index);
    const std::string where = placeIn("bufferViews", index);
    const auto from = whole(described, "buffer", where);
    if (!from) throw MeshFault{where, "it lacks its buffer"};
    const std::span<const char> all = buffer(*from);
    const std::size_t offset = whole(described, "byteOffset", where).value_or(0);
    const std::size_t length = whole(described, "byteLength", where).value_or(0);
    if (offset > all.size() || length > all.size() - offset) throw MeshFault{where, "it reaches beyond the end of its buffer"};
    return {all.subspan(offset, length), whole(described, "byteStride", where).value_or(0)};
}

GltfData::Layout GltfData::layout(std::size_t accessor, const char* type) const {
    Layout layout{&entry("accessors", accessor), placeIn("accessors", accessor), 0, widthOf(type), 0, false};
    const Json& described = *layout.accessor;
    if (text(described, "type") != type) throw MeshFault{layout.where, "its type isn't " + std::string(type)};
    layout.count = whole(described, "count", layout.where).value_or(0);
    layout.component = static_cast<int>(whole(described, "componentType", layout.where).value_or(0));
    if (bytesOf(layout.component) == 0) throw MeshFault{layout.where, "unknown componentType"};
    const auto normalized = described.find("normalized");
    layout.normalized = normalized != described.end() && normalized->is_boolean() && normalized->get<bool>();
    return layout;
}

template <class Put>
void GltfData::readElements(const Layout& layout, Put&& put) {
    const std::size_t size = bytesOf(layout.component);
    // Elements in a view, from an offset on, that must lie within it.
    const auto read = [&](std::size_t viewIndex, std::size_t offset, std::size_t count, std::size_t width, int component,
                          bool strided, auto&& take) {
        const View from = view(viewIndex);
        const std::size_t packed = width * bytesOf(component);
        const std::size_t stride = strided && from.stride != 0 ? from.stride : std::max<std::size_t>(packed, 1);
        const bool fits = count == 0 || (offset <= from.bytes.size() && packed <= from.bytes.size() - offset &&
                                         (count - 1) <= (from.bytes.size() - offset - packed) / stride);
        if (!fits) throw MeshFault{layout.where, "it reaches beyond the end of its view"};
        for (std::size_t i = 0; i < count; ++i) take(i, from.bytes.data() + offset + i * stride);
    };
    if (const auto from = whole(*layout.accessor, "bufferView", layout.where)) {
        const std::size_t offset = whole(*layout.accessor, "byteOffset", layout.where).value_or(0);
        read(*from, offset, layout.count, layout.width, layout.component, true, [&](std::size_t i, const char* at) {
            for (std::size_t k = 0; k < layout.width; ++k)
                put(i, k, loadNumber(at + k * size, layout.component, layout.normalized));
        });
    }
    const auto sparse = layout.accessor->find("sparse");
    if (sparse == layout.accessor->end()) return;
    const std::string where = layout.where + ".sparse";
    const auto places = sparse->find("indices");
    const auto values = sparse->find("values");
    if (!sparse->is_object() || places == sparse->end() || values == sparse->end() || !places->is_object() ||
        !values->is_object())
        throw MeshFault{where, "it lacks indices or values"};
    const std::size_t count = whole(*sparse, "count", where).value_or(0);
    const int placeType = static_cast<int>(whole(*places, "componentType", where).value_or(0));
    const auto placeView = whole(*places, "bufferView", where);
    const auto valueView = whole(*values, "bufferView", where);
    if (!placeView || !valueView || (placeType != uint8 && placeType != uint16 && placeType != uint32))
        throw MeshFault{where, "its indices or values are described wrongly"};
    charge(count * sizeof(std::size_t));
    std::vector<std::size_t> targets(count);
    read(*placeView, whole(*places, "byteOffset", where).value_or(0), count, 1, placeType, false,
         [&](std::size_t i, const char* at) {
             targets[i] = static_cast<std::size_t>(loadNumber(at, placeType, false));
             if (targets[i] >= layout.count) throw MeshFault{where, "an index is out of range"};
         });
    read(*valueView, whole(*values, "byteOffset", where).value_or(0), count, layout.width, layout.component, false,
         [&](std::size_t i, const char* at) {
             for (std::size_t k = 0; k < layout.width; ++k)
                 put(targets[i], k, loadNumber(at + k * size, layout.component, layout.normalized));
         });
}

std::vector<double> GltfData::numbers(std::size_t accessor, const char* type, std::size_t width) {
    const Layout described = layout(accessor, type);
    charge(described.count * width * sizeof(double));
    std::vector<double> read(described.count * width);
    readElements(described, [&](std::size_t i, std::size_t k, double value) {
        if (k < width) read[i * width + k] = value;
    });
    return read;
}

std::vector<std::uint32_t> GltfData::indices(std::size_t accessor) {
    const Layout described = layout(accessor, "SCALAR");
    if (described.component != uint8 && described.component != uint16 && described.component != uint32)
        throw MeshFault{described.where, "indices must be whole numbers without sign"};
    charge(described.count * sizeof(std::uint32_t));
    std::vector<std::uint32_t> read(described.count);
    readElements(described, [&](std::size_t i, std::size_t, double value) { read[i] = static_cast<std::uint32_t>(value); });
    return read;
}

}  // namespace nemra::node
