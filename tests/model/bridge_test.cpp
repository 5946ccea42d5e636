// Edge cases of rows through the bridge.
#include "sve/client/sve_utils.h"
#include "sve/model/context.h"
#include "sve/state/guarded_reads.h"
#include "tests/model/lanes.h"

namespace {

using fixture::encode;
using fixture::execute;
using fixture::lane;
using fixture::Random;
using fixture::row_named;
using fixture::set_lane;

constexpr uint64_t n = 1ull << 31, z = 1ull << 30, c = 1ull << 29, v = 1ull << 28;

cpu_state some_state() {
  Random random(9);
  cpu_state state = fixture::random_state(random);
  state.fpcr = 0;
  state.fpsr = 0;
  return state;
}

void set_predicate(cpu_state& state, unsigned p, uint16_t bits) {
  for (unsigned i = 0; i < vector_bytes; i++)
    state.p[p][i] = bits >> i & 1;
}
uint16_t predicate(const cpu_state& state, unsigned p) {
  return static_cast<uint16_t>(lanes::predicate_of(state.p[p]).words[0]);
}

void run(cpu_state& state, const char* name, std::initializer_list<fixture::Field> fields) {
  execute(state, row_named(name), fields);
}

TEST(Bridge, CarriesTheContextBackWhateverTheInstruction) {
  cpu_state state = some_state();
  state.nzcv = 0x123456789abcdef0;
  state.fpsr = 0x5;
  state.fpcr = 0x400000;
  state.fz16 = fpcr_fz16;
  state.instruction = 42;
  for (unsigned i = 0; i < vector_bytes; i++)
    state.ffr[i] = static_cast<uint8_t>(i % 4);
  run(state, "VecU8ClzVM", {{0, 1}, {5, 2}, {10, 3}});
  EXPECT_EQ(state.nzcv, 0x9abcdef0u);
  EXPECT_EQ(state.fpsr, 0x5u);
  EXPECT_EQ(state.fpcr, 0x400000u | fpcr_fz16);
  EXPECT_EQ(state.fz16, fpcr_fz16);
  EXPECT_EQ(state.instruction, 42u) << "not the model's to write";
  for (unsigned i = 0; i < vector_bytes; i++)
    EXPECT_EQ(state.ffr[i], i % 2);
}

TEST(Bridge, KnowsTheConfiguredVectorLength) {
  EXPECT_EQ(SVEInitialize(), 1);
  EXPECT_EQ(ctxt, &cpu_ctxt);
  EXPECT_EQ(cpu_ctxt.vl, 2u);
}

TEST(Bridge, DropsWhatGoesToTheZeroRegister) {
  cpu_state state = some_state();
  const uint64_t sp = state.x[31];
  run(state, "VecU8LastAV", {{0, 31}, {5, 2}, {10, 3}});
  EXPECT_EQ(state.x[31], sp);
  set_predicate(state, 1, 0);
  run(state, "VecU8CondXASV", {{0, 31}, {5, 2}, {10, 1}});
  EXPECT_EQ(state.x[31], sp);
}

TEST(Bridge, ZeroExtendsOrClearsAroundScalars) {
  cpu_state state = some_state();
  set_predicate(state, 1, 0);
  state.x[4] = 0xfedcba9876543210;
  run(state, "VecU32CondXASV", {{0, 4}, {5, 2}, {10, 1}});
  EXPECT_EQ(state.x[4], 0x76543210u);
  const uint64_t low = lane(state.z[6], 1, 0);
  run(state, "VecB8CondXBSV", {{0, 6}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[6], 8, 0), low);
  EXPECT_EQ(lane(state.z[6], 8, 1), 0u);
  set_predicate(state, 1, 1);
  set_lane(state.z[2], 1, 0, 0x80);
  run(state, "VecS8AddReduceV", {{0, 6}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[6], 8, 0), static_cast<uint64_t>(-128)) << "a doubleword";
  EXPECT_EQ(lane(state.z[6], 8, 1), 0u);
}

TEST(Bridge, ExtendsThirtyTwoBitCountsByTheTypesSign) {
  cpu_state state = some_state();
  state.x[5] = 0xffffffff80000001;  // two above the smallest word, less a count of 4 words
  run(state, "VecS32QDecrVL4SI", {{0, 5}, {5, 31}});
  EXPECT_EQ(state.x[5], 0xffffffff80000000u);
  state.x[5] = 0xffffffff00000003;
  run(state, "VecU32QDecrVL4SI", {{0, 5}, {5, 31}});
  EXPECT_EQ(state.x[5], 0u);
  state.x[5] = 1ull << 63;
  set_predicate(state, 7, 0xffff);
  run(state, "VecS64QDecrSCount8PS", {{0, 5}, {5, 7}});
  EXPECT_EQ(state.x[5], 1ull << 63);
}

TEST(Bridge, TakesTheStackPointerAsBaseAndZeroAsIndex) {
  cpu_state state = some_state();
  const int8_t memory[32] = {-1, 2, -3, 4, -5, 6, -7, 8};
  set_predicate(state, 1, 0xffff);
  state.x[31] = reinterpret_cast<uint64_t>(memory);
  memset(state.z[3], 0, vector_bytes);
  run(state, "VecS32Load1VSZ", {{0, 2}, {5, 31}, {10, 1}, {16, 3}});
  for (unsigned e = 0; e < 4; e++)
    EXPECT_EQ(lane(state.z[2], 4, e), 0xffffffffu);
  run(state, "VecS16CLoadFF1LSSZ", {{0, 2}, {5, 31}, {10, 1}, {16, 31}});
  for (unsigned e = 0; e < 8; e++)
    EXPECT_EQ(lane(state.z[2], 2, e), static_cast<uint16_t>(memory[e]));
}

TEST(Bridge, SetsFlagsOfLoopPredicates) {
  struct {
    const char* row;
    uint64_t a, b;
    uint16_t result;
    uint64_t flags;
  } const cases[] = {
      {"VecS32While4LESS", 3, 5, 0x0111, n | c},
      {"VecS32While4LESS", 0x1'0000'0003, 0x2'0000'0005, 0x0111, n | c},
      {"VecS32While4LESS", 6, 5, 0, z | c},
      {"VecS64While8LESS", ~0ull >> 1, ~0ull >> 1, 0x0101, n},
      {"VecS8While8LESS", 1ull << 63, ~0ull >> 1, 0xffff, n},
      {"VecS8While4LESS", 0xffffffff, 0, 0x0003, n | c},
  };
  for (const auto& test : cases) {
    cpu_state state = some_state();
    state.nzcv = v;
    state.x[1] = test.a;
    state.x[2] = test.b;
    run(state, test.row, {{0, 3}, {5, 1}, {16, 2}});
    EXPECT_EQ(predicate(state, 3), test.result) << test.row;
    EXPECT_EQ(state.nzcv, test.flags) << test.row;
  }
}

TEST(Bridge, EndsLoops) {
  for (const uint64_t old : {uint64_t{0}, c, z | v, c | v}) {
    cpu_state state = some_state();
    state.nzcv = old;
    state.x[1] = 0x1'0000'0005;
    state.x[2] = 5;
    run(state, "VecU32CTermEQ", {{5, 1}, {16, 2}});
    EXPECT_EQ(state.nzcv, n | (old & (z | c)));
    state.nzcv = old;
    run(state, "VecU64CTermEQ", {{5, 1}, {16, 2}});
    EXPECT_EQ(state.nzcv, (old & (z | c)) | ((old & c) == 0 ? v : 0));
  }
}

TEST(Bridge, SetsFlagsOfPredicates) {
  cpu_state state = some_state();
  run(state, "VecP32TrueFlgI", {{0, 2}, {5, 1}});
  EXPECT_EQ(predicate(state, 2), 0x0001);
  EXPECT_EQ(state.nzcv >> 28, 8u);
  set_predicate(state, 9, 0);
  run(state, "VecPBreakPrevAPZ", {{0, 2}, {5, 3}, {10, 9}, {16, 4}});
  EXPECT_EQ(predicate(state, 2), 0);
  EXPECT_EQ(state.nzcv >> 28, 8u) << "without flags";
  state.p[5][3] = 0xfe;
  run(state, "VecPSetFirstActiveP", {{0, 5}, {5, 9}});
  EXPECT_EQ(state.p[5][3], 0) << "bytes are 0 or 1";
  EXPECT_EQ(state.nzcv >> 28, 6u);
  // The destination is the governing predicate: the flags see it as it was.
  set_predicate(state, 1, 0x00f0);
  set_predicate(state, 2, 0x0080);
  run(state, "VecPAndFlgPPZ", {{0, 1}, {5, 2}, {10, 1}, {16, 2}});
  EXPECT_EQ(predicate(state, 1), 0x0080);
  EXPECT_EQ(state.nzcv >> 28, 0u);
}

TEST(Bridge, FlushesHalfPrecisionByTheRecordsOwnBit) {
  cpu_state state = some_state();
  set_predicate(state, 1, 0xffff);
  state.fz16 = fpcr_fz16;
  for (unsigned e = 0; e < 8; e++) {
    set_lane(state.z[2], 2, e, 0x0001);
    set_lane(state.z[3], 2, e, 0x0000);
  }
  run(state, "VecF16AddVVM", {{0, 3}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[3], 2, 0), 0u);
  memset(state.z[3], 0, vector_bytes);
  run(state, "VecF32ExtndHVM", {{0, 3}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[3], 4, 0), 0x33800000u) << "conversions do not flush half precision";
}

TEST(Bridge, BringsFloatingPointFlagsToTheRecord) {
  cpu_state state = some_state();
  set_predicate(state, 1, 0x0001);
  set_lane(state.z[2], 2, 0, 0x0000);
  set_lane(state.z[3], 2, 0, 0x3c00);
  state.fpsr = 0x80;
  state.fpcr = 0x02c00000;
  run(state, "VecF16DivVVM", {{0, 3}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[3], 2, 0), 0x7c00u);
  EXPECT_EQ(state.fpsr, 0x82u) << "DZC on top of IDC, and no control bit";
  set_predicate(state, 1, 0);
  const std::string old = fixture::hex(state.z[3]);
  run(state, "VecF16AddVVM", {{0, 3}, {5, 2}, {10, 1}});
  EXPECT_EQ(fixture::hex(state.z[3]), old);
  EXPECT_EQ(state.fpsr, 0x82u);
}

TEST(Bridge, ReducesFloatingPointWithIdentities) {
  struct {
    const char* row;
    uint16_t active;
    uint32_t fpsr, result;
  } const cases[] = {
      {"VecF32AddReduceFV", 0x0101, 0, 0x00000000},  // (-0 + 0) + (-0 + 0)
      {"VecF32AddReduceFV", 0x0000, 0, 0x00000000},
      {"VecF16MinReduceFV", 0x0000, 0, 0x7c00},
      {"VecF16MaxReduceFV", 0x0000, 0, 0xfc00},
      {"VecD64MaxReduceFV", 0x0000, 0, 0},  // the low word of minus infinity
  };
  for (const auto& test : cases) {
    cpu_state state = some_state();
    set_predicate(state, 1, test.active);
    for (unsigned e = 0; e < 4; e++)
      set_lane(state.z[2], 4, e, 0x80000000);
    run(state, test.row, {{0, 3}, {5, 2}, {10, 1}});
    EXPECT_EQ(lane(state.z[3], 4, 0), test.result) << test.row;
    EXPECT_EQ(state.fpsr, test.fpsr) << test.row;
  }
  cpu_state state = some_state();
  set_predicate(state, 1, 0x0001);
  set_lane(state.z[2], 2, 0, 0x7d01);  // signalling
  run(state, "VecF16MaxNumReduceFV", {{0, 3}, {5, 2}, {10, 1}});
  EXPECT_EQ(lane(state.z[3], 8, 0), 0x7f01u);
  EXPECT_EQ(state.fpsr, 1u) << "a signalling NaN wins over the identity";
}

TEST(Bridge, ComparesUnorderedValues) {
  cpu_state state = some_state();
  set_predicate(state, 1, 0x0001);
  set_lane(state.z[2], 2, 0, 0x7e00);
  run(state, "VecF16CmpNEVVZ", {{0, 3}, {5, 2}, {10, 1}, {16, 2}});
  EXPECT_EQ(predicate(state, 3), 1);
  EXPECT_EQ(state.fpsr, 0u);
  run(state, "VecF16CmpGEVVZ", {{0, 3}, {5, 2}, {10, 1}, {16, 2}});
  EXPECT_EQ(predicate(state, 3), 0);
  EXPECT_EQ(state.fpsr, 1u);
}

}  // namespace
