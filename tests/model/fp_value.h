// Floating-point patterns as the host's numbers, and back by rounding to nearest.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace fp_value {

template <class E> inline constexpr int bias = sizeof(E) == 2 ? 15 : sizeof(E) == 4 ? 127 : 1023;

template <class E> double value_of(E pattern) {
  if constexpr (sizeof(E) == 2) {
    const int exponent = pattern >> 10 & 31, fraction = pattern & 1023;
    const double size = exponent == 0    ? std::ldexp(fraction, -24)
                        : exponent != 31 ? std::ldexp(1024 + fraction, exponent - 25)
                        : fraction != 0  ? NAN
                                         : INFINITY;
    return pattern >> 15 != 0 ? -size : size;
  } else if constexpr (sizeof(E) == 4) {
    return std::bit_cast<float>(pattern);
  } else {
    return std::bit_cast<double>(pattern);
  }
}

// A NaN becomes the default one.
template <class E> E pattern_of(double value) {
  if constexpr (sizeof(E) == 2) {
    if (std::isnan(value))
      return 0x7e00;
    const unsigned sign = std::signbit(value) ? 0x8000 : 0;
    const double size = std::fabs(value);
    if (size >= 65520)
      return static_cast<uint16_t>(sign | 0x7c00);
    const int exponent = size == 0 ? -14 : std::max(-14, std::ilogb(size));
    const double units = std::nearbyint(std::ldexp(size, 10 - exponent));  // 0 to 2048
    // A hidden bit, or a carry out of the fraction, counts the exponent up.
    return static_cast<uint16_t>(sign + static_cast<unsigned>((exponent + 14) << 10) +
                                 static_cast<unsigned>(units));
  } else if constexpr (sizeof(E) == 4) {
    return std::isnan(value) ? 0x7fc00000 : std::bit_cast<uint32_t>(static_cast<float>(value));
  } else {
    return std::isnan(value) ? 0x7ff8000000000000 : std::bit_cast<uint64_t>(value);
  }
}

// addend + x * y, rounded once to the format of E. Half precision wants operands with which double
// is exact.
template <class E> double fused(double addend, double x, double y) {
  if constexpr (sizeof(E) == 4)
    return std::fma(static_cast<float>(x), static_cast<float>(y), static_cast<float>(addend));
  else
    return std::fma(x, y, addend);
}

}  // namespace fp_value
