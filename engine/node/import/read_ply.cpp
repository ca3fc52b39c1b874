#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>

#include "engine/node/import/readers.h"
#include "engine/node/import/triangulate.h"
#include "engine/node/svxml/numbers.h"

namespace nemra::node {

namespace {

using svxml::NumberFault;
using svxml::parseNumber;
using svxml::takeWord;

enum class Kind { int8, uint8, int16, uint16, int32, uint32, float32, float64 };
enum class Order { text, little, big };

constexpr std::size_t kBytes[] = {1, 1, 2, 2, 4, 4, 4, 8};

std::optional<Kind> kindNamed(std::string_view name) {
    constexpr std::string_view kNames[][2] = {{"char", "int8"}, {"uchar", "uint8"}, {"short", "int16"},   {"ushort", "uint16"},
                                              {"int", "int32"}, {"uint", "uint32"}, {"float", "float32"}, {"double", "float64"}};
    for (std::size_t i = 0; i < std::size(kNames); ++i)
        if (name == kNames[i][0] || name == kNames[i][1]) return static_cast<Kind>(i);
    return std::nullopt;
}

struct Property {
    std::string name;
    Kind kind;
    std::optional<Kind> countKind;  ///< of a list
};

struct Element {
    std::string name;
    std::uint64_t count;
    std::vector<Property> properties;

    std::optional<std::size_t> find(std::initializer_list<std::string_view> names) const {
        for (std::size_t i = 0; i < properties.size(); ++i)
            if (std::find(names.begin(), names.end(), properties[i].name) != names.end()) return i;
        return std::nullopt;
    }
};

struct Header {
    Order order = Order::text;
    std::vector<Element> elements;
    std::size_t size = 0;  ///< bytes up to the data
};

/// The lines of the header, which all end in the same way.
class HeaderLines {
public:
    explicit HeaderLines(std::string_view text) : text_(text) {}

    std::string_view next() {
        const std::size_t end = text_.find_first_of("\r\n", at_);
        if (end == std::string_view::npos) throw MeshFault{"byte " + std::to_string(text_.size()), "the header is cut off"};
        const std::string_view line = text_.substr(at_, end - at_);
        at_ = end + (text_.substr(end, 2) == "\r\n" ? 2 : 1);
        ++number_;
        return line;
    }
    [[noreturn]] void fail(const std::string& why) const { throw MeshFault{"line " + std::to_string(number_), why}; }
    std::size_t at() const { return at_; }

private:
    std::string_view text_;
    std::size_t at_ = 0;
    int number_ = 0;
};

Kind readKind(const HeaderLines& lines, std::string_view name) {
    const auto kind = kindNamed(name);
    if (!kind) lines.fail("unknown type " + quoted(name));
    return *kind;
}

Order readOrder(const HeaderLines& lines, std::string_view line) {
    const std::string_view name = takeWord(line);
    if (takeWord(line) != "1.0") lines.fail("version 1.0 of the form expected");
    if (name == "ascii") return Order::text;
    if (name == "binary_little_endian") return Order::little;
    if (name == "binary_big_endian") return Order::big;
    lines.fail("unknown format " + quoted(name));
}

Element readElement(const HeaderLines& lines, std::string_view line) {
    Element element{std::string(takeWord(line)), 0, {}};
    if (element.name.empty() || parseNumber(takeWord(line), element.count) != NumberFault::none)
        lines.fail("an element needs a name and a count");
    return element;
}

Property readProperty(const HeaderLines& lines, std::string_view line) {
    Property property{};
    std::string_view word = takeWord(line);
    if (word == "list") {
        property.countKind = readKind(lines, takeWord(line));
        if (*property.countKind >= Kind::float32) lines.fail("the count of a list must be a whole number");
        word = takeWord(line);
    }
    property.kind = readKind(lines, word);
    property.name = takeWord(line);
    if (property.name.empty()) lines.fail("a property without a name");
    return property;
}

Header readHeader(std::string_view text) {
    constexpr std::size_t kMostProperties = 1024;
    HeaderLines lines(text);
    Header header;
    bool hasFormat = false;
    std::size_t properties = 0;
    lines.next();
    for (;;) {
        std::string_view line = lines.next();
        const std::string_view word = takeWord(line);
        if (word == "end_header") break;
        if (word == "format") {
            header.order = readOrder(lines, line);
            hasFormat = true;
        } else if (word == "element") {
            header.elements.push_back(readElement(lines, line));
        } else if (word == "property") {
            if (header.elements.empty()) lines.fail("a property before the first element");
            header.elements.back().properties.push_back(readProperty(lines, line));
        } else if (word != "comment" && word != "obj_info" && !word.empty()) {
            lines.fail("unknown word " + quoted(word) + " in the header");
        }
        if (++properties > kMostProperties) lines.fail("the header is too long");
    }
    if (!hasFormat) lines.fail("the header doesn't say the format");
    header.size = lines.at();
    return header;
}

/// The data behind the header, number by number.
class Data {
public:
    Data(std::string_view bytes, const Header& header) : bytes_(bytes), at_(header.size), order_(header.order) {}

    double number(Kind kind) {
        if (order_ == Order::text) return word();
        const std::size_t size = kBytes[static_cast<std::size_t>(kind)];
        char raw[8];
        if (left() < size) fail("the file is cut off");
        std::memcpy(raw, bytes_.data() + at_, size);
        at_ += size;
        if (order_ == Order::big) std::reverse(raw, raw + size);
        switch (kind) {
            case Kind::int8:
                return as<std::int8_t>(raw);
            case Kind::uint8:
                return as<std::uint8_t>(raw);
            case Kind::int16:
                return as<std::int16_t>(raw);
            case Kind::uint16:
                return as<std::uint16_t>(raw);
            case Kind::int32:
                return as<std::int32_t>(raw);
            case Kind::uint32:
                return as<std::uint32_t>(raw);
            case Kind::float32:
                return as<float>(raw);
            case Kind::float64:
                return as<double>(raw);
        }
        return 0.0;
    }

    /// How many numbers of that kind can still follow.
    std::size_t roomFor(Kind kind) const { return left() / (order_ == Order::text ? 1 : kBytes[static_cast<std::size_t>(kind)]); }

    /// Numbers of a list that follow.
    std::size_t count(Kind kind) {
        const double count = number(kind);
        if (!(count >= 0.0 && count <= static_cast<double>(left())) ||
            count != static_cast<double>(static_cast<std::size_t>(count)))
            fail("a list can't have that many entries");
        return static_cast<std::size_t>(count);
    }

    [[noreturn]] void fail(const std::string& why) const { throw MeshFault{"byte " + std::to_string(at_), why}; }

private:
    static_assert(std::endian::native == std::endian::little);

    template <class Number>
    static double as(const char* raw) {
        Number number;
        std::memcpy(&number, raw, sizeof number);
        return static_cast<double>(number);
    }

    std::size_t left() const { return bytes_.size() - at_; }

    double word() {
        std::string_view rest = bytes_.substr(at_);
        const std::string_view word = takeWord(rest);
        if (word.empty()) fail("the file is cut off");
        const auto begin = static_cast<std::size_t>(word.data() - bytes_.data());
        double value = 0.0;
        if (parseNumber(word, value) != NumberFault::none) {
            at_ = begin;
            fail(quoted(word) + " isn't a number");
        }
        at_ = begin + word.size();
        return value;
    }

    std::string_view bytes_;
    std::size_t at_;
    Order order_;
};

void skip(Data& data, const Property& property) {
    const std::size_t count = property.countKind ? data.count(*property.countKind) : 1;
    for (std::size_t i = 0; i < count; ++i) data.number(property.kind);
}

/// Fails for counts that the rest of the file can't hold: each number takes a byte at least.
void checkCount(const Data& data, const Element& element) {
    if (!element.properties.empty() && element.count > data.roomFor(Kind::uint8) / element.properties.size())
        data.fail("the file is cut off: it can't hold " + std::to_string(element.count) + " of element " + quoted(element.name));
}

void readVertices(Data& data, const Element& element, Mesh& mesh) {
    enum Use : std::uint8_t { none, position, normal, uv };
    struct Target {
        Use use = none;
        std::uint8_t component = 0;
    };
    std::vector<Target> targets(element.properties.size());
    const auto assign = [&](Use use, std::uint8_t component, std::initializer_list<std::string_view> names) {
        const auto found = element.find(names);
        if (!found || element.properties[*found].countKind) return false;
        targets[*found] = {use, component};
        return true;
    };
    const bool hasX = assign(position, 0, {"x"});
    const bool hasY = assign(position, 1, {"y"});
    const bool hasZ = assign(position, 2, {"z"});
    if (!hasX || !hasY || !hasZ) data.fail("the vertices lack x, y or z");
    const auto count = static_cast<std::size_t>(element.count);
    mesh.vertices.resize(3 * count);
    const bool hasNormals = element.find({"nx"}) && element.find({"ny"}) && element.find({"nz"});
    if (hasNormals && assign(normal, 0, {"nx"}) && assign(normal, 1, {"ny"}) && assign(normal, 2, {"nz"}))
        mesh.normals.resize(3 * count);
    constexpr std::string_view kU[] = {"u", "s", "texture_u"};
    constexpr std::string_view kV[] = {"v", "t", "texture_v"};
    for (std::size_t k = 0; k < std::size(kU) && mesh.uvs.empty(); ++k)
        if (element.find({kU[k]}) && element.find({kV[k]}) && assign(uv, 0, {kU[k]}) && assign(uv, 1, {kV[k]}))
            mesh.uvs.resize(2 * count);
    auto& vertices = mesh.vertices.edit();
    auto& normals = mesh.normals.edit();
    auto& uvs = mesh.uvs.edit();
    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t p = 0; p < targets.size(); ++p) {
            if (element.properties[p].countKind) {
                skip(data, element.properties[p]);
                continue;
            }
            const double value = data.number(element.properties[p].kind);
            const std::size_t component = targets[p].component;
            if (targets[p].use == position) vertices[3 * i + component] = value;
            if (targets[p].use == normal && !normals.empty()) normals[3 * i + component] = static_cast<float>(value);
            if (targets[p].use == uv && !uvs.empty()) uvs[2 * i + component] = static_cast<float>(value);
        }
    }
}

void readFaces(Data& data, const Element& element, Mesh& mesh) {
    const auto listAt = element.find({"vertex_indices", "vertex_index"});
    if (!listAt || !element.properties[*listAt].countKind) data.fail("the faces lack the list vertex_indices");
    const auto vertices = static_cast<double>(mesh.vertices.size() / 3);
    std::vector<std::int32_t> corners;
    for (std::uint64_t i = 0; i < element.count; ++i) {
        for (std::size_t p = 0; p < element.properties.size(); ++p) {
            const Property& property = element.properties[p];
            if (p != *listAt) {
                skip(data, property);
                continue;
            }
            const std::size_t count = data.count(*property.countKind);
            if (count > kMaxCorners)
                data.fail("face " + std::to_string(i) + " has more than " + std::to_string(kMaxCorners) + " corners");
            corners.clear();
            for (std::size_t k = 0; k < count; ++k) {
                const double index = data.number(property.kind);
                if (!(index >= 0.0 && index < vertices) || index != static_cast<double>(static_cast<std::int32_t>(index)))
                    data.fail("face " + std::to_string(i) + " refers to a vertex that isn't there; the file has " +
                              std::to_string(mesh.vertices.size() / 3));
                corners.push_back(static_cast<std::int32_t>(index));
            }
            triangulate(mesh.vertices, corners, mesh.triangles.edit());
        }
    }
}

}  // namespace

MeshParts readPly(std::span<const char> bytes) {
    const std::string_view text(bytes.data(), bytes.size());
    const Header header = readHeader(text);
    Data data(text, header);
    Mesh mesh;
    bool hasVertices = false;
    bool hasFaces = false;
    for (const Element& element : header.elements) {
        checkCount(data, element);
        if (element.name == "vertex" && !hasVertices) {
            readVertices(data, element, mesh);
            hasVertices = true;
        } else if (element.name == "face" && !hasFaces) {
            if (!hasVertices) data.fail("the faces come before the vertices");
            readFaces(data, element, mesh);
            hasFaces = true;
        } else if (!element.properties.empty()) {
            if (element.name == "tristrips") data.fail("strips of triangles aren't read; write faces instead");
            for (std::uint64_t i = 0; i < element.count; ++i)
                for (const Property& property : element.properties) skip(data, property);
        }
    }
    MeshParts read;
    read.parts.push_back({.name = {}, .materialName = {}, .mesh = std::move(mesh)});
    read.placings.push_back({.part = 0});
    return read;
}

}  // namespace nemra::node
