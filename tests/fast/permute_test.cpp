// Permutes of vectors and predicates against loops over elements.
#include "tests/fast/fixture.h"

namespace {

using namespace fixture;

constexpr unsigned rounds = 48;

const auto* const coverage = testing::AddGlobalTestEnvironment(new Coverage([](const Row& row) {
  const std::string name = row.name;
  if (name.find("Load") != std::string::npos)
    return false;
  for (const char* word : {"Zip", "Uzp", "Trn", "Tbl", "Reverse", "Unpack", "Slide", "Dup", "SelVV",
                           "LastB", "CondXB", "F32AbsVM", "D64AbsVM", "F32NegVM", "D64NegVM"})
    if (name.find(word) != std::string::npos)
      return true;
  return false;
}));

using Elements = std::vector<uint64_t>;

Elements elements_of(const uint8_t* slot, unsigned width) {
  Elements elements;
  for (unsigned i = 0; i < vector_bytes / width; i++)
    elements.push_back(lane(slot, width, i));
  return elements;
}

Elements concatenated(const Elements& a, const Elements& b) {
  Elements both = a;
  both.insert(both.end(), b.begin(), b.end());
  return both;
}

// The result of a permute of n elements in each of a and b, by the architecture's definition.
struct Permute {
  const char* operation;
  Elements (*result)(const Elements& a, const Elements& b);
};

Elements interleaved(const Elements& a, const Elements& b, size_t first, size_t step,
                     size_t pairs) {
  Elements result;
  for (size_t pair = 0; pair < pairs; pair++) {
    result.push_back(a[first + pair * step]);
    result.push_back(b[first + pair * step]);
  }
  return result;
}

Elements every_second(const Elements& both, size_t first) {
  Elements result;
  for (size_t i = first; i < both.size(); i += 2)
    result.push_back(both[i]);
  return result;
}

constexpr Permute permutes[] = {
    {"Zip1", [](auto& a, auto& b) { return interleaved(a, b, 0, 1, a.size() / 2); }},
    {"Zip2", [](auto& a, auto& b) { return interleaved(a, b, a.size() / 2, 1, a.size() / 2); }},
    {"Uzp1", [](auto& a, auto& b) { return every_second(concatenated(a, b), 0); }},
    {"Uzp2", [](auto& a, auto& b) { return every_second(concatenated(a, b), 1); }},
    {"Trn1", [](auto& a, auto& b) { return interleaved(a, b, 0, 2, a.size() / 2); }},
    {"Trn2", [](auto& a, auto& b) { return interleaved(a, b, 1, 2, a.size() / 2); }},
};

// Registers that are often the same.
struct Registers {
  unsigned d, n, m;
};
Registers random_registers(Random& random, unsigned count) {
  const auto any = [&] {
    return static_cast<unsigned>(random() % (random() % 3 == 0 ? 2 : count));
  };
  return {any(), any(), any()};
}

void store_elements(uint8_t* slot, unsigned width, const Elements& elements) {
  ASSERT_EQ(elements.size(), vector_bytes / width);
  for (unsigned i = 0; i < elements.size(); i++)
    set_lane(slot, width, i, elements[i]);
}

TEST(Permute, OfVectors) {
  Random random(1);
  for (const Permute& permute : permutes)
    for (unsigned width : element_widths) {
      const Row& row = row_named("VecU" + std::to_string(8 * width) + permute.operation + "VV");
      for (unsigned round = 0; round < rounds; round++) {
        const auto [d, n, m] = random_registers(random, 32);
        const cpu_state before = random_state(random, 1);
        check(before, row, {{0, d}, {5, n}, {16, m}}, [&, d = d, n = n, m = m](cpu_state& state) {
          store_elements(
              state.z[d], width,
              permute.result(elements_of(before.z[n], width), elements_of(before.z[m], width)));
        });
      }
    }
}

TEST(Permute, OfPredicates) {
  Random random(2);
  for (const Permute& permute : permutes)
    for (unsigned width : element_widths) {
      const std::string operation = permute.operation;
      if (operation == "Uzp2" || operation.starts_with("Trn"))
        continue;  // the model's
      const Row& row = row_named("VecP" + std::to_string(8 * width) + operation + "PP");
      for (unsigned round = 0; round < rounds; round++) {
        const auto [d, n, m] = random_registers(random, 16);
        const cpu_state before = random_state(random);
        check(before, row, {{0, d}, {5, n}, {16, m}}, [&, d = d, n = n, m = m](cpu_state& state) {
          store_elements(
              state.p[d], width,
              permute.result(elements_of(before.p[n], width), elements_of(before.p[m], width)));
        });
      }
    }
}

TEST(Permute, Reverse) {
  Random random(3);
  for (unsigned width : element_widths)
    for (unsigned round = 0; round < rounds; round++) {
      const std::string size = std::to_string(8 * width);
      const auto [d, n, m] = random_registers(random, 16);
      const cpu_state before = random_state(random, 1);
      check(before, row_named("VecU" + size + "ReverseV"), {{0, d}, {5, n}},
            [&, d = d, n = n](cpu_state& state) {
              const Elements elements = elements_of(before.z[n], width);
              store_elements(state.z[d], width, {elements.rbegin(), elements.rend()});
            });
      check(before, row_named("VecP" + size + "ReverseP"), {{0, d}, {5, n}},
            [&, d = d, n = n](cpu_state& state) {
              const Elements elements = elements_of(before.p[n], width);
              store_elements(state.p[d], width, {elements.rbegin(), elements.rend()});
            });
    }
}

TEST(Permute, TableLookup) {
  Random random(4);
  for (unsigned width : element_widths)
    for (unsigned round = 0; round < 4 * rounds; round++) {
      const Row& row = row_named("VecU" + std::to_string(8 * width) + "TblVV");
      const auto [d, n, m] = random_registers(random, 32);
      cpu_state before = random_state(random, 1);
      // Numbers in range, just out of it, and such whose low byte alone would be in range.
      for (unsigned i = 0; i < vector_bytes / width; i++)
        set_lane(before.z[m], width, i,
                 random() % 2 == 0 ? random() % (vector_bytes / width + 2)
                                   : interesting_value(random, width));
      check(before, row, {{0, d}, {5, n}, {16, m}}, [&, d = d, n = n, m = m](cpu_state& state) {
        const Elements table = elements_of(before.z[n], width);
        for (unsigned i = 0; i < table.size(); i++) {
          const uint64_t number = lane(before.z[m], width, i);
          set_lane(state.z[d], width, i, number < table.size() ? table[number] : 0);
        }
      });
    }
}

TEST(Permute, ExtractAtEveryPosition) {
  Random random(5);
  const Row& row = row_named("VecU8SlideVI");
  for (unsigned position = 0; position < 256; position++)
    for (unsigned round = 0; round < 4; round++) {
      const auto [d, n, m] = random_registers(random, 32);
      const cpu_state before = random_state(random, 1);
      check(before, row, {{0, d}, {5, m}, {16, position >> 3}, {10, position & 7}},
            [&, d = d, m = m, at = position](cpu_state& state) {
              if (at >= vector_bytes)
                return;
              const Elements both =
                  concatenated(elements_of(before.z[d], 1), elements_of(before.z[m], 1));
              store_elements(state.z[d], 1, {both.begin() + at, both.begin() + at + vector_bytes});
            });
    }
}

TEST(Permute, UnpackVectors) {
  struct Case {
    char type;
    unsigned width;  // of the result
  };
  Random random(6);
  for (const Case c : {Case{'U', 2}, Case{'U', 4}, Case{'U', 8}, Case{'S', 8}})
    for (const bool high : {false, true})
      for (unsigned round = 0; round < rounds; round++) {
        const Row& row = row_named(std::string("Vec") + c.type + std::to_string(8 * c.width) +
                                   (high ? "UnpackHiV" : "UnpackLoV"));
        const auto [d, n, m] = random_registers(random, 32);
        const unsigned narrow = c.width / 2;
        const cpu_state before = random_state(random, narrow);
        check(before, row, {{0, d}, {5, n}}, [&, d = d, n = n](cpu_state& state) {
          for (unsigned i = 0; i < vector_bytes / c.width; i++) {
            const uint64_t value =
                lane(before.z[n], narrow, i + (high ? vector_bytes / c.width : 0));
            set_lane(state.z[d], c.width, i,
                     c.type == 'S' ? static_cast<uint64_t>(as_signed(value, narrow)) : value);
          }
        });
      }
}

TEST(Permute, UnpackPredicates) {
  Random random(7);
  for (const bool high : {false, true})
    for (unsigned round = 0; round < rounds; round++) {
      const auto [d, n, m] = random_registers(random, 16);
      const cpu_state before = random_state(random);
      check(before, row_named(high ? "VecPUnpackHiP" : "VecPUnpackLoP"), {{0, d}, {5, n}},
            [&, d = d, n = n](cpu_state& state) {
              for (unsigned k = 0; k < 8; k++)
                set_lane(state.p[d], 2, k, before.p[n][k + (high ? 8 : 0)] & 1);
            });
    }
}

}  // namespace
