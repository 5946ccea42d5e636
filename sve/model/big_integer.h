// A signed 256-bit integer beside the model's 128-bit one.
#pragma once

#include "sve/model/saturation.h"

// Two's complement, least significant word first.
struct BigInt {
  uint64_t words[4];
};

// a, sign-extended.
BigInt toBigInt(WideInt a);

// The sum modulo 2 to the 256th.
BigInt AddBigInt(BigInt a, BigInt b);

// x shifted right arithmetically. n: 0 to 127.
BigInt ShiftRightBigInt(BigInt x, int n);

// x clamped to esize bits and cut to them, as SatQ clamps.
SaturationPair SatQBigInt(BigInt x, int esize, int is_unsigned);
