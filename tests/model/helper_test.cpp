// The helpers of the architecture's pseudocode: exact and saturating integers, and predicates.
#include <gtest/gtest.h>

#include <random>

#include "sve/model/big_integer.h"
#include "sve/model/memory.h"
#include "sve/model/predicate.h"
#include "sve/model/saturation.h"

namespace {

constexpr WideInt two_64 = static_cast<WideInt>(1) << 64;
constexpr uint64_t all_ones = ~0ull;
constexpr uint64_t sign_64 = 1ull << 63;

TEST(Bits, CountAndReverse) {
  EXPECT_EQ(ones(1), 1u);
  EXPECT_EQ(ones(64), all_ones);
  EXPECT_EQ(HighestBitSet(0, 32), -1);
  EXPECT_EQ(HighestBitSet(0x100, 8), -1) << "bits from n on play no part";
  EXPECT_EQ(CountLeadingZeroBits(0, 32), 32);
  EXPECT_EQ(CountLeadingZeroBits(sign_64, 64), 0);
  EXPECT_EQ(CountLeadingSignBits(0xff, 8), 7);
  EXPECT_EQ(CountLeadingSignBits(0x00, 8), 7);
  EXPECT_EQ(CountLeadingSignBits(0x40, 8), 0);
  EXPECT_EQ(CountLeadingSignBits(all_ones, 64), 63);
  EXPECT_EQ(BitCount(0xff0f, 8), 4);
  EXPECT_EQ(BitCount(all_ones, 0), 0);
  EXPECT_EQ(BitReverse(0x01, 8), 0x80u);
  EXPECT_EQ(BitReverse(all_ones, -1), 0u);
  EXPECT_EQ(Reverse(0x1122334455667788, 64, 2), 0x7788556633441122u);
  EXPECT_EQ(Reverse(0x1122334455667788, 32, 1), 0x88776655u);
  EXPECT_EQ(Reverse(0x1122334455667788, 64, 4), 0x5566778811223344u);
  EXPECT_EQ(ShiftLeft(1, 65, 8), 2u);
  EXPECT_TRUE(PolynomialMult(3, 3) == 5);
  EXPECT_TRUE(PolynomialMult(sign_64, sign_64) == static_cast<WideBits>(1) << 126);
}

TEST(WideIntegers, ExtendAndCompare) {
  EXPECT_TRUE(Int(0x80, 8, 0) == -128);
  EXPECT_TRUE(Int(0x180, 8, 1) == 128);
  EXPECT_TRUE(SInt(0xffff, 16) == -1);
  EXPECT_TRUE(SInt(0xffff, 12) == 0) << "no width of an element";
  EXPECT_TRUE(UInt(all_ones, 64) == two_64 - 1);
  EXPECT_EQ(Max(0x80, 0x7f, 8, 0), 0x7fu);
  EXPECT_EQ(Max(0x80, 0x7f, 8, 1), 0x80u);
  EXPECT_EQ(Min(0x180, 0x7f, 8, 0), 0x180u) << "the parameter is returned whole";
  EXPECT_EQ(Max(0x180, 0x280, 8, 0), 0x180u) << "a wins if they are equal";
  EXPECT_EQ(Min(1, 2, 12, 0), 0u);
}

TEST(WideIntegers, Shift) {
  for (const WideInt count : {WideInt{65}, WideInt{66}, WideInt{127}, WideInt{128}, two_64})
    EXPECT_TRUE(ShiftRightInt(-1, count) == -1);
  EXPECT_TRUE(ShiftRightInt(1, 65) == 0);
  EXPECT_TRUE(ShiftRightInt(two_64 << 62, 127) == (two_64 << 62) >> 65) << "limited to 65";
  EXPECT_TRUE(ShiftRightInt(-(two_64 << 62) * 2, 128) == 0) << "the top bits differ";
  EXPECT_TRUE(ShiftLeftInt(1, 200) == two_64);
  EXPECT_TRUE(ShiftLeftInt(-8, -1) == -4);
  EXPECT_TRUE(AbsInt(-5) == 5 && NegInt(5) == -5 && AddInt(2, -3) == -1 && SubInt(2, 3) == -1);
}

struct Saturation {
  WideInt number;
  int esize;
  int is_unsigned;
  uint64_t value;
  int saturated;
};
const Saturation saturations[] = {
    {-1, 8, 0, 0xff, 0},          {-129, 8, 0, 0x80, 1},
    {128, 8, 0, 0x7f, 1},         {127, 8, 0, 0x7f, 0},
    {-128, 8, 0, 0x80, 0},        {-1, 8, 1, 0, 1},
    {256, 8, 1, 0xff, 1},         {255, 8, 1, 0xff, 0},
    {two_64, 64, 1, all_ones, 1}, {two_64 - 1, 64, 1, all_ones, 0},
    {-two_64, 64, 0, sign_64, 1}, {two_64, 64, 0, sign_64 - 1, 1},
    {-1, 64, 0, all_ones, 0},     {two_64 << 60, 32, 1, 0xffffffff, 1},
};

TEST(Saturation, ClampsAndCuts) {
  for (const Saturation& s : saturations) {
    const SaturationPair pair = SatQ(s.number, s.esize, s.is_unsigned);
    EXPECT_EQ(pair.value, s.value);
    EXPECT_EQ(pair.saturated, s.saturated);
  }
}

TEST(Saturation, OfBigIntegersIsTheSame) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 3000; i++) {
    const int width = static_cast<int>(random() % 127) + 1;
    const WideInt number =
        static_cast<WideInt>(static_cast<WideBits>(random()) << 64 | random()) >> (127 - width);
    for (const int esize : {8, 16, 32, 64})
      for (const int is_unsigned : {0, 1}) {
        const SaturationPair expected = SatQ(number, esize, is_unsigned);
        const SaturationPair actual = SatQBigInt(toBigInt(number), esize, is_unsigned);
        EXPECT_EQ(actual.value, expected.value);
        EXPECT_EQ(actual.saturated, expected.saturated);
      }
  }
}

TEST(Saturation, OfOperations) {
  EXPECT_EQ(SatAdd(0x7f, 1, 8, 0) & 0xff, 0x7fu);
  EXPECT_EQ(SatAdd(0xff, 1, 8, 1) & 0xff, 0xffu);
  EXPECT_EQ(SatSub(0x80, 1, 8, 0), 0x80u);
  EXPECT_EQ(SatSub(3, 5, 8, 1), 0u);
  EXPECT_EQ(SatMult(0x80, 0xff, 8, 0) & 0xff, 0x7fu);
  EXPECT_EQ(SatMult(16, 17, 8, 1) & 0xff, 0xffu);
  EXPECT_EQ(SatMult(5, 7, 8, 1), 35u);
}

TEST(Saturation, OfShifts) {
  EXPECT_EQ(SatQShift(-1, 8, 0).value, all_ones) << "not cut to the element";
  EXPECT_EQ(SatQShift(-129, 8, 0).value, static_cast<uint64_t>(-128));
  EXPECT_EQ(SatQUShift(-1, 8).value, 0u);
  EXPECT_EQ(SatQUShift(256, 8).value, 255u);
  EXPECT_EQ(SatQUShift(two_64 + 3, 8).saturated, 0) << "the high half is not looked at";
  EXPECT_EQ(ShiftQLeftInt(5, -1, 8, 0).value, 2u);
  EXPECT_EQ(ShiftQLeftInt(0, 8, 8, 1).saturated, 0);
  EXPECT_EQ(ShiftQLeftInt(1, 8, 8, 1).value, 255u);
  EXPECT_EQ(ShiftQLeftInt(-1, 9, 8, 0).value, static_cast<uint64_t>(-128));
  EXPECT_EQ(ShiftQLeftInt(3, 2, 8, 0).value, 12u);
  EXPECT_EQ(SatShiftLeft(0x40, 1, 8, 0), 0x7fu);
  EXPECT_EQ(SatShiftLeft(0xc0, 2, 8, 0), 0x80u);
  EXPECT_EQ(SatShiftLeft(0x80, 1, 8, 1), 0xffu);
  EXPECT_EQ(SatShiftLeft(0x01, 3, 8, 1), 8u);
  EXPECT_EQ(SatShiftLeftU(0x40, 1, 8).value, 0x80u);
  EXPECT_EQ(SatShiftLeftU(0x40, 2, 8).value, 0xffu);
  EXPECT_EQ(SatShiftLeftU(0xff, 1, 8).value, 0u);
}

TEST(BigIntegers, AddAndShift) {
  const BigInt minus_one = toBigInt(-1), one = toBigInt(1);
  for (const uint64_t word : AddBigInt(minus_one, one).words)
    EXPECT_EQ(word, 0u);
  const BigInt high = {{0, 0, 0, sign_64}};
  EXPECT_EQ(ShiftRightBigInt(high, 127).words[3], all_ones);
  EXPECT_EQ(ShiftRightBigInt(high, 127).words[2], all_ones << 0);
  EXPECT_EQ(ShiftRightBigInt(high, 127).words[1], 0u);
  EXPECT_EQ(ShiftRightBigInt(high, 64).words[2], sign_64);
  EXPECT_EQ(ShiftRightBigInt({{0, 5, 0, 0}}, 65).words[0], 2u);
  EXPECT_EQ(ShiftRightBigInt({{7, 0, 0, 0}}, 0).words[0], 7u);
}

// ---- Predicates ----

constexpr uint32_t n = 1u << 31, z = 1u << 30, c = 1u << 29, v = 1u << 28, rest = 0x0fffffff;

CpuContext context_of(uint32_t nzcv, uint32_t vl = 2) { return {nzcv, 0, 0, vl, {}}; }

struct FlagCase {
  uint64_t mask, result;
  int esize;
  uint32_t flags;
};
const FlagCase flag_cases[] = {
    {0, 0xffff, 8, z | c},        // nothing active
    {0xffff, 0, 8, z | c},        // nothing true
    {0x0008, 0x0008, 8, n},       // the only active element is true
    {0x0018, 0x0010, 8, 0},       // first false, last true
    {0x0018, 0x0008, 8, n | c},   // first true, last false
    {0x0002, 0xffff, 32, z | c},  // a bit inside of an element governs nothing
    {0x0001, 0x0002, 16, 0},      // a set bit of the group counts for Z and C, but not for N
    {0x1111, 0x1110, 32, 0},
};

TEST(PredicateHelpers, SetFlags) {
  for (const FlagCase& test : flag_cases) {
    const PredV mask = {{test.mask, 0, 0, 0}}, result = {{test.result, 0, 0, 0}};
    for (const uint32_t old : {0u, n | z | c | v, rest, n | z | c | v | rest}) {
      CpuContext context = context_of(old);
      PredSetNZCV(mask, result, test.esize, &context);
      EXPECT_EQ(context.nzcv, test.flags | (old & rest));
      context = context_of(old);
      PredSetNZC(mask, result, test.esize, &context);
      EXPECT_EQ(context.nzcv, test.flags | (old & (v | rest)));
      context = context_of(old);
      PredSetNCV(mask, result, test.esize, &context);
      EXPECT_EQ(context.nzcv, (test.flags & (n | c)) | (old & (z | rest)));
    }
  }
}

TEST(PredicateHelpers, SetNAndCAlone) {
  CpuContext context = context_of(n | z | v);
  PredSetNC({}, {}, 8, &context);
  EXPECT_EQ(context.nzcv, n | z | v) << "without an active element neither changes";
  PredSetNC({{1, 0, 0, 0}}, {}, 8, &context);
  EXPECT_EQ(context.nzcv, z | c | v);
}

TEST(PredicateHelpers, FindActiveElements) {
  CpuContext context = context_of(0, 32);
  const PredV mask = {{0, 0x20, 0, 0x100}};
  EXPECT_EQ(FindFirstActive(mask, 8, &context), 69);
  EXPECT_EQ(FindFirstActive(mask, 64, &context), 25);
  EXPECT_EQ(FindLastActive(mask, 8, &context), 200);
  EXPECT_EQ(FindLastActive({}, 16, &context), -1);
  context.vl = 8;
  EXPECT_EQ(FindFirstActive(mask, 8, &context), -1) << "above the vector length";
}

TEST(PredicateHelpers, CountPatterns) {
  struct {
    uint64_t pattern;
    uint32_t of_16, of_8, of_4, of_2;
  } const patterns[] = {{0, 16, 8, 4, 2},  {1, 1, 1, 1, 1},   {3, 3, 3, 3, 0},   {8, 8, 8, 0, 0},
                        {9, 16, 0, 0, 0},  {10, 0, 0, 0, 0},  {14, 0, 0, 0, 0},  {28, 0, 0, 0, 0},
                        {29, 16, 8, 4, 0}, {30, 15, 6, 3, 0}, {31, 16, 8, 4, 2}, {32, 0, 0, 0, 0}};
  for (const auto& p : patterns) {
    EXPECT_EQ(VecTrueILength(p.pattern, 16), p.of_16) << p.pattern;
    EXPECT_EQ(VecTrueILength(p.pattern, 8), p.of_8) << p.pattern;
    EXPECT_EQ(VecTrueILength(p.pattern, 4), p.of_4) << p.pattern;
    EXPECT_EQ(VecTrueILength(p.pattern, 2), p.of_2) << p.pattern;
  }
  EXPECT_EQ(VecTrueILength(9, 15), 0u);
  EXPECT_EQ(VecTrueILength(13, 256), 256u);
  EXPECT_EQ(VecTrueILength(14, 256), 0u);
  EXPECT_EQ(VecTrueILength(0, 3), 2u);
  EXPECT_EQ(VecTrueILength(0, 0), 1u);
}

TEST(MemoryHooks, OfTheSimulatedMemoryAreInert) {
  CpuContext context = context_of(0);
  bool fault = true;
  EXPECT_EQ(ReadMem(1, 8, 0, &fault, &context), 0u);
  EXPECT_FALSE(fault);
  fault = true;
  EXPECT_EQ(ReadMemSim(1, 8, 0, &fault, false, &context), 0u);
  EXPECT_FALSE(fault);
  WriteMem(1, 1, 8, &context);
  WriteMemSim(1, 1, 8, true, &context);
}

TEST(MemoryHooks, ReportAnUnreadableAddressAndNeverClearTheReport) {
  CpuContext context = context_of(0);
  const uint64_t value = 0x8877665544332211, address = reinterpret_cast<uint64_t>(&value);
  bool fault = false;
  EXPECT_EQ(ReadMemLib1(address, 0, &fault, &context), 0x11u);
  EXPECT_EQ(ReadMemLib2(address, 1, &fault, &context), 0x2211u);
  EXPECT_EQ(ReadMemLib4(address, 0, nullptr, &context), 0x44332211u);
  EXPECT_EQ(ReadMemLib8(address, 0, &fault, &context), value);
  EXPECT_FALSE(fault);
  EXPECT_EQ(ReadMemLib4(8, 0, &fault, &context), 0u);
  EXPECT_TRUE(fault);
  EXPECT_EQ(ReadMemLib1(address, 0, &fault, &context), 0x11u);
  EXPECT_TRUE(fault);
}

}  // namespace
