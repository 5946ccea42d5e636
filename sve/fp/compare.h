// Comparison and selection. Nothing here rounds.
//
// A denormal that is flushed counts as the zero of its sign, and comes back as that from a
// selection; IDC is raised as for any operand.
#pragma once

#include "sve/fp/format.h"

/// op1 == op2. False if unordered; only a signalling NaN is invalid.
template <FPBits T> bool FPCompareEQ(T op1, T op2, FPSCR& fpscr);

/// op1 >= op2. False if unordered; any NaN is invalid.
template <FPBits T> bool FPCompareGE(T op1, T op2, FPSCR& fpscr);

/// op1 > op2. False if unordered; any NaN is invalid.
template <FPBits T> bool FPCompareGT(T op1, T op2, FPSCR& fpscr);

/// Whether an operand is a NaN; only a signalling one is invalid.
template <FPBits T> bool FPCompareUN(T op1, T op2, FPSCR& fpscr);

/// The NZCV nibble of a compare, single and double: 2 greater, 3 unordered, 6 equal, 8 less. A
/// signalling NaN is invalid, and with `signal_nans` any NaN.
template <FPBits T> int FPCompare(T op1, T op2, bool signal_nans, FPSCR& fpscr);

/// The greater and the lesser operand. +0 is greater than -0; a NaN operand is the result.
template <FPBits T> T FPMax(T op1, T op2, FPSCR& fpscr);
template <FPBits T> T FPMin(T op1, T op2, FPSCR& fpscr);

/// The same, but a number wins over a single quiet NaN.
template <FPBits T> T FPMaxNum(T op1, T op2, FPSCR& fpscr);
template <FPBits T> T FPMinNum(T op1, T op2, FPSCR& fpscr);

/// op with its sign bit cleared, single and double. A NaN is like any value; raises nothing.
template <FPBits T> constexpr T FPAbs(T op) {
  static_assert(sizeof(T) != 2, "half precision masks its sign bit");
  return T(op & ~FPFormat<T>::sign_bit);
}

/// op with its sign bit inverted. A NaN is like any value; raises nothing.
template <FPBits T> constexpr T FPNeg(T op) { return T(op ^ FPFormat<T>::sign_bit); }
