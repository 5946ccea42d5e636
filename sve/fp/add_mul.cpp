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

template <FPBits T> [[gnu::noinline]] T add_any(T op1, T op2, int negate, FPSCR& fpscr) {
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

// ---- ordinary values ----------------------------------------------------------------------------
// Nearly all operands and results are normal numbers not far apart. Sums of them leave out the
// steps that only other values need.

/// One side of a sum in single or double precision. Three bits above the hidden bit are clear: for
/// a product of two or more, for a carry, and for the sign of the sum.
template <typename M> struct Term {
  std::uint64_t sign;  ///< in the top bit; the others are of no account
  int exponent;        ///< biased, as the hidden bit's
  M magnitude;
};

template <FPBits T> constexpr bool is_normal(T op) {
  using F = FPFormat<T>;
  return (T(op + F::hidden_bit) & F::infinity & ~F::hidden_bit) != 0;
}

template <FPBits T> constexpr int exponent_of(T op) {
  return static_cast<int>(op >> FPFormat<T>::fraction_bits) & FPFormat<T>::infinite_exponent;
}

/// The mantissa of a normal number with the hidden bit below `room` clear bits.
template <FPBits T> constexpr T mantissa_below(int room, T op) {
  return T(T(T(op << FPFormat<T>::exponent_bits) | FPFormat<T>::sign_bit) >> room);
}

/// The value's bits from the top of a 64-bit word on.
template <FPBits T> constexpr std::uint64_t left_aligned(T value) {
  return std::uint64_t{value} << (64 - FPFormat<T>::width);
}

constexpr std::uint64_t top_word(std::uint64_t magnitude) { return magnitude; }
constexpr std::uint64_t top_word(fp::uint128 magnitude) {
  return static_cast<std::uint64_t>(magnitude >> 64);
}

/// All bits of M as the top bit of the word.
template <typename M> constexpr M mask_of_top_bit(std::uint64_t word) {
  using Signed = std::conditional_t<sizeof(M) == 8, std::int64_t, fp::int128>;
  return static_cast<M>(Signed{static_cast<std::int64_t>(word) >> 63});
}

/// The top 64 bits of a magnitude shifted left by 0 to 62, everything below them ORed into bit 0.
constexpr std::uint64_t top_sticky(std::uint64_t magnitude, int shift) {
  return magnitude << shift;
}
constexpr std::uint64_t top_sticky(fp::uint128 magnitude, int shift) {
  const auto low = static_cast<std::uint64_t>(magnitude);
  return top_word(magnitude) << shift | low >> 1 >> (63 - shift) | (low << shift != 0);
}

/// x + y, rounded by the word. Returns false, with nothing changed, where the exponents are far
/// apart, almost all bits cancel, or the result is not well inside the normal numbers.
template <FPBits T, typename M>
[[gnu::always_inline]] inline bool sum_of_ordinary(Term<M> x, Term<M> y, FPSCR& fpscr, T& result) {
  using F = FPFormat<T>;
  const int above = x.exponent - y.exponent;
  if (above >= F::width || above <= -F::width) [[unlikely]]
    return false;
  // Signs and order of real operands follow no pattern, so nothing here branches on them.
  const M aligned_x = fp::shift_right_sticky(x.magnitude, -above & (above >> 31));
  const M aligned_y = fp::shift_right_sticky(y.magnitude, above & ~(above >> 31));
  const M differ = mask_of_top_bit<M>(x.sign ^ y.sign);
  const M sum = aligned_x + ((aligned_y ^ differ) - differ);
  const M below_zero = mask_of_top_bit<M>(top_word(sum));
  const M magnitude = (sum ^ below_zero) - below_zero;
  if (top_word(magnitude) == 0) [[unlikely]]
    return false;
  const int shift = std::countl_zero(top_word(magnitude)) - 1;
  const int exponent = std::max(x.exponent, y.exponent) + 2 - shift;
  if (exponent < 1 || exponent >= F::infinite_exponent - 1) [[unlikely]]
    return false;

  // One bit stays clear for the carry of rounding.
  constexpr int dropped = 64 - 2 - F::fraction_bits;
  constexpr std::uint64_t below = (std::uint64_t{1} << dropped) - 1;
  const int sign = static_cast<int>(x.sign >> 63) ^ static_cast<int>(below_zero & 1);
  const FPRounding rounding = FPRoundingMode(fpscr);
  const std::uint64_t value = top_sticky(magnitude, shift);
  std::uint64_t up = fp::overflows_to_infinity(rounding, sign) ? below : 0;
  if (rounding == FPRounding_TIEEVEN) [[likely]]
    up = (below >> 1) + (value >> dropped & 1);
  // The hidden bit counts one in the exponent, and the carry goes there by itself.
  const T magnitude_bits = T((value + up) >> dropped);
  result = F::with_sign(sign, T(T(T(exponent - 1) << F::fraction_bits) + magnitude_bits));
  fpscr |= (value & below) != 0 ? FPSCR_IXC : 0;
  return true;
}

/// The operand as a term of a plain sum. Three bits below the mantissa would do; there are more.
template <FPBits T> constexpr Term<std::uint64_t> term_of(T op) {
  return {left_aligned(op), exponent_of(op), left_aligned(mantissa_below(3, op))};
}

template <FPBits T>
[[gnu::always_inline]] inline T add_or_subtract(T op1, T op2, int negate, FPSCR& fpscr) {
  if constexpr (sizeof(T) != 2) {
    T result;
    if (is_normal(op1) && is_normal(op2)) [[likely]] {
      const T signed_op2 = T(op2 ^ FPFormat<T>::with_sign(negate, 0));
      if (sum_of_ordinary(term_of(op1), term_of(signed_op2), fpscr, result)) [[likely]]
        return result;
    }
  }
  return add_any(op1, op2, negate, fpscr);
}

/// FPMulAdd of all operands.
template <FPBits T> [[gnu::noinline]] T muladd_any(T addend, T op1, T op2, FPSCR& fpscr) {
  int flags = 0;
  const T result = fp_muladd(addend, op1, op2, 0, fp::mode_word(fpscr), &flags);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
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
  if constexpr (sizeof(T) != 2) {
    T result;
    if (is_normal(addend) && is_normal(op1) && is_normal(op2)) [[likely]] {
      using M = Wide<T>;
      const int exponent = exponent_of(op1) + exponent_of(op2) - FPFormat<T>::bias;
      const Term<M> product{left_aligned(T(op1 ^ op2)), exponent,
                            M{mantissa_below(1, op1)} * mantissa_below(1, op2)};
      const Term<M> other{left_aligned(addend), exponent_of(addend),
                          M(M{mantissa_below(3, addend)} << FPFormat<T>::width)};
      if (sum_of_ordinary(product, other, fpscr, result)) [[likely]]
        return result;
    }
  }
  return muladd_any(addend, op1, op2, fpscr);
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
