// Every row against its twin, the function of the reference model for any vector length: the fast
// path, the host's floating-point unit, and the model as compiled for this vector length, which
// takes the host's unit for floating point, too.
//
// TAVOK_TIER_SEED, TAVOK_TIER_ROW (a part of the rows' names) and TAVOK_TIER_COUNT (cases for each
// row) replay a failure or make a long run. TAVOK_TIER_HALVES is how many half-precision values
// meet as many others; with 256, all 65536 of them are single operands.
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "sve/fp/convert.h"
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

const uint64_t halves = setting("TAVOK_TIER_HALVES", 20);

bool has_twin(const Row& row) { return row.tier != Tier::no_operation; }

bool is_chosen(const Row& row) {
  const char* const part = getenv("TAVOK_TIER_ROW");
  return part == nullptr || std::string_view(row.name).find(part) != std::string_view::npos;
}

testing::AssertionResult agree(const Row& row, const TwinRow& twin, const tiers::Case& chosen,
                               tiers::Memory& memory) {
  static tiers::Memory before, after_fast;
  const bool touches_memory = tiers::touches_memory(row);
  if (touches_memory)
    before = memory;
  cpu_state fast = chosen.state, model = chosen.state;
  tiers::run_fast(row, chosen.word, fast);
  if (touches_memory) {
    after_fast = memory;
    memory = before;
  }
  twin.stub(&model, chosen.word);
  tiers::settle(fast, chosen.state);
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

TEST(Tiers, HaveATwinWithTheRowsOperandBitsForEachRow) {
  size_t rows = 0;
  for (const Row& row : all_rows())
    if (has_twin(row)) {
      rows++;
      const TwinRow* const twin = twin_named(row.name);
      ASSERT_NE(twin, nullptr) << row.name;
      EXPECT_EQ(twin->mask, row.mask) << row.name;
    }
  EXPECT_EQ(all_twins().size(), rows) << "twins without a row";
}

// The forms that differ by design differ only where memory cannot be read, and all of this can.
TEST(Tiers, AgreeOnEveryRow) {
  tiers::Memory& memory = tiers::low_memory();
  size_t rows = 0;
  for (const Row& row : all_rows()) {
    if (!has_twin(row) || !is_chosen(row))
      continue;
    rows++;
    const TwinRow* const twin = twin_named(row.name);
    ASSERT_NE(twin, nullptr) << row.name;
    Random random(seed ^ std::hash<std::string_view>{}(row.name));
    for (uint8_t& byte : memory.bytes)
      byte = static_cast<uint8_t>(random());
    for (uint64_t i = 0; i < count; i++) {
      const tiers::Case chosen = tiers::random_case(row, random, memory);
      const testing::AssertionResult same = agree(row, *twin, chosen, memory);
      EXPECT_TRUE(same) << "case " << i;
      if (!same)
        break;
    }
  }
  EXPECT_GT(rows, 0u) << "no row has that in its name";
}

// Rows that compute with half precision, a word of each with registers apart.
struct HalfRow {
  const Row* row;
  uint32_t word;
  bool unary, merging, fused;
};

constexpr unsigned d = 3, n = 1, m = 2;

std::vector<HalfRow> half_rows() {
  std::vector<HalfRow> rows;
  for (const Row& row : all_rows()) {
    const std::string_view name = row.name;
    const auto has = [&](std::string_view part) { return name.find(part) != name.npos; };
    if (row.tier != Tier::model || !is_chosen(row) ||
        !(name.starts_with("VecF16") || has("FromH") || has("ExtndH")))
      continue;
    const uint32_t operands = d | n << 5 | m << 16;
    const bool unary = (name.ends_with("VM") && !name.ends_with("VVM")) || name.ends_with("V0Z");
    rows.push_back({&row, row.value | (operands & ~row.mask), unary, name.ends_with("M"),
                    has("FM") || has("FNM") || has("FCMLA")});
  }
  return rows;
}

// All elements alike, so that no element's flags hide another's.
void fill(uint8_t* slot, uint16_t value) {
  for (unsigned e = 0; e < vector_bytes / sizeof value; e++)
    memcpy(slot + e * sizeof value, &value, sizeof value);
}

// An addend and two factors whose product is near half a unit of the addend's last place, so that
// the sum is near a tie: what rounds twice gets some of these wrong.
std::array<uint16_t, 3> near_tie(Random& random) {
  const auto half = [](double value) {
    FPSCR fpscr = 0;
    return FPConvert<uint16_t>(std::bit_cast<uint64_t>(value), FPRounding_TIEEVEN, fpscr);
  };
  const int exponent = static_cast<int>(random() % 9) - 4;
  const double addend = std::ldexp(1024 + static_cast<double>(random() % 1024), exponent - 10);
  const double factor = std::ldexp(1024 + static_cast<double>(random() % 1024), -10);
  const double other = std::ldexp(random() % 2 == 0 ? 1 : -1, exponent - 11) / factor;
  return {half(addend), half(factor), half(other)};
}

TEST(Tiers, AgreeOnHalfPrecisionUnderAllControls) {
  tiers::Memory& memory = tiers::low_memory();
  Random random(seed);
  std::vector<uint16_t> values(halves);
  for (uint16_t& value : values)
    value = static_cast<uint16_t>(tiers::interesting_fp(random, sizeof value));
  const uint64_t pairs = halves * halves, unary_step = pairs < 65536 ? 65536 / pairs : 1;
  uint64_t compared = 0;
  for (const HalfRow& half : half_rows()) {
    const TwinRow* const twin = twin_named(half.row->name);
    ASSERT_NE(twin, nullptr) << half.row->name;
    for (uint32_t controls = 0; controls < 64; controls++) {
      tiers::Case chosen{half.word, {}};
      chosen.state.fpcr = (controls & 31) << 22;  // RMode, FZ, DN, AHP
      chosen.state.fz16 = controls >= 32 ? fpcr_fz16 : 0;
      memset(chosen.state.p, 1, sizeof chosen.state.p);
      bool same = true;
      for (uint64_t i = 0; i < pairs && same; i++, compared++) {
        // Two operands go through all pairs; a third is any.
        const auto alone = static_cast<uint16_t>(i * unary_step);
        const uint16_t second = values[i / halves], third = values[random() % halves];
        fill(chosen.state.z[n], half.unary ? alone : values[i % halves]);
        fill(chosen.state.z[d], half.merging ? second : third);
        fill(chosen.state.z[m], half.merging ? third : second);
        if (half.fused && i % 2 == 0) {
          const std::array<uint16_t, 3> operands = near_tie(random);
          const unsigned first = random() % 3;
          for (const unsigned z : {0, 1, 2})
            fill(chosen.state.z[std::array{d, n, m}[z]], operands[(first + z) % 3]);
        }
        const testing::AssertionResult result = agree(*half.row, *twin, chosen, memory);
        EXPECT_TRUE(result);
        same = static_cast<bool>(result);
      }
    }
  }
  RecordProperty("Compared", std::to_string(compared));
}

}  // namespace
