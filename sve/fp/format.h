// The three IEEE 754 formats and the control and status word that every operation takes.
//
// A value is an unsigned integer that holds the bit pattern: 16 bits are half, 32 bits single and
// 64 bits double precision. The library computes with integers alone, so a result depends on the
// operands and the word, and on nothing of the host.
#pragma once

#include <concepts>
#include <cstdint>

/// The architecture's FPCR and FPSR in one word, each bit in its architectural place. Operations
/// read the control bits, set flags and clear nothing; every other bit is left alone. A word
/// belongs to one thread during a call.
using FPSCR = std::uint32_t;

// Cumulative flags, set by operations. Flag words of the internal steps use the same values.
inline constexpr FPSCR FPSCR_IOC = 1u << 0;  ///< invalid operation
inline constexpr FPSCR FPSCR_DZC = 1u << 1;  ///< division by zero
inline constexpr FPSCR FPSCR_OFC = 1u << 2;  ///< overflow
inline constexpr FPSCR FPSCR_UFC = 1u << 3;  ///< underflow, or a result flushed to zero
inline constexpr FPSCR FPSCR_IXC = 1u << 4;  ///< inexact
inline constexpr FPSCR FPSCR_IDC = 1u << 7;  ///< a denormal operand flushed to zero

// Controls, read by operations.
inline constexpr FPSCR FPSCR_FZ16 = 1u << 19;  ///< flush half-precision denormals to zero
inline constexpr int FPSCR_RMODE_SHIFT = 22;   ///< lowest bit of the two-bit field RMode
inline constexpr FPSCR FPSCR_FZ = 1u << 24;    ///< flush single and double denormals to zero
inline constexpr FPSCR FPSCR_DN = 1u << 25;    ///< every NaN result is the default NaN
inline constexpr FPSCR FPSCR_AHP = 1u << 26;   ///< alternative half precision: FPConvert only

/// Rounding modes. The first four are also the values of the field RMode.
enum FPRounding {
  FPRounding_TIEEVEN = 0,  ///< to nearest, ties to even
  FPRounding_POSINF = 1,   ///< towards plus infinity
  FPRounding_NEGINF = 2,   ///< towards minus infinity
  FPRounding_ZERO = 3,     ///< towards zero
  FPRounding_TIEAWAY = 4,  ///< to nearest, ties away from zero: only to integral values
  FPRounding_ODD = 5,      ///< to odd: only results in half and single precision
};

/// The rounding mode that the field RMode of the word holds.
constexpr FPRounding FPRoundingMode(FPSCR fpscr) {
  return static_cast<FPRounding>((fpscr >> FPSCR_RMODE_SHIFT) & 3);
}

/// The element types that hold a floating-point pattern.
template <typename T>
concept FPBits = std::same_as<T, std::uint16_t> || std::same_as<T, std::uint32_t> ||
    std::same_as<T, std::uint64_t>;

/// Widths and landmark patterns of the format that T holds.
template <FPBits T> struct FPFormat {
  static constexpr int width = 8 * sizeof(T);
  static constexpr int exponent_bits = width == 16 ? 5 : width == 32 ? 8 : 11;
  static constexpr int fraction_bits = width - 1 - exponent_bits;
  static constexpr int bias = (1 << (exponent_bits - 1)) - 1;
  /// The exponent field of infinities and NaNs.
  static constexpr int infinite_exponent = (1 << exponent_bits) - 1;

  static constexpr T sign_bit = T(T{1} << (width - 1));
  static constexpr T hidden_bit = T(T{1} << fraction_bits);
  static constexpr T fraction_mask = T(hidden_bit - 1);
  static constexpr T infinity = T(T(infinite_exponent) << fraction_bits);
  static constexpr T largest_normal = T(infinity - 1);
  static constexpr T quiet_bit = T(hidden_bit >> 1);
  static constexpr T default_nan = T(infinity | quiet_bit);
  static constexpr T one = T(T(bias) << fraction_bits);
  static constexpr T two = T(T(bias + 1) << fraction_bits);

  /// `magnitude` with sign 0 or 1.
  static constexpr T with_sign(int sign, T magnitude) {
    return T(magnitude | T(T(sign) << (width - 1)));
  }
  static constexpr bool is_nan(T op) { return T(op & ~sign_bit) > infinity; }
  static constexpr bool is_quiet_nan(T op) { return T(op & default_nan) == default_nan; }
  static constexpr bool is_signalling_nan(T op) { return is_nan(op) && !(op & quiet_bit); }
};
