#include <map>
#include <unordered_map>

#include "engine/node/import/readers.h"
#include "engine/node/import/triangulate.h"
#include "engine/node/svxml/numbers.h"

namespace nemra::node {

namespace {

using svxml::NumberFault;
using svxml::parseNumber;
using svxml::takeWord;

/// Vertex, texture coordinate and normal of a corner, counted from 0; -1 for none.
using Corner = std::array<std::int32_t, 3>;

struct HashCorner {
    std::size_t operator()(const Corner& corner) const noexcept {
        std::uint64_t mixed = 0;
        for (const std::int32_t index : corner) mixed = (mixed ^ static_cast<std::uint32_t>(index)) * 0x9E3779B97F4A7C15U;
        return static_cast<std::size_t>(mixed ^ (mixed >> 32));
    }
};

/// A part while it grows.
struct Growing {
    MeshPart part;
    std::unordered_map<Corner, std::int32_t, HashCorner> known;
    bool lacksUv = false;
    bool lacksNormal = false;
};

class ObjReader {
public:
    explicit ObjReader(std::string_view text) : text_(text) {}

    MeshParts read() {
        while (!text_.empty()) readLine(nextLine());
        MeshParts read;
        for (Growing& growing : parts_) {
            if (growing.lacksUv) growing.part.mesh.uvs.clear();
            if (growing.lacksNormal) growing.part.mesh.normals.clear();
            read.placings.push_back({.part = read.parts.size()});
            read.parts.push_back(std::move(growing.part));
        }
        return read;
    }

private:
    [[noreturn]] void fail(const std::string& why) const { throw MeshFault{"line " + std::to_string(line_), why}; }

    /// The next line, with those joined that a backslash at its end continues.
    std::string_view nextLine() {
        joined_.clear();
        for (;;) {
            ++line_;
            const std::size_t end = std::min(text_.find('\n'), text_.size());
            std::string_view line = text_.substr(0, end);
            text_.remove_prefix(std::min(end + 1, text_.size()));
            while (!line.empty() && (line.back() == '\r' || line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
            const bool goesOn = line.ends_with('\\') && !text_.empty();
            if (!goesOn && joined_.empty()) return line;
            if (goesOn) line.remove_suffix(1);
            joined_.append(line);
            if (!goesOn) return joined_;
            joined_ += ' ';
        }
    }

    void readLine(std::string_view line) {
        const std::string_view word = takeWord(line);
        if (word == "v") {
            readNumbers(line, 3, 3, vertices_);
        } else if (word == "vt") {
            readNumbers(line, 1, 2, uvs_);
        } else if (word == "vn") {
            readNumbers(line, 3, 3, normals_);
        } else if (word == "f") {
            readFace(line);
        } else if (word == "g" || word == "o") {
            group_ = trimmed(line);
            current_ = nullptr;
        } else if (word == "usemtl") {
            material_ = trimmed(line);
            current_ = nullptr;
        }
    }

    static std::string trimmed(std::string_view words) {
        const std::size_t first = words.find_first_not_of(" \t");
        return first == std::string_view::npos ? std::string() : std::string(words.substr(first));
    }

    /// At least `least` numbers, of which the first `width` count; missing ones are 0.
    template <class Number>
    void readNumbers(std::string_view line, int least, int width, std::vector<Number>& numbers) {
        for (int i = 0; i < width; ++i) {
            const std::string_view word = takeWord(line);
            Number value{};
            if (word.empty() && i < least) fail(std::to_string(least) + " numbers expected");
            if (!word.empty() && parseNumber(word, value) != NumberFault::none) fail(quoted(word) + " isn't a number");
            numbers.push_back(value);
        }
        if (numbers.size() / static_cast<std::size_t>(width) >= 0x7fffffffU) fail("more than 2^31 lines of a kind");
    }

    /// A number of a face, counted from 1 or backwards from -1, as one counted from 0.
    std::int32_t resolve(std::string_view word, std::size_t count, const char* what) const {
        std::int32_t index = 0;
        if (parseNumber(word, index) != NumberFault::none) fail(quoted(word) + " isn't a number of a face");
        const std::int64_t from0 = index < 0 ? static_cast<std::int64_t>(count) + index : std::int64_t{index} - 1;
        if (from0 < 0 || from0 >= static_cast<std::int64_t>(count))
            fail("the face refers to " + std::string(what) + " " + std::to_string(index) + ", so far there are " +
                 std::to_string(count));
        return static_cast<std::int32_t>(from0);
    }

    Corner readCorner(std::string_view word) const {
        Corner corner{-1, -1, -1};
        const std::size_t counts[] = {vertices_.size() / 3, uvs_.size() / 2, normals_.size() / 3};
        constexpr const char* kWhat[] = {"vertex", "texture coordinate", "normal"};
        for (std::size_t k = 0;; ++k) {
            const std::size_t end = std::min(word.find('/'), word.size());
            if (k == 3) fail("a corner of a face has more than three numbers");
            if (end > 0) corner[k] = resolve(word.substr(0, end), counts[k], kWhat[k]);
            if (end == word.size()) break;
            word.remove_prefix(end + 1);
        }
        if (corner[0] < 0) fail("a corner of a face lacks its vertex");
        return corner;
    }

    void readFace(std::string_view line) {
        corners_.clear();
        Growing& growing = current();
        for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line)) {
            corners_.push_back(vertexOf(growing, readCorner(word)));
            if (corners_.size() > kMaxCorners) fail("a face has more than " + std::to_string(kMaxCorners) + " corners");
        }
        if (corners_.size() < 3) fail("a face needs three corners");
        triangulate(growing.part.mesh.vertices, corners_, growing.part.mesh.triangles.edit());
    }

    Growing& current() {
        if (current_ == nullptr) {
            const auto [found, isNew] = byName_.try_emplace({group_, material_}, parts_.size());
            if (isNew) parts_.push_back({.part = {.name = group_, .materialName = material_, .mesh = {}}, .known = {}});
            current_ = &parts_[found->second];
        }
        return *current_;
    }

    std::int32_t vertexOf(Growing& growing, const Corner& corner) const {
        Mesh& mesh = growing.part.mesh;
        const auto [found, isNew] = growing.known.try_emplace(corner, static_cast<std::int32_t>(mesh.vertices.size() / 3));
        if (!isNew) return found->second;
        const auto append = [](auto& to, const auto& from, std::int32_t index, std::size_t width) {
            for (std::size_t k = 0; k < width; ++k)
                to.push_back(index < 0 ? 0 : from[width * static_cast<std::size_t>(index) + k]);
        };
        append(mesh.vertices, vertices_, corner[0], 3);
        append(mesh.uvs, uvs_, corner[1], 2);
        append(mesh.normals, normals_, corner[2], 3);
        growing.lacksUv |= corner[1] < 0;
        growing.lacksNormal |= corner[2] < 0;
        return found->second;
    }

    std::string_view text_;
    std::string joined_;
    std::size_t line_ = 0;
    std::vector<double> vertices_;
    std::vector<float> uvs_;
    std::vector<float> normals_;
    std::vector<std::int32_t> corners_;
    std::string group_;
    std::string material_;
    std::vector<Growing> parts_;
    std::map<std::pair<std::string, std::string>, std::size_t> byName_;
    Growing* current_ = nullptr;  // null when group or material have changed
};

}  // namespace

MeshParts readObj(std::span<const char> text) { return ObjReader({text.data(), text.size()}).read(); }

}  // namespace nemra::node
