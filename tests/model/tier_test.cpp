// Tier against tier: every row of the fast path against its twin in the reference model.
//
// TAVOK_TIER_SEED, TAVOK_TIER_ROW (a part of the rows' names) and TAVOK_TIER_COUNT (cases for each
// row) replay a failure or make a long run.
#include <cstdlib>
#include <memory>

#include "host/fp_unit.h"
#include "tests/model/random_case.h"
#include "tests/model/twin_row.h"

namespace {

using fixture::Random;

uint64_t setting(const char* name, uint64_t otherwise) {
  const char* const text = getenv(name);
  return text == nullptr ? otherwise : strtoull(text, nullptr, 0);
}

const uint64_t seed = setting("TAVOK_TIER_SEED", 1);
const uint64_t count = setting("TAVOK_TIER_COUNT", 60);

bool is_fast(const Row& row) { return row.tier == Tier::fast || row.tier == Tier::host_fp; }

bool is_chosen(const Row& row) {
  const char* const part = getenv("TAVOK_TIER_ROW");
  return part == nullptr || std::string_view(row.name).find(part) != std::string_view::npos;
}

// What the bridge makes of the record beside the instruction itself: conditions without the upper
// half of their field, FZ16 in fpcr, ffr of clean bytes. The fast path notes the word, but for a
// reserved immediate, with which neither tier touches anything.
void settle(cpu_state& fast, const cpu_state& before) {
  if (fast.instruction == before.instruction)
    return;
  fast.nzcv &= 0xffffffff;
  fast.fpcr |= before.fz16;
  for (uint8_t& byte : fast.ffr)
    byte &= 1;
  fast.instruction = before.instruction;
}

// The stub as the application runs it: with the record's controls in the host's unit.
void run_fast(const Row& row, uint32_t word, cpu_state& state) {
  const uint64_t saved = host::read_fpcr();
  host::write_fpcr(state.fpcr);
  row.stub(&state, word);
  host::write_fpcr(saved);
}

testing::AssertionResult agree(const Row& row, const TwinRow& twin, const tiers::Case& chosen,
                               tiers::Memory& memory) {
  static tiers::Memory before, after_fast;
  const bool touches_memory = tiers::touches_memory(row);
  if (touches_memory)
    before = memory;
  cpu_state fast = chosen.state, model = chosen.state;
  run_fast(row, chosen.word, fast);
  if (touches_memory) {
    after_fast = memory;
    memory = before;
  }
  twin.stub(&model, chosen.word);
  settle(fast, chosen.state);
  const bool same_memory = !touches_memory || memory.bytes == after_fast.bytes;
  if (same_memory && memcmp(&fast, &model, sizeof fast) == 0)
    return testing::AssertionSuccess();
  {
    const testing::ScopedTrace trace(__FILE__, __LINE__, "expected: the twin, actual: the row");
    fixture::expect_same(model, fast);
  }
  auto failure = testing::AssertionFailure();
  failure << row.name << " " << fixture::hex(chosen.word) << ", seed " << seed
          << (same_memory ? "" : ", memory differs") << "\nbefore: nzcv "
          << fixture::hex(chosen.state.nzcv) << " fpsr " << fixture::hex(chosen.state.fpsr)
          << " fpcr " << fixture::hex(chosen.state.fpcr) << " ffr "
          << fixture::hex(chosen.state.ffr);
  for (const unsigned low : {0, 5, 16}) {
    const unsigned i = chosen.word >> low & 31;
    failure << "\nregister " << i << ": z " << fixture::hex(chosen.state.z[i]) << " p "
            << fixture::hex(chosen.state.p[i % p_registers]) << " x "
            << fixture::hex(chosen.state.x[i]);
  }
  for (const unsigned low : {10, 16}) {
    const unsigned i = chosen.word >> low & 15;
    failure << "\npredicate " << i << " or " << i % 8 << ": " << fixture::hex(chosen.state.p[i])
            << " or " << fixture::hex(chosen.state.p[i % 8]);
  }
  return failure;
}

TEST(Tiers, HaveATwinWithTheRowsOperandBitsForEachFastRow) {
  size_t rows = 0;
  for (const Row& row : all_rows())
    if (is_fast(row)) {
      rows++;
      const TwinRow* const twin = twin_named(row.name);
      ASSERT_NE(twin, nullptr) << row.name;
      EXPECT_EQ(twin->mask, row.mask) << row.name;
    }
  EXPECT_EQ(all_twins().size(), rows) << "twins without a row";
}

// The forms that differ by design differ only where memory cannot be read, and all of this can.
TEST(Tiers, AgreeOnEveryRow) {
  const auto memory = std::make_unique<tiers::Memory>();
  size_t rows = 0;
  for (const Row& row : all_rows()) {
    if (!is_fast(row) || !is_chosen(row))
      continue;
    rows++;
    const TwinRow* const twin = twin_named(row.name);
    ASSERT_NE(twin, nullptr) << row.name;
    Random random(seed ^ std::hash<std::string_view>{}(row.name));
    for (uint8_t& byte : memory->bytes)
      byte = static_cast<uint8_t>(random());
    for (uint64_t i = 0; i < count; i++) {
      const tiers::Case chosen = tiers::random_case(row, random, *memory);
      const testing::AssertionResult same = agree(row, *twin, chosen, *memory);
      EXPECT_TRUE(same) << "case " << i;
      if (!same)
        break;
    }
  }
  EXPECT_GT(rows, 0u) << "no row has that in its name";
}

}  // namespace
