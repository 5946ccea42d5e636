// Predicate logic, constants, PTEST, PNEXT and the first-fault register, through their rows.
#include "tests/fast/predicates.h"

using namespace fixture;

namespace {

constexpr unsigned rounds = 60;

struct PredicateRegisters {
  unsigned d, g, n, m;
};
constexpr PredicateRegisters register_choices_p[] = {
    {1, 2, 3, 4},     {5, 5, 6, 7},    {8, 9, 8, 10},   {11, 0, 1, 11},
    {12, 13, 14, 14}, {15, 15, 15, 0}, {15, 15, 15, 15}};

Predicates kind_of(unsigned round) { return round % 2 == 0 ? Predicates::clean : Predicates::junk; }

TEST(Predicate, Logic) {
  static const struct {
    const char* row;
    unsigned (*compute)(unsigned n, unsigned m);
  } cases[] = {
      {"VecPAndPPZ", [](unsigned n, unsigned m) { return n & m; }},
      {"VecPBicPPZ", [](unsigned n, unsigned m) { return n & ~m; }},
      {"VecPXorPPZ", [](unsigned n, unsigned m) { return n ^ m; }},
      {"VecPOrPPZ", [](unsigned n, unsigned m) { return n | m; }},
      {"VecPNorPPZ", [](unsigned n, unsigned m) -> unsigned { return n == 0 && m == 0; }},
  };
  Random random(31);
  for (const auto& c : cases)
    for (unsigned round = 0; round < rounds; round++)
      for (const PredicateRegisters& r : register_choices_p) {
        const cpu_state before = random_state(random, 8, kind_of(round));
        check(before, row_named(c.row), {{0, r.d}, {10, r.g}, {5, r.n}, {16, r.m}},
              [&](cpu_state& expected) {
                for (unsigned i = 0; i < vector_bytes; i++) {
                  const unsigned result = c.compute(before.p[r.n][i], before.p[r.m][i]);
                  const bool governed = active(before.p[r.g], 1, i);
                  expected.p[r.d][i] = static_cast<uint8_t>(governed ? result : 0);
                }
              });
      }
}

TEST(Predicate, Select) {
  Random random(32);
  for (unsigned round = 0; round < rounds; round++)
    for (const PredicateRegisters& r : register_choices_p) {
      const cpu_state before = random_state(random, 8, kind_of(round));
      check(before, row_named("VecPSelPP"), {{0, r.d}, {10, r.g}, {5, r.n}, {16, r.m}},
            [&](cpu_state& expected) {
              for (unsigned i = 0; i < vector_bytes; i++)
                expected.p[r.d][i] =
                    active(before.p[r.g], 1, i) ? before.p[r.n][i] : before.p[r.m][i];
            });
    }
}

TEST(Predicate, TrueAndFalse) {
  Random random(33);
  const cpu_state before = random_state(random);
  for (unsigned d = 0; d < p_registers; d++) {
    check(before, row_named("VecPFalse"), {{0, d}},
          [&](cpu_state& expected) { memset(expected.p[d], 0, vector_bytes); });
    for (const unsigned width : element_widths)
      for (unsigned pattern = 0; pattern < 32; pattern++)
        check(before, row_named(row_name('P', width, "TrueI")), {{0, d}, {5, pattern}},
              [&](cpu_state& expected) {
                for (unsigned i = 0; i < vector_bytes / width; i++)
                  set_lane(expected.p[d], width, i, i < constraint(pattern, width));
              });
  }
}

TEST(Predicate, Test) {
  Random random(34);
  for (unsigned round = 0; round < 10 * rounds; round++) {
    const cpu_state before = random_state(random);
    const unsigned g = random() % 16, n = random() % 16;
    check(before, row_named("VecPTestPZ"), {{10, g}, {5, n}}, [&](cpu_state& expected) {
      expected.nzcv = flags_of(before.nzcv, before.p[g], before.p[n], 1);
    });
  }
}

TEST(Predicate, TestOfNothingKeepsTheOtherBits) {
  cpu_state state{};
  state.nzcv = 0xabcdef01'9fffffffull;
  memset(state.p[1], 1, vector_bytes);
  execute(state, row_named("VecPTestPZ"), {{10, 0}, {5, 1}});
  EXPECT_EQ(hex(state.nzcv), "abcdef016fffffff");
}

// The last true element of Pdn counts whether Pg is active there or not.
TEST(Predicate, Next) {
  Random random(35);
  for (const unsigned width : element_widths)
    for (unsigned round = 0; round < 4 * rounds; round++)
      for (const PredicateRegisters& r : register_choices_p) {
        const cpu_state before = random_state(random);
        check(before, row_named(row_name('P', width, "GenNextP")), {{0, r.d}, {5, r.g}},
              [&](cpu_state& expected) {
                const unsigned n = vector_bytes / width;
                unsigned next = 0;
                for (unsigned i = 0; i < n; i++)
                  if (active(before.p[r.d], width, i))
                    next = i + 1;
                while (next < n && !active(before.p[r.g], width, next))
                  next++;
                for (unsigned i = 0; i < n; i++)
                  set_lane(expected.p[r.d], width, i, i == next);
                expected.nzcv = flags_of(before.nzcv, before.p[r.g], expected.p[r.d], width);
              });
      }
}

TEST(Predicate, FirstFaultRegister) {
  Random random(36);
  for (unsigned round = 0; round < rounds; round++) {
    const cpu_state before = random_state(random);
    const unsigned d = random() % 16, g = random() % 2 != 0 ? d : random() % 16;
    check(before, row_named("VecPReadFFSRP"), {{0, d}},
          [&](cpu_state& expected) { memcpy(expected.p[d], before.ffr, vector_bytes); });
    check(before, row_named("VecPActualP"), {{0, d}, {5, g}}, [&](cpu_state& expected) {
      for (unsigned i = 0; i < vector_bytes; i++)
        expected.p[d][i] = before.ffr[i] & before.p[g][i];
    });
    check(before, row_named("VecPWriteFFSRP"), {{5, d}},
          [&](cpu_state& expected) { memcpy(expected.ffr, before.p[d], vector_bytes); });
    check(before, row_named("VecPClearFFSR"), {},
          [&](cpu_state& expected) { memcpy(expected.ffr, all_true, vector_bytes); });
  }
}

// BRKA writes a byte before it looks for the break, BRKB after.
TEST(Predicate, BreakAfterAndBefore) {
  static const struct {
    const char* row;
    bool after, zeroing;
  } cases[] = {{"VecPBreakAPZ", true, true},
               {"VecPBreakAPM", true, false},
               {"VecPBreakBPZ", false, true},
               {"VecPBreakBPM", false, false}};
  Random random(37);
  for (const auto& c : cases)
    for (unsigned round = 0; round < rounds; round++)
      for (const PredicateRegisters& r : register_choices_p) {
        const cpu_state before = random_state(random, 8, kind_of(round));
        check(before, row_named(c.row), {{0, r.d}, {10, r.g}, {5, r.n}}, [&](cpu_state& expected) {
          bool broken = false;
          for (unsigned i = 0; i < vector_bytes; i++) {
            if (!active(before.p[r.g], 1, i)) {
              if (c.zeroing)
                expected.p[r.d][i] = 0;
              continue;
            }
            const bool breaks = active(before.p[r.n], 1, i);
            expected.p[r.d][i] = !(broken || (breaks && !c.after));
            broken = broken || breaks;
          }
        });
      }
}

// Whether the last active element of Pg is true in Pn.
bool last_active(const cpu_state& state, unsigned g, unsigned n) {
  bool last = false;
  for (unsigned i = 0; i < vector_bytes; i++)
    if (active(state.p[g], 1, i))
      last = state.p[n][i] != 0;
  return last;
}

TEST(Predicate, BreakNext) {
  Random random(38);
  for (const bool flags : {false, true})
    for (unsigned round = 0; round < 2 * rounds; round++)
      for (const PredicateRegisters& r : register_choices_p) {
        const cpu_state before = random_state(random, 8, kind_of(round));
        check(before, row_named(flags ? "VecPBreakNextFlgPZ" : "VecPBreakNextPZ"),
              {{0, r.d}, {10, r.g}, {5, r.n}}, [&](cpu_state& expected) {
                if (!last_active(before, r.g, r.n))
                  memset(expected.p[r.d], 0, vector_bytes);
                if (flags)
                  expected.nzcv = flags_of(before.nzcv, all_true, expected.p[r.d], 1);
              });
      }
}

TEST(Predicate, BreakPropagating) {
  Random random(39);
  for (const bool flags : {false, true})
    for (unsigned round = 0; round < 2 * rounds; round++)
      for (const PredicateRegisters& r : register_choices_p) {
        const cpu_state before = random_state(random, 8, kind_of(round));
        check(before, row_named(flags ? "VecPBreakPrevBFlgPZ" : "VecPBreakPrevBPZ"),
              {{0, r.d}, {10, r.g}, {5, r.n}, {16, r.m}}, [&](cpu_state& expected) {
                bool going = last_active(before, r.g, r.n);
                for (unsigned i = 0; i < vector_bytes; i++) {
                  const bool governed = active(before.p[r.g], 1, i);
                  going = going && !(governed && active(before.p[r.m], 1, i));
                  expected.p[r.d][i] = governed && going;
                }
                if (flags)
                  expected.nzcv = flags_of(before.nzcv, before.p[r.g], expected.p[r.d], 1);
              });
      }
}

}  // namespace
