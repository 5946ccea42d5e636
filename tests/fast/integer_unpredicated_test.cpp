// Integer data processing on all elements and with immediates, through its rows.
#include "tests/fast/fixture.h"

using namespace fixture;

namespace {

constexpr unsigned rounds = 8;

using Binary = uint64_t (*)(uint64_t a, uint64_t b);

// clang-format off
const struct {
  const char* operation;
  unsigned lowest_width;
  Binary compute;
} vector_cases[] = {
    {"AddVVX", 1, [](uint64_t a, uint64_t b) { return a + b; }},
    {"SubVVX", 1, [](uint64_t a, uint64_t b) { return a - b; }},
    {"AndVVX", 8, [](uint64_t a, uint64_t b) { return a & b; }},
    {"OrVVX",  8, [](uint64_t a, uint64_t b) { return a | b; }},
    {"XorVVX", 8, [](uint64_t a, uint64_t b) { return a ^ b; }},
    {"BicVVX", 8, [](uint64_t a, uint64_t b) { return a & ~b; }},
    {"LEA1VV", 8, [](uint64_t a, uint64_t b) { return a + b; }},
    {"LEA2VV", 8, [](uint64_t a, uint64_t b) { return a + b * 2; }},
    {"LEA4VV", 8, [](uint64_t a, uint64_t b) { return a + b * 4; }},
    {"LEA8VV", 8, [](uint64_t a, uint64_t b) { return a + b * 8; }},
};
// clang-format on

// Sets every element of register d from the one of register n.
template <class Element>
void each(const cpu_state& before, cpu_state& expected, unsigned d, unsigned n, unsigned width,
          Element element) {
  for (unsigned i = 0; i < vector_bytes / width; i++)
    set_lane(expected.z[d], width, i, element(lane(before.z[n], width, i)));
}

TEST(IntegerUnpredicated, TwoVectors) {
  Random random(11);
  for (const auto& c : vector_cases)
    for (unsigned width = c.lowest_width; width <= 8; width *= 2)
      for (unsigned round = 0; round < rounds; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          check(before, row_named(row_name('U', width, c.operation)),
                {{0, r.d}, {5, r.n}, {16, r.m}}, [&](cpu_state& expected) {
                  for (unsigned i = 0; i < vector_bytes / width; i++)
                    set_lane(
                        expected.z[r.d], width, i,
                        c.compute(lane(before.z[r.n], width, i), lane(before.z[r.m], width, i)));
                });
        }
}

TEST(IntegerUnpredicated, MovePrefix) {
  Random random(12);
  for (const Registers& r : register_choices) {
    const cpu_state before = random_state(random);
    check(before, row_named("VecU32SpecialMoveV"), {{0, r.d}, {5, r.n}},
          [&](cpu_state& expected) { memcpy(expected.z[r.d], before.z[r.n], vector_bytes); });
  }
}

// ADD and SUB take eight bits unsigned, shifted by 0 or 8; MUL takes them signed.
TEST(IntegerUnpredicated, Immediates) {
  Random random(13);
  for (const unsigned width : element_widths)
    for (unsigned imm8 = 0; imm8 < 256; imm8++)
      for (const unsigned d : {5u, 31u}) {
        const cpu_state before = random_state(random, width);
        for (const bool shift : {false, true}) {
          if (shift && width == 1)
            continue;  // reserved
          const uint64_t addend = shift ? imm8 * 256 : imm8;
          check(before, row_named(row_name('U', width, "AddVIX")), {{0, d}, {5, imm8}, {13, shift}},
                [&](cpu_state& expected) {
                  each(before, expected, d, d, width, [&](uint64_t a) { return a + addend; });
                });
          check(before, row_named(row_name('U', width, "SubVIX")), {{0, d}, {5, imm8}, {13, shift}},
                [&](cpu_state& expected) {
                  each(before, expected, d, d, width, [&](uint64_t a) { return a - addend; });
                });
        }
        const auto factor = static_cast<uint64_t>(as_signed(imm8, 1));
        check(before, row_named(row_name('S', width, "MulVIX")), {{0, d}, {5, imm8}},
              [&](cpu_state& expected) {
                each(before, expected, d, d, width, [&](uint64_t a) { return a * factor; });
              });
      }
}

// The architecture's seven-bit shift field: the width plus a left amount, or twice the width minus
// a right one. Its low five bits stand at `low`, the two others at bit 22.
uint32_t shift_word(uint32_t opcode, unsigned low, unsigned field) {
  return opcode | (field & 31) << low | (field >> 5) << 22;
}

TEST(IntegerUnpredicated, ShiftsByImmediate) {
  Random random(14);
  for (const unsigned width : element_widths) {
    const unsigned bits = 8 * width;
    for (unsigned amount = 0; amount <= bits; amount++)
      for (const Registers& r : register_choices) {
        const cpu_state before = random_state(random, width);
        const unsigned pg = random() % 8;
        const auto asr = [&](uint64_t a) {
          return static_cast<uint64_t>(as_signed(a, width) >> (amount < bits ? amount : bits - 1));
        };
        const auto lsl = [&](uint64_t a) { return a << amount; };
        const auto predicated = [&](auto shift) {
          return [&, shift](cpu_state& expected) {
            for (unsigned i = 0; i < vector_bytes / width; i++)
              if (active(before.p[pg], width, i))
                set_lane(expected.z[r.d], width, i, shift(lane(before.z[r.d], width, i)));
          };
        };
        const auto unpredicated = [&](auto shift) {
          return
              [&, shift](cpu_state& expected) { each(before, expected, r.d, r.n, width, shift); };
        };
        if (amount > 0) {
          check(before, row_named(row_name('S', width, "ShrVIM")),
                shift_word(0x04008000 | r.d | pg << 10, 5, 2 * bits - amount), predicated(asr));
          check(before, row_named(row_name('S', width, "ShrVIX")),
                shift_word(0x04209000 | r.d | r.n << 5, 16, 2 * bits - amount), unpredicated(asr));
        }
        if (amount < bits) {
          check(before, row_named(row_name('U', width, "ShlVIM")),
                shift_word(0x04038000 | r.d | pg << 10, 5, bits + amount), predicated(lsl));
          check(before, row_named(row_name('U', width, "ShlVIX")),
                shift_word(0x04209c00 | r.d | r.n << 5, 16, bits + amount), unpredicated(lsl));
        }
      }
  }
}

// The mask bit by bit: bit k of an element of esize bits comes from bit (k + immr) mod esize of
// imms + 1 low ones.
uint64_t bitmask(unsigned n, unsigned immr, unsigned imms) {
  unsigned esize = 64;
  if (n == 0)
    for (esize = 32; (imms & esize) != 0; esize /= 2) {
    }
  uint64_t mask = 0;
  for (unsigned bit = 0; bit < 64; bit++)
    if ((bit % esize + immr) % esize <= imms % esize)
      mask |= 1ull << bit;
  return mask;
}

TEST(IntegerUnpredicated, BitmaskImmediates) {
  static const struct {
    const char* row;
    Binary compute;
  } cases[] = {
      {"VecU64AndVIX", [](uint64_t a, uint64_t b) { return a & b; }},
      {"VecU64OrVIX", [](uint64_t a, uint64_t b) { return a | b; }},
      {"VecU64XorVIX", [](uint64_t a, uint64_t b) { return a ^ b; }},
  };
  Random random(15);
  for (const auto& c : cases)
    for (unsigned immediate = 0; immediate < 1u << 13; immediate++) {
      const unsigned n = immediate >> 12, immr = immediate >> 6 & 63, imms = immediate & 63;
      const cpu_state before = random_state(random);
      const unsigned d = random() % 32;
      const bool reserved = n == 0 && imms == 63;
      check(before, row_named(c.row), {{0, d}, {5, immediate}}, [&](cpu_state& expected) {
        if (reserved)
          expected = before;
        else
          each(before, expected, d, d, 8,
               [&](uint64_t a) { return c.compute(a, bitmask(n, immr, imms)); });
      });
    }
}

}  // namespace
