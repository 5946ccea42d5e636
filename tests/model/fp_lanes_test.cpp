// Floating-point families of the reference model against the host's arithmetic, rounding to
// nearest. The library's own tests look at flags, NaNs and rounding modes: here it is the wiring of
// operands, lanes and segments.
#include "sve/fp/fp.h"
#include "sve/model/floating_point.h"
#include "tests/model/element.h"
#include "tests/model/fp_value.h"

namespace {

using namespace lanes;
using namespace fp_value;

Form fp_form(const std::string& name, unsigned width) {
  Form form{name, Form::Result::vector, width};
  form.raises = true;
  form.moderate = true;
  return form;
}

// Flags are only ever added, and without an active element none is.
void expect_flags(const Execution& run, bool any_active) {
  EXPECT_EQ(run.before.fpsr & ~run.after.fpsr, 0u);
  if (!any_active) {
    EXPECT_EQ(run.after.fpsr, run.before.fpsr);
  }
}

// The result of active elements is the pattern of lane(a, b, c), of old, zn and zm.
using Lane = double(double a, double b, double c);

template <class E> void verify_merging(const Execution& run, Lane* lane, bool predicated) {
  const Operands& o = run.operands;
  bool any = false;
  for (unsigned e = 0; e < count<E>(run.vl); e++) {
    const bool is_active = !predicated || active<E>(o.pg, e);
    any = any || is_active;
    const auto value = [&](const VecV& vector) { return value_of(get<E>(vector, e)); };
    const E expected =
        is_active ? pattern_of<E>(lane(value(o.d), value(o.n), value(o.m))) : get<E>(o.d, e);
    expect_element(get<E>(run.result.vector, e), expected, e);
  }
  expect_flags(run, any);
}

template <class E>
void check_merging(const char* name, VecV (*f)(VecV, PredV, VecV, CpuContext*), Lane* lane) {
  Form form = fp_form(name, sizeof(E));
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, c)); },
      [&](const Execution& run) { verify_merging<E>(run, lane, true); });
}

template <class E>
void check_fused(const char* name, VecV (*f)(VecV, PredV, VecV, VecV, CpuContext*), Lane* lane) {
  check(
      fp_form(name, sizeof(E)), no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, o.m, c)); },
      [&](const Execution& run) { verify_merging<E>(run, lane, true); });
}

template <class E>
void check_plain(const char* name, VecV (*f)(VecV, VecV, CpuContext*), Lane* lane) {
  Form form = fp_form(name, sizeof(E));
  form.g = {10, 0};
  check(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, c)); },
      [&](const Execution& run) { verify_merging<E>(run, lane, false); });
}

// The second source is the first or the second constant, by the immediate.
template <class E>
void check_constant(const char* name, VecV (*f)(VecV, PredV, uint64_t, CpuContext*), double zero,
                    double one, Lane* lane) {
  Form form = fp_form(name, sizeof(E));
  form.n = {5, 0};
  form.m = {16, 0};
  check(
      form,
      [](Random& random) {
        const auto imm = static_cast<uint32_t>(random() % 2);
        return Immediate{imm, imm << 5};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.imm, c)); },
      [&](const Execution& run) {
        const double b = run.operands.imm != 0 ? one : zero;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const E a = get<E>(run.operands.d, e);
          expect_element(get<E>(run.result.vector, e),
                         active<E>(run.operands.pg, e) ? pattern_of<E>(lane(value_of(a), b, 0)) : a,
                         e);
        }
      });
}

#define LANE(...)                                                                                  \
  [](double a, double b, double c) -> double {                                                     \
    static_cast<void>(a), static_cast<void>(b), static_cast<void>(c);                              \
    return __VA_ARGS__;                                                                            \
  }
#define CHECK(kind, operation, ...) SVE_EACH(CHECK_##kind, operation, (F16, F32, D64), __VA_ARGS__)
#define CHECK_MERGING(type, operation, ...)                                                        \
  {                                                                                                \
    using E = element::type;                                                                       \
    check_merging<E>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));             \
  }
#define CHECK_FUSED(type, operation, ...)                                                          \
  {                                                                                                \
    using E = element::type;                                                                       \
    check_fused<E>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));               \
  }
#define CHECK_PLAIN(type, operation, ...)                                                          \
  {                                                                                                \
    using E = element::type;                                                                       \
    check_plain<E>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));               \
  }
#define CHECK_CONSTANT(type, operation, zero, one, ...)                                            \
  check_constant<element::type>("Vec" #type #operation, Vec##type##operation, zero, one,           \
                                LANE(__VA_ARGS__));

// Of two zeros the positive one is the greater.
double greater(double a, double b) { return a > b || (a == b && !std::signbit(a)) ? a : b; }
double lesser(double a, double b) { return a < b || (a == b && std::signbit(a)) ? a : b; }

// The power of two whose exponent field is the inverse of b's.
template <class E> double inverse_power(double b) {
  return std::copysign(std::ldexp(1, b == 0 ? bias<E> : 1 - std::ilogb(b)), b);
}

// clang-format off
TEST(FloatingPointLanes, Arithmetic) {
  CHECK(MERGING, AddVVM, a + b)
  CHECK(MERGING, SubVVM, a - b)
  CHECK(MERGING, SubRVVM, b - a)
  CHECK(MERGING, AbdVVM, std::fabs(a - b))
  CHECK(MERGING, MulVVM, a * b)
  CHECK(MERGING, MulXVVM, a * b)
  CHECK(MERGING, DivVVM, a / b)
  CHECK(MERGING, DivRVVM, b / a)
  CHECK(MERGING, MaxVVM, greater(a, b))
  CHECK(MERGING, MinVVM, lesser(a, b))
  CHECK(MERGING, MaxNumVVM, greater(a, b))
  CHECK(MERGING, MinNumVVM, lesser(a, b))
  CHECK(MERGING, AbsVM, std::fabs(b))
  CHECK(MERGING, NegVM, -b)
  CHECK(MERGING, SqrtVM, std::sqrt(b))
  CHECK(MERGING, RecpXVM, inverse_power<E>(b))
  CHECK(PLAIN, AddVVX, b + c)
  CHECK(PLAIN, SubVVX, b - c)
  CHECK(PLAIN, MulVVX, b * c)
  CHECK(PLAIN, RecpSVV, fused<E>(2, -b, c))
  CHECK(PLAIN, RSqrtSVV, fused<E>(1.5, -b / 2, c))
}

TEST(FloatingPointLanes, Constants) {
  CHECK(CONSTANT, AddVIM, 0.5, 1, a + b)
  CHECK(CONSTANT, SubVIM, 0.5, 1, a - b)
  CHECK(CONSTANT, SubRVIM, 0.5, 1, b - a)
  CHECK(CONSTANT, MulVIM, 0.5, 2, a * b)
  CHECK(CONSTANT, MaxVIM, 0, 1, greater(a, b))
  CHECK(CONSTANT, MinVIM, 0, 1, lesser(a, b))
  CHECK(CONSTANT, MaxNumVIM, 0, 1, greater(a, b))
  CHECK(CONSTANT, MinNumVIM, 0, 1, lesser(a, b))
}

TEST(FloatingPointLanes, RoundingToIntegralValues) {
  CHECK(MERGING, FRIntAVM, std::round(b))
  CHECK(MERGING, FRIntIVM, std::nearbyint(b))
  CHECK(MERGING, FRIntNVM, std::nearbyint(b))
  CHECK(MERGING, FRIntXVM, std::nearbyint(b))
  CHECK(MERGING, FRIntMVM, std::floor(b))
  CHECK(MERGING, FRIntPVM, std::ceil(b))
  CHECK(MERGING, FRIntZVM, std::trunc(b))
}

TEST(FloatingPointLanes, Fused) {
  CHECK(FUSED, FMAVVVM, fused<E>(a, b, c))
  CHECK(FUSED, FMSVVVM, fused<E>(a, -b, c))
  CHECK(FUSED, FNMAVVVM, fused<E>(-a, -b, c))
  CHECK(FUSED, FNMSVVVM, fused<E>(-a, b, c))
  CHECK(FUSED, FMADDVVVM, fused<E>(c, a, b))
  CHECK(FUSED, FMSUBVVVM, fused<E>(c, -a, b))
  CHECK(FUSED, FNMADDVVVM, fused<E>(-c, -a, b))
  CHECK(FUSED, FNMSUBVVVM, fused<E>(-c, a, b))
}
// clang-format on

// Bits in, bits out: what is defined on patterns.
template <class E> using PatternLane = E (*)(E a, E b, uint64_t imm);

template <class E>
void check_patterns(const Form& form, const MakeImmediate& immediate, const Invoke& invoke,
                    bool a_is_old, PatternLane<E> lane) {
  check(form, immediate, invoke, [&](const Execution& run) {
    const Operands& o = run.operands;
    for (unsigned e = 0; e < count<E>(run.vl); e++)
      expect_element(get<E>(run.result.vector, e),
                     a_is_old ? lane(get<E>(o.d, e), get<E>(o.n, e), o.imm)
                              : lane(get<E>(o.n, e), get<E>(o.m, e), o.imm),
                     e);
  });
}

template <class E> E pattern_square(E a, E b, uint64_t) {
  const double square = value_of(a) * value_of(a);
  return pattern_of<E>((b & 1) != 0 ? -square : square);
}
template <class E> E pattern_select(E a, E b, uint64_t) {
  const E chosen = (b & 1) != 0 ? pattern_of<E>(1) : a;
  return static_cast<E>(chosen ^ ((b & 2) != 0 ? E{1} << (8 * sizeof(E) - 1) : 0));
}
template <class E> E pattern_recip(E a, E, uint64_t) {
  FPSCR fpscr = 0;
  return FPRecipEstimate(a, fpscr);
}
template <class E> E pattern_root(E a, E, uint64_t) {
  FPSCR fpscr = 0;
  return FPRSqrtEstimate(a, fpscr);
}
template <class E> E pattern_power(E a, E, uint64_t) { return FPEXPA(a); }
template <class E> E pattern_term(E a, E b, uint64_t imm) {
  FPSCR fpscr = 0;
  return FPTRIMADD(imm, a, b, fpscr);
}

template <class E>
void check_two_patterns(const char* name, VecV (*f)(VecV, VecV, CpuContext*), PatternLane<E> lane) {
  Form form = fp_form(name, sizeof(E));
  form.g = {10, 0};
  check_patterns<E>(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, c)); },
      false, lane);
}
template <class E>
void check_one_pattern(const char* name, VecV (*f)(VecV, CpuContext*), PatternLane<E> lane) {
  Form form = fp_form(name, sizeof(E));
  form.g = {10, 0};
  form.m = {16, 0};
  check_patterns<E>(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, c)); },
      false, lane);
}
template <class E> void check_term(const char* name, VecV (*f)(VecV, VecV, uint64_t, CpuContext*)) {
  Form form = fp_form(name, sizeof(E));
  form.g = {10, 0};
  form.m = {16, 0};
  check_patterns<E>(
      form,
      [](Random& random) {
        const auto imm = static_cast<uint32_t>(random() % 8);
        return Immediate{imm, imm << 16};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.n, o.imm, c)); }, true,
      pattern_term<E>);
}

#define TWO_PATTERNS(type, operation, lane)                                                        \
  check_two_patterns<element::type>("Vec" #type #operation, Vec##type##operation,                  \
                                    lane<element::type>);
#define ONE_PATTERN(type, operation, lane)                                                         \
  check_one_pattern<element::type>("Vec" #type #operation, Vec##type##operation,                   \
                                   lane<element::type>);
#define TERM(type, operation, ...)                                                                 \
  check_term<element::type>("Vec" #type #operation, Vec##type##operation);

TEST(FloatingPointLanes, EstimatesAndAccelerators) {
  SVE_EACH(TWO_PATTERNS, TRISMULVV, (F16, F32, D64), pattern_square)
  SVE_EACH(TWO_PATTERNS, TRISSELVV, (F16, F32, D64), pattern_select)
  SVE_EACH(ONE_PATTERN, RecpEV, (F16, F32, D64), pattern_recip)
  SVE_EACH(ONE_PATTERN, RSqrtEV, (F16, F32, D64), pattern_root)
  SVE_EACH(ONE_PATTERN, EXPAV, (F16, F32, D64), pattern_power)
  SVE_EACH(TERM, TRIMADDVVI, (F16, F32, D64), )
}

template <class E> void check_scale(const char* name, VecV (*f)(VecV, PredV, VecV, CpuContext*)) {
  Form form = fp_form(name, sizeof(E));
  form.moderate = false;
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const E a = get<E>(run.operands.d, e);
          const int64_t by = fixture::as_signed(get<E>(run.operands.n, e), sizeof(E));
          const auto limited = static_cast<int>(std::clamp<int64_t>(by, -5000, 5000));
          if (std::isnan(value_of(a)))
            continue;
          const double scaled = std::ldexp(value_of(a), limited);
          expect_element(get<E>(run.result.vector, e),
                         active<E>(run.operands.pg, e) ? pattern_of<E>(scaled) : a, e);
        }
      });
}

TEST(FloatingPointLanes, Scale) {
  check_scale<uint16_t>("VecF16ScaleVVM", VecF16ScaleVVM);
  check_scale<uint32_t>("VecF32ScaleVVM", VecF32ScaleVVM);
  check_scale<uint64_t>("VecD64ScaleVVM", VecD64ScaleVVM);
}

}  // namespace
