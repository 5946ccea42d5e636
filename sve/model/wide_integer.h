// Exact integer arithmetic of the architecture's pseudocode: an element becomes an unbounded
// integer, which 128 bits are, and only the final value is cut back. Nothing here fails.
#pragma once

#include <utility>

#include "sve/model/bits.h"

// The low n bits of x, zero-extended if is_unsigned is 1 and sign-extended otherwise.
constexpr WideInt Int(uint64_t x, int n, int is_unsigned) {
  const uint64_t low = x & ones(n);
  if (is_unsigned == 1 || (low >> (n - 1)) == 0)
    return static_cast<WideInt>(low);
  return static_cast<WideInt>(low) - (static_cast<WideInt>(1) << n);
}

constexpr WideInt UInt(uint64_t x, int n) { return Int(x, n, 1); }

// The low n bits, sign-extended, for n of 8, 16, 32, 64; 0 for any other n.
constexpr WideInt SInt(uint64_t x, int n) {
  return n == 8 || n == 16 || n == 32 || n == 64 ? Int(x, n, 0) : 0;
}

// The low 64 bits.
constexpr uint64_t bits(WideInt a) { return static_cast<uint64_t>(a); }

// Modulo 2 to the 128th.
constexpr WideInt AddInt(WideInt a, WideInt b) {
  return static_cast<WideInt>(static_cast<WideBits>(a) + static_cast<WideBits>(b));
}
constexpr WideInt SubInt(WideInt a, WideInt b) {
  return static_cast<WideInt>(static_cast<WideBits>(a) - static_cast<WideBits>(b));
}
constexpr WideInt MulInt(WideInt a, WideInt b) {
  return static_cast<WideInt>(static_cast<WideBits>(a) * static_cast<WideBits>(b));
}
constexpr WideInt NegInt(WideInt a) { return SubInt(0, a); }
constexpr WideInt AbsInt(WideInt a) { return a < 0 ? NegInt(a) : a; }

// Arithmetic shift right. Operands have 65 significant bits at most, so any count from 65 on gives
// the sign; the count 128 alone is decided by the top two bits. n: not negative.
constexpr WideInt ShiftRightInt(WideInt a, WideInt n) {
  constexpr int limit = 65, whole = 128;
  if (n == whole)
    return a >> (whole - 2) == -1 ? -1 : 0;
  return a >> (static_cast<WideBits>(n) > limit ? limit : static_cast<int>(n));
}

// Shift left, right for a negative count. From 64 on the low 64 bits are 0.
constexpr WideInt ShiftLeftInt(WideInt a, WideInt n) {
  constexpr int limit = 64;
  if (n < 0)
    return ShiftRightInt(a, NegInt(n));
  return static_cast<WideInt>(static_cast<WideBits>(a)
                              << (n > limit ? limit : static_cast<int>(n)));
}

// a or b, whichever is the greater or smaller by its low esize bits, a if they are equal. The
// parameter is returned whole. 0 for an esize other than 8, 16, 32, 64.
constexpr uint64_t Max(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  if (esize != 8 && esize != 16 && esize != 32 && esize != 64)
    return 0;
  return Int(a, esize, is_unsigned) >= Int(b, esize, is_unsigned) ? a : b;
}
constexpr uint64_t Min(uint64_t a, uint64_t b, int esize, int is_unsigned) {
  if (esize != 8 && esize != 16 && esize != 32 && esize != 64)
    return 0;
  return Int(a, esize, is_unsigned) <= Int(b, esize, is_unsigned) ? a : b;
}
