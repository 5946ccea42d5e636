// What the tests of instruction functions share: a record full of chance, words built from rows,
// the road from a word over its row to the function, and a list of the rows that went it.
//
// Expectations are computed on a copy of the record by plain loops over elements, and the whole
// record is compared, so that a function that touches anything else is caught.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "sve/decode/dispatch.h"

namespace fixture {

using Random = std::mt19937_64;

// The element widths in bytes, in the order of element_size.
inline constexpr unsigned element_widths[] = {1, 2, 4, 8};

// The bits of an element that is so many bytes wide.
inline uint64_t width_mask(unsigned width) { return ~0ull >> (64 - 8 * width); }

// The element's bits as a signed number.
inline int64_t as_signed(uint64_t value, unsigned width) {
  const unsigned shift = 64 - 8 * width;
  return static_cast<int64_t>(value << shift) >> shift;
}

// Element i of a slot of z (or p), zero-extended. width: bytes of an element.
inline uint64_t lane(const uint8_t* slot, unsigned width, unsigned i) {
  uint64_t value = 0;
  memcpy(&value, slot + i * width, width);
  return value;
}

inline void set_lane(uint8_t* slot, unsigned width, unsigned i, uint64_t value) {
  memcpy(slot + i * width, &value, width);
}

inline bool active(const uint8_t* predicate, unsigned width, unsigned i) {
  return (predicate[i * width] & 1) != 0;
}

// One of the values at which element arithmetic turns: 0, 1, -1, the extremes of each width and
// their neighbours, amounts around a width, or any value at all.
inline uint64_t interesting_value(Random& random, unsigned width) {
  const uint64_t sign = 1ull << (8 * width - 1);
  const uint64_t values[] = {0,     1,        2,         ~0ull,         sign,          sign - 1,
                             ~1ull, sign + 1, 8 * width, 8 * width - 1, 8 * width + 1, 256};
  const uint64_t choice = random() % 24;
  return (choice < std::size(values) ? values[choice] : random()) & width_mask(width);
}

// What the bytes of predicates hold: any bits, or 0 and 1 as instructions leave them.
enum class Predicates { junk, clean };

inline void fill_predicate(Random& random, uint8_t* slot, Predicates kind) {
  const uint64_t style = random() % 4;  // none, all, few or many active
  for (unsigned i = 0; i < vector_bytes; i++) {
    const bool bit = style == 0 ? false : style == 1 || random() % (style == 2 ? 8 : 2) == 0;
    const auto junk = static_cast<uint8_t>(kind == Predicates::junk ? random() & 0xfe : 0);
    slot[i] = junk | bit;
  }
}

// A record with every field at random; the elements of z are interesting ones of this width.
inline cpu_state random_state(Random& random, unsigned width = 8,
                              Predicates kind = Predicates::junk) {
  cpu_state state{};
  for (uint64_t& x : state.x)
    x = random();
  state.pc = random();
  state.nzcv = random();
  state.fpsr = static_cast<uint32_t>(random());
  state.fpcr = static_cast<uint32_t>(random());
  state.fz16 = random() % 2 != 0 ? fpcr_fz16 : 0;
  for (auto& slot : state.z)
    for (unsigned i = 0; i < vector_bytes / width; i++)
      set_lane(slot, width, i, interesting_value(random, width));
  for (auto& slot : state.p)
    fill_predicate(random, slot, kind);
  fill_predicate(random, state.ffr, kind);
  state.instruction = random();
  return state;
}

inline std::string hex(uint64_t value) {
  char text[20];
  snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(value));
  return text;
}

inline std::string hex(const uint8_t* slot) {  // highest byte first
  return hex(lane(slot, 8, 1)) + ":" + hex(lane(slot, 8, 0));
}

// Compares every field of two records.
inline void expect_same(const cpu_state& expected, const cpu_state& actual) {
  for (unsigned i = 0; i < 32; i++)
    EXPECT_EQ(hex(expected.x[i]), hex(actual.x[i])) << "x" << i;
  for (unsigned i = 0; i < z_registers; i++)
    EXPECT_EQ(hex(expected.z[i]), hex(actual.z[i])) << "z" << i;
  for (unsigned i = 0; i < p_registers; i++)
    EXPECT_EQ(hex(expected.p[i]), hex(actual.p[i])) << "p" << i;
  EXPECT_EQ(hex(expected.ffr), hex(actual.ffr)) << "ffr";
  EXPECT_EQ(hex(expected.nzcv), hex(actual.nzcv)) << "nzcv";
  EXPECT_EQ(hex(expected.pc), hex(actual.pc)) << "pc";
  EXPECT_EQ(hex(expected.fpsr), hex(actual.fpsr)) << "fpsr";
  EXPECT_EQ(hex(expected.fpcr), hex(actual.fpcr)) << "fpcr";
  EXPECT_EQ(hex(expected.fz16), hex(actual.fz16)) << "fz16";
  EXPECT_EQ(hex(expected.instruction), hex(actual.instruction)) << "instruction";
}

// The name of a row by the letter of its type, the width in bytes, and the operation.
inline std::string row_name(char type, unsigned width, std::string_view operation) {
  return std::string("Vec") + type + std::to_string(8 * width) + std::string(operation);
}

// Register numbers of a destination and two sources: apart, equal in every way, and the last one.
struct Registers {
  unsigned d, n, m;
};
inline constexpr Registers register_choices[] = {{1, 2, 3},   {4, 4, 5},    {6, 7, 6},
                                                 {8, 9, 9},   {10, 10, 10}, {31, 0, 30},
                                                 {0, 31, 31}, {31, 31, 31}};

// The row of this name; a test that names none fails.
inline const Row& row_named(std::string_view name) {
  static const std::map<std::string_view, const Row*> rows = [] {
    std::map<std::string_view, const Row*> by_name;
    for (const Row& row : all_rows())
      by_name.emplace(row.name, &row);
    return by_name;
  }();
  const auto found = rows.find(name);
  if (found == rows.end())
    throw std::runtime_error("no row " + std::string(name));
  return *found->second;
}

// An operand field of a word: its value from bit low upwards.
struct Field {
  unsigned low;
  uint64_t value;
};

// The row's word with these operands.
inline uint32_t encode(const Row& row, std::initializer_list<Field> fields) {
  uint32_t word = row.value;
  for (const Field& field : fields) {
    const auto bits = static_cast<uint32_t>(field.value << field.low);
    if ((bits & row.mask) != 0)
      throw std::runtime_error("no operand field at bit " + std::to_string(field.low) + " of " +
                               row.name);
    word |= bits;
  }
  return word;
}

inline std::set<std::string>& executed_rows() {
  static std::set<std::string> names;
  return names;
}

// Finds the word's stub as the client does, checks that it is the row's, and runs it.
inline void execute(cpu_state& state, const Row& row, uint32_t word) {
  const decode_stub stub = is_sve(word);
  ASSERT_EQ(stub, row.stub) << row.name << " " << hex(word);
  EXPECT_EQ(stub(&state, word), aarch64_decode_ok) << row.name;
  executed_rows().insert(row.name);
}

inline void execute(cpu_state& state, const Row& row, std::initializer_list<Field> fields) {
  execute(state, row, encode(row, fields));
}

// Runs the word on a copy of the record and compares all of it with what expect(record) made of
// another copy. The stub stores the word, so the expectation holds it already.
template <class Expect>
inline void check(const cpu_state& before, const Row& row, uint32_t word, Expect expect) {
  cpu_state expected = before;
  expected.instruction = word;
  expect(expected);
  cpu_state actual = before;
  execute(actual, row, word);
  if (memcmp(&expected, &actual, sizeof expected) == 0)
    return;
  const testing::ScopedTrace trace(__FILE__, __LINE__, std::string(row.name) + " " + hex(word));
  expect_same(expected, actual);
}

template <class Expect>
inline void check(const cpu_state& before, const Row& row, std::initializer_list<Field> fields,
                  Expect expect) {
  check(before, row, encode(row, fields), expect);
}

using RowFilter = bool (*)(const Row&);

// Names of the rows with a function of their own that `mine` accepts and no test has executed.
inline std::vector<std::string> rows_not_executed(RowFilter mine) {
  std::vector<std::string> names;
  for (const Row& row : all_rows())
    if ((row.tier == Tier::fast || row.tier == Tier::host_fp) && mine(row) &&
        !executed_rows().contains(row.name))
      names.push_back(row.name);
  return names;
}

// Fails a whole run of a test program that leaves rows out. Each program with rows of its own adds
// one: static auto* coverage = testing::AddGlobalTestEnvironment(new Coverage(filter));
class Coverage : public testing::Environment {
public:
  explicit Coverage(RowFilter mine) : mine_(mine) {}

  void TearDown() override {
    if (GTEST_FLAG_GET(filter) != "*")
      return;
    for (const std::string& name : rows_not_executed(mine_))
      ADD_FAILURE() << "no test executes " << name;
  }

private:
  RowFilter mine_;
};

}  // namespace fixture
