// Division and square root, correctly rounded by RMode.
#pragma once

#include "sve/fp/format.h"

/// op1 / op2. A finite non-zero value divided by zero raises DZC.
template <FPBits T> T FPDiv(T op1, T op2, FPSCR& fpscr);

/// The square root of op. Of a negative operand other than -0 it is invalid.
template <FPBits T> T FPSqrt(T op, FPSCR& fpscr);
