#include "sve/model/big_integer.h"

namespace {

constexpr int words = 4;

uint64_t sign_word(const BigInt& x) { return x.words[words - 1] >> 63 != 0 ? ~0ull : 0; }

}  // namespace

BigInt toBigInt(WideInt a) {
  const uint64_t sign = a < 0 ? ~0ull : 0;
  return {{bits(a), bits(a >> 64), sign, sign}};
}

BigInt AddBigInt(BigInt a, BigInt b) {
  BigInt sum;
  uint64_t carry = 0;
  for (int i = 0; i < words; i++) {
    const WideBits word = static_cast<WideBits>(a.words[i]) + b.words[i] + carry;
    sum.words[i] = static_cast<uint64_t>(word);
    carry = static_cast<uint64_t>(word >> 64);
  }
  return sum;
}

BigInt ShiftRightBigInt(BigInt x, int n) {
  const auto word = [&](int i) { return i < words ? x.words[i] : sign_word(x); };
  const int whole = n / 64, part = n % 64;
  BigInt result;
  for (int i = 0; i < words; i++) {
    const WideBits pair = static_cast<WideBits>(word(i + whole + 1)) << 64 | word(i + whole);
    result.words[i] = static_cast<uint64_t>(pair >> part);
  }
  return result;
}

SaturationPair SatQBigInt(BigInt x, int esize, int is_unsigned) {
  const uint64_t sign = sign_word(x);
  const int range = is_unsigned != 0 ? esize : esize - 1;  // the bits that a number in range uses
  const bool in_range = x.words[3] == sign && x.words[2] == sign && x.words[1] == sign &&
                        (range == 64 || x.words[0] >> range == sign >> range);
  if (is_unsigned != 0 && sign != 0)
    return {0, 1};
  if (in_range)
    return {x.words[0] & ones(esize), 0};
  if (is_unsigned != 0)
    return {ones(esize), 1};
  return {sign != 0 ? 1ull << (esize - 1) : ones(esize - 1), 1};
}
