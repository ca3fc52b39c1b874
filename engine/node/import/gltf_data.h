/// A glTF document with the bytes that it refers to.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace nemra::node {

using Json = nlohmann::json;

/// Reads numbers of accessors, with every index, offset and count checked. All functions throw a MeshFault whose place is the
/// path of the JSON value.
class GltfData {
public:
    /// A text or a GLB. `folder` holds the files that buffers name. `bytes` must stay.
    GltfData(std::span<const char> bytes, std::string folder);

    const Json& root() const noexcept { return root_; }
    /// Entry `index` of the document's list of that name.
    const Json& entry(const char* list, std::size_t index) const;
    std::size_t count(const char* list) const;

    /// The numbers of an accessor of that type ("VEC3"), normalised if it says so; `width` of each element count.
    std::vector<double> numbers(std::size_t accessor, const char* type, std::size_t width);
    /// A SCALAR accessor of whole numbers.
    std::vector<std::uint32_t> indices(std::size_t accessor);
    /// Takes that many bytes off what the document may unfold to. One accessor may serve many meshes, and would unfold without
    /// end.
    void charge(std::size_t bytes);

    // Values of an object; nothing where they are absent.
    static std::optional<std::size_t> whole(const Json& object, const char* key, const std::string& where);
    static std::string text(const Json& object, const char* key);

private:
    struct View {
        std::span<const char> bytes;
        std::size_t stride;  ///< 0: packed
    };
    struct Layout {
        const Json* accessor;
        std::string where;
        std::size_t count;
        std::size_t width;
        int component;
        bool normalized;
    };

    void takeGlb(std::span<const char> bytes);
    void parse(std::string_view text);
    std::span<const char> buffer(std::size_t index);
    View view(std::size_t index);
    Layout layout(std::size_t accessor, const char* type) const;
    /// Calls put(element, component, number) for all stored ones.
    template <class Put>
    void readElements(const Layout& layout, Put&& put);

    std::string folder_;
    Json root_;
    std::span<const char> chunk_;             // of a GLB
    std::vector<std::vector<char>> buffers_;  // loaded ones
    std::vector<bool> isLoaded_;
    std::size_t budget_;
};

}  // namespace nemra::node
