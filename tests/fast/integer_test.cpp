// Integer data processing: every function through its rows, against scalar arithmetic.
#include "tests/fast/fixture.h"

using namespace fixture;

namespace {

[[maybe_unused]] const auto* const coverage = testing::AddGlobalTestEnvironment(
    new Coverage([](const Row& row) { return row.value >> 24 == 0x04; }));

// Register numbers of destination and sources: apart, equal in every way, and the last register.
struct Registers {
  unsigned d, n, m;
};
constexpr Registers register_choices[] = {{1, 2, 3},    {4, 4, 5},   {6, 7, 6},   {8, 9, 9},
                                          {10, 10, 10}, {31, 0, 30}, {0, 31, 31}, {31, 31, 31}};

constexpr unsigned rounds = 12;

// The type of a row by signedness ('U' or 'S') and width in bytes.
std::string row_name(char sign, unsigned width, const char* operation) {
  return std::string("Vec") + sign + std::to_string(width * 8) + operation;
}

using Binary = uint64_t (*)(uint64_t a, uint64_t b, unsigned width);

struct BinaryCase {
  char sign;
  const char* operation;
  unsigned lowest_width;
  Binary compute;
};

const BinaryCase binary_cases[] = {
    {'U', "AddVVM", 1, [](uint64_t a, uint64_t b, unsigned) { return a + b; }},
};

TEST(Integer, PredicatedBinary) {
  Random random(1);
  for (const BinaryCase& c : binary_cases)
    for (unsigned width = c.lowest_width; width <= 8; width *= 2) {
      const Row& row = row_named(row_name(c.sign, width, c.operation));
      for (unsigned round = 0; round < rounds; round++)
        for (const Registers& r : register_choices) {
          const cpu_state before = random_state(random, width);
          const unsigned pg = random() % 8;
          check(before, row, {{0, r.d}, {5, r.m}, {10, pg}}, [&](cpu_state& expected) {
            for (unsigned i = 0; i < vector_bytes / width; i++)
              if (active(before.p[pg], width, i))
                set_lane(
                    expected.z[r.d], width, i,
                    c.compute(lane(before.z[r.d], width, i), lane(before.z[r.m], width, i), width));
          });
        }
    }
}

}  // namespace
