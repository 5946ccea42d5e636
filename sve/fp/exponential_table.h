// Fractions of the powers of two with exponents i / n, computed at compile time.
#pragma once

#include <array>
#include <type_traits>

#include "sve/fp/format.h"
#include "sve/fp/steps.h"

namespace fp {

/// The truncated square root.
constexpr std::uint64_t truncated_root(uint128 value) {
  std::uint64_t root = 0;
  for (int bit = 63; bit >= 0; --bit) {
    const std::uint64_t candidate = root | (std::uint64_t{1} << bit);
    if (uint128{candidate} * candidate <= value)
      root = candidate;
  }
  return root;
}

/// 2 to the power index / 2^bits with 63 fraction bits, less than two units too low.
///
/// Each step halves the exponent and puts one bit of the index in front of it. It also halves the
/// error of the step before, and adds less than a unit of its own.
constexpr std::uint64_t power_of_two(unsigned index, int bits) {
  std::uint64_t power = std::uint64_t{1} << 63;
  for (int bit = 0; bit < bits; ++bit)
    power = truncated_root(uint128{power} << (63 + ((index >> bit) & 1)));
  return power;
}

/// 2 to the power index / 2^bits, rounded to nearest to a number of fraction bits, less 1.
constexpr std::uint64_t rounded_fraction(unsigned index, int bits, int fraction_bits) {
  const int dropped = 63 - fraction_bits;
  const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
  const std::uint64_t lowest = power_of_two(index, bits);
  const std::uint64_t highest = index == 0 ? lowest : lowest + 2;
  // Both bounds must round alike; a compiler reaches this throw only if they do not.
  if ((lowest + half) >> dropped != (highest + half) >> dropped)
    throw "the power of two is too close to a tie";
  return ((lowest + half) >> dropped) - (std::uint64_t{1} << fraction_bits);
}

template <FPBits T> inline constexpr int exponential_index_bits = sizeof(T) == 2 ? 5 : 6;

template <FPBits T> constexpr auto make_exponential_table() {
  using Entry = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  std::array<Entry, 1u << exponential_index_bits<T>> table{};
  for (unsigned i = 0; i < table.size(); ++i)
    table[i] = static_cast<Entry>(
        rounded_fraction(i, exponential_index_bits<T>, FPFormat<T>::fraction_bits));
  return table;
}

/// Entry i is the fraction field of 2 to the power i / n, where n is the size of the table.
template <FPBits T> inline constexpr auto exponential_table = make_exponential_table<T>();

static_assert(exponential_table<std::uint16_t>[2] == 0x2d);
static_assert(exponential_table<std::uint32_t>[2] == 0x2cd87);
static_assert(exponential_table<std::uint64_t>[2] == 0x59b0d3158574);

}  // namespace fp
