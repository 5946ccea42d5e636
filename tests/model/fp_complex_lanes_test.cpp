// Complex, indexed, comparing, converting and reducing floating-point families of the model.
#include "sve/fp/format.h"
#include "sve/model/floating_point.h"
#include "tests/model/element.h"
#include "tests/model/fp_value.h"

namespace {

using namespace lanes;
using namespace fp_value;

Form fp_form(const std::string& name, Form::Result result, unsigned width) {
  Form form{name, result, width};
  form.raises = true;
  form.moderate = true;
  return form;
}

template <class E> double at(const VecV& vector, unsigned e) { return value_of(get<E>(vector, e)); }

template <class E>
void expect_value(const Execution& run, unsigned e, bool is_active, double value) {
  expect_element(get<E>(run.result.vector, e),
                 is_active ? pattern_of<E>(value) : get<E>(run.operands.d, e), e);
}

// An index among so many per segment, at its place in the word: bits 20 and 19 with 22 above them,
// bits 20 and 19, or bit 20. zm then has three bits, or four.
Immediate index_immediate(Random& random, unsigned choices) {
  const auto i = static_cast<uint32_t>(random() % choices);
  return {i, choices == 8 ? (i & 3) << 19 | (i >> 2) << 22 : choices == 4 ? i << 19 : i << 20};
}

// ---- Indexed ----

template <class E>
void check_indexed(const char* name, const Invoke& invoke, double (*lane)(double, double, double)) {
  constexpr unsigned n = 16 / sizeof(E);
  Form form = fp_form(name, Form::Result::vector, sizeof(E));
  form.g = {10, 0};
  form.m = {16, sizeof(E) == 8 ? 16u : 8u};
  check(
      form, [](Random& random) { return index_immediate(random, n); }, invoke,
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const unsigned with = e / n * n + static_cast<unsigned>(run.operands.imm);
          expect_value<E>(run, e, true,
                          lane(at<E>(run.operands.d, e), at<E>(run.operands.n, e),
                               at<E>(run.operands.m, with)));
        }
      });
}

#define INDEXED(type)                                                                              \
  check_indexed<element::type>(                                                                    \
      "Vec" #type "MulVVIX",                                                                       \
      [](const Operands& o, CpuContext* c) {                                                       \
        return outcome(Vec##type##MulVVIX(o.n, o.m, o.imm, c));                                    \
      },                                                                                           \
      [](double, double b, double c) { return b * c; });                                           \
  check_indexed<element::type>(                                                                    \
      "Vec" #type "FMAVVVIX",                                                                      \
      [](const Operands& o, CpuContext* c) {                                                       \
        return outcome(Vec##type##FMAVVVIX(o.n, o.m, o.d, o.imm, c));                              \
      },                                                                                           \
      fused<element::type>);                                                                       \
  check_indexed<element::type>(                                                                    \
      "Vec" #type "FMSVVVIX",                                                                      \
      [](const Operands& o, CpuContext* c) {                                                       \
        return outcome(Vec##type##FMSVVVIX(o.n, o.m, o.d, o.imm, c));                              \
      },                                                                                           \
      [](double a, double b, double c) { return fused<element::type>(a, -b, c); });

TEST(FloatingPointLanes, Indexed) {
  INDEXED(F16)
  INDEXED(F32)
  INDEXED(D64)
}

// ---- Complex, as products and sums of complex parts ----

// The part of acc + n * m that a rotation by so many quarter turns computes.
template <class E>
double complex_part(const Operands& o, unsigned e, unsigned m_pair, unsigned rotation) {
  const unsigned pair = e & ~1u;
  const double acc = at<E>(o.d, e), n_re = at<E>(o.n, pair), n_im = at<E>(o.n, pair + 1),
               m_re = at<E>(o.m, m_pair), m_im = at<E>(o.m, m_pair + 1);
  const bool real = e == pair;
  switch (rotation) {
  case 0:
    return fused<E>(acc, n_re, real ? m_re : m_im);
  case 1:
    return fused<E>(acc, n_im, real ? -m_im : m_re);
  case 2:
    return fused<E>(acc, n_re, real ? -m_re : -m_im);
  default:
    return fused<E>(acc, n_im, real ? m_im : -m_re);
  }
}

template <class E>
void check_complex(const char* name, VecV (*f)(VecV, PredV, VecV, VecV, uint64_t, CpuContext*)) {
  check(
      fp_form(name, Form::Result::vector, sizeof(E)),
      [](Random& random) {
        const auto rotation = static_cast<uint32_t>(random() % 4);
        return Immediate{rotation, rotation << 13};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, o.m, o.imm, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_value<E>(
              run, e, active<E>(run.operands.pg, e),
              complex_part<E>(run.operands, e, e & ~1u, static_cast<unsigned>(run.operands.imm)));
      });
}

template <class E>
void check_complex_indexed(const char* name,
                           VecV (*f)(VecV, VecV, VecV, uint64_t, uint64_t, CpuContext*)) {
  constexpr unsigned pairs = 8 / sizeof(E);
  Form form = fp_form(name, Form::Result::vector, sizeof(E));
  form.g = {10, 0};
  form.m = {16, sizeof(E) == 2 ? 8u : 16u};
  check(
      form,
      [](Random& random) {
        const Immediate index = index_immediate(random, pairs);
        const auto rotation = static_cast<uint32_t>(random() % 4);
        return Immediate{index.value << 2 | rotation, index.word | rotation << 10};
      },
      [&](const Operands& o, CpuContext* c) {
        return outcome(f(o.n, o.m, o.d, o.imm & 3, o.imm >> 2, c));
      },
      [&](const Execution& run) {
        const auto index = static_cast<unsigned>(run.operands.imm >> 2);
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const unsigned m_pair = (e / 2 / pairs * pairs + index) * 2;
          expect_value<E>(run, e, true,
                          complex_part<E>(run.operands, e, m_pair, run.operands.imm & 3));
        }
      });
}

template <class E>
void check_complex_add(const char* name, VecV (*f)(VecV, PredV, VecV, uint64_t, CpuContext*)) {
  Form form = fp_form(name, Form::Result::vector, sizeof(E));
  form.m = {16, 0};
  check(
      form,
      [](Random& random) {
        const auto rotation = static_cast<uint32_t>(random() % 2);
        return Immediate{rotation, rotation << 16};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, o.imm, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const double other = at<E>(o.n, e ^ 1);
          const bool minus = (e % 2 == 0) == (o.imm == 0);
          expect_value<E>(run, e, active<E>(o.pg, e), at<E>(o.d, e) + (minus ? -other : other));
        }
      });
}

TEST(FloatingPointLanes, Complex) {
  check_complex<uint16_t>("VecF16FCMLAVVVM", VecF16FCMLAVVVM);
  check_complex<uint32_t>("VecF32FCMLAVVVM", VecF32FCMLAVVVM);
  check_complex<uint64_t>("VecD64FCMLAVVVM", VecD64FCMLAVVVM);
  check_complex_indexed<uint16_t>("VecF16FCMLAVVVIX", VecF16FCMLAVVVIX);
  check_complex_indexed<uint32_t>("VecF32FCMLAVVVIX", VecF32FCMLAVVVIX);
  check_complex_add<uint16_t>("VecF16FCADDVVM", VecF16FCADDVVM);
  check_complex_add<uint32_t>("VecF32FCADDVVM", VecF32FCADDVVM);
  check_complex_add<uint64_t>("VecD64FCADDVVM", VecD64FCADDVVM);
}

// ---- Compares ----

using Relation = bool(double, double);

template <class E> void verify_compare(const Execution& run, Relation* relation, bool with_zero) {
  const Operands& o = run.operands;
  for (unsigned i = 0; i < run.vl * 8; i++) {
    const unsigned e = i / sizeof(E);
    const bool expected = i % sizeof(E) == 0 && active<E>(o.pg, e) &&
                          relation(at<E>(o.n, e), with_zero ? 0 : at<E>(o.m, e));
    expect_element(bit(run.result.predicate, i), expected, i);
  }
}

template <class E>
void check_compare(const char* name, PredV (*f)(PredV, VecV, VecV, CpuContext*),
                   Relation* relation) {
  check(
      fp_form(name, Form::Result::predicate, sizeof(E)), no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, o.m, c)); },
      [&](const Execution& run) { verify_compare<E>(run, relation, false); });
}

template <class E>
void check_compare_zero(const char* name, PredV (*f)(PredV, VecV, CpuContext*),
                        Relation* relation) {
  Form form = fp_form(name, Form::Result::predicate, sizeof(E));
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, c)); },
      [&](const Execution& run) { verify_compare<E>(run, relation, true); });
}

#define COMPARE(type, operation, ...)                                                              \
  check_compare<element::type>("Vec" #type #operation, Vec##type##operation,                       \
                               [](double a, double b) { return __VA_ARGS__; });
#define COMPARE_ZERO(type, operation, ...)                                                         \
  check_compare_zero<element::type>("Vec" #type #operation, Vec##type##operation,                  \
                                    [](double a, double b) { return __VA_ARGS__; });

TEST(FloatingPointLanes, Compares) {
  SVE_EACH(COMPARE, CmpEQVVZ, (F16, F32, D64), a == b)
  SVE_EACH(COMPARE, CmpNEVVZ, (F16, F32, D64), a != b)
  SVE_EACH(COMPARE, CmpGEVVZ, (F16, F32, D64), a >= b)
  SVE_EACH(COMPARE, CmpGTVVZ, (F16, F32, D64), a > b)
  SVE_EACH(COMPARE, CmpUNVVZ, (F16, F32, D64), std::isunordered(a, b))
  SVE_EACH(COMPARE, AcGEVVZ, (F16, F32, D64), std::fabs(a) >= std::fabs(b))
  SVE_EACH(COMPARE, AcGTVVZ, (F16, F32, D64), std::fabs(a) > std::fabs(b))
  SVE_EACH(COMPARE_ZERO, CmpEQV0Z, (F16, F32, D64), a == b)
  SVE_EACH(COMPARE_ZERO, CmpNEV0Z, (F16, F32, D64), a != b)
  SVE_EACH(COMPARE_ZERO, CmpGEV0Z, (F16, F32, D64), a >= b)
  SVE_EACH(COMPARE_ZERO, CmpGTV0Z, (F16, F32, D64), a > b)
  SVE_EACH(COMPARE_ZERO, CmpLEV0Z, (F16, F32, D64), a <= b)
  SVE_EACH(COMPARE_ZERO, CmpLTV0Z, (F16, F32, D64), a < b)
}

// ---- Reductions: the halves of the vector first, which behind its end is identities ----

struct Reduction {
  double identity;
  double (*operation)(double, double);
};

template <class E>
double halves(const Execution& run, unsigned low, unsigned width, const Reduction& reduction) {
  const Operands& o = run.operands;
  if (width == 1)
    return low < count<E>(run.vl) && active<E>(o.pg, low) ? at<E>(o.n, low) : reduction.identity;
  const double result = reduction.operation(halves<E>(run, low, width / 2, reduction),
                                            halves<E>(run, low + width / 2, width / 2, reduction));
  return value_of(pattern_of<E>(result));
}

template <class E>
void check_tree(const char* name, uint64_t (*f)(PredV, VecV, CpuContext*), double identity,
                double (*operation)(double, double)) {
  Form form = fp_form(name, Form::Result::scalar, sizeof(E));
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, c)); },
      [&](const Execution& run) {
        const double expected =
            halves<E>(run, 0, std::bit_ceil(count<E>(run.vl)), {identity, operation});
        expect_element(run.result.scalar, pattern_of<E>(expected), 0);
      });
}

template <class E>
void check_ordered(const char* name, uint64_t (*f)(PredV, uint64_t, VecV, CpuContext*)) {
  Form form = fp_form(name, Form::Result::scalar, sizeof(E));
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, get<E>(o.d, 0), o.n, c)); },
      [&](const Execution& run) {
        E sum = get<E>(run.operands.d, 0);
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          if (active<E>(run.operands.pg, e))
            sum = pattern_of<E>(value_of(sum) + at<E>(run.operands.n, e));
        expect_element(run.result.scalar, sum, 0);
      });
}

double sum(double a, double b) { return a + b; }
double greater(double a, double b) { return a > b || (a == b && !std::signbit(a)) ? a : b; }
double lesser(double a, double b) { return a < b || (a == b && std::signbit(a)) ? a : b; }
double greater_number(double a, double b) {
  return std::isnan(a) ? b : std::isnan(b) ? a : greater(a, b);
}
double lesser_number(double a, double b) {
  return std::isnan(a) ? b : std::isnan(b) ? a : lesser(a, b);
}

#define TREE(type, operation, ...)                                                                 \
  check_tree<element::type>("Vec" #type #operation, Vec##type##operation, __VA_ARGS__);
#define ORDERED(type, operation, ...)                                                              \
  check_ordered<element::type>("Vec" #type #operation, Vec##type##operation);

TEST(FloatingPointLanes, Reductions) {
  SVE_EACH(TREE, AddReduceFV, (F16, F32, D64), 0, sum)
  SVE_EACH(TREE, MaxReduceFV, (F16, F32, D64), -INFINITY, greater)
  SVE_EACH(TREE, MinReduceFV, (F16, F32, D64), INFINITY, lesser)
  SVE_EACH(TREE, MaxNumReduceFV, (F16, F32, D64), NAN, greater_number)
  SVE_EACH(TREE, MinNumReduceFV, (F16, F32, D64), NAN, lesser_number)
  SVE_EACH(ORDERED, AddReduceAV, (F16, F32, D64), )
}

// ---- Conversions ----

using Merging = VecV(VecV, PredV, VecV, CpuContext*);

// In containers of E, which are filled with sources of so many bytes, so that those in wider
// containers have junk above them.
template <class E>
void check_conversion(const char* name, Merging* f, E (*convert)(E), unsigned source, bool fp) {
  Form form = fp_form(name, Form::Result::vector, source);
  form.moderate = fp;
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_element(get<E>(run.result.vector, e),
                         active<E>(run.operands.pg, e) ? convert(get<E>(run.operands.n, e))
                                                       : get<E>(run.operands.d, e),
                         e);
      });
}

// Sources are the low bits of their container, whatever stands above them.
template <class From, class To, class E> E format_to_format(E x) {
  return pattern_of<To>(value_of(static_cast<From>(x)));
}
template <class From, class To, class E> E integer_to_format(E x) {
  // Through double an integer above 53 bits would round twice, so single comes from the integer.
  const auto integer = static_cast<From>(x);
  if constexpr (sizeof(To) == 4)
    return std::bit_cast<uint32_t>(static_cast<float>(integer));
  else
    return pattern_of<To>(static_cast<double>(integer));
}
template <class From, class To, class E> E format_to_integer(E x) {
  const double value = std::trunc(value_of(static_cast<From>(x)));
  constexpr double end =
      2.0 * static_cast<double>(To{1} << (8 * sizeof(To) - 2)) * (std::is_unsigned_v<To> ? 2 : 1);
  if (value >= end)
    return static_cast<E>(std::numeric_limits<To>::max());
  if (value < (std::is_unsigned_v<To> ? 0 : -end))
    return static_cast<E>(std::numeric_limits<To>::min());
  return static_cast<E>(static_cast<To>(value));
}

#define CONVERT(name, E, kind, From, To, fp)                                                       \
  check_conversion<E>(#name, name, kind<From, To, E>, sizeof(From), fp);

TEST(FloatingPointLanes, Conversions) {
  CONVERT(VecF32ExtndHVM, uint32_t, format_to_format, uint16_t, uint32_t, true)
  CONVERT(VecD64ExtndHVM, uint64_t, format_to_format, uint16_t, uint64_t, true)
  CONVERT(VecD64ExtndFVM, uint64_t, format_to_format, uint32_t, uint64_t, true)
  CONVERT(VecH32TruncFVM, uint32_t, format_to_format, uint32_t, uint16_t, true)
  CONVERT(VecH64TruncDVM, uint64_t, format_to_format, uint64_t, uint16_t, true)
  CONVERT(VecF64TruncDVM, uint64_t, format_to_format, uint64_t, uint32_t, true)
  CONVERT(VecF16FromS2VM, uint16_t, integer_to_format, int16_t, uint16_t, false)
  CONVERT(VecF16FromU2VM, uint16_t, integer_to_format, uint16_t, uint16_t, false)
  CONVERT(VecF16FromS4VM, uint32_t, integer_to_format, int32_t, uint16_t, false)
  CONVERT(VecF16FromU4VM, uint32_t, integer_to_format, uint32_t, uint16_t, false)
  CONVERT(VecF16FromS8VM, uint64_t, integer_to_format, int64_t, uint16_t, false)
  CONVERT(VecF16FromU8VM, uint64_t, integer_to_format, uint64_t, uint16_t, false)
  CONVERT(VecF32FromS4VM, uint32_t, integer_to_format, int32_t, uint32_t, false)
  CONVERT(VecF64FromU8VM, uint64_t, integer_to_format, uint64_t, uint32_t, false)
  CONVERT(VecD64FromU4VM, uint64_t, integer_to_format, uint32_t, uint64_t, false)
  CONVERT(VecS16_2FromHVM, uint16_t, format_to_integer, uint16_t, int16_t, true)
  CONVERT(VecU16_2FromHVM, uint16_t, format_to_integer, uint16_t, uint16_t, true)
  CONVERT(VecS32_4FromHVM, uint32_t, format_to_integer, uint16_t, int32_t, true)
  CONVERT(VecU32_4FromHVM, uint32_t, format_to_integer, uint16_t, uint32_t, true)
  CONVERT(VecS64_8FromHVM, uint64_t, format_to_integer, uint16_t, int64_t, true)
  CONVERT(VecU64_8FromHVM, uint64_t, format_to_integer, uint16_t, uint64_t, true)
  CONVERT(VecU32_4FromFVM, uint32_t, format_to_integer, uint32_t, uint32_t, true)
  CONVERT(VecU64_8FromFVM, uint64_t, format_to_integer, uint32_t, uint64_t, true)
  CONVERT(VecS64_4FromDVM, uint64_t, format_to_integer, uint64_t, int32_t, true)
}

}  // namespace
