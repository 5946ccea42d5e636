// Predicated integer data processing, through its rows, against scalar arithmetic.
#include "tests/fast/fixture.h"

using namespace fixture;

namespace {

constexpr unsigned rounds = 12;

// Operands zero-extended; the result's low bits count.
using Unary = uint64_t (*)(uint64_t a, unsigned width);
using Binary = uint64_t (*)(uint64_t a, uint64_t b, unsigned width);
using Ternary = uint64_t (*)(uint64_t d, uint64_t at_5, uint64_t at_16);

uint64_t asr(uint64_t a, uint64_t b, unsigned width) {
  const uint64_t last = 8 * width - 1;
  return static_cast<uint64_t>(as_signed(a, width) >> (b < last ? b : last));
}

uint64_t lsl(uint64_t a, uint64_t b, unsigned width) { return b < 8 * width ? a << b : 0; }

uint64_t lsr(uint64_t a, uint64_t b, unsigned width) { return b < 8 * width ? a >> b : 0; }

uint64_t sdiv(uint64_t a, uint64_t b, unsigned width) {
  if (b == 0)
    return 0;
  if (as_signed(b, width) == -1)
    return -a;
  return static_cast<uint64_t>(as_signed(a, width) / as_signed(b, width));
}

uint64_t udiv(uint64_t a, uint64_t b, unsigned) { return b == 0 ? 0 : a / b; }

struct BinaryCase {
  char type;
  const char* operation;
  unsigned lowest_width;
  Binary compute;
};

// clang-format off
const BinaryCase binary_cases[] = {
    {'U', "AddVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a + b; }},
    {'U', "SubVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a - b; }},
    {'S', "MulVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a * b; }},
    {'U', "AndVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a & b; }},
    {'U', "OrVVM",  1, [](uint64_t a, uint64_t b, unsigned) { return a | b; }},
    {'U', "XorVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a ^ b; }},
    {'U', "BicVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a & ~b; }},
    {'S', "MaxVVM", 1, [](uint64_t a, uint64_t b, unsigned w) { return as_signed(a, w) > as_signed(b, w) ? a : b; }},
    {'S', "MinVVM", 1, [](uint64_t a, uint64_t b, unsigned w) { return as_signed(a, w) < as_signed(b, w) ? a : b; }},
    {'U', "MaxVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a > b ? a : b; }},
    {'U', "MinVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a < b ? a : b; }},
    {'S', "ShrVVM", 1, asr},
    {'U', "ShrVVM", 1, lsr},
    {'U', "ShlVVM", 1, lsl},
    {'S', "DivVVM", 4, sdiv},
    {'U', "DivVVM", 4, udiv},
    {'S', "DivRVVM", 4, [](uint64_t a, uint64_t b, unsigned w) { return sdiv(b, a, w); }},
    {'U', "DivRVVM", 4, [](uint64_t a, uint64_t b, unsigned w) { return udiv(b, a, w); }},
};
// clang-format on

// What a merging instruction leaves in register d.
template <class Element>
void merge(const cpu_state& before, cpu_state& expected, unsigned d, unsigned pg, unsigned width,
           Element element) {
  for (unsigned i = 0; i < vector_bytes / width; i++)
    if (active(before.p[pg], width, i))
      set_lane(expected.z[d], width, i, element(i));
}

TEST(Integer, TwoOperands) {
  Random random(1);
  for (const BinaryCase& c : binary_cases)
    for (unsigned width = c.lowest_width; width <= 8; width *= 2) {
      const Row& row = row_named(row_name(c.type, width, c.operation));
      for (unsigned round = 0; round < rounds; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          const unsigned pg = random() % 8;
          check(before, row, {{0, r.d}, {5, r.m}, {10, pg}}, [&](cpu_state& expected) {
            merge(before, expected, r.d, pg, width, [&](unsigned i) {
              return c.compute(lane(before.z[r.d], width, i), lane(before.z[r.m], width, i), width);
            });
          });
        }
    }
}

TEST(Integer, MultiplyAccumulate) {
  static const struct {
    const char* operation;
    Ternary compute;
  } cases[] = {
      {"MLAVVVM", [](uint64_t d, uint64_t n, uint64_t m) { return d + n * m; }},
      {"MLSVVVM", [](uint64_t d, uint64_t n, uint64_t m) { return d - n * m; }},
      {"MADDVVVM", [](uint64_t d, uint64_t a, uint64_t m) { return a + d * m; }},
      {"MSUBVVVM", [](uint64_t d, uint64_t a, uint64_t m) { return a - d * m; }},
  };
  Random random(2);
  for (const auto& c : cases)
    for (const unsigned width : element_widths) {
      const Row& row = row_named(row_name('S', width, c.operation));
      for (unsigned round = 0; round < rounds; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          const unsigned pg = random() % 8;
          check(before, row, {{0, r.d}, {5, r.n}, {16, r.m}, {10, pg}}, [&](cpu_state& expected) {
            merge(before, expected, r.d, pg, width, [&](unsigned i) {
              return c.compute(lane(before.z[r.d], width, i), lane(before.z[r.n], width, i),
                               lane(before.z[r.m], width, i));
            });
          });
        }
    }
}

uint64_t reverse(uint64_t a, unsigned width) {
  uint64_t reversed = 0;
  for (unsigned bit = 0; bit < 8 * width; bit++)
    reversed |= (a >> bit & 1) << (8 * width - 1 - bit);
  return reversed;
}

template <unsigned bytes> uint64_t sign_extended(uint64_t a, unsigned) {
  return static_cast<uint64_t>(as_signed(a, bytes));
}

template <unsigned bytes> uint64_t zero_extended(uint64_t a, unsigned) {
  return a & width_mask(bytes);
}

struct UnaryCase {
  char type;
  const char* operation;
  unsigned lowest_width, highest_width;
  Unary compute;
};

const UnaryCase unary_cases[] = {
    {'S', "NegVM", 1, 8, [](uint64_t a, unsigned) { return -a; }},
    {'U', "RBitVM", 1, 8, reverse},
    {'U', "Rev4V", 8, 8, [](uint64_t a, unsigned) { return a << 32 | a >> 32; }},
    {'S', "Extnd12VM", 2, 2, sign_extended<1>},
    {'S', "Extnd14VM", 4, 4, sign_extended<1>},
    {'S', "Extnd18VM", 8, 8, sign_extended<1>},
    {'S', "Extnd24VM", 4, 4, sign_extended<2>},
    {'S', "Extnd28VM", 8, 8, sign_extended<2>},
    {'S', "Extnd48VM", 8, 8, sign_extended<4>},
    {'U', "Extnd24VM", 4, 4, zero_extended<2>},
    {'U', "Extnd28VM", 8, 8, zero_extended<2>},
    {'U', "Extnd48VM", 8, 8, zero_extended<4>},
    {'U', "MovePrefix1VM", 1, 8, [](uint64_t a, unsigned) { return a; }},
};

TEST(Integer, OneOperand) {
  Random random(3);
  for (const UnaryCase& c : unary_cases)
    for (unsigned width = c.lowest_width; width <= c.highest_width; width *= 2) {
      const Row& row = row_named(row_name(c.type, width, c.operation));
      for (unsigned round = 0; round < rounds; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          const unsigned pg = random() % 8;
          check(before, row, {{0, r.d}, {5, r.n}, {10, pg}}, [&](cpu_state& expected) {
            merge(before, expected, r.d, pg, width,
                  [&](unsigned i) { return c.compute(lane(before.z[r.n], width, i), width); });
          });
        }
    }
}

TEST(Integer, MovePrefixZeroing) {
  Random random(4);
  for (const unsigned width : element_widths)
    for (unsigned round = 0; round < rounds; round++)
      for (const Registers& r : register_choices) {
        const cpu_state before = random_state(random, width);
        const unsigned pg = random() % 8;
        check(before, row_named(row_name('U', width, "MovePrefix1VZ")),
              {{0, r.d}, {5, r.n}, {10, pg}}, [&](cpu_state& expected) {
                memset(expected.z[r.d], 0, vector_bytes);
                merge(before, expected, r.d, pg, width,
                      [&](unsigned i) { return lane(before.z[r.n], width, i); });
              });
      }
}

// Results that are known beforehand, with every element active.
TEST(Integer, KnownAnswers) {
  static const struct {
    const char* row;
    unsigned width;
    uint64_t a, b, result;
  } cases[] = {
      {"VecS32DivVVM", 4, 0x80000000, 0xffffffff, 0x80000000},
      {"VecS64DivVVM", 8, 1ull << 63, ~0ull, 1ull << 63},
      {"VecS32DivVVM", 4, 0xfffffff9, 2, 0xfffffffd},
      {"VecS32DivVVM", 4, 123, 0, 0},
      {"VecU64DivVVM", 8, 123, 0, 0},
      {"VecU32DivVVM", 4, 0xfffffff9, 2, 0x7ffffffc},
      {"VecS32DivRVVM", 4, 2, 0xfffffff9, 0xfffffffd},
      {"VecU32DivRVVM", 4, 0, 7, 0},
      {"VecU16ShlVVM", 2, 1, 256, 0},
      {"VecU8ShlVVM", 1, 1, 7, 0x80},
      {"VecU8ShrVVM", 1, 0xff, 8, 0},
      {"VecU64ShrVVM", 8, ~0ull, 1ull << 32, 0},
      {"VecS8ShrVVM", 1, 0x80, 0xff, 0xff},
      {"VecS64ShrVVM", 8, 1ull << 62, 64, 0},
      {"VecS8MaxVVM", 1, 0x80, 0x7f, 0x7f},
      {"VecU8MaxVVM", 1, 0x80, 0x7f, 0x80},
      {"VecS8MulVVM", 1, 0x10, 0x11, 0x10},
  };
  for (const auto& c : cases) {
    cpu_state state{};
    for (unsigned i = 0; i < vector_bytes / c.width; i++) {
      set_lane(state.z[1], c.width, i, c.a);
      set_lane(state.z[2], c.width, i, c.b);
    }
    memset(state.p[3], 3, vector_bytes);
    execute(state, row_named(c.row), {{0, 1}, {5, 2}, {10, 3}});
    for (unsigned i = 0; i < vector_bytes / c.width; i++)
      EXPECT_EQ(hex(lane(state.z[1], c.width, i)), hex(c.result)) << c.row << " " << hex(c.a);
  }
}

// Only bit 0 of an element's first predicate byte governs it.
TEST(Integer, PredicateBits) {
  cpu_state state{};
  memset(state.z[1], 0, vector_bytes);
  memset(state.z[2], 0x11, vector_bytes);
  memset(state.p[0], 0xfe, vector_bytes);
  state.p[0][1] = 1;  // the second byte of halfword 0
  state.p[0][4] = 3;  // halfword 2
  execute(state, row_named("VecU16AddVVM"), {{0, 1}, {5, 2}, {10, 0}});
  for (unsigned i = 0; i < 8; i++)
    EXPECT_EQ(lane(state.z[1], 2, i), i == 2 ? 0x1111u : 0u) << i;
}

}  // namespace
