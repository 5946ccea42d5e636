// The floating-point library: half, single and double precision, bit for bit as the architecture
// defines them, flags included, in integer arithmetic.
//
// Every operation takes its operands by value and FPSCR by reference as last parameter, and
// returns the bit pattern of the result. None fails and none keeps state. The element type picks
// the format, and is deduced from the operands wherever they tell it.
#pragma once

#include "sve/fp/accelerator.h"
#include "sve/fp/add_mul.h"
#include "sve/fp/compare.h"
#include "sve/fp/convert.h"
#include "sve/fp/divide_root.h"
#include "sve/fp/estimate.h"
#include "sve/fp/format.h"
