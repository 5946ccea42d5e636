#include "sve/fp/estimate.h"

#include <bit>
#include <cmath>

#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/fp/estimate_table.h"
#include "sve/fp/steps.h"

namespace {

using fp::Unpacked;

constexpr int estimate_bits = 8;  // below the hidden bit

/// The reciprocal of a mantissa with its top bit set, as 256 to 511: the hidden bit and 8 more.
template <FPBits T> unsigned reciprocal_of_mantissa(T mantissa) {
  // The top 9 bits name a range; the tenth, set, puts the divisor at the range's middle.
  const unsigned middle = static_cast<unsigned>(mantissa >> (fp::bits_of<T> - 10)) | 1;
  return ((1u << 19) / middle + 1) >> 1;
}

/// The operand with its top mantissa bit set and its biased exponent to match.
template <FPBits T> Unpacked<T> normalised(Unpacked<T> a) {
  a.exponent += FPFormat<T>::exponent_bits;
  a.mantissa = fp_normalise(a.mantissa, a.exponent);
  return a;
}

template <FPBits T> T reciprocal_finite(const Unpacked<T>& op) {
  using F = FPFormat<T>;
  const Unpacked<T> a = normalised(op);
  T fraction = T(T(reciprocal_of_mantissa(a.mantissa)) << (F::fraction_bits - estimate_bits));
  int exponent = 2 * F::bias - 1 - a.exponent;
  if (exponent < 1) {
    fraction = T(fraction >> (1 - exponent));
    exponent = 0;
  }
  return F::with_sign(a.sign,
                      T(T(T(exponent) << F::fraction_bits) | (fraction & F::fraction_mask)));
}

template <FPBits T> T reciprocal_estimate(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  if (a.is_nan())
    return fp_process_nan(op, mode, flags);
  if (a.is_infinite())
    return F::with_sign(a.sign, 0);
  if (a.is_zero()) {
    flags |= FPSCR_DZC;
    return F::with_sign(a.sign, F::infinity);
  }
  // Below this the reciprocal would be 2 to the power bias + 1 or more.
  constexpr T reciprocal_overflows_below = F::hidden_bit >> 2;
  if (T(op & ~F::sign_bit) < reciprocal_overflows_below) {
    flags |= FPSCR_OFC | FPSCR_IXC;
    const bool infinite = fp::overflows_to_infinity(mode & fp::mode_rounding, a.sign);
    return F::with_sign(a.sign, infinite ? F::infinity : F::largest_normal);
  }
  if ((mode & fp::mode_flush<T>) != 0 && a.exponent >= 2 * F::bias - 1) {
    flags |= FPSCR_UFC;
    return F::with_sign(a.sign, 0);
  }
  return reciprocal_finite(a);
}

template <FPBits T> T reciprocal_root_finite(const Unpacked<T>& op) {
  using F = FPFormat<T>;
  const Unpacked<T> a = normalised(op);
  // The top bit and seven more; an even exponent belongs to the ranges from a half on.
  const auto top = static_cast<unsigned>(a.mantissa >> (F::width - 8)) & 0x7f;
  const T entry = fp::recip_sqrt_estimate[top | (a.exponent & 1 ? 0 : 0x80)];
  const int exponent = (3 * F::bias - 1 - a.exponent) >> 1;
  return T(T(T(exponent) << F::fraction_bits) | T(entry << (F::fraction_bits - estimate_bits)));
}

template <FPBits T> T reciprocal_root_estimate(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  if (a.is_nan())
    return fp_process_nan(op, mode, flags);
  if (a.is_zero()) {
    flags |= FPSCR_DZC;
    return F::with_sign(a.sign, F::infinity);
  }
  if (a.sign) {
    flags |= FPSCR_IOC;
    return F::default_nan;
  }
  return a.is_infinite() ? T{0} : reciprocal_root_finite(a);
}

template <FPBits T> T reciprocal_exponent(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  if (a.is_nan())
    return fp_process_nan(op, mode, flags);
  const T field = op & F::infinity;
  // Inverting a field of 0 would give an infinity: the largest finite exponent stands in for it.
  const T inverted = field ? T(field ^ F::infinity) : T(F::infinity - F::hidden_bit);
  return F::with_sign(a.sign, inverted);
}

/// (constant - op1 * op2) * 2^scale, or `invalid_result` for infinity times zero.
template <FPBits T>
T newton_step(T op1, T op2, T constant, int scale, T invalid_result, FPSCR& fpscr) {
  using F = FPFormat<T>;
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  op1 = FPNeg(op1);
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  T result = fp_process_nans(op1, op2, mode, flags);
  if (result == 0) {
    if ((a.is_infinite() && b.is_zero()) || (a.is_zero() && b.is_infinite()))
      result = invalid_result;
    else if (a.is_infinite() || b.is_infinite())
      result = F::with_sign(a.sign ^ b.sign, F::infinity);
    else
      result = fp_muladd(constant, op1, op2, scale, mode, &flags);
  }
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

// A double in [1/4, 1) from the 32-bit fixed-point operand of the unsigned estimates, and back.
constexpr std::uint32_t top_bit = 0x80000000;
constexpr std::uint64_t exponent_of_half = 0x3fe;
constexpr std::uint64_t exponent_of_quarter = 0x3fd;
constexpr std::uint64_t unsigned_saturated = 0xffffffff;

double fraction_to_double(std::uint64_t exponent, std::uint64_t fraction) {
  return std::bit_cast<double>((exponent << FPFormat<std::uint64_t>::fraction_bits) | fraction);
}

std::uint64_t estimate_to_unsigned(double estimate) {
  return ((std::bit_cast<std::uint64_t>(estimate) >> 21) & (top_bit - 1)) | top_bit;
}

}  // namespace

template <FPBits T> T FPRecipEstimate(T op, FPSCR& fpscr) {
  int flags = 0;
  const T result = reciprocal_estimate(op, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPRSqrtEstimate(T op, FPSCR& fpscr) {
  int flags = 0;
  const T result = reciprocal_root_estimate(op, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPRecpX(T op, FPSCR& fpscr) {
  int flags = 0;
  const T result = reciprocal_exponent(op, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPRecipStepFused(T op1, T op2, FPSCR& fpscr) {
  constexpr T two = FPFormat<T>::two;
  return newton_step(op1, op2, two, 0, two, fpscr);
}

template <FPBits T> T FPRSqrtStepFused(T op1, T op2, FPSCR& fpscr) {
  using F = FPFormat<T>;
  constexpr T three = F::two | F::quiet_bit;
  constexpr T one_and_a_half = F::one | F::quiet_bit;
  return newton_step(op1, op2, three, -1, one_and_a_half, fpscr);
}

double recip_estimate(double a) {
  const double middle = (std::trunc(a * 512) + 0.5) / 512;
  return std::trunc(1 / middle * 256 + 0.5) / 256;
}

double recip_sqrt_estimate(double a) {
  const double units = a < 0.5 ? 512 : 256;
  const double middle = (std::trunc(a * units) + 0.5) / units;
  return std::trunc(1 / std::sqrt(middle) * 256 + 0.5) / 256;
}

std::uint64_t UnsignedRecipEstimate(std::uint64_t op, int) {
  if (!(op & top_bit))
    return unsigned_saturated;
  const std::uint64_t fraction = (op & (top_bit - 1)) << 21;
  return estimate_to_unsigned(recip_estimate(fraction_to_double(exponent_of_half, fraction)));
}

std::uint64_t UnsignedRSqrtEstimate(std::uint64_t op, int) {
  constexpr std::uint32_t second_bit = top_bit >> 1;
  if (static_cast<std::uint32_t>(op) < second_bit)
    return unsigned_saturated;
  const double a = op & top_bit
                       ? fraction_to_double(exponent_of_half, (op & (top_bit - 1)) << 21)
                       : fraction_to_double(exponent_of_quarter, (op & (second_bit - 1)) << 22);
  return estimate_to_unsigned(recip_sqrt_estimate(a));
}

template std::uint16_t FPRecipEstimate(std::uint16_t, FPSCR&);
template std::uint32_t FPRecipEstimate(std::uint32_t, FPSCR&);
template std::uint64_t FPRecipEstimate(std::uint64_t, FPSCR&);
template std::uint16_t FPRSqrtEstimate(std::uint16_t, FPSCR&);
template std::uint32_t FPRSqrtEstimate(std::uint32_t, FPSCR&);
template std::uint64_t FPRSqrtEstimate(std::uint64_t, FPSCR&);
template std::uint16_t FPRecpX(std::uint16_t, FPSCR&);
template std::uint32_t FPRecpX(std::uint32_t, FPSCR&);
template std::uint64_t FPRecpX(std::uint64_t, FPSCR&);
template std::uint16_t FPRecipStepFused(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPRecipStepFused(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPRecipStepFused(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPRSqrtStepFused(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPRSqrtStepFused(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPRSqrtStepFused(std::uint64_t, std::uint64_t, FPSCR&);
