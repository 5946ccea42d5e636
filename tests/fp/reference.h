// An exact reference for the floating-point library: values are natural numbers times powers of
// two, operations are exact, and one rounding at the end picks between the two neighbours. It
// shares nothing with the library, and is told the format at run time.
#pragma once

#include <cstdint>
#include <string>

namespace reference {

struct Format {
  int width;
  int exponent_bits;

  int fraction_bits() const { return width - 1 - exponent_bits; }
  int bias() const { return (1 << (exponent_bits - 1)) - 1; }
  int infinite_exponent() const { return (1 << exponent_bits) - 1; }
  std::uint64_t sign() const { return std::uint64_t{1} << (width - 1); }
  std::uint64_t hidden() const { return std::uint64_t{1} << fraction_bits(); }
  std::uint64_t infinity() const {
    return static_cast<std::uint64_t>(infinite_exponent()) << fraction_bits();
  }
  std::uint64_t quiet() const { return std::uint64_t{1} << (fraction_bits() - 1); }
  std::uint64_t default_nan() const { return infinity() | quiet(); }
  bool is_nan(std::uint64_t op) const { return (op & (sign() - 1)) > infinity(); }
  bool is_signalling(std::uint64_t op) const { return is_nan(op) && !(op & quiet()); }
};

inline constexpr Format half{16, 5};
inline constexpr Format single{32, 8};
inline constexpr Format double_{64, 11};

template <typename T> constexpr Format format_of() {
  return sizeof(T) == 2 ? half : sizeof(T) == 4 ? single : double_;
}

enum Rounding { nearest_even, up, down, to_zero, nearest_away, to_odd };

enum Flag : unsigned {
  invalid = 1,
  division_by_zero = 2,
  overflow = 4,
  underflow = 8,
  inexact = 16,
  input_denormal = 128,
};

struct Controls {
  int rounding = nearest_even;
  bool fz = false, fz16 = false, dn = false, ahp = false;

  /// The control bits at their places in FPCR.
  std::uint32_t word() const {
    return static_cast<std::uint32_t>(fz16) << 19 | static_cast<std::uint32_t>(rounding) << 22 |
           static_cast<std::uint32_t>(fz) << 24 | static_cast<std::uint32_t>(dn) << 25 |
           static_cast<std::uint32_t>(ahp) << 26;
  }
};

struct Outcome {
  std::uint64_t bits;
  unsigned flags;
  bool operator==(const Outcome&) const = default;
};

Outcome add(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);
Outcome subtract(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);
Outcome multiply(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);
Outcome multiply_extended(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);
Outcome multiply_add(Format f, std::uint64_t addend, std::uint64_t a, std::uint64_t b,
                     const Controls& c);
Outcome divide(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);
Outcome square_root(Format f, std::uint64_t a, const Controls& c);

/// (constant - a * b) * 2^scale with the special cases of the Newton steps.
Outcome newton_step(Format f, unsigned constant, int scale, std::uint64_t a, std::uint64_t b,
                    const Controls& c);

/// a squared, with the sign of bit 0 of b.
Outcome square_with_sign(Format f, std::uint64_t a, std::uint64_t b, const Controls& c);

Outcome convert(Format from, Format to, std::uint64_t a, int rounding, const Controls& c);
Outcome to_fixed(Format from, int width, std::uint64_t a, int fbits, bool is_unsigned, int rounding,
                 const Controls& c);
Outcome from_fixed(Format to, std::uint64_t a, int fbits, bool is_unsigned, int rounding,
                   const Controls& c);
Outcome round_to_integral(Format f, std::uint64_t a, int rounding, bool exact, const Controls& c);
Outcome scale(Format f, std::uint64_t a, std::int64_t by, const Controls& c);

}  // namespace reference
