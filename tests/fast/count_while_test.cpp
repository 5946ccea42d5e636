// Loop predicates and index vectors, through their rows.
#include "tests/fast/predicates.h"

using namespace fixture;

namespace {

uint64_t value_of(const cpu_state& state, unsigned number) {
  return number == 31 ? 0 : state.x[number];
}

struct WhileCase {
  char type;
  const char* comparison;
  bool (*condition)(uint64_t counter, uint64_t end, unsigned operand_width);
};

const WhileCase while_cases[] = {
    {'S', "LTSS",
     [](uint64_t counter, uint64_t end, unsigned w) {
       return as_signed(counter, w) < as_signed(end, w);
     }},
    {'U', "LTSS", [](uint64_t counter, uint64_t end, unsigned) { return counter < end; }},
    {'U', "LESS", [](uint64_t counter, uint64_t end, unsigned) { return counter <= end; }},
};

// An end near the start, as loops have it, or anywhere.
uint64_t loop_end(Random& random, uint64_t start) {
  return random() % 4 == 0 ? interesting_value(random, 8) : start + random() % 24 - 4;
}

TEST(While, CountsUpToTheEnd) {
  Random random(61);
  for (const WhileCase& c : while_cases)
    for (const unsigned operand_width : {4u, 8u})
      for (const unsigned width : element_widths)
        for (unsigned round = 0; round < 60; round++)
          for (const Registers& r : register_choices) {
            cpu_state before = random_state(random);
            before.x[r.n] = interesting_value(random, operand_width);
            before.x[r.m] = loop_end(random, before.x[r.n]);
            if (operand_width == 4)
              before.x[r.n] ^= random() << 32;
            const unsigned d = r.d % p_registers;
            const std::string operation = "While" + std::to_string(operand_width) + c.comparison;
            check(before, row_named(row_name(c.type, width, operation)),
                  {{0, d}, {5, r.n}, {16, r.m}}, [&](cpu_state& expected) {
                    const uint64_t mask = width_mask(operand_width);
                    uint64_t counter = value_of(before, r.n) & mask;
                    const uint64_t end = value_of(before, r.m) & mask;
                    bool running = true;
                    for (unsigned i = 0; i < vector_bytes / width; i++) {
                      running = running && c.condition(counter, end, operand_width);
                      set_lane(expected.p[d], width, i, running);
                      counter = (counter + 1) & mask;
                    }
                    expected.nzcv = flags_of(before.nzcv, all_true, expected.p[d], width);
                  });
          }
}

TEST(While, KnownAnswers) {
  static const struct {
    const char* row;
    uint64_t start, end;
    const char* predicate;
    const char* nzcv;
  } cases[] = {
      {"VecS8While8LTSS", 7, 7, "0:0", "60000000"},
      {"VecU32While8LTSS", 0, 3, "1:100000001", "a0000000"},
      {"VecU8While4LESS", 0xfffffffe, 0xffffffff, "101010101010101:101010101010101", "80000000"},
      {"VecU64While8LESS", ~0ull, ~0ull, "1:1", "80000000"},
      {"VecU64While8LESS", 5, 5, "0:1", "a0000000"},
      {"VecS64While4LTSS", 0x1'80000000, 0x7fffffff, "1:1", "80000000"},
      {"VecS64While4LTSS", 0, 0x1'80000000, "0:0", "60000000"},
      {"VecS64While8LTSS", (1ull << 63) - 2, (1ull << 63) - 1, "0:1", "a0000000"},
  };
  for (const auto& c : cases) {
    cpu_state state{};
    state.x[1] = c.start;
    state.x[2] = c.end;
    execute(state, row_named(c.row), {{0, 3}, {5, 1}, {16, 2}});
    EXPECT_EQ(hex(state.p[3]), c.predicate) << c.row;
    EXPECT_EQ(hex(state.nzcv), c.nzcv) << c.row;
  }
}

TEST(Index, StepsFromTheBase) {
  Random random(62);
  for (const unsigned width : element_widths)
    for (int immediate = -16; immediate < 16; immediate++)
      for (const Registers& r : register_choices) {
        const cpu_state before = random_state(random);
        const auto steps = [&](uint64_t base, uint64_t step) {
          return [&, base, step](cpu_state& expected) {
            for (unsigned i = 0; i < vector_bytes / width; i++)
              set_lane(expected.z[r.d], width, i, base + i * step);
          };
        };
        const int other = static_cast<int>(random() % 32) - 16;
        const uint64_t first = static_cast<unsigned>(immediate) & 31;
        const uint64_t second = static_cast<unsigned>(other) & 31;
        const auto base = static_cast<uint64_t>(int64_t{immediate});
        const auto step = static_cast<uint64_t>(int64_t{other});
        const uint64_t n = value_of(before, r.n), m = value_of(before, r.m);
        const auto row = [&](const char* operation) -> const Row& {
          return row_named(row_name('S', width, operation));
        };
        check(before, row("IndexII"), {{0, r.d}, {5, first}, {16, second}}, steps(base, step));
        check(before, row("IndexIS"), {{0, r.d}, {5, first}, {16, r.m}}, steps(base, m));
        check(before, row("IndexSI"), {{0, r.d}, {5, r.n}, {16, second}}, steps(n, step));
        check(before, row("IndexSS"), {{0, r.d}, {5, r.n}, {16, r.m}}, steps(n, m));
      }
}

}  // namespace
