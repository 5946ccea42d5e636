#include "sve/fp/divide_root.h"

#include <algorithm>

#include "sve/fp/estimate_table.h"
#include "sve/fp/steps.h"

namespace {

using fp::int128;
using fp::uint128;
using fp::Unpacked;
using fp::Wide;

/// The quotient of non-zero finite operands, rounded.
template <FPBits T> T divide_finite(Unpacked<T> a, Unpacked<T> b, int mode, int& flags) {
  using F = FPFormat<T>;
  // With both mantissas at the top of the container the quotient of a * 2^shift lies between
  // 2^(shift - 1) and 2^(shift + 1): all bits that rounding needs, in one container.
  constexpr int shift = F::width - 2;
  const T dividend = fp_normalise(a.mantissa, a.exponent);
  const T divisor = fp_normalise(b.mantissa, b.exponent);
  const Wide<T> scaled = Wide<T>{dividend} << shift;
  T quotient = static_cast<T>(scaled / divisor);
  quotient |= Wide<T>{quotient} * divisor != scaled;
  return fp::normalise_and_round<T>(a.sign ^ b.sign, a.exponent - b.exponent + F::bias + 1,
                                    quotient, mode & fp::mode_rounding, mode, &flags);
}

template <FPBits T> T divide(T op1, T op2, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  if (const T nan = fp_process_nans(op1, op2, mode, flags))
    return nan;
  const int sign = a.sign ^ b.sign;
  if ((a.is_infinite() && b.is_infinite()) || (a.is_zero() && b.is_zero())) {
    flags |= FPSCR_IOC;
    return F::default_nan;
  }
  if (a.is_infinite() || b.is_zero()) {
    if (!a.is_infinite())
      flags |= FPSCR_DZC;
    return F::with_sign(sign, F::infinity);
  }
  if (a.is_zero() || b.is_infinite())
    return F::with_sign(sign, 0);
  return divide_finite(a, b, mode, flags);
}

/// The root of x / 2^64 with `bits` bits, within a few units. x is at least 2^62.
///
/// Each Newton step doubles the 8 bits of the table's reciprocal root, in 31-bit fixed point. Two
/// serve up to single precision; for more, the root is corrected once by its exact residue.
template <int bits> std::uint64_t estimate_root(std::uint64_t x) {
  std::uint64_t reciprocal = fp::reciprocal_root_of_9_bits(static_cast<unsigned>(x >> 55));
  reciprocal <<= 31 - 8;
  const std::uint64_t x32 = x >> 32;
  for (int known = 7; known < std::min(bits, 28); known *= 2) {
    const std::uint64_t product = ((reciprocal * reciprocal) >> 31) * x32;  // near 2^63
    const std::uint64_t factor = (std::uint64_t{3} << 62) - (product >> 1);
    reciprocal = (reciprocal * (factor >> 32)) >> 31;
  }
  const std::uint64_t root = (x32 * reciprocal) >> 32;
  if constexpr (bits < 28)
    return root >> (31 - bits);
  // Unsigned on purpose: the products wrap, the residue is small.
  const auto residue = static_cast<std::int64_t>(x - ((root * root) << 2));
  const int128 correction = (int128{residue} * static_cast<std::int64_t>(reciprocal)) >> 32;
  return ((root << 33) + static_cast<std::uint64_t>(correction)) >> (64 - bits);
}

/// The root of a positive finite value, rounded.
template <FPBits T> T root_finite(Unpacked<T> a, int mode, int& flags) {
  using F = FPFormat<T>;
  constexpr int root_bits = F::fraction_bits + 2;
  const std::uint64_t mantissa = fp_normalise(std::uint64_t{a.mantissa}, a.exponent);
  const int unbiased = a.exponent + 63 - F::fraction_bits - F::bias;
  const std::uint64_t x = mantissa >> (unbiased & 1 ? 0 : 1);

  // The exact test makes the root the truncated one, whatever the estimate missed: what is left
  // lies from 0 to twice the root. It is small, so its low 64 bits tell it.
  const auto target = static_cast<std::uint64_t>((uint128{x} << 64) >> (128 - 2 * root_bits));
  std::uint64_t root = estimate_root<root_bits>(x);
  auto left = static_cast<std::int64_t>(target - root * root);
  for (; left < 0; --root)
    left += static_cast<std::int64_t>(2 * root - 1);
  for (; left > static_cast<std::int64_t>(2 * root); ++root)
    left -= static_cast<std::int64_t>(2 * root + 1);
  const std::uint64_t top = (root << (64 - root_bits)) | (left != 0);
  return fp::normalise_and_round<T>(0, F::bias + (unbiased >> 1), top, mode & fp::mode_rounding,
                                    mode, &flags);
}

template <FPBits T> T square_root(T op, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op, mode, flags);
  if (a.is_nan())
    return fp_process_nan(op, mode, flags);
  if (a.is_zero())
    return F::with_sign(a.sign, 0);
  if (a.sign) {
    flags |= FPSCR_IOC;
    return F::default_nan;
  }
  if (a.is_infinite())
    return op;
  return root_finite(a, mode, flags);
}

}  // namespace

template <FPBits T> T FPDiv(T op1, T op2, FPSCR& fpscr) {
  int flags = 0;
  const T result = divide(op1, op2, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T> T FPSqrt(T op, FPSCR& fpscr) {
  int flags = 0;
  const T result = square_root(op, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template std::uint16_t FPDiv(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPDiv(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPDiv(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPSqrt(std::uint16_t, FPSCR&);
template std::uint32_t FPSqrt(std::uint32_t, FPSCR&);
template std::uint64_t FPSqrt(std::uint64_t, FPSCR&);
