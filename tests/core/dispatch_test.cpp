// The rows, the maps that they fill, and the cascades that find them.
#include "sve/decode/dispatch.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "host/fp_unit.h"
#include "sve/state/switches.h"
#include "tests/runtime/ir_disassembler.h"

namespace {

constexpr size_t expected_rows = 1483;

struct MapFacts {
  const char* key;  // slices of the word, most significant first
  unsigned key_width;
  unsigned step;  // in the cascade of execute_sve_instruction
  size_t rows;
};
constexpr MapFacts map_facts[decoder_map_count] = {
    {"31:0", 32, 1, 1},
    {"31:9 4:0", 28, 2, 1},
    {"31:4", 28, 3, 2},
    {"31:9 4:4", 24, 5, 13},
    {"31:14 9:9 4:0", 24, 4, 1},
    {"31:10 4:4", 23, 6, 8},
    {"31:9", 23, 7, 58},
    {"31:13 9:6", 23, 8, 24},
    {"31:21 15:10 4:0", 22, 9, 4},
    {"31:10", 22, 10, 38},
    {"31:13 9:8", 21, 11, 4},
    {"31:11", 21, 12, 1},
    {"31:14 9:9 4:4", 20, 15, 8},
    {"31:13 9:9", 20, 17, 4},
    {"31:20 15:9 4:4", 20, 14, 24},
    {"31:13 4:4", 20, 16, 18},
    {"31:24 21:10", 20, 13, 1},
    {"31:24 21:21 19:10", 19, 20, 1},
    {"31:19 15:10", 19, 19, 6},
    {"31:13", 19, 21, 403},
    {"31:14 9:9", 19, 18, 4},
    {"31:20 15:10", 18, 25, 65},
    {"31:14", 18, 23, 32},
    {"31:23 21:13", 18, 24, 4},
    {"31:21 15:10 4:4", 18, 27, 32},
    {"31:24 21:21 18:10", 18, 26, 1},
    {"31:17 15:13", 18, 22, 3},
    {"31:24 21:21 17:10", 17, 28, 1},
    {"31:21 15:10", 17, 29, 135},
    {"31:23 21:21 15:10", 16, 33, 6},
    {"31:21 15:11", 16, 30, 2},
    {"31:24 21:21 16:10", 16, 32, 1},
    {"31:20 15:14 9:9 4:4", 16, 31, 19},
    {"31:21 15:13 4:4", 15, 34, 131},
    {"31:21 15:12", 15, 35, 2},
    {"31:20 15:13", 15, 36, 81},
    {"31:21 15:13", 14, 37, 285},
    {"31:20 15:14", 14, 38, 8},
    {"31:18", 14, 39, 4},
    {"31:22 15:13 4:4", 14, 40, 6},
    {"31:22 15:13", 13, 43, 18},
    {"31:21 15:14", 13, 41, 4},
    {"31:21 13:13 4:4", 13, 42, 16},
    {"31:21 15:15", 12, 44, 3},
};

struct TierFacts {
  Tier tier;
  const char* name;
  size_t rows;
};
constexpr TierFacts tier_facts[] = {{Tier::fast, "fast path", 663},
                                    {Tier::host_fp, "fast path on the floating-point unit", 97},
                                    {Tier::model, "reference model", 687},
                                    {Tier::no_operation, "no operation", 36}};

struct Slice {
  unsigned high, low;
};

std::vector<Slice> slices(const MapFacts& facts) {
  std::vector<Slice> result;
  Slice slice;
  int used = 0;
  for (const char* text = facts.key; sscanf(text, "%u:%u%n", &slice.high, &slice.low, &used) == 2;
       text += used)
    result.push_back(slice);
  return result;
}

// Bit by bit, by the slices.
uint32_t key_by_slices(const MapFacts& facts, uint32_t word) {
  uint32_t key = 0;
  for (const Slice& slice : slices(facts))
    for (unsigned bit = slice.high + 1; bit-- > slice.low;)
      key = key << 1 | (word >> bit & 1);
  return key;
}

uint32_t mask_by_slices(const MapFacts& facts) {
  uint32_t mask = 0;
  for (const Slice& slice : slices(facts))
    for (unsigned bit = slice.low; bit <= slice.high; bit++)
      mask |= 1u << bit;
  return mask;
}

const Row* row_by_search(uint32_t word) {
  for (const Row& row : all_rows())
    if ((word & row.mask) == row.value)
      return &row;
  return nullptr;
}

decode_stub stub_by_search(uint32_t word) {
  const Row* const row = row_by_search(word);
  return row == nullptr ? nullptr : row->stub;
}

TEST(Rows, AreComplete) {
  EXPECT_EQ(all_rows().size(), expected_rows);
  std::map<uint32_t, size_t> in_map;
  std::map<Tier, size_t> in_tier;
  for (const Row& row : all_rows()) {
    in_map[row.mask]++;
    in_tier[row.tier]++;
  }
  for (unsigned number = 1; number <= decoder_map_count; number++)
    EXPECT_EQ(in_map[decoder_maps[number - 1].mask], map_facts[number - 1].rows)
        << "decoder_map_" << number;
  for (const TierFacts& facts : tier_facts)
    EXPECT_EQ(in_tier[facts.tier], facts.rows) << facts.name;
}

TEST(Rows, BelongToTheirMapAlone) {
  for (const Row& row : all_rows()) {
    EXPECT_EQ(row.value & ~row.mask, 0u) << row.name;
    EXPECT_TRUE(in_sve_space(row.value)) << row.name;
    for (unsigned index = 0; index < decoder_map_count; index++) {
      const bool own = decoder_maps[index].mask == row.mask;
      EXPECT_EQ(row_in_map(index, row.value), own ? &row : nullptr) << row.name << ' ' << index + 1;
    }
  }
}

TEST(Rows, ArePairwiseDisjoint) {
  for (const Row& a : all_rows())
    for (const Row& b : all_rows())
      if (&a != &b && ((a.value ^ b.value) & a.mask & b.mask) == 0)
        ADD_FAILURE() << a.name << " and " << b.name << " have a word in common";
}

TEST(Rows, HaveTheirOwnNamesAndStubs) {
  std::set<std::string> names;
  for (const Row& row : all_rows()) {
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_EQ(row_of_stub(row.stub), &row) << row.name;
  }
}

TEST(DecoderMaps, HaveTheirMasksAndSteps) {
  std::set<unsigned> steps;
  unsigned widest = 32;
  for (unsigned number = 1; number <= decoder_map_count; number++) {
    const MapFacts& facts = map_facts[number - 1];
    const decoder_map& map = decoder_maps[number - 1];
    EXPECT_EQ(map.mask, mask_by_slices(facts)) << "decoder_map_" << number;
    EXPECT_EQ(static_cast<unsigned>(std::popcount(map.mask)), facts.key_width) << number;
    EXPECT_EQ(map.step, facts.step) << number;
    EXPECT_LE(facts.key_width, widest) << number;
    widest = facts.key_width;
    steps.insert(map.step);
  }
  EXPECT_EQ(steps.size(), decoder_map_count);
  EXPECT_EQ(*steps.begin(), 1u);
  EXPECT_EQ(*steps.rbegin(), decoder_map_count);
}

TEST(Cascades, FindEveryRow) {
  std::mt19937 random(2);
  for (const Row& row : all_rows())
    for (int i = 0; i < 20; i++) {
      const uint32_t word = row.value | (static_cast<uint32_t>(random()) & ~row.mask);
      ASSERT_EQ(is_sve(word), row.stub) << row.name << ' ' << std::hex << word;
      ASSERT_EQ(stub_to_execute(word), row.stub) << row.name << ' ' << std::hex << word;
      ASSERT_EQ(row_by_search(word), &row) << row.name << ' ' << std::hex << word;
    }
}

TEST(Cascades, FindNothingElse) {
  std::mt19937 random(3);
  for (int i = 0; i < 30000; i++) {
    uint32_t word = static_cast<uint32_t>(random());
    if (i % 2 != 0)
      word = (word & ~(0xfu << 25)) | 2u << 25;  // into the SVE space
    ASSERT_EQ(is_sve(word), stub_by_search(word)) << std::hex << word;
    ASSERT_EQ(stub_to_execute(word), stub_by_search(word)) << std::hex << word;
  }
  // One bit away from a row.
  for (const Row& row : all_rows())
    for (unsigned bit = 0; bit < 32; bit++) {
      const uint32_t word = row.value ^ 1u << bit;
      ASSERT_EQ(is_sve(word), stub_by_search(word)) << row.name << " bit " << bit;
    }
}

// Words with a known place in the maps.
TEST(Cascades, FindKnownWords) {
  const struct {
    uint32_t word;
    unsigned map;
    uint32_t key;
    const char* name;
  } known[] = {
      {0x252c9000, 1, 0x252c9000, "VecPClearFFSR"}, {0x25289000, 2, 0x2528900, "VecPWriteFFSRP"},
      {0x252891e0, 2, 0x2528900, "VecPWriteFFSRP"}, {0x04400861, 20, 0x2200, "VecU16AddVVM"},
      {0xa5a0a000, 36, 0x52d5, "VecS32CLoad1SIZ"},
  };
  for (const auto& [word, map, key, name] : known) {
    const Row* const row = row_in_map(map - 1, word);
    ASSERT_NE(row, nullptr) << name;
    EXPECT_STREQ(row->name, name);
    EXPECT_EQ(key_by_slices(map_facts[map - 1], word), key) << name;
    EXPECT_EQ(key_by_slices(map_facts[map - 1], row->value), key) << name;
    EXPECT_EQ(is_sve(word), row->stub) << name;
  }
  for (unsigned bit = 0; bit < 5; bit++)
    EXPECT_EQ(row_in_map(1, 0x25289000 | 1u << bit), nullptr) << bit;
}

// Whatever the disassembler knows of the SVE encodings is given a name before a program dies of it.
TEST(Describe, KnowsWhatTheDisassemblerKnows) {
  std::vector<uint32_t> words;
  std::mt19937 random(7);
  while (words.size() < 30000)
    words.push_back((random() & ~0x1e000000u) | 0x04000000);
  const std::vector<std::string> texts = ir_test::disassemble(words);
  unsigned emulated = 0, others = 0, nameless = 0;
  for (size_t i = 0; i < words.size(); i++) {
    const char* const name = sve_describe_word(words[i]);
    const bool known = texts[i] != ir_test::undefined;
    ASSERT_EQ(name != nullptr && strcmp(name, "SVE") == 0, is_sve(words[i]) != nullptr);
    EXPECT_TRUE(name != nullptr || !known) << std::hex << words[i] << " " << texts[i];
    (is_sve(words[i]) != nullptr ? emulated : others) += known;
    nameless += name == nullptr;
  }
  EXPECT_GT(emulated, 5000u);
  EXPECT_GT(others, 3000u);
  EXPECT_STREQ(sve_describe_word(0x45009800), "SVE I8MM, matrix multiply");
  EXPECT_STREQ(sve_describe_word(0x04206000), "SVE2, multiply unpredicated");
  EXPECT_GT(nameless, 1000u);
}

TEST(Execute, LeavesAWordWithoutARowAlone) {
  constexpr uint32_t nop = 0xd503201f;
  constexpr uint32_t mul_z0_z0_z0 = 0x04206000;  // unpredicated, of a later version
  for (const uint32_t word : {~0u, 0u, nop, mul_z0_z0_z0}) {
    ASSERT_EQ(stub_by_search(word), nullptr) << std::hex << word;
    EXPECT_EQ(is_sve(word), nullptr) << std::hex << word;
    cpu_state state;
    memset(&state, 0x5a, sizeof state);
    state.pc = reinterpret_cast<uint64_t>(&word);
    const cpu_state before = state;
    EXPECT_EQ(execute_sve_instruction(&state), aarch64_decode_unimplemented);
    EXPECT_EQ(memcmp(&state, &before, sizeof state), 0) << std::hex << word;
  }
}

TEST(Execute, CarriesOutOneInstruction) {
  const uint32_t add_z1_p2_z3 = 0x04400861;  // ADD Z1.H, P2/M, Z1.H, Z3.H
  cpu_state state = {};
  state.pc = reinterpret_cast<uint64_t>(&add_z1_p2_z3);
  for (unsigned i = 0; i < vector_bytes; i++) {
    state.z[1][i] = static_cast<uint8_t>(i);
    state.z[3][i] = 0x10;
    state.p[2][i] = i == 4 ? 3 : 2;  // bit 0 alone counts
  }
  EXPECT_EQ(execute_sve_instruction(&state), aarch64_decode_ok);
  EXPECT_EQ(state.pc, reinterpret_cast<uint64_t>(&add_z1_p2_z3) + 4);
  EXPECT_EQ(state.instruction, add_z1_p2_z3);
  for (unsigned i = 0; i < vector_bytes; i++)
    EXPECT_EQ(state.z[1][i], i + (i == 4 || i == 5 ? 0x10 : 0)) << i;
}

// Half precision goes by the model, single by the host's unit with the record's status.
TEST(Execute, LeavesTheHostsFloatingPointStatus) {
  constexpr uint32_t divided_by_zero = 2;
  for (const uint32_t fdiv : {0x654d8000u, 0x658d8000u}) {  // FDIV Z0.H or .S, P0/M, Z0, Z0
    cpu_state state = {};
    state.pc = reinterpret_cast<uint64_t>(&fdiv);
    memset(state.p[0], 1, vector_bytes);
    host::write_fpsr(divided_by_zero);
    EXPECT_EQ(execute_sve_instruction(&state), aarch64_decode_ok);
    EXPECT_EQ(host::read_fpsr(), divided_by_zero);
    EXPECT_EQ(state.fpsr, 1u);  // 0 by 0 is invalid
  }
}

}  // namespace
