// Integer reductions, through their rows, against a fold in element order.
#include "tests/fast/fixture.h"

using namespace fixture;

namespace {

struct ReduceCase {
  char type;
  const char* operation;
  uint64_t (*identity)(unsigned width);
  uint64_t (*fold)(uint64_t sum, uint64_t element, unsigned width);
};

uint64_t none(unsigned) { return 0; }
uint64_t sign(unsigned width) { return 1ull << (8 * width - 1); }

// clang-format off
const ReduceCase reduce_cases[] = {
    {'U', "AddReduceV", none,       [](uint64_t a, uint64_t b, unsigned) { return a + b; }},
    {'U', "AndReduceV", width_mask, [](uint64_t a, uint64_t b, unsigned) { return a & b; }},
    {'U', "OrReduceV",  none,       [](uint64_t a, uint64_t b, unsigned) { return a | b; }},
    {'U', "XorReduceV", none,       [](uint64_t a, uint64_t b, unsigned) { return a ^ b; }},
    {'U', "MaxReduceV", none,       [](uint64_t a, uint64_t b, unsigned) { return a > b ? a : b; }},
    {'U', "MinReduceV", width_mask, [](uint64_t a, uint64_t b, unsigned) { return a < b ? a : b; }},
    {'S', "MaxReduceV", sign,
     [](uint64_t a, uint64_t b, unsigned w) { return as_signed(a, w) > as_signed(b, w) ? a : b; }},
    {'S', "MinReduceV", [](unsigned w) { return sign(w) - 1; },
     [](uint64_t a, uint64_t b, unsigned w) { return as_signed(a, w) < as_signed(b, w) ? a : b; }},
};
// clang-format on

TEST(IntegerReduce, FoldsActiveElements) {
  Random random(21);
  for (const ReduceCase& c : reduce_cases)
    for (const unsigned width : element_widths)
      for (unsigned round = 0; round < 40; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          const unsigned pg = random() % 8;
          check(before, row_named(row_name(c.type, width, c.operation)),
                {{0, r.d}, {5, r.n}, {10, pg}}, [&](cpu_state& expected) {
                  uint64_t result = c.identity(width);
                  for (unsigned i = 0; i < vector_bytes / width; i++)
                    if (active(before.p[pg], width, i))
                      result = c.fold(result, lane(before.z[r.n], width, i), width);
                  set_lane(expected.z[r.d], 8, 0, result);
                  set_lane(expected.z[r.d], 8, 1, 0);
                });
        }
}

TEST(IntegerReduce, KnownAnswers) {
  cpu_state state{};
  memset(state.z[1], 0xff, vector_bytes);
  memset(state.z[2], 0xff, vector_bytes);
  memset(state.p[1], 1, vector_bytes);  // P0 is false
  execute(state, row_named("VecU8AddReduceV"), {{0, 2}, {5, 1}, {10, 1}});
  EXPECT_EQ(hex(state.z[2]), "0:ff0");  // 4080: no byte
  execute(state, row_named("VecS16MaxReduceV"), {{0, 2}, {5, 1}, {10, 0}});
  EXPECT_EQ(hex(state.z[2]), "0:8000");
  execute(state, row_named("VecU32AndReduceV"), {{0, 2}, {5, 1}, {10, 0}});
  EXPECT_EQ(hex(state.z[2]), "0:ffffffff");
}

}  // namespace
