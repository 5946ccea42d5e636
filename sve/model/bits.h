// Bit utilities of the architecture's pseudocode, on the low bits of an unsigned 64-bit value.
#pragma once

#include <bit>
#include <cstdint>

__extension__ typedef __int128 WideInt;            // the model's unbounded integer
__extension__ typedef unsigned __int128 WideBits;  // the same bits, to wrap and to shift in

// The low n bits set. n: 1 to 64.
constexpr uint64_t ones(int n) { return ~0ull >> (64 - n); }

// The number of the highest set bit below bit n, or -1.
constexpr int HighestBitSet(uint64_t x, int n) {
  return n < 1 ? -1 : 63 - std::countl_zero(x & ones(n));
}

// How many of the low n bits stand above the highest set one: n for 0.
constexpr int CountLeadingZeroBits(uint64_t x, int n) { return n - 1 - HighestBitSet(x, n); }

// How many bits below the top one of the low n equal it.
constexpr int CountLeadingSignBits(uint64_t x, int n) {
  return CountLeadingZeroBits((x & ones(63)) ^ (x >> 1), n - 1);
}

// Set bits among the low n; 0 for n below 1.
constexpr int BitCount(uint64_t x, int n) { return n < 1 ? 0 : std::popcount(x & ones(n)); }

// The low n bits in reverse order; 0 for n below 1.
constexpr uint64_t BitReverse(uint64_t x, int n) {
  uint64_t result = 0;
  for (int i = 0; i < n; i++)
    result |= (x >> i & 1) << (n - 1 - i);
  return result;
}

// The low esize bits with their groups of g bytes in reverse order. g: 1, 2 or 4.
constexpr uint64_t Reverse(uint64_t x, int esize, int g) {
  const int width = 8 * g;
  uint64_t result = 0;
  for (int low = 0; low < esize; low += width)
    result |= (x >> low & ones(width)) << (esize - width - low);
  return result;
}

// x shifted left by n modulo 64, whatever esize is.
constexpr uint64_t ShiftLeft(uint64_t x, uint64_t n, [[maybe_unused]] int esize) {
  return x << (n % 64);
}

// The carry-less product.
constexpr WideBits PolynomialMult(uint64_t a, uint64_t b) {
  WideBits product = 0;
  for (int i = 0; i < 64; i++)
    if ((a >> i & 1) != 0)
      product ^= WideBits{b} << i;
  return product;
}
