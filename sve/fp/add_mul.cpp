#include "sve/fp/add_mul.h"

#include <algorithm>
#include <cstdlib>

#include "sve/fp/steps.h"

namespace {

using fp::Unpacked;
using fp::Wide;

// The special cases unpack their operands again: unpacked values handed on would live in memory
// on the way of ordinary ones too.

template <FPBits T> T invalid(int& flags) {
  flags |= FPSCR_IOC;
  return FPFormat<T>::default_nan;
}

/// A sum of two aligned magnitudes, as sign and magnitude.
template <typename M> struct Sum {
  int sign;
  int exponent;
  M magnitude;
};

/// Brings x and y to the larger exponent and adds them with their signs. The smaller one keeps
/// what it loses as a sticky bit. The top bits of both magnitudes are clear. Signs and order of
/// real operands follow no pattern, so nothing here branches on them.
template <typename M> [[gnu::always_inline]] inline Sum<M> add_aligned(Sum<M> x, Sum<M> y) {
  const int differ = x.sign ^ y.sign;
  const bool swap = x.exponent < y.exponent;
  const M exchanged = M((x.magnitude ^ y.magnitude) & M(-M(swap)));
  const M larger = M(x.magnitude ^ exchanged);
  const M aligned =
      fp::shift_right_sticky(M(y.magnitude ^ exchanged), std::abs(x.exponent - y.exponent));
  const M negate = M(-M(differ));
  const M total = M(larger + M(M(aligned ^ negate) - negate));
  const int below_zero = differ & static_cast<int>(total >> (fp::bits_of<M> - 1));
  const M negate_total = M(-M(below_zero));
  return {x.sign ^ (differ & swap) ^ below_zero, std::max(x.exponent, y.exponent),
          M(M(total ^ negate_total) - negate_total)};
}

template <FPBits T>
[[gnu::noinline]] T add_special(T op1, T op2, int negate, int mode, int& flags) {
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  Unpacked<T> b = fp_unpack(op2, mode, flags);
  b.sign ^= negate;
  if (const T nan = fp_process_nans(op1, op2, mode, flags))
    return nan;
  if (a.is_infinite() && b.is_infinite() && a.sign != b.sign)
    return invalid<T>(flags);
  return FPFormat<T>::with_sign(a.is_infinite() ? a.sign : b.sign, FPFormat<T>::infinity);
}

/// op1 + op2, or op1 - op2 with `negate`.
template <FPBits T> T add(T op1, T op2, int negate, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  Unpacked<T> b = fp_unpack(op2, mode, flags);
  b.sign ^= negate;
  if (a.is_special() || b.is_special()) [[unlikely]]
    return add_special(op1, op2, negate, mode, flags);
  if (a.is_zero() && b.is_zero() && a.sign == b.sign)
    return F::with_sign(a.sign, 0);

  // Three bits below the mantissas suffice: only the sticky one can be lost to alignment.
  constexpr int guard = 3;
  constexpr int headroom = F::width - 1 - F::fraction_bits - guard;
  const Sum<T> sum = add_aligned<T>({a.sign, a.exponent, T(a.mantissa << guard)},
                                    {b.sign, b.exponent, T(b.mantissa << guard)});
  if (sum.magnitude == 0)
    return fp::exact_zero<T>(mode);
  return fp::normalise_and_round<T>(sum.sign, sum.exponent + headroom, sum.magnitude,
                                    mode & fp::mode_rounding, mode, &flags);
}

template <FPBits T> T add_or_subtract(T op1, T op2, int negate, FPSCR& fpscr) {
  int flags = 0;
  const T result = add(op1, op2, negate, fp::mode_word(fpscr), flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T>
[[gnu::noinline]] T multiply_special(T op1, T op2, bool extended, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  if (const T nan = fp_process_nans(op1, op2, mode, flags))
    return nan;
  const int sign = a.sign ^ b.sign;
  if (a.is_zero() || b.is_zero())
    return extended ? F::with_sign(sign, F::two) : invalid<T>(flags);
  return F::with_sign(sign, F::infinity);
}

/// op1 * op2; `extended` makes infinity times zero 2.0.
template <FPBits T> T multiply(T op1, T op2, bool extended, FPSCR& fpscr) {
  using F = FPFormat<T>;
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  const int sign = a.sign ^ b.sign;
  T result;
  if (a.is_special() || b.is_special()) [[unlikely]] {
    result = multiply_special(op1, op2, extended, mode, flags);
  } else if (a.is_zero() || b.is_zero()) {
    result = F::with_sign(sign, 0);
  } else {
    constexpr int headroom = 2 * F::width - 1 - 2 * F::fraction_bits;
    result = fp::normalise_and_round<T>(sign, a.exponent + b.exponent - F::bias + headroom,
                                        fp::mantissa_product(a.mantissa, b.mantissa),
                                        mode & fp::mode_rounding, mode, &flags);
  }
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template <FPBits T>
[[gnu::noinline]] T muladd_special(T op_a, T op_b, T op_c, int mode, int& flags) {
  using F = FPFormat<T>;
  const Unpacked<T> a = fp_unpack(op_a, mode, flags);
  const Unpacked<T> b = fp_unpack(op_b, mode, flags);
  const Unpacked<T> c = fp_unpack(op_c, mode, flags);
  const bool infinity_times_zero =
      (b.is_infinite() && c.is_zero()) || (b.is_zero() && c.is_infinite());
  const T nan = fp_process_nans3(op_a, op_b, op_c, mode, flags);
  // An invalid product wins over a quiet NaN as addend, but not over a signalling one.
  if (infinity_times_zero && !F::is_signalling_nan(op_a))
    return invalid<T>(flags);
  if (nan)
    return nan;
  const int product_sign = b.sign ^ c.sign;
  const bool infinite_product = b.is_infinite() || c.is_infinite();
  if (a.is_infinite() && infinite_product && a.sign != product_sign)
    return invalid<T>(flags);
  return F::with_sign(a.is_infinite() ? a.sign : product_sign, F::infinity);
}

}  // namespace

template <FPBits T> T fp_muladd(T op_a, T op_b, T op_c, int scale, int mode, int* flags) {
  using F = FPFormat<T>;
  using M = Wide<T>;
  const Unpacked<T> a = fp_unpack(op_a, mode, *flags);
  const Unpacked<T> b = fp_unpack(op_b, mode, *flags);
  const Unpacked<T> c = fp_unpack(op_c, mode, *flags);
  if (a.is_special() || b.is_special() || c.is_special()) [[unlikely]]
    return muladd_special(op_a, op_b, op_c, mode, *flags);
  const int product_sign = b.sign ^ c.sign;
  const bool zero_product = b.is_zero() || c.is_zero();
  if (a.is_zero() && zero_product && a.sign == product_sign)
    return F::with_sign(a.sign, 0);

  // The product stands as high as a carry allows, and the addend with its hidden bit at the same
  // place, so that what alignment shifts out lies below everything that rounding can see.
  constexpr int guard = fp::bits_of<M> - 2 * F::fraction_bits - 3;
  constexpr int headroom = 2;
  const int product_exponent = zero_product ? a.exponent : b.exponent + c.exponent - F::bias;
  const Sum<M> sum = add_aligned<M>(
      {a.sign, a.exponent, M(M{a.mantissa} << (guard + F::fraction_bits))},
      {product_sign, product_exponent, M(fp::mantissa_product(b.mantissa, c.mantissa) << guard)});
  if (sum.magnitude == 0)
    return fp::exact_zero<T>(mode);
  return fp::normalise_and_round<T>(sum.sign, sum.exponent + headroom + scale, sum.magnitude,
                                    mode & fp::mode_rounding, mode, flags);
}

std::uint16_t fp16_muladd(std::uint16_t a, std::uint16_t b, std::uint16_t c, int scale, int mode,
                          int* flags) {
  return fp_muladd(a, b, c, scale, mode, flags);
}

std::uint32_t fp32_muladd(std::uint32_t a, std::uint32_t b, std::uint32_t c, int scale, int mode,
                          int* flags) {
  return fp_muladd(a, b, c, scale, mode, flags);
}

std::uint64_t fp64_muladd(std::uint64_t a, std::uint64_t b, std::uint64_t c, int scale, int mode,
                          int* flags) {
  return fp_muladd(a, b, c, scale, mode, flags);
}

template <FPBits T> T FPAdd(T op1, T op2, FPSCR& fpscr) {
  return add_or_subtract(op1, op2, 0, fpscr);
}

template <FPBits T> T FPSub(T op1, T op2, FPSCR& fpscr) {
  return add_or_subtract(op1, op2, 1, fpscr);
}

template <FPBits T> T FPMul(T op1, T op2, FPSCR& fpscr) { return multiply(op1, op2, false, fpscr); }

template <FPBits T> T FPMulX(T op1, T op2, FPSCR& fpscr) { return multiply(op1, op2, true, fpscr); }

template <FPBits T> T FPMulAdd(T addend, T op1, T op2, FPSCR& fpscr) {
  int flags = 0;
  const T result = fp_muladd(addend, op1, op2, 0, fp::mode_word(fpscr), &flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

template std::uint16_t FPAdd(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPAdd(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPAdd(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPSub(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPSub(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPSub(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMul(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMul(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMul(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMulX(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMulX(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMulX(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMulAdd(std::uint16_t, std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMulAdd(std::uint32_t, std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMulAdd(std::uint64_t, std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t fp_muladd(std::uint16_t, std::uint16_t, std::uint16_t, int, int, int*);
template std::uint32_t fp_muladd(std::uint32_t, std::uint32_t, std::uint32_t, int, int, int*);
template std::uint64_t fp_muladd(std::uint64_t, std::uint64_t, std::uint64_t, int, int, int*);
