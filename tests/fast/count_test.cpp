// Counts by pattern, counts of predicate bits, and arithmetic on the vector length.
#include "tests/fast/predicates.h"

using namespace fixture;

namespace {

constexpr unsigned vl_bytes = 16;

// Every pattern and multiplier, with the count that they make.
template <class Case> void each_count(unsigned width, Case run) {
  for (unsigned pattern = 0; pattern < 32; pattern++)
    for (unsigned multiplier = 1; multiplier <= 16; multiplier++)
      run(pattern, multiplier, uint64_t{constraint(pattern, width)} * multiplier);
}

void set_register(cpu_state& state, unsigned number, uint64_t value) {
  if (number != 31)
    state.x[number] = value;
}

TEST(Count, IntoRegister) {
  Random random(51);
  for (const unsigned width : element_widths)
    for (const unsigned d : {0u, 30u, 31u})
      each_count(width, [&](unsigned pattern, unsigned multiplier, uint64_t count) {
        cpu_state before = random_state(random);
        before.x[d] = interesting_value(random, 8);
        const std::initializer_list<Field> fields = {{0, d}, {5, pattern}, {16, multiplier - 1}};
        check(before, row_named(row_name('U', width, "IncrVLSI")), fields,
              [&](cpu_state& expected) { set_register(expected, d, before.x[d] + count); });
        check(before, row_named(row_name('U', width, "DecrVLSI")), fields,
              [&](cpu_state& expected) { set_register(expected, d, before.x[d] - count); });
      });
}

TEST(Count, IntoVector) {
  Random random(52);
  for (const unsigned width : {2u, 4u, 8u})
    for (const unsigned d : {0u, 31u})
      each_count(width, [&](unsigned pattern, unsigned multiplier, uint64_t count) {
        const cpu_state before = random_state(random, width);
        const std::initializer_list<Field> fields = {{0, d}, {5, pattern}, {16, multiplier - 1}};
        const auto plus = [&](uint64_t addend) {
          return [&, addend](cpu_state& expected) {
            for (unsigned i = 0; i < vector_bytes / width; i++)
              set_lane(expected.z[d], width, i, lane(before.z[d], width, i) + addend);
          };
        };
        check(before, row_named(row_name('U', width, "IncrVLVI")), fields, plus(count));
        check(before, row_named(row_name('U', width, "DecrVLVI")), fields, plus(-count));
      });
}

// The 32-bit form takes the low half alone, and clears the high half.
TEST(Count, SaturatingDecrement) {
  Random random(53);
  for (const unsigned d : {3u, 31u})
    each_count(1, [&](unsigned pattern, unsigned multiplier, uint64_t count) {
      cpu_state before = random_state(random);
      before.x[d] = random() % 2 == 0 ? random() % 260 : random();
      if (random() % 2 == 0)
        before.x[d] |= 0xffffffff00000000;
      const std::initializer_list<Field> fields = {{0, d}, {5, pattern}, {16, multiplier - 1}};
      const uint64_t wide = before.x[d], narrow = wide & 0xffffffff;
      check(before, row_named("VecU8QDecrVL4SI"), fields, [&](cpu_state& expected) {
        set_register(expected, d, narrow < count ? 0 : narrow - count);
      });
      check(before, row_named("VecU8QDecrVL8SI"), fields, [&](cpu_state& expected) {
        set_register(expected, d, wide < count ? 0 : wide - count);
      });
    });
}

TEST(Count, PredicateElements) {
  Random random(54);
  for (const unsigned width : element_widths)
    for (const unsigned d : {4u, 31u})
      for (unsigned round = 0; round < 200; round++) {
        const cpu_state before = random_state(random);
        const unsigned g = random() % 16, n = random() % 4 == 0 ? g : random() % 16;
        unsigned both = 0, alone = 0;
        for (unsigned i = 0; i < vector_bytes / width; i++) {
          both += active(before.p[g], width, i) && active(before.p[n], width, i);
          alone += active(before.p[n], width, i);
        }
        check(before, row_named(row_name('U', width, "SCountP")), {{0, d}, {10, g}, {5, n}},
              [&](cpu_state& expected) { set_register(expected, d, both); });
        check(before, row_named(row_name('U', width, "IncrSCountPS")), {{0, d}, {5, n}},
              [&](cpu_state& expected) { set_register(expected, d, before.x[d] + alone); });
      }
}

// Number 31 is the zero register of RDVL, and SP of the two others.
TEST(Count, VectorLength) {
  Random random(55);
  for (int immediate = -32; immediate < 32; immediate++)
    for (const Registers& r : register_choices) {
      const cpu_state before = random_state(random);
      const Field field = {5, static_cast<unsigned>(immediate) & 63};
      check(before, row_named("VecS64VLX"), {{0, r.d}, field}, [&](cpu_state& expected) {
        set_register(expected, r.d, static_cast<uint64_t>(int64_t{immediate} * vl_bytes));
      });
      check(before, row_named("VecS64AddVLX"), {{0, r.d}, {16, r.n}, field},
            [&](cpu_state& expected) {
              expected.x[r.d] =
                  before.x[r.n] + static_cast<uint64_t>(int64_t{immediate} * vl_bytes);
            });
      check(before, row_named("VecS64AddPLX"), {{0, r.d}, {16, r.n}, field},
            [&](cpu_state& expected) {
              expected.x[r.d] =
                  before.x[r.n] + static_cast<uint64_t>(int64_t{immediate} * (vl_bytes / 8));
            });
    }
}

}  // namespace
