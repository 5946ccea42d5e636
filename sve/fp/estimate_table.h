// The reciprocal square root of a few bits, as the architecture's estimate defines it.
#pragma once

#include <array>
#include <cstdint>

namespace fp {

/// Entry of index i: the estimate for the operand range i, without its top bit.
constexpr std::uint8_t make_recip_sqrt_entry(std::uint32_t index) {
  // The range starts at a / 512 and has its middle at middle / 1024: from a half on, a range is
  // two units of a wide.
  const std::uint32_t a = index < 128 ? 128 + index : 256 + 2 * (index - 128);
  const std::uint32_t middle = a < 256 ? 2 * a + 1 : 2 * (a + 1);
  std::uint64_t b = 512;
  while (middle * (b + 1) * (b + 1) < (std::uint64_t{1} << 28))
    ++b;
  return static_cast<std::uint8_t>((b + 1) / 2 - 256);
}

constexpr std::array<std::uint8_t, 256> make_recip_sqrt_table() {
  std::array<std::uint8_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i)
    table[i] = make_recip_sqrt_entry(i);
  return table;
}

/// The low 8 bits of the 9-bit estimates. Indices 0 to 127 cover operands in [1/4, 1/2), the
/// others [1/2, 1).
inline constexpr std::array<std::uint8_t, 256> recip_sqrt_estimate = make_recip_sqrt_table();

/// The 9-bit estimate of 256 / sqrt(a / 512), for a from 128 to 511.
constexpr unsigned reciprocal_root_of_9_bits(unsigned a) {
  return 256u + recip_sqrt_estimate[a < 256 ? a - 128 : 128 + (a - 256) / 2];
}

}  // namespace fp
