// Addition, multiplication and the fused forms, each rounded once by RMode.
#pragma once

#include "sve/fp/format.h"

/// op1 + op2.
template <FPBits T> T FPAdd(T op1, T op2, FPSCR& fpscr);

/// op1 - op2. A NaN operand keeps its sign.
template <FPBits T> T FPSub(T op1, T op2, FPSCR& fpscr);

/// op1 * op2.
template <FPBits T> T FPMul(T op1, T op2, FPSCR& fpscr);

/// op1 * op2, but infinity times zero is 2.0 with the sign of the product, and raises nothing.
template <FPBits T> T FPMulX(T op1, T op2, FPSCR& fpscr);

/// addend + op1 * op2, rounded once.
template <FPBits T> T FPMulAdd(T addend, T op1, T op2, FPSCR& fpscr);

// The fused step under FPMulAdd and the Newton steps: (a + b * c) * 2^scale, rounded once. `mode`
// is the mode word of the controls; exceptions are ORed into *flags with the values of FPSCR.
std::uint16_t fp16_muladd(std::uint16_t a, std::uint16_t b, std::uint16_t c, int scale, int mode,
                          int* flags);
std::uint32_t fp32_muladd(std::uint32_t a, std::uint32_t b, std::uint32_t c, int scale, int mode,
                          int* flags);
std::uint64_t fp64_muladd(std::uint64_t a, std::uint64_t b, std::uint64_t c, int scale, int mode,
                          int* flags);

/// The fused step of the width of T.
template <FPBits T> T fp_muladd(T a, T b, T c, int scale, int mode, int* flags);
