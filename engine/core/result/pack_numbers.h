/// Arrays of sums in fewer bytes, at the speed of memory.
///
/// A film's sums are multiples of fixed quanta, so neighbours differ by few bits once they are counted in quanta. Numbers are
/// taken in groups of 4096. Of each group there is the number of bits that a number takes (8 bits), the binary exponent of its
/// quantum (16 bits, signed; 0 for integers), the least number in quanta (64 bits, signed), and then the differences from it, one
/// behind the other beginning with the lowest bit, filled up to a whole byte. 64 bits that stand for the numbers as they are: a
/// group takes so many that has a range of more than 56 bits, or holds what isn't finite, is a negative zero or is too close to
/// the ends of what a double holds.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace nemra::core {

/// Puts the packed numbers behind `packed`. Number: double, float, std::uint8_t, std::uint32_t or std::uint64_t. Throws
/// std::bad_alloc.
template <class Number>
void packNumbers(std::span<const Number> numbers, std::vector<char>& packed);

/// Fills `numbers`, to the bit as they were; bytes behind them are left alone. False if the bytes end too early or aren't of the
/// form.
template <class Number>
bool unpackNumbers(std::span<const char> packed, std::span<Number> numbers) noexcept;

}  // namespace nemra::core
