#include "sve/fp/compare.h"

#include <compare>

#include "sve/fp/steps.h"

namespace {

using fp::Unpacked;

// NZCV of a compare.
constexpr int nzcv_greater = 2;
constexpr int nzcv_unordered = 3;
constexpr int nzcv_equal = 6;
constexpr int nzcv_less = 8;

template <FPBits T> std::strong_ordering order_of(const Unpacked<T>& a, const Unpacked<T>& b) {
  if (a.is_zero() && b.is_zero())
    return std::strong_ordering::equal;
  if (a.sign != b.sign)
    return b.sign <=> a.sign;
  const auto magnitudes =
      a.exponent != b.exponent ? a.exponent <=> b.exponent : a.mantissa <=> b.mantissa;
  return a.sign ? 0 <=> magnitudes : magnitudes;
}

/// Compares two operands; with a NaN among them, raises IOC if one is signalling or on
/// `signal_nans`.
template <FPBits T> std::partial_ordering compare(T op1, T op2, bool signal_nans, FPSCR& fpscr) {
  using F = FPFormat<T>;
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  std::partial_ordering order = std::partial_ordering::unordered;
  if (!a.is_nan() && !b.is_nan())
    order = order_of(a, b);
  else if (signal_nans || F::is_signalling_nan(op1) || F::is_signalling_nan(op2))
    flags |= FPSCR_IOC;
  fpscr |= static_cast<FPSCR>(flags);
  return order;
}

/// The order of the patterns as signed magnitudes, where -0 is below +0.
template <FPBits T> bool pattern_greater(T op1, T op2) {
  const bool negative1 = op1 & FPFormat<T>::sign_bit;
  const bool negative2 = op2 & FPFormat<T>::sign_bit;
  if (negative1 != negative2)
    return negative2;
  return negative1 ? op1 < op2 : op1 > op2;
}

/// The operand, but the zero of its sign if it was flushed.
template <FPBits T> T as_unpacked(T op, const Unpacked<T>& a) {
  return a.is_zero() ? FPFormat<T>::with_sign(a.sign, 0) : op;
}

template <FPBits T> T select(T op1, T op2, bool maximum, FPSCR& fpscr) {
  const int mode = fp::mode_word(fpscr);
  int flags = 0;
  const Unpacked<T> a = fp_unpack(op1, mode, flags);
  const Unpacked<T> b = fp_unpack(op2, mode, flags);
  T result = fp_process_nans(op1, op2, mode, flags);
  if (!result)
    // The patterns decide before flushing, so that of two flushed operands the sign decides.
    result = pattern_greater(op1, op2) == maximum ? as_unpacked(op1, a) : as_unpacked(op2, b);
  fpscr |= static_cast<FPSCR>(flags);
  return result;
}

/// Replaces a quiet NaN that stands against something else by `loser`.
template <FPBits T> void replace_single_quiet_nan(T& op1, T& op2, T loser) {
  using F = FPFormat<T>;
  const bool quiet1 = F::is_quiet_nan(op1), quiet2 = F::is_quiet_nan(op2);
  if (quiet1 && !quiet2)
    op1 = loser;
  if (quiet2 && !quiet1)
    op2 = loser;
}

}  // namespace

template <FPBits T> bool FPCompareEQ(T op1, T op2, FPSCR& fpscr) {
  return compare(op1, op2, false, fpscr) == 0;
}

template <FPBits T> bool FPCompareGE(T op1, T op2, FPSCR& fpscr) {
  return compare(op1, op2, true, fpscr) >= 0;
}

template <FPBits T> bool FPCompareGT(T op1, T op2, FPSCR& fpscr) {
  return compare(op1, op2, true, fpscr) > 0;
}

template <FPBits T> bool FPCompareUN(T op1, T op2, FPSCR& fpscr) {
  return compare(op1, op2, false, fpscr) == std::partial_ordering::unordered;
}

template <FPBits T> int FPCompare(T op1, T op2, bool signal_nans, FPSCR& fpscr) {
  const std::partial_ordering order = compare(op1, op2, signal_nans, fpscr);
  if (order == std::partial_ordering::unordered)
    return nzcv_unordered;
  return order == 0 ? nzcv_equal : order < 0 ? nzcv_less : nzcv_greater;
}

template <FPBits T> T FPMax(T op1, T op2, FPSCR& fpscr) { return select(op1, op2, true, fpscr); }

template <FPBits T> T FPMin(T op1, T op2, FPSCR& fpscr) { return select(op1, op2, false, fpscr); }

template <FPBits T> T FPMaxNum(T op1, T op2, FPSCR& fpscr) {
  replace_single_quiet_nan(op1, op2, FPNeg(FPFormat<T>::infinity));
  return FPMax(op1, op2, fpscr);
}

template <FPBits T> T FPMinNum(T op1, T op2, FPSCR& fpscr) {
  replace_single_quiet_nan(op1, op2, FPFormat<T>::infinity);
  return FPMin(op1, op2, fpscr);
}

template bool FPCompareEQ(std::uint16_t, std::uint16_t, FPSCR&);
template bool FPCompareEQ(std::uint32_t, std::uint32_t, FPSCR&);
template bool FPCompareEQ(std::uint64_t, std::uint64_t, FPSCR&);
template bool FPCompareGE(std::uint16_t, std::uint16_t, FPSCR&);
template bool FPCompareGE(std::uint32_t, std::uint32_t, FPSCR&);
template bool FPCompareGE(std::uint64_t, std::uint64_t, FPSCR&);
template bool FPCompareGT(std::uint16_t, std::uint16_t, FPSCR&);
template bool FPCompareGT(std::uint32_t, std::uint32_t, FPSCR&);
template bool FPCompareGT(std::uint64_t, std::uint64_t, FPSCR&);
template bool FPCompareUN(std::uint16_t, std::uint16_t, FPSCR&);
template bool FPCompareUN(std::uint32_t, std::uint32_t, FPSCR&);
template bool FPCompareUN(std::uint64_t, std::uint64_t, FPSCR&);
template int FPCompare(std::uint32_t, std::uint32_t, bool, FPSCR&);
template int FPCompare(std::uint64_t, std::uint64_t, bool, FPSCR&);
template std::uint16_t FPMax(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMax(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMax(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMin(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMin(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMin(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMaxNum(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMaxNum(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMaxNum(std::uint64_t, std::uint64_t, FPSCR&);
template std::uint16_t FPMinNum(std::uint16_t, std::uint16_t, FPSCR&);
template std::uint32_t FPMinNum(std::uint32_t, std::uint32_t, FPSCR&);
template std::uint64_t FPMinNum(std::uint64_t, std::uint64_t, FPSCR&);
