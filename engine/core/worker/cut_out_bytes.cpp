#include "engine/core/worker/cut_out_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "engine/common/byte_reader.h"

namespace nemra::core::worker {

namespace {

constexpr std::uint8_t kHighestPart = 0x7FF / 32;  // of a sum of squares, see SquareSum

/// The arrays of a film, in the order of the bytes. Both ends are of the same version, so nothing says which is which.
template <class AnyFilm, class Visit>
void visitArrays(AnyFilm& film, Visit&& visit) {
    visit(film.high);
    visit(film.low);
    visit(film.squares.upper);
    visit(film.squares.lower);
    visit(film.squares.part);
    visit(film.depth);
    visit(film.samples);
    visit(film.depthSamples);
}

template <class Array>
std::size_t bytesOf(const Array& array) {
    return array.size() * sizeof(array[0]);
}

bool areFinite(const std::vector<double>& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

template <class Array, class Number>
bool areAtMost(const Array& numbers, Number most) {
    return std::all_of(numbers.begin(), numbers.end(), [&](auto number) { return number <= most; });
}

}  // namespace

std::size_t cutOutSize(const Film& film) {
    std::size_t size = 0;
    visitArrays(film, [&](const auto& array) { size += bytesOf(array); });
    return size;
}

std::string cutOutBytes(const Film& film) {
    std::string bytes;
    bytes.reserve(cutOutSize(film));
    visitArrays(film, [&](const auto& array) { bytes.append(reinterpret_cast<const char*>(array.data()), bytesOf(array)); });
    return bytes;
}

bool readCutOut(std::span<const char> bytes, std::uint32_t samples, Film& film) {
    if (bytes.size() != cutOutSize(film)) return false;
    ByteReader reader(bytes);
    visitArrays(film, [&](auto& array) {
        const auto part = reader.take(bytesOf(array));
        if (!part.empty()) std::memcpy(array.data(), part.data(), part.size());
    });
    return areFinite(film.high) && areFinite(film.low) && areFinite(film.depth) && areAtMost(film.squares.part, kHighestPart) &&
           areAtMost(film.samples, samples) && areAtMost(film.depthSamples, samples);
}

}  // namespace nemra::core::worker
