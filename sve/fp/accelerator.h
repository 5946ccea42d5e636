// The operations behind the trigonometric and exponential accelerators FTMAD, FTSMUL and FEXPA.
#pragma once

#include "sve/fp/format.h"

/// One term of the sine or cosine series: coefficient + op1 * |op2|, rounded once by RMode. The
/// coefficient is number `index` (0 to 7) of the sine series, or of the cosine series if op2 is
/// negative.
template <FPBits T> T FPTRIMADD(std::uint64_t index, T op1, T op2, FPSCR& fpscr);

/// op1 squared, with bit 0 of op2 as sign. The magnitude is rounded as a positive value; a NaN
/// keeps its own sign.
template <FPBits T> T FPTRISMUL(T op1, T op2, FPSCR& fpscr);

/// 2 to the power i / n as the low bits i of op tell, with the bits above i as exponent field. n
/// is 32 for half and 64 for single and double. Raises nothing.
template <FPBits T> T FPEXPA(T op);
