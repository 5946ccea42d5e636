// Dot products, reductions and counts of the reference model, lane by lane.
#include <limits>

#include "sve/model/counting.h"
#include "sve/model/integer.h"
#include "tests/model/element.h"

namespace {

using namespace lanes;

// ---- Dot products ----

template <class E, class Q> Wide products(const Operands& o, unsigned e, unsigned with) {
  Wide sum = get<E>(o.d, e);
  for (unsigned j = 0; j < 4; j++)
    sum += Wide{get<Q>(o.n, 4 * e + j)} * get<Q>(o.m, 4 * with + j);
  return sum;
}

template <class E, class Q>
void check_dot(const std::string& name, VecV (*f)(VecV, VecV, VecV, CpuContext*)) {
  Form form{name, Form::Result::vector, sizeof(Q)};
  form.g = {10, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, o.d, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e, products<E, Q>(run.operands, e, e));
      });
}

template <class E, class Q>
void check_indexed_dot(const std::string& name,
                       VecV (*f)(VecV, VecV, VecV, uint64_t, CpuContext*)) {
  constexpr unsigned in_segment = 16 / sizeof(E);
  Form form{name, Form::Result::vector, sizeof(Q)};
  form.g = {10, 0};
  form.m = {16, in_segment == 4 ? 8u : 16u};
  check(
      form,
      [](Random& random) {
        const auto index = static_cast<uint32_t>(random() % in_segment);
        return Immediate{index, index << (in_segment == 4 ? 19 : 20)};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, o.d, o.imm, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const unsigned with =
              e / in_segment * in_segment + static_cast<unsigned>(run.operands.imm);
          expect_lane<E>(run.result.vector, e, products<E, Q>(run.operands, e, with));
        }
      });
}

TEST(CountingLanes, DotProducts) {
  check_dot<int32_t, int8_t>("VecS32DotVVVX", VecS32DotVVVX);
  check_dot<uint32_t, uint8_t>("VecU32DotVVVX", VecU32DotVVVX);
  check_dot<int64_t, int16_t>("VecS64DotVVVX", VecS64DotVVVX);
  check_dot<uint64_t, uint16_t>("VecU64DotVVVX", VecU64DotVVVX);
  check_indexed_dot<int32_t, int8_t>("VecS32DotVVVIX", VecS32DotVVVIX);
  check_indexed_dot<uint32_t, uint8_t>("VecU32DotVVVIX", VecU32DotVVVIX);
  check_indexed_dot<int64_t, int16_t>("VecS64DotVVVIX", VecS64DotVVVIX);
  check_indexed_dot<uint64_t, uint16_t>("VecU64DotVVVIX", VecU64DotVVVIX);
}

// ---- Reductions ----

template <class E>
void check_reduction(const std::string& name, uint64_t (*f)(PredV, VecV, CpuContext*),
                     unsigned result_width, Wide start, Wide (*step)(Wide, Wide)) {
  Form form{name, Form::Result::scalar, result_width};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, c)); },
      [&](const Execution& run) {
        Wide expected = start;
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          if (active<E>(run.operands.pg, e))
            expected = step(expected, get<E>(run.operands.n, e));
        const uint64_t mask = fixture::width_mask(result_width);
        expect_element(run.result.scalar & mask, static_cast<uint64_t>(expected) & mask, 0);
      });
}

#define REDUCTION(operation, types, width, start, ...)                                             \
  SVE_EACH(REDUCTION_CHECK, operation, types, width, start, __VA_ARGS__)
#define REDUCTION_CHECK(type, operation, width, start, ...)                                        \
  {                                                                                                \
    using E = element::type;                                                                       \
    check_reduction<E>("Vec" #type #operation, Vec##type##operation, width, start,                 \
                       [](Wide x, Wide y) -> Wide { return __VA_ARGS__; });                        \
  }

// clang-format off
TEST(CountingLanes, Reductions) {
  REDUCTION(AddReduceV, (S8, S16, S32, U8, U16, U32, U64), 8, 0, x + y)
  REDUCTION(MaxReduceV, (S8, S16, S32, S64, U8, U16, U32, U64), sizeof(E), std::numeric_limits<E>::min(), x > y ? x : y)
  REDUCTION(MinReduceV, (S8, S16, S32, S64, U8, U16, U32, U64), sizeof(E), std::numeric_limits<E>::max(), x < y ? x : y)
  REDUCTION(AndReduceV, (U8, U16, U32, U64), sizeof(E), std::numeric_limits<E>::max(), x & y)
  REDUCTION(OrReduceV, (U8, U16, U32, U64), sizeof(E), 0, x | y)
  REDUCTION(XorReduceV, (U8, U16, U32, U64), sizeof(E), 0, x ^ y)
}
// clang-format on

// ---- Counts ----

// How many of n elements a pattern selects, as a list of its values.
unsigned selected(unsigned pattern, unsigned n) {
  constexpr unsigned fixed[] = {1, 2, 3, 4, 5, 6, 7, 8, 16, 32, 64, 128, 256};
  if (pattern == 0) {
    unsigned power = 1;
    while (2 * power <= n)
      power *= 2;
    return power;
  }
  if (pattern <= std::size(fixed))
    return fixed[pattern - 1] <= n ? fixed[pattern - 1] : 0;
  return pattern == 29 ? n / 4 * 4 : pattern == 30 ? n / 3 * 3 : pattern == 31 ? n : 0;
}

// Pattern and multiplier travel in one immediate: value is their bits in the word.
Immediate pattern_and_multiplier(Random& random) {
  constexpr unsigned common[] = {0, 1, 7, 8, 9, 13, 29, 30, 31, 31, 31, 31};
  const uint64_t choice = random() % 16;
  const auto pattern =
      static_cast<uint32_t>(choice < std::size(common) ? common[choice] : random() % 32);
  const auto word = static_cast<uint32_t>(random() % 16) << 16 | pattern << 5;
  return {word, word};
}
uint64_t pattern_of(const Operands& o) { return o.imm >> 5 & 31; }
uint64_t multiplier_of(const Operands& o) { return o.imm >> 16 & 15; }

template <class E> Wide pattern_count(const Execution& run) {
  return selected(static_cast<unsigned>(pattern_of(run.operands)), count<E>(run.vl)) *
         (Wide{1} + multiplier_of(run.operands));
}

template <class E> Wide active_count(const Execution& run) {
  Wide n = 0;
  for (unsigned e = 0; e < count<E>(run.vl); e++)
    n += active<E>(run.operands.pg, e);
  return n;
}

// A scalar of so many bytes with the type's sign, plus or minus a count, clamped if saturating.
struct Sum {
  unsigned bytes;
  int sign;
  bool saturating;
};

template <class E> Wide as_number(uint64_t x, unsigned bytes) {
  return std::is_signed_v<E> ? Wide{fixture::as_signed(x, bytes)}
                             : Wide{static_cast<uint64_t>(x & fixture::width_mask(bytes))};
}

template <class E> Wide sum_of(Sum sum, Wide x, Wide n) {
  Wide result = x + sum.sign * n;
  if (!sum.saturating)
    return result;
  const Wide span = Wide{1} << (8 * sum.bytes - std::is_signed_v<E>);
  const Wide low = std::is_signed_v<E> ? -span : 0;
  return result < low ? low : result >= span ? span - 1 : result;
}

template <class E>
void check_scalar_pattern(const std::string& name,
                          uint64_t (*f)(uint64_t, uint64_t, uint64_t, CpuContext*), Sum sum) {
  Form form{name, Form::Result::general, 8};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {10, 0};
  check(
      form, pattern_and_multiplier,
      [&](const Operands& o, CpuContext* c) {
        return outcome(
            f(o.xd & fixture::width_mask(sum.bytes), pattern_of(o), multiplier_of(o), c));
      },
      [&](const Execution& run) {
        const Wide x = as_number<E>(run.operands.xd, sum.bytes);
        const auto expected = static_cast<uint64_t>(sum_of<E>(sum, x, pattern_count<E>(run)));
        expect_element(run.result.scalar, expected, 0);
      });
}

template <class E>
void check_scalar_active(const std::string& name, uint64_t (*f)(PredV, uint64_t, CpuContext*),
                         Sum sum) {
  Form form{name, Form::Result::general, 8};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {5, 16};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) {
        return outcome(f(o.pg, o.xd & fixture::width_mask(sum.bytes), c));
      },
      [&](const Execution& run) {
        const Wide x = as_number<E>(run.operands.xd, sum.bytes);
        const auto expected = static_cast<uint64_t>(sum_of<E>(sum, x, active_count<E>(run)));
        expect_element(run.result.scalar, expected, 0);
      });
}

template <class E>
void check_vector_pattern(const std::string& name, VecV (*f)(VecV, uint64_t, uint64_t, CpuContext*),
                          Sum sum) {
  sum.bytes = sizeof(E);
  Form form{name, Form::Result::vector, sizeof(E)};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {10, 0};
  check(
      form, pattern_and_multiplier,
      [&](const Operands& o, CpuContext* c) {
        return outcome(f(o.d, pattern_of(o), multiplier_of(o), c));
      },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e,
                         sum_of<E>(sum, get<E>(run.operands.d, e), pattern_count<E>(run)));
      });
}

template <class E>
void check_vector_active(const std::string& name, VecV (*f)(PredV, VecV, CpuContext*), Sum sum) {
  sum.bytes = sizeof(E);
  Form form{name, Form::Result::vector, sizeof(E)};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {5, 16};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.d, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e,
                         sum_of<E>(sum, get<E>(run.operands.d, e), active_count<E>(run)));
      });
}

#define COUNT(kind, operation, types, ...) SVE_EACH(COUNT_##kind, operation, types, __VA_ARGS__)
#define COUNT_SCALAR_PATTERN(type, operation, ...)                                                 \
  check_scalar_pattern<element::type>("Vec" #type #operation, Vec##type##operation, {__VA_ARGS__});
#define COUNT_SCALAR_ACTIVE(type, operation, ...)                                                  \
  check_scalar_active<element::type>("Vec" #type #operation, Vec##type##operation, {__VA_ARGS__});
#define COUNT_VECTOR_PATTERN(type, operation, ...)                                                 \
  check_vector_pattern<element::type>("Vec" #type #operation, Vec##type##operation, {__VA_ARGS__});
#define COUNT_VECTOR_ACTIVE(type, operation, ...)                                                  \
  check_vector_active<element::type>("Vec" #type #operation, Vec##type##operation, {__VA_ARGS__});
#define ALL_TYPES (S8, S16, S32, S64, U8, U16, U32, U64)
#define WIDER_TYPES (S16, S32, S64, U16, U32, U64)

TEST(CountingLanes, ScalarsAndCounts){
    COUNT(SCALAR_PATTERN, IncrVLSI, (U8, U16, U32, U64), 8, 1,
          false) COUNT(SCALAR_PATTERN, DecrVLSI, (U8, U16, U32, U64), 8, -1,
                       false) COUNT(SCALAR_PATTERN, QIncrVL4SI, ALL_TYPES, 4, 1, true)
        COUNT(SCALAR_PATTERN, QIncrVL8SI, ALL_TYPES, 8, 1, true) COUNT(SCALAR_PATTERN, QDecrVL4SI,
                                                                       ALL_TYPES, 4, -1, true)
            COUNT(SCALAR_PATTERN, QDecrVL8SI, ALL_TYPES, 8, -1, true)
                COUNT(SCALAR_ACTIVE, IncrSCountPS, (U8, U16, U32, U64), 8, 1, false)
                    COUNT(SCALAR_ACTIVE, DecrSCountPS, (U8, U16, U32, U64), 8, -1, false)
                        COUNT(SCALAR_ACTIVE, QIncrSCount4PS, ALL_TYPES, 4, 1, true)
                            COUNT(SCALAR_ACTIVE, QIncrSCount8PS, ALL_TYPES, 8, 1, true)
                                COUNT(SCALAR_ACTIVE, QDecrSCount4PS, ALL_TYPES, 4, -1, true)
                                    COUNT(SCALAR_ACTIVE, QDecrSCount8PS, ALL_TYPES, 8, -1, true)}

TEST(CountingLanes, VectorsAndCounts) {
  COUNT(VECTOR_PATTERN, IncrVLVI, (U16, U32, U64), 0, 1, false)
  COUNT(VECTOR_PATTERN, QIncrVLVI, WIDER_TYPES, 0, 1, true)
  COUNT(VECTOR_PATTERN, QDecrVLVI, WIDER_TYPES, 0, -1, true)
  COUNT(VECTOR_ACTIVE, IncrCountPV, (U16, U32, U64), 0, 1, false)
  COUNT(VECTOR_ACTIVE, DecrCountPV, (U16, U32, U64), 0, -1, false)
  COUNT(VECTOR_ACTIVE, QIncrCountPV, WIDER_TYPES, 0, 1, true)
  COUNT(VECTOR_ACTIVE, QDecrCountPV, WIDER_TYPES, 0, -1, true)
}

template <class E>
void check_count(const std::string& name, uint64_t (*f)(uint64_t, uint64_t, CpuContext*)) {
  Form form{name, Form::Result::general, 8};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {10, 0};
  check(
      form, pattern_and_multiplier,
      [&](const Operands& o, CpuContext* c) {
        return outcome(f(pattern_of(o), multiplier_of(o), c));
      },
      [&](const Execution& run) {
        expect_element(run.result.scalar, static_cast<uint64_t>(pattern_count<E>(run)), 0);
      });
}

TEST(CountingLanes, Counts) {
  check_count<uint8_t>("VecU8CountVLSI", VecU8CountVLSI);
  check_count<uint16_t>("VecU16CountVLSI", VecU16CountVLSI);
  check_count<uint32_t>("VecU32CountVLSI", VecU32CountVLSI);
  check_count<uint64_t>("VecU64CountVLSI", VecU64CountVLSI);
}

TEST(CountingLanes, LengthsAndIndices) {
  for (const unsigned vl : lengths) {
    CpuContext context{0, 0, 0, vl, {}};
    EXPECT_EQ(VecS64VLX(static_cast<uint64_t>(-3), &context), static_cast<uint64_t>(-24) * vl);
    EXPECT_EQ(VecS64AddVLX(1000, 2, &context), 1000 + 16 * vl);
    EXPECT_EQ(VecS64AddPLX(1000, static_cast<uint64_t>(-1), &context), 1000 - vl);
    const VecV indices = VecS16IndexII(5, static_cast<uint64_t>(-3), &context);
    for (unsigned e = 0; e < count<int16_t>(vl); e++)
      expect_lane<int16_t>(indices, e, 5 - 3 * static_cast<Wide>(e));
  }
}

}  // namespace
