#include "engine/core/worker/cut_out_bytes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "engine/common/byte_reader.h"
#include "engine/core/film/arrays.h"

namespace nemra::core::worker {

namespace {

constexpr std::uint8_t kHighestPart = 0x7FF / 32;  // of a sum of squares, see SquareSum

template <class Array>
std::size_t bytesOf(const Array& array) {
    return array.size() * sizeof(array[0]);
}

template <class Array>
bool areFinite(const Array& numbers) {
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

template <class Array, class Number>
bool areAtMost(const Array& numbers, Number most) {
    return std::all_of(numbers.begin(), numbers.end(), [&](auto number) { return number <= most; });
}

}  // namespace

std::string cutOutBytes(const Film& film) {
    std::string bytes;
    bytes.reserve(arrayBytes(film.samples.size(), film.channels.size()));
    const auto append = [&](Per, const auto& array) {
        bytes.append(reinterpret_cast<const char*>(array.data()), bytesOf(array));
    };
    visitArrays(append, film);
    return bytes;
}

bool readCutOut(std::span<const char> bytes, std::uint32_t samples, Film& film) {
    if (bytes.size() != arrayBytes(film.samples.size(), film.channels.size())) return false;
    ByteReader reader(bytes);
    const auto fill = [&](Per, auto& array) {
        const auto part = reader.take(bytesOf(array));
        if (!part.empty()) std::memcpy(array.data(), part.data(), part.size());
    };
    visitArrays(fill, film);
    return areFinite(film.high) && areFinite(film.low) && areFinite(film.depth) && areAtMost(film.squares.part, kHighestPart) &&
           areAtMost(film.samples, samples) && areAtMost(film.depthSamples, samples);
}

}  // namespace nemra::core::worker
