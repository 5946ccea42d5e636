// The steps that all operations share: mode word, unpacking, normalising, NaN processing and the
// rounders. Internal to the library; the operations are in fp.h.
//
// Mode word: the control bits on their way to the steps. Flag word: the exceptions on their way
// back, with the values of the flags in FPSCR; an operation ORs it into the word at its end.
//
// Steps on the way of ordinary values are always inlined: their results are small structures that
// a call would pass through memory.
#pragma once

#include <algorithm>
#include <bit>
#include <type_traits>

#include "sve/fp/format.h"

namespace fp {

__extension__ typedef unsigned __int128 uint128;
__extension__ typedef __int128 int128;

// Bits of the mode word.
inline constexpr int mode_rounding = 3;
inline constexpr int mode_fz = 4;
inline constexpr int mode_dn = 8;
inline constexpr int mode_ahp = 16;
inline constexpr int mode_fz16 = 32;

/// The unsigned type of twice the width: holds a product of two mantissas exactly.
template <FPBits T>
using Wide = std::conditional_t<sizeof(T) == 2, std::uint32_t,
                                std::conditional_t<sizeof(T) == 4, std::uint64_t, uint128>>;

template <typename M> inline constexpr int bits_of = 8 * sizeof(M);

/// The mode bit that flushes denormals of the format.
template <FPBits T> inline constexpr int mode_flush = sizeof(T) == 2 ? mode_fz16 : mode_fz;

template <typename M> constexpr int leading_zeros(M value) {
  if constexpr (std::is_same_v<M, uint128>) {
    const auto high = static_cast<std::uint64_t>(value >> 64);
    return high ? std::countl_zero(high) : 64 + std::countl_zero(static_cast<std::uint64_t>(value));
  } else {
    return std::countl_zero(value);
  }
}

/// `value` shifted right by 0 or more, every bit shifted out ORed into bit 0.
template <typename M> constexpr M shift_right_sticky(M value, int shift) {
  // A shift by all bits but one leaves at most bit 0, which the sticky bit then is.
  shift = std::min(shift, bits_of<M> - 1);
  const M shifted = M(value >> shift);
  return M(shifted | M(M(shifted << shift) != value));
}

/// The same for two words. Variable shifts across words are slow, and most stay within one.
constexpr uint128 shift_right_sticky(uint128 value, int shift) {
  const auto high = static_cast<std::uint64_t>(value >> 64);
  const auto low = static_cast<std::uint64_t>(value);
  if (shift >= 64) [[unlikely]]
    return shift_right_sticky(high, shift - 64) | (low != 0);
  const std::uint64_t lost = low << 1 << (63 - shift);
  const std::uint64_t shifted = (high << 1 << (63 - shift)) | (low >> shift);
  return uint128{high >> shift} << 64 | shifted | (lost != 0);
}

/// Whether a magnitude goes up to the next integer. `error` is what lies below the unit: bit 1 is
/// the half, bit 0 is set if anything is left below it. `odd` is the lowest bit of the integer.
constexpr bool rounds_up(int rounding, int sign, int error, bool odd) {
  switch (rounding) {
  case FPRounding_TIEEVEN:
    return error + odd > 2;
  case FPRounding_POSINF:
    return error && !sign;
  case FPRounding_NEGINF:
    return error && sign;
  case FPRounding_TIEAWAY:
    return error >= 2;
  default:
    return false;
  }
}

/// Whether an overflow of the sign gives the infinity, and not the largest normal.
constexpr bool overflows_to_infinity(int rounding, int sign) {
  return rounding == FPRounding_TIEEVEN ||
         rounding == (sign ? FPRounding_NEGINF : FPRounding_POSINF);
}

/// The mode word of FPSCR.
constexpr int mode_word(FPSCR fpscr) {
  return static_cast<int>(((fpscr >> FPSCR_RMODE_SHIFT) & 15) |
                          (fpscr & FPSCR_FZ16 ? mode_fz16 : 0));
}

/// The zero that a sum of non-zero operands gives when it is exactly 0.
template <FPBits T> constexpr T exact_zero(int mode) {
  return FPFormat<T>::with_sign((mode & mode_rounding) == FPRounding_NEGINF, 0);
}

template <FPBits T> struct Unpacked {
  int sign;
  int exponent;  ///< biased; 1 for zeros and denormals, where their mantissas count
  T mantissa;    ///< with the hidden bit; 0 for a zero and for a flushed denormal

  /// Infinity or NaN: the only values with the infinite exponent.
  bool is_special() const { return exponent == FPFormat<T>::infinite_exponent; }
  bool is_infinite() const { return is_special() && mantissa == FPFormat<T>::hidden_bit; }
  bool is_nan() const { return is_special() && mantissa != FPFormat<T>::hidden_bit; }
  bool is_zero() const { return mantissa == 0; }
};

}  // namespace fp

/// Sign, exponent and mantissa of an operand. A denormal that the mode flushes comes out with
/// mantissa 0, with IDC in the flag word for single and double; half never raises IDC.
template <FPBits T>
[[gnu::always_inline]] inline fp::Unpacked<T> fp_unpack(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  fp::Unpacked<T> result{static_cast<int>(op >> (F::width - 1)),
                         static_cast<int>(op >> F::fraction_bits) & F::infinite_exponent,
                         T(op & F::fraction_mask)};
  if (result.exponent != 0) [[likely]] {
    result.mantissa |= F::hidden_bit;
    return result;
  }
  result.exponent = 1;
  if ((mode & fp::mode_flush<T>) != 0 && result.mantissa != 0) {
    result.mantissa = 0;
    if constexpr (sizeof(T) != 2)
      flags |= FPSCR_IDC;
  }
  return result;
}

/// `mantissa` shifted left until its top bit is set; `exponent` falls by the shift. A mantissa of
/// 0 and its exponent stay.
template <typename M> constexpr M fp_normalise(M mantissa, int& exponent) {
  if (mantissa == 0)
    return 0;
  const int shift = fp::leading_zeros(mantissa);
  exponent -= shift;
  return M(mantissa << shift);
}

/// The result for a NaN operand: quietened, with IOC if it was signalling, or the default NaN
/// under DN.
template <FPBits T> constexpr T fp_process_nan(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  if (!(op & F::quiet_bit)) {
    flags |= FPSCR_IOC;
    op |= F::quiet_bit;
  }
  return mode & fp::mode_dn ? F::default_nan : op;
}

/// The NaN result of operands of which some may be NaNs, or 0 if none is: the first signalling
/// NaN, else the first quiet one.
template <FPBits T> constexpr T fp_process_nans(T op1, T op2, int mode, int& flags) {
  using F = FPFormat<T>;
  if (F::is_signalling_nan(op1))
    return fp_process_nan(op1, mode, flags);
  if (F::is_signalling_nan(op2))
    return fp_process_nan(op2, mode, flags);
  if (F::is_nan(op1))
    return fp_process_nan(op1, mode, flags);
  if (F::is_nan(op2))
    return fp_process_nan(op2, mode, flags);
  return 0;
}

/// As fp_process_nans, for the operands of a fused operation; op1 is the addend.
template <FPBits T> constexpr T fp_process_nans3(T op1, T op2, T op3, int mode, int& flags) {
  using F = FPFormat<T>;
  if (F::is_signalling_nan(op1) || !(F::is_signalling_nan(op2) || F::is_signalling_nan(op3))) {
    if (F::is_nan(op1))
      return fp_process_nan(op1, mode, flags);
  }
  return fp_process_nans(op2, op3, mode, flags);
}

/// Rounds and packs a non-zero value. `exponent` is the biased exponent it would have as a normal
/// number, of any size; `mantissa` holds its fraction left-aligned, the hidden bit shifted out and
/// everything below the container in bit 0. Underflow is decided before rounding.
template <FPBits T>
[[gnu::always_inline]] inline T fp_round(int sign, int exponent, T mantissa, int rounding, int mode,
                                         int* flags) {
  using F = FPFormat<T>;
  // Half precision works in 32 bits, to keep clear of the promotion to int.
  using Register = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
  if (exponent < 1 && (mode & fp::mode_flush<T>) != 0) [[unlikely]] {
    *flags |= FPSCR_UFC;
    return F::with_sign(sign, 0);
  }

  // Two bits below the fraction: the half and the sticky bit.
  constexpr int dropped = F::width - F::fraction_bits - 2;
  Register value = fp::shift_right_sticky<Register>(mantissa, dropped);
  value |= Register{4} << F::fraction_bits;
  int below = exponent - 1;  // the hidden bit, added below, counts one
  if (exponent < 1) [[unlikely]] {
    value = fp::shift_right_sticky(value, 1 - exponent);
    below = 0;
    if (value & 3)
      *flags |= FPSCR_UFC;
  }

  const int error = static_cast<int>(value & 3);
  value >>= 2;
  value += fp::rounds_up(rounding, sign, error, value & 1);
  if constexpr (sizeof(T) != 8) {
    if (rounding == FPRounding_ODD && error)
      value |= 1;
  }
  // A carry out of the fraction moves into the exponent by itself.
  value += static_cast<Register>(below) << F::fraction_bits;

  Register limit = F::infinity;
  if constexpr (sizeof(T) == 2) {
    if (mode & fp::mode_ahp)
      limit = F::sign_bit;
  }
  if (value >= limit || exponent > F::infinite_exponent) [[unlikely]] {
    if (limit != F::infinity) {
      *flags |= FPSCR_IOC;
      return F::with_sign(sign, T(F::sign_bit - 1));
    }
    *flags |= FPSCR_OFC | FPSCR_IXC;
    return F::with_sign(sign, fp::overflows_to_infinity(rounding, sign) ? F::infinity
                                                                        : F::largest_normal);
  }
  *flags |= error ? FPSCR_IXC : 0;
  return F::with_sign(sign, T(value));
}

/// fp_round of half precision. With AHP in the mode word the exponent 31 is an ordinary one, and
/// a value above it gives IOC and all bits but the sign set.
inline std::uint16_t fp16_round_(int sign, int exponent, std::uint16_t mantissa, int rounding,
                                 int mode, int* flags) {
  return fp_round(sign, exponent, mantissa, rounding, mode, flags);
}

/// fp_round of single precision.
inline std::uint32_t fp32_round_(int sign, int exponent, std::uint32_t mantissa, int rounding,
                                 int mode, int* flags) {
  return fp_round(sign, exponent, mantissa, rounding, mode, flags);
}

/// fp_round of double precision, which is never rounded to odd.
inline std::uint64_t fp64_round_(int sign, int exponent, std::uint64_t mantissa, int rounding,
                                 int mode, int* flags) {
  return fp_round(sign, exponent, mantissa, rounding, mode, flags);
}

/// The product of two values below 2 to the power 62; higher bits of an input are ignored.
constexpr fp::uint128 fp_mul62(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t mask = (std::uint64_t{1} << 62) - 1;
  return fp::uint128{a & mask} * (b & mask);
}

namespace fp {

/// The exact product of two mantissas.
template <FPBits T> constexpr Wide<T> mantissa_product(T a, T b) {
  if constexpr (sizeof(T) == 8)
    return fp_mul62(a, b);
  else
    return Wide<T>{a} * b;
}

/// A non-zero mantissa with its top bit shifted out of its container M, folded to T with the rest
/// in bit 0. `exponent` falls by the shift that brought the top bit to the top.
template <FPBits T, typename M>
[[gnu::always_inline]] inline T normalise_and_fold(M mantissa, int& exponent) {
  mantissa = M(fp_normalise(mantissa, exponent) << 1);
  return T(shift_right_sticky(mantissa, bits_of<M> - bits_of<T>));
}

/// The same for two words.
template <>
[[gnu::always_inline]] inline std::uint64_t normalise_and_fold(uint128 mantissa, int& exponent) {
  auto high = static_cast<std::uint64_t>(mantissa >> 64);
  auto low = static_cast<std::uint64_t>(mantissa);
  if (high == 0) [[unlikely]] {
    exponent -= 64;
    high = low;
    low = 0;
  }
  const int shift = leading_zeros(high);
  exponent -= shift;
  const std::uint64_t lost = low << shift << 1;
  return (high << shift << 1) | (low >> (63 - shift)) | (lost != 0);
}

/// Normalises a non-zero mantissa in its container M, folds it to the rounder's width and rounds.
/// `exponent` is the biased exponent that the container's top bit stands for.
template <FPBits T, typename M>
[[gnu::always_inline]] inline T normalise_and_round(int sign, int exponent, M mantissa,
                                                    int rounding, int mode, int* flags) {
  const T fraction = normalise_and_fold<T>(mantissa, exponent);
  return fp_round(sign, exponent, fraction, rounding, mode, flags);
}

}  // namespace fp
