// Integer compares, through their rows: predicates and flags.
#include "tests/fast/predicates.h"

using namespace fixture;

namespace {

// Both operands widened by the sign of the type, so that 128 bits hold any difference.
__extension__ typedef __int128 Wide;

using Condition = bool (*)(Wide a, Wide b);

bool equal(Wide a, Wide b) { return a == b; }
bool not_equal(Wide a, Wide b) { return a != b; }
bool greater(Wide a, Wide b) { return a > b; }
bool greater_or_equal(Wide a, Wide b) { return a >= b; }
bool less(Wide a, Wide b) { return a < b; }
bool less_or_equal(Wide a, Wide b) { return a <= b; }

struct CompareCase {
  char type;
  const char* operation;
  Condition condition;
};

Wide widened(char type, uint64_t value, unsigned width) {
  return type == 'S' ? Wide{as_signed(value, width)} : Wide{value};
}

// Pd apart from Pg and equal to it, the last numbers among them.
struct PredicatePair {
  unsigned d, g;
};
constexpr PredicatePair predicate_choices[] = {{1, 2}, {3, 3}, {15, 7}, {7, 7}, {0, 0}};

template <class Element>
void expect_compare(const cpu_state& before, cpu_state& expected, PredicatePair p, unsigned width,
                    Element element) {
  for (unsigned i = 0; i < vector_bytes / width; i++)
    set_lane(expected.p[p.d], width, i, active(before.p[p.g], width, i) && element(i));
  expected.nzcv = flags_of(before.nzcv, before.p[p.g], expected.p[p.d], width);
}

TEST(CompareInteger, Vectors) {
  static const CompareCase cases[] = {
      {'S', "CmpFlgEQVVZ", equal},
      {'S', "CmpFlgNEVVZ", not_equal},
      {'S', "CmpFlgGEVVZ", greater_or_equal},
      {'S', "CmpFlgGTVVZ", greater},
      {'U', "CmpFlgGEVVZ", greater_or_equal},
      {'U', "CmpFlgGTVVZ", greater},
  };
  Random random(41);
  for (const CompareCase& c : cases)
    for (const unsigned width : element_widths)
      for (unsigned round = 0; round < 10; round++)
        for (const PredicatePair& p : predicate_choices)
          for (const Registers& r : register_choices) {
            cpu_state before = random_state(random, width);
            if (round % 2 == 0)  // some elements the same
              set_lane(before.z[r.n], 8, round % 4 / 2, lane(before.z[r.m], 8, round % 4 / 2));
            check(before, row_named(row_name(c.type, width, c.operation)),
                  {{0, p.d}, {10, p.g}, {5, r.n}, {16, r.m}}, [&](cpu_state& expected) {
                    expect_compare(before, expected, p, width, [&](unsigned i) {
                      return c.condition(widened(c.type, lane(before.z[r.n], width, i), width),
                                         widened(c.type, lane(before.z[r.m], width, i), width));
                    });
                  });
          }
}

TEST(CompareInteger, Immediates) {
  static const CompareCase cases[] = {
      {'S', "CmpFlgEQVIZ", equal},         {'S', "CmpFlgNEVIZ", not_equal},
      {'S', "CmpFlgGTVIZ", greater},       {'S', "CmpFlgLTVIZ", less},
      {'S', "CmpFlgLEVIZ", less_or_equal}, {'U', "CmpFlgGTVIZ", greater},
      {'U', "CmpFlgLTVIZ", less},
  };
  Random random(42);
  for (const CompareCase& c : cases)
    for (const unsigned width : element_widths) {
      const int first = c.type == 'S' ? -16 : 0, last = c.type == 'S' ? 15 : 127;
      for (int immediate = first; immediate <= last; immediate++)
        for (const PredicatePair& p : predicate_choices) {
          const unsigned n = random() % 2 == 0 ? 31 : random() % 32;
          cpu_state before = random_state(random, width);
          for (unsigned i = 0; i < vector_bytes / width; i++)  // near the immediate, often
            if (random() % 2 == 0)
              set_lane(before.z[n], width, i,
                       static_cast<uint64_t>(immediate + static_cast<int>(random() % 3) - 1));
          const Field field = c.type == 'S' ? Field{16, static_cast<unsigned>(immediate) & 31}
                                            : Field{14, static_cast<unsigned>(immediate)};
          check(before, row_named(row_name(c.type, width, c.operation)),
                {{0, p.d}, {10, p.g}, {5, n}, field}, [&](cpu_state& expected) {
                  expect_compare(before, expected, p, width, [&](unsigned i) {
                    return c.condition(widened(c.type, lane(before.z[n], width, i), width),
                                       immediate);
                  });
                });
        }
    }
}

TEST(CompareInteger, KnownAnswers) {
  cpu_state state{};
  memset(state.z[1], 0x80, vector_bytes);
  memset(state.p[1], 1, vector_bytes);
  memset(state.p[2], 0xff, vector_bytes);
  execute(state, row_named("VecS8CmpFlgGTVIZ"), {{0, 2}, {10, 1}, {5, 1}, {16, 0x10}});
  EXPECT_EQ(hex(state.p[2]), "0:0");  // -128 > -16
  execute(state, row_named("VecU8CmpFlgGTVIZ"), {{0, 2}, {10, 1}, {5, 1}, {14, 127}});
  EXPECT_EQ(hex(state.p[2]), "101010101010101:101010101010101");  // 128 > 127
  EXPECT_EQ(hex(state.nzcv), "80000000");
  memset(state.p[2], 0xff, vector_bytes);
  execute(state, row_named("VecS16CmpFlgNEVIZ"), {{0, 2}, {10, 1}, {5, 1}, {16, 0}});
  EXPECT_EQ(hex(state.p[2]), "1000100010001:1000100010001");
  execute(state, row_named("VecS8CmpFlgEQVIZ"), {{0, 2}, {10, 0}, {5, 1}, {16, 0}});
  EXPECT_EQ(hex(state.p[2]), "0:0");
  EXPECT_EQ(hex(state.nzcv), "60000000");
}

}  // namespace
