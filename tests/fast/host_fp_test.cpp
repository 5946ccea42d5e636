// The floating-point rows of the fast path, against the floating-point library: registers and
// FPSR, bit for bit, under every control setting. On an AArch64 host this compares the processor's
// arithmetic with the library's; elsewhere it checks how the functions put operands together.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "host/fp_unit.h"
#include "sve/decode/dispatch.h"
#include "sve/fp/fp.h"

namespace {

constexpr uint32_t flags_mask = 0x9f;

struct Operands {
  uint64_t d, n, m;  // the element of Zd or Zdn, of bits 9 to 5, of bits 20 to 16
};
using Expected = std::function<uint64_t(const Operands&, FPSCR&)>;

// What one element of a row computes, and how wide its container is.
struct Case {
  const char* row;
  unsigned bytes;
  bool compares;
  Expected element;
};

template <class T> T neg(T a) { return FPNeg<T>(a); }

// Everything that exists in both precisions.
template <class T> void add_arithmetic(std::vector<Case>& cases, const char* type) {
  static std::vector<std::string> names;
  names.reserve(400);
  const auto add = [&](const char* operation, bool compares, auto element) {
    names.push_back(std::string("Vec") + type + operation);
    cases.push_back({names.back().c_str(), sizeof(T), compares, [=](const Operands& o, FPSCR& w) {
                       return uint64_t{static_cast<T>(element(T(o.d), T(o.n), T(o.m), w))};
                     }});
  };
  constexpr T one = FPFormat<T>::one, two = FPFormat<T>::two;
  constexpr T half = one - FPFormat<T>::hidden_bit;
  // Destructive forms have their second operand in bits 9 to 5.
  add("AddVVM", false, [](T d, T n, T, FPSCR& w) { return FPAdd<T>(d, n, w); });
  add("SubVVM", false, [](T d, T n, T, FPSCR& w) { return FPSub<T>(d, n, w); });
  add("SubRVVM", false, [](T d, T n, T, FPSCR& w) { return FPSub<T>(n, d, w); });
  add("MulVVM", false, [](T d, T n, T, FPSCR& w) { return FPMul<T>(d, n, w); });
  add("DivVVM", false, [](T d, T n, T, FPSCR& w) { return FPDiv<T>(d, n, w); });
  add("DivRVVM", false, [](T d, T n, T, FPSCR& w) { return FPDiv<T>(n, d, w); });
  add("MaxVVM", false, [](T d, T n, T, FPSCR& w) { return FPMax<T>(d, n, w); });
  add("MaxNumVVM", false, [](T d, T n, T, FPSCR& w) { return FPMaxNum<T>(d, n, w); });
  add("MinNumVVM", false, [](T d, T n, T, FPSCR& w) { return FPMinNum<T>(d, n, w); });
  // The immediate bit is bit 5, the lowest of the field that the other forms have Zn in.
  add("AddVIM", false, [=](T d, T, T m, FPSCR& w) { return FPAdd<T>(d, m ? one : half, w); });
  add("SubVIM", false, [=](T d, T, T m, FPSCR& w) { return FPSub<T>(d, m ? one : half, w); });
  add("SubRVIM", false, [=](T d, T, T m, FPSCR& w) { return FPSub<T>(m ? one : half, d, w); });
  add("MulVIM", false, [=](T d, T, T m, FPSCR& w) { return FPMul<T>(d, m ? two : half, w); });
  add("AddVVX", false, [](T, T n, T m, FPSCR& w) { return FPAdd<T>(n, m, w); });
  add("SubVVX", false, [](T, T n, T m, FPSCR& w) { return FPSub<T>(n, m, w); });
  add("MulVVX", false, [](T, T n, T m, FPSCR& w) { return FPMul<T>(n, m, w); });
  add("RecpSVV", false, [](T, T n, T m, FPSCR& w) { return FPRecipStepFused<T>(n, m, w); });
  add("RecpEV", false, [](T, T n, T, FPSCR& w) { return FPRecipEstimate<T>(n, w); });
  add("SqrtVM", false, [](T, T n, T, FPSCR& w) { return FPSqrt<T>(n, w); });
  add("FRIntAVM", false,
      [](T, T n, T, FPSCR& w) { return FPRoundInt<T>(n, FPRounding_TIEAWAY, false, w); });
  add("FMAVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(d, n, m, w); });
  add("FMSVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(d, neg(n), m, w); });
  add("FNMAVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(neg(d), neg(n), m, w); });
  add("FNMSVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(neg(d), n, m, w); });
  add("FMADDVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(m, d, n, w); });
  add("FMSUBVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(m, neg(d), n, w); });
  add("FNMADDVVVM", false,
      [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(neg(m), neg(d), n, w); });
  add("FNMSUBVVVM", false, [](T d, T n, T m, FPSCR& w) { return FPMulAdd<T>(neg(m), d, n, w); });
  add("CmpEQVVZ", true, [](T, T n, T m, FPSCR& w) { return FPCompareEQ<T>(n, m, w); });
  add("CmpNEVVZ", true, [](T, T n, T m, FPSCR& w) { return !FPCompareEQ<T>(n, m, w); });
  add("CmpGEVVZ", true, [](T, T n, T m, FPSCR& w) { return FPCompareGE<T>(n, m, w); });
  add("CmpGTVVZ", true, [](T, T n, T m, FPSCR& w) { return FPCompareGT<T>(n, m, w); });
  add("CmpUNVVZ", true, [](T, T n, T m, FPSCR& w) { return FPCompareUN<T>(n, m, w); });
  add("CmpEQV0Z", true, [](T, T n, T, FPSCR& w) { return FPCompareEQ<T>(n, 0, w); });
  add("CmpGEV0Z", true, [](T, T n, T, FPSCR& w) { return FPCompareGE<T>(n, 0, w); });
  add("CmpGTV0Z", true, [](T, T n, T, FPSCR& w) { return FPCompareGT<T>(n, 0, w); });
  add("CmpLEV0Z", true, [](T, T n, T, FPSCR& w) { return FPCompareGE<T>(0, n, w); });
  add("CmpLTV0Z", true, [](T, T n, T, FPSCR& w) { return FPCompareGT<T>(0, n, w); });
}

uint64_t extend_word(uint64_t a) { return uint64_t(int64_t(int32_t(uint32_t(a)))); }

void add_conversions(std::vector<Case>& cases) {
  using F = uint32_t;
  using D = uint64_t;
  const auto add = [&](const char* row, unsigned bytes, auto element) {
    cases.push_back({row, bytes, false,
                     [=](const Operands& o, FPSCR& w) { return uint64_t{element(o.n, w)}; }});
  };
  const auto to_fixed = []<class To>(auto op, bool is_unsigned, FPSCR& w) {
    return fplibFPToFixed<To>(op, 0, is_unsigned, FPRounding_ZERO, w);
  };
  const auto to_fp = []<class To>(uint64_t op, bool is_unsigned, FPSCR& w) {
    return fplibFixedToFP<To>(op, 0, is_unsigned, FPRoundingMode(w), w);
  };
  add("VecD64ExtndFVM", 8, [](D n, FPSCR& w) { return FPConvert<D>(F(n), FPRoundingMode(w), w); });
  add("VecF64TruncDVM", 8, [](D n, FPSCR& w) { return FPConvert<F>(n, FPRoundingMode(w), w); });
  add("VecF32FromS4VM", 4,
      [=](D n, FPSCR& w) { return to_fp.operator()<F>(extend_word(n), false, w); });
  add("VecD64FromS4VM", 8,
      [=](D n, FPSCR& w) { return to_fp.operator()<D>(extend_word(n), false, w); });
  add("VecF64FromS8VM", 8, [=](D n, FPSCR& w) { return to_fp.operator()<F>(n, false, w); });
  add("VecD64FromS8VM", 8, [=](D n, FPSCR& w) { return to_fp.operator()<D>(n, false, w); });
  add("VecF32FromU4VM", 4, [=](D n, FPSCR& w) { return to_fp.operator()<F>(F(n), true, w); });
  add("VecD64FromU4VM", 8, [=](D n, FPSCR& w) { return to_fp.operator()<D>(F(n), true, w); });
  add("VecD64FromU8VM", 8, [=](D n, FPSCR& w) { return to_fp.operator()<D>(n, true, w); });
  add("VecS32_4FromFVM", 4, [=](D n, FPSCR& w) { return to_fixed.operator()<F>(F(n), false, w); });
  add("VecS64_8FromFVM", 8, [=](D n, FPSCR& w) { return to_fixed.operator()<D>(F(n), false, w); });
  add("VecS64_4FromDVM", 8,
      [=](D n, FPSCR& w) { return extend_word(to_fixed.operator()<F>(n, false, w)); });
  add("VecU64_4FromDVM", 8, [=](D n, FPSCR& w) { return to_fixed.operator()<F>(n, true, w); });
  add("VecS64_8FromDVM", 8, [=](D n, FPSCR& w) { return to_fixed.operator()<D>(n, false, w); });
  add("VecU64_8FromDVM", 8, [=](D n, FPSCR& w) { return to_fixed.operator()<D>(n, true, w); });
}

std::vector<Case> all_cases() {
  std::vector<Case> cases;
  add_arithmetic<uint32_t>(cases, "F32");
  add_arithmetic<uint64_t>(cases, "D64");
  add_conversions(cases);
  return cases;
}

const Row& row_named(const std::string& name) {
  for (const Row& row : all_rows())
    if (row.name == name)
      return row;
  ADD_FAILURE() << "no row " << name;
  static const Row none{};
  return none;
}

// Values at which arithmetic changes its ways, and neighbours of powers of two.
uint64_t operand(std::mt19937_64& random, unsigned bytes) {
  const unsigned fraction = bytes == 4 ? 23 : 52;
  const unsigned exponents = bytes == 4 ? 255 : 2047;
  const uint64_t bias = exponents / 2;
  const uint64_t exponent_choices[] = {0,
                                       1,
                                       2,
                                       bias - 1,
                                       bias,
                                       bias + 1,
                                       bias + fraction,
                                       exponents - 1,
                                       exponents,
                                       bias + 31,
                                       bias + 63,
                                       random() % (exponents + 1),
                                       bias + random() % 8,
                                       exponents / 4,
                                       3 * exponents / 4};
  const uint64_t all = (1ull << fraction) - 1;
  const uint64_t fraction_choices[] = {0,
                                       1,
                                       all,
                                       all - 1,
                                       1ull << (fraction - 1),
                                       1ull << (random() % fraction),
                                       random() & all,
                                       random() & all,
                                       all << (random() % fraction) & all};
  if (random() % 16 == 0)
    return bytes == 4 ? uint32_t(random()) : random();
  return (random() & 1) << (bytes * 8 - 1) |
         exponent_choices[random() % std::size(exponent_choices)] << fraction |
         fraction_choices[random() % std::size(fraction_choices)];
}

class Registers {
public:
  explicit Registers(std::mt19937_64& random) {
    for (auto& slot : state.z)
      for (unsigned half = 0; half < 2; half++) {
        // Both words of a doubleword are single-precision values half of the time.
        const uint64_t value =
            random() % 2 ? operand(random, 8) : operand(random, 4) << 32 | operand(random, 4);
        memcpy(slot + 8 * half, &value, 8);
      }
    for (auto& slot : state.p)
      for (uint8_t& byte : slot)
        byte = uint8_t(random());
  }
  uint64_t element(unsigned z, unsigned bytes, unsigned e) const {
    uint64_t value = 0;
    memcpy(&value, state.z[z] + e * bytes, bytes);
    return value;
  }
  bool active(unsigned p, unsigned bytes, unsigned e) const { return state.p[p][e * bytes] & 1; }

  cpu_state state{};
};

struct Setting {
  uint32_t fpcr;
  uint32_t prior_flags;
};

Setting random_setting(std::mt19937_64& random) {
  return {uint32_t(random() % 16) << 22, uint32_t(random()) & flags_mask};
}

// Runs a stub under a control setting that is in force on the host, as the application's would be.
void run(const Row& row, cpu_state& state, uint32_t word, uint32_t fpcr) {
  const uint64_t saved = host::read_fpcr();
  host::write_fpcr(fpcr);
  state.fpcr = fpcr;
  EXPECT_EQ(row.stub(&state, word), aarch64_decode_ok);
  EXPECT_EQ(host::read_fpcr(), fpcr) << row.name << " changed the host's control register";
  host::write_fpcr(saved);
}

// Register numbers, often the same for two operands.
struct Numbers {
  unsigned d, n, m, pg;

  explicit Numbers(std::mt19937_64& random)
      : d(random() % 32), n(random() % 4 == 0 ? d : random() % 32),
        m(random() % 4 == 0 ? n : random() % 32), pg(random() % 8) {}
  uint32_t fields() const { return d | n << 5 | m << 16 | pg << 10; }
};

// A compare's destination is a predicate, in four bits.
unsigned predicate_destination(const Numbers& r) { return r.d & 15; }

bool unpredicated(const Row& row) { return (row.mask & 0x1c00) != 0; }

void check_case(const Case& test, std::mt19937_64& random) {
  const Row& row = row_named(test.row);
  ASSERT_EQ(row.tier, Tier::host_fp);
  const Numbers r(random);
  const uint32_t word = row.value | (r.fields() & ~row.mask);
  const bool immediate = (row.mask & 0x3e0) == 0x3c0;
  const Setting setting = random_setting(random);
  Registers before(random);
  Registers after = before;
  after.state.fpsr = setting.prior_flags;
  run(row, after.state, word, setting.fpcr);

  FPSCR expected_flags = 0;
  for (unsigned e = 0; e < vector_bytes / test.bytes; e++) {
    Operands o{before.element(r.d, test.bytes, e), before.element(r.n, test.bytes, e),
               immediate ? r.n & 1 : before.element(r.m, test.bytes, e)};
    const bool runs = unpredicated(row) || before.active(r.pg, test.bytes, e);
    FPSCR control = setting.fpcr;
    uint64_t expected = test.compares ? 0 : o.d;
    if (runs)
      expected = test.element(o, control);
    expected_flags |= control & flags_mask;
    uint64_t actual = 0;
    if (test.compares)
      memcpy(&actual, after.state.p[predicate_destination(r)] + e * test.bytes, test.bytes);
    else
      actual = after.element(r.d, test.bytes, e);
    ASSERT_EQ(actual, expected) << std::hex << row.name << " element " << e << " of " << o.d << ", "
                                << o.n << ", " << o.m << " fpcr " << setting.fpcr;
  }
  ASSERT_EQ(after.state.fpsr & flags_mask, setting.prior_flags | expected_flags)
      << std::hex << row.name << " fpcr " << setting.fpcr;
}

TEST(HostFP, AgreesWithTheLibrary) {
  std::mt19937_64 random(20240601);
  const std::vector<Case> cases = all_cases();
  for (const Case& test : cases)
    for (unsigned i = 0; i < 2000 && !HasFatalFailure(); i++)
      check_case(test, random);
}

// Complex multiplication and the reductions, whose elements are no function of their own lane.

template <class T> void check_complex(const Row& row, std::mt19937_64& random) {
  const unsigned rot = random() % 4;
  const Numbers r(random);
  const uint32_t word = row.value | (r.fields() & ~(row.mask | 3u << 13)) | rot << 13;
  const Setting setting = random_setting(random);
  Registers before(random);
  Registers after = before;
  after.state.fpsr = setting.prior_flags;
  run(row, after.state, word, setting.fpcr);
  FPSCR flags = 0;
  for (unsigned e = 0; e < vector_bytes / sizeof(T); e++) {
    const unsigned pair = e & ~1u;
    const auto at = [&](unsigned z, unsigned i) { return T(before.element(z, sizeof(T), i)); };
    const T acc = at(r.d, e);
    T expected = acc;
    FPSCR control = setting.fpcr;
    if (before.active(r.pg, sizeof(T), e)) {
      const T n_re = at(r.n, pair), n_im = at(r.n, pair + 1);
      const T m_re = at(r.m, pair), m_im = at(r.m, pair + 1);
      const T first = rot % 2 == 0 ? n_re : n_im;
      const T real[] = {m_re, neg(m_im), neg(m_re), m_im};
      const T imaginary[] = {m_im, m_re, neg(m_im), neg(m_re)};
      expected = FPMulAdd<T>(acc, first, e % 2 == 0 ? real[rot] : imaginary[rot], control);
    }
    flags |= control & flags_mask;
    ASSERT_EQ(after.element(r.d, sizeof(T), e), expected) << row.name << " rotation " << rot;
  }
  ASSERT_EQ(after.state.fpsr & flags_mask, setting.prior_flags | flags) << row.name;
}

TEST(HostFP, MultipliesComplexNumbers) {
  std::mt19937_64 random(7);
  for (unsigned i = 0; i < 2000 && !HasFatalFailure(); i++) {
    check_complex<uint32_t>(row_named("VecF32FCMLAVVVM"), random);
    check_complex<uint64_t>(row_named("VecD64FCMLAVVVM"), random);
  }
}

template <class T>
void check_reduction(const Row& row, T (*operation)(T, T, FPSCR&), std::mt19937_64& random) {
  const Numbers r(random);
  const uint32_t word = row.value | (r.fields() & ~row.mask);
  const Setting setting = random_setting(random);
  Registers before(random);
  if (random() % 8 == 0)
    memset(before.state.p[r.pg], 0xfe, vector_bytes);
  Registers after = before;
  after.state.fpsr = setting.prior_flags;
  run(row, after.state, word, setting.fpcr);
  FPSCR control = setting.fpcr;
  std::vector<T> tree;
  for (unsigned e = 0; e < vector_bytes / sizeof(T); e++)
    tree.push_back(before.active(r.pg, sizeof(T), e) ? T(before.element(r.n, sizeof(T), e))
                                                     : FPFormat<T>::default_nan);
  while (tree.size() > 1) {
    for (size_t i = 0; i < tree.size() / 2; i++)
      tree[i] = operation(tree[2 * i], tree[2 * i + 1], control);
    tree.resize(tree.size() / 2);
  }
  uint64_t low, high;
  memcpy(&low, after.state.z[r.d], 8);
  memcpy(&high, after.state.z[r.d] + 8, 8);
  ASSERT_EQ(low, uint64_t{tree[0]}) << row.name;
  ASSERT_EQ(high, 0u) << row.name;
  ASSERT_EQ(after.state.fpsr & flags_mask, setting.prior_flags | (control & flags_mask))
      << row.name;
}

TEST(HostFP, ReducesInATree) {
  std::mt19937_64 random(8);
  for (unsigned i = 0; i < 2000 && !HasFatalFailure(); i++) {
    check_reduction<uint32_t>(row_named("VecF32MaxNumReduceFV"), FPMaxNum<uint32_t>, random);
    check_reduction<uint64_t>(row_named("VecD64MaxNumReduceFV"), FPMaxNum<uint64_t>, random);
    check_reduction<uint32_t>(row_named("VecF32MinNumReduceFV"), FPMinNum<uint32_t>, random);
    check_reduction<uint64_t>(row_named("VecD64MinNumReduceFV"), FPMinNum<uint64_t>, random);
  }
}

TEST(HostFP, EveryBracketedRowIsTested) {
  std::set<std::string> tested = {"VecF32FCMLAVVVM",      "VecD64FCMLAVVVM",
                                  "VecF32MaxNumReduceFV", "VecD64MaxNumReduceFV",
                                  "VecF32MinNumReduceFV", "VecD64MinNumReduceFV"};
  for (const Case& test : all_cases())
    tested.insert(test.row);
  unsigned bracketed = 0;
  for (const Row& row : all_rows())
    if (row.tier == Tier::host_fp) {
      bracketed++;
      EXPECT_TRUE(tested.contains(row.name)) << row.name;
    }
  EXPECT_EQ(bracketed, 97u);
}

}  // namespace
