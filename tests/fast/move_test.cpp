// Element moves against loops over elements.
#include "tests/fast/fixture.h"

namespace {

using namespace fixture;

constexpr unsigned rounds = 64;
constexpr unsigned reg_count = 32;

std::string sized(const char* type, unsigned width, const char* operation) {
  return "Vec" + std::string(type) + std::to_string(8 * width) + operation;
}

// The names of scalar register types, by width.
std::string scalar(unsigned width, const char* operation) {
  const char* const types[] = {"B8", "H16", "", "F32", "", "", "", "D64"};
  return "Vec" + std::string(types[width - 1]) + operation;
}

// Active elements take the value; the others become 0 or keep what they have.
void expect_copy(cpu_state& state, unsigned zd, unsigned pg, unsigned width, uint64_t value,
                 bool zeroing) {
  for (unsigned i = 0; i < vector_bytes / width; i++)
    if (active(state.p[pg], width, i))
      set_lane(state.z[zd], width, i, value);
    else if (zeroing)
      set_lane(state.z[zd], width, i, 0);
}

void expect_fill(cpu_state& state, unsigned zd, unsigned width, uint64_t value) {
  for (unsigned i = 0; i < vector_bytes / width; i++)
    set_lane(state.z[zd], width, i, value);
}

TEST(Move, Select) {
  Random random(1);
  for (unsigned width : element_widths)
    for (unsigned round = 0; round < rounds; round++) {
      const cpu_state before = random_state(random, width);
      const unsigned zd = random() % 3, zn = random() % 3, zm = random() % 3, pg = random() % 16;
      check(before, row_named(sized("U", width, "SelVV")), {{0, zd}, {5, zn}, {16, zm}, {10, pg}},
            [&](cpu_state& state) {
              for (unsigned i = 0; i < vector_bytes / width; i++)
                set_lane(state.z[zd], width, i,
                         lane(before.z[active(before.p[pg], width, i) ? zn : zm], width, i));
            });
    }
}

TEST(Move, Immediates) {
  Random random(2);
  for (unsigned width : element_widths)
    for (unsigned field = 0; field < 512; field++) {
      const cpu_state before = random_state(random, width);
      const unsigned zd = random() % reg_count, pg = random() % 16;
      const int64_t value = (field < 256 ? 1 : 256) * as_signed(field & 255, 1);
      const auto bits = static_cast<uint64_t>(value);
      check(before, row_named(sized("S", width, "DupI")), {{0, zd}, {5, field}},
            [&](cpu_state& state) { expect_fill(state, zd, width, bits); });
      check(before, row_named(sized("S", width, "DupIM")), {{0, zd}, {5, field}, {16, pg}},
            [&](cpu_state& state) { expect_copy(state, zd, pg, width, bits, false); });
      check(before, row_named(sized("S", width, "DupIZ")), {{0, zd}, {5, field}, {16, pg}},
            [&](cpu_state& state) { expect_copy(state, zd, pg, width, bits, true); });
    }
}

TEST(Move, GeneralAndScalarRegisters) {
  Random random(3);
  for (unsigned width : element_widths)
    for (unsigned round = 0; round < rounds; round++) {
      const cpu_state before = random_state(random, width);
      const unsigned zd = random() % 3, pg = random() % 8;
      const unsigned rn = round % 4 == 0 ? stack_pointer : random() % 31, vn = random() % 3;
      check(before, row_named(sized("U", width, "DupS")), {{0, zd}, {5, rn}},
            [&](cpu_state& state) { expect_fill(state, zd, width, before.x[rn]); });
      check(before, row_named(sized("U", width, "DupSM")), {{0, zd}, {5, rn}, {10, pg}},
            [&](cpu_state& state) { expect_copy(state, zd, pg, width, before.x[rn], false); });
      check(before, row_named(scalar(width, "DupSM")), {{0, zd}, {5, vn}, {10, pg}},
            [&](cpu_state& state) {
              expect_copy(state, zd, pg, width, lane(before.z[vn], width, 0), false);
            });
    }
}

TEST(Move, IndexedElements) {
  Random random(4);
  for (unsigned width : {1u, 2u, 4u, 8u, 16u})
    for (unsigned index = 0; index < 64 / width; index++)
      for (unsigned round = 0; round < 4; round++) {
        const cpu_state before = random_state(random, 1);
        const unsigned zd = random() % 3, zn = random() % 3;
        // The seven bits are the index, a one, and as many zeros as the element's log2 has.
        const unsigned bits = (2 * index + 1) * width;
        const Row& row = row_named(sized("U", width, "ExtDupVI"));
        const uint64_t in_value = row.value >> 16 & 0x1f;  // the size's marker
        check(before, row, {{0, zd}, {5, zn}, {22, bits >> 5}, {16, (bits & 0x1f) ^ in_value}},
              [&](cpu_state& state) {
                const unsigned first = index * width;
                for (unsigned byte = 0; byte < vector_bytes; byte++)
                  state.z[zd][byte] = first < vector_bytes ? before.z[zn][first + byte % width] : 0;
              });
      }
}

TEST(Move, BitmaskImmediates) {
  struct Case {
    uint64_t field;  // N, immr, imms
    uint64_t value;
  };
  const Case cases[] = {
      {0x0000, 0x0000000100000001}, {0x0007, 0x000000ff000000ff}, {0x1000, 1},
      {0x103e, ~0ull >> 1},         {0x003c, 0x5555555555555555}, {0x007c, 0xaaaaaaaaaaaaaaaa},
      {0x0201, 0x0300000003000000}, {0x1040, 0x8000000000000000}, {0x0027, 0x00ff00ff00ff00ff},
  };
  Random random(5);
  const Row& row = row_named("VecS64DupMaskI");
  for (const Case& c : cases) {
    const cpu_state before = random_state(random);
    check(before, row, {{0, 11}, {5, c.field}},
          [&](cpu_state& state) { expect_fill(state, 11, 8, c.value); });
  }
  cpu_state reserved = random_state(random);
  const cpu_state before = reserved;
  execute(reserved, row, {{0, 11}, {5, 0x3f}});
  expect_same(before, reserved);
}

// The value that eight bits stand for: sign, three bits of exponent, four of fraction.
double expanded(unsigned imm8) {
  const int exponent = static_cast<int>((imm8 >> 4 & 7) ^ 4) - 3;
  const double magnitude =
      (16 + (imm8 & 15)) / 16.0 * (exponent < 0 ? 1.0 / (1 << -exponent) : 1.0 * (1 << exponent));
  return imm8 >= 128 ? -magnitude : magnitude;
}

TEST(Move, FloatingPointImmediates) {
  Random random(6);
  for (unsigned imm8 = 0; imm8 < 256; imm8++) {
    const double value = expanded(imm8);
    const auto single = static_cast<float>(value);
    const auto wide_bits = __builtin_bit_cast(uint64_t, value);
    const auto single_bits = __builtin_bit_cast(uint32_t, single);
    // Every value is a normal half: its exponent moves from a bias of 127 to one of 15.
    const uint32_t half_bits =
        (single_bits >> 16 & 0x8000) | ((single_bits >> 13 & 0x3ffff) - ((127 - 15) << 10));
    const cpu_state before = random_state(random);
    const unsigned zd = random() % reg_count;
    check(before, row_named("VecF16DupI"), {{0, zd}, {5, imm8}},
          [&](cpu_state& state) { expect_fill(state, zd, 2, half_bits & 0xffff); });
    check(before, row_named("VecF32DupI"), {{0, zd}, {5, imm8}},
          [&](cpu_state& state) { expect_fill(state, zd, 4, single_bits); });
    check(before, row_named("VecD64DupI"), {{0, zd}, {5, imm8}},
          [&](cpu_state& state) { expect_fill(state, zd, 8, wide_bits); });
  }
}

// The highest active element, or n if there is none.
unsigned last_active(const cpu_state& state, unsigned pg, unsigned width) {
  const unsigned n = vector_bytes / width;
  unsigned last = n;
  for (unsigned i = 0; i < n; i++)
    if (active(state.p[pg], width, i))
      last = i;
  return last;
}

TEST(Move, LastActiveElement) {
  Random random(7);
  for (unsigned width : element_widths)
    for (unsigned round = 0; round < rounds; round++) {
      const cpu_state before = random_state(random, width);
      const unsigned zn = random() % 3, pg = random() % 8, vd = random() % 3;
      const unsigned rd = round % 4 == 0 ? 31 : random() % 31;
      const unsigned n = vector_bytes / width;
      const unsigned last = last_active(before, pg, width);
      const uint64_t element = lane(before.z[zn], width, last == n ? n - 1 : last);
      const auto write = [&](cpu_state& state, uint64_t value) {
        if (rd != 31)
          state.x[rd] = value;
      };
      check(before, row_named(sized("U", width, "LastBV")), {{0, rd}, {5, zn}, {10, pg}},
            [&](cpu_state& state) { write(state, element); });
      check(before, row_named(scalar(width, "LastBV")), {{0, vd}, {5, zn}, {10, pg}},
            [&](cpu_state& state) {
              memset(state.z[vd], 0, vector_bytes);
              set_lane(state.z[vd], width, 0, element);
            });
      check(before, row_named(sized("U", width, "CondXBSV")), {{0, rd}, {5, zn}, {10, pg}},
            [&](cpu_state& state) {
              write(state, last == n ? before.x[rd] & width_mask(width) : element);
            });
    }
}

TEST(Move, SignBits) {
  Random random(8);
  for (unsigned width : {4u, 8u})
    for (unsigned round = 0; round < rounds; round++) {
      const cpu_state before = random_state(random, width);
      const unsigned zd = random() % 3, zn = random() % 3, pg = random() % 8;
      const uint64_t sign = 1ull << (8 * width - 1);
      const auto expect = [&](auto operation) {
        return [&, operation](cpu_state& state) {
          for (unsigned i = 0; i < vector_bytes / width; i++)
            if (active(before.p[pg], width, i))
              set_lane(state.z[zd], width, i, operation(lane(before.z[zn], width, i)));
        };
      };
      check(before, row_named(scalar(width, "AbsVM")), {{0, zd}, {5, zn}, {10, pg}},
            expect([=](uint64_t value) { return value & ~sign; }));
      check(before, row_named(scalar(width, "NegVM")), {{0, zd}, {5, zn}, {10, pg}},
            expect([=](uint64_t value) { return value ^ sign; }));
    }
}

}  // namespace
