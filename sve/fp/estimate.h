// Reciprocal and reciprocal-square-root estimates, and the Newton steps that refine them.
#pragma once

#include "sve/fp/format.h"

/// An estimate of 1 / op to 8 bits. Overflow by RMode; a result below the normal range is flushed
/// under FZ or FZ16. An estimate is never inexact.
template <FPBits T> T FPRecipEstimate(T op, FPSCR& fpscr);

/// An estimate of 1 / sqrt(op) to 8 bits. Of a negative operand other than -0 it is invalid.
template <FPBits T> T FPRSqrtEstimate(T op, FPSCR& fpscr);

/// The power of two with the inverted exponent field of op, with the sign of op.
template <FPBits T> T FPRecpX(T op, FPSCR& fpscr);

/// 2 - op1 * op2, rounded once. Infinity times zero counts as 0. A NaN op1 changes its sign.
template <FPBits T> T FPRecipStepFused(T op1, T op2, FPSCR& fpscr);

/// (3 - op1 * op2) / 2, rounded once, with the special cases of FPRecipStepFused.
template <FPBits T> T FPRSqrtStepFused(T op1, T op2, FPSCR& fpscr);

/// An estimate of the reciprocal of the fraction in the low 32 bits of op, at least a half. The
/// second argument is ignored. This one and the next compute on the host's floating-point unit.
std::uint64_t UnsignedRecipEstimate(std::uint64_t op, int);

/// An estimate of the reciprocal square root of that fraction, at least a quarter.
std::uint64_t UnsignedRSqrtEstimate(std::uint64_t op, int);

/// The architecture's estimate of 1 / a to 8 bits, for a in [0.5, 1).
double recip_estimate(double a);

/// The architecture's estimate of 1 / sqrt(a) to 8 bits, for a in [0.25, 1).
double recip_sqrt_estimate(double a);
