// Element moves and predicate permutes of the reference model, lane by lane.
#include "sve/model/permute.h"
#include "tests/model/element.h"

namespace {

using namespace lanes;

template <class E> int last_active(const PredV& pg, unsigned vl) {
  for (int e = static_cast<int>(count<E>(vl)) - 1; e >= 0; e--)
    if (active<E>(pg, static_cast<unsigned>(e)))
      return e;
  return -1;
}

// The last active element, or the one behind it; element 0 is behind the highest.
template <class E> E extracted(const Execution& run, bool behind) {
  const int last = last_active<E>(run.operands.pg, run.vl);
  const int n = static_cast<int>(count<E>(run.vl));
  return get<E>(run.operands.n, static_cast<unsigned>(behind ? (last + 1) % n : last));
}

using Extract = uint64_t(PredV, VecV, CpuContext*);
using Conditional = uint64_t(PredV, uint64_t, VecV, CpuContext*);

template <class E> void check_last_a(const std::string& name, Extract* f, Form::Result result) {
  Form form{name, result, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, c)); },
      [&](const Execution& run) { expect_element(run.result.scalar, extracted<E>(run, true), 0); });
}

// The general form is told by its result. A scalar of the vector forms is zero-extended.
template <class E>
void check_conditional(const std::string& name, Conditional* f, Form::Result result, bool behind) {
  Form form{name, result, sizeof(E)};
  form.m = {16, 0};
  const auto old = [=](const Operands& o) {
    return (result == Form::Result::general ? o.xd : get<uint64_t>(o.d, 0)) &
           fixture::width_mask(sizeof(E));
  };
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, old(o), o.n, c)); },
      [&](const Execution& run) {
        const bool none = last_active<E>(run.operands.pg, run.vl) < 0;
        const uint64_t expected = none ? old(run.operands) : extracted<E>(run, behind);
        expect_element(run.result.scalar, expected, 0);
      });
}

template <class E>
void check_conditional_vector(const std::string& name, VecV (*f)(PredV, VecV, VecV, CpuContext*),
                              bool behind) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.d, o.n, c)); },
      [&](const Execution& run) {
        const bool none = last_active<E>(run.operands.pg, run.vl) < 0;
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e,
                         none ? get<E>(run.operands.d, e) : extracted<E>(run, behind));
      });
}

#define LAST_A(type, operation, result)                                                            \
  check_last_a<element::type>("Vec" #type #operation, Vec##type##operation, Form::Result::result);
#define CONDITIONAL(type, operation, result, behind)                                               \
  check_conditional<element::type>("Vec" #type #operation, Vec##type##operation,                   \
                                   Form::Result::result, behind);
#define CONDITIONAL_VECTOR(type, operation, behind)                                                \
  check_conditional_vector<element::type>("Vec" #type #operation, Vec##type##operation, behind);

TEST(PermuteLanes, Extraction) {
  SVE_EACH(LAST_A, LastAV, (U8, U16, U32, U64), general)
  SVE_EACH(LAST_A, LastAV, (B8, H16, F32, D64), scalar)
  SVE_EACH(CONDITIONAL, CondXASV, (U8, U16, U32, U64), general, true)
  SVE_EACH(CONDITIONAL, CondXASV, (B8, H16, F32, D64), scalar, true)
  SVE_EACH(CONDITIONAL, CondXBSV, (B8, H16, F32, D64), scalar, false)
  SVE_EACH(CONDITIONAL_VECTOR, VCondXAVV, (U8, U16, U32, U64), true)
  SVE_EACH(CONDITIONAL_VECTOR, VCondXBVV, (U8, U16, U32, U64), false)
}

template <class E>
void check_insert(const std::string& name, VecV (*f)(VecV, uint64_t, CpuContext*), bool general) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  form.g = {10, 0};
  const auto scalar = [=](const Operands& o) { return general ? o.xn : get<uint64_t>(o.n, 0); };
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, scalar(o), c)); },
      [&](const Execution& run) {
        expect_lane<E>(run.result.vector, 0, scalar(run.operands));
        for (unsigned e = 1; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e, get<E>(run.operands.d, e - 1));
      });
}

template <class E>
void check_splice(const std::string& name, VecV (*f)(PredV, VecV, VecV, CpuContext*)) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.d, o.n, c)); },
      [&](const Execution& run) {
        std::vector<E> expected;
        unsigned first = 0;
        while (first < count<E>(run.vl) && !active<E>(run.operands.pg, first))
          first++;
        for (int e = static_cast<int>(first); e <= last_active<E>(run.operands.pg, run.vl); e++)
          expected.push_back(get<E>(run.operands.d, static_cast<unsigned>(e)));
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expected.push_back(get<E>(run.operands.n, e));
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e, expected[e]);
      });
}

template <class E>
void check_compress(const std::string& name, VecV (*f)(PredV, VecV, CpuContext*)) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, c)); },
      [&](const Execution& run) {
        std::vector<E> expected;
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          if (active<E>(run.operands.pg, e))
            expected.push_back(get<E>(run.operands.n, e));
        expected.resize(count<E>(run.vl));
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e, expected[e]);
      });
}

// One, two and minus ten in the three formats; imm8 0x70, 0x00 and 0xa4.
template <class E>
void check_constant(const std::string& name, VecV (*f)(VecV, PredV, uint64_t, CpuContext*),
                    const std::array<uint64_t, 3>& values) {
  constexpr std::array<uint32_t, 3> encodings = {0x70, 0x00, 0xa4};
  Form form{name, Form::Result::vector, sizeof(E)};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {16, 16};
  check(
      form,
      [&](Random& random) {
        const size_t i = random() % 3;
        return Immediate{values[i], encodings[i] << 5};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.imm, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e,
                         active<E>(run.operands.pg, e) ? Wide{run.operands.imm}
                                                       : Wide{get<E>(run.operands.d, e)});
      });
}

template <class Half, class E>
void check_unpack(const std::string& name, VecV (*f)(VecV, CpuContext*), bool high) {
  Form form{name, Form::Result::vector, sizeof(Half)};
  form.m = {16, 0};
  form.g = {10, 0};
  check(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, c)); },
      [&](const Execution& run) {
        const unsigned n = count<E>(run.vl);
        for (unsigned e = 0; e < n; e++)
          expect_lane<E>(run.result.vector, e, get<Half>(run.operands.n, high ? n + e : e));
      });
}

#define INSERT(type, operation, general)                                                           \
  check_insert<element::type>("Vec" #type #operation, Vec##type##operation, general);
#define SPLICE(type, operation, ...)                                                               \
  check_splice<element::type>("Vec" #type #operation, Vec##type##operation);
#define COMPRESS(type, operation, ...)                                                             \
  check_compress<element::type>("Vec" #type #operation, Vec##type##operation);

TEST(PermuteLanes, Moves) {
  SVE_EACH(INSERT, InsertS, (U8, U16, U32, U64), true)
  SVE_EACH(INSERT, InsertS, (B8, H16, F32, D64), false)
  SVE_EACH(SPLICE, SpliceVV, (U8, U16, U32, U64), )
  SVE_EACH(COMPRESS, CompressVV, (U32, U64), )
  check_constant<uint16_t>("VecF16DupIM", VecF16DupIM, {0x3c00, 0x4000, 0xc900});
  check_constant<uint32_t>("VecF32DupIM", VecF32DupIM, {0x3f800000, 0x40000000, 0xc1200000});
  check_constant<uint64_t>("VecD64DupIM", VecD64DupIM,
                           {0x3ff0000000000000, 0x4000000000000000, 0xc024000000000000});
  check_unpack<int8_t, int16_t>("VecS16UnpackLoV", VecS16UnpackLoV, false);
  check_unpack<int8_t, int16_t>("VecS16UnpackHiV", VecS16UnpackHiV, true);
  check_unpack<int16_t, int32_t>("VecS32UnpackLoV", VecS32UnpackLoV, false);
  check_unpack<int16_t, int32_t>("VecS32UnpackHiV", VecS32UnpackHiV, true);
  check_unpack<uint16_t, uint32_t>("VecU32UnpackHiV", VecU32UnpackHiV, true);
}

// Element e of the result is that of n or m which the table of a permute of n elements names.
struct Choice {
  bool second;
  unsigned element;
};
using Permute = Choice(unsigned e, unsigned n);

Choice zip_low(unsigned e, unsigned) { return {e % 2 == 1, e / 2}; }
Choice zip_high(unsigned e, unsigned n) { return {e % 2 == 1, n / 2 + e / 2}; }
Choice even(unsigned e, unsigned n) { return {e >= n / 2, e % (n / 2) * 2}; }
Choice odd(unsigned e, unsigned n) { return {e >= n / 2, e % (n / 2) * 2 + 1}; }
Choice pairs_even(unsigned e, unsigned) { return {e % 2 == 1, e / 2 * 2}; }
Choice pairs_odd(unsigned e, unsigned) { return {e % 2 == 1, e / 2 * 2 + 1}; }

template <class E>
void check_permute(const std::string& name, VecV (*f)(VecV, VecV, CpuContext*), Permute* permute) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.g = {10, 0};
  check(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, c)); },
      [&](const Execution& run) {
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const Choice from = permute(e, count<E>(run.vl));
          expect_lane<E>(run.result.vector, e,
                         get<E>(from.second ? run.operands.m : run.operands.n, from.element));
        }
      });
}

template <class E>
void check_predicate_permute(const std::string& name, PredV (*f)(PredV, PredV, CpuContext*),
                             Permute* permute) {
  Form form{name, Form::Result::predicate, sizeof(E)};
  form.g = {10, 0};
  form.predicates = true;
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pn, o.pm, c)); },
      [&](const Execution& run) {
        for (unsigned i = 0; i < run.vl * 8; i++) {
          const Choice from = permute(i / sizeof(E), count<E>(run.vl));
          expect_element(bit(run.result.predicate, i),
                         bit(from.second ? run.operands.pm : run.operands.pn,
                             from.element * sizeof(E) + i % sizeof(E)),
                         i);
        }
      });
}

#define PERMUTE(type, operation, permute)                                                          \
  check_permute<element::type>("Vec" #type #operation, Vec##type##operation, permute);
#define PREDICATE_PERMUTE(type, operation, permute)                                                \
  check_predicate_permute<element::type>("Vec" #type #operation, Vec##type##operation, permute);

TEST(PermuteLanes, Orders) {
  SVE_EACH(PERMUTE, Zip1VV, (U8, U16, U32, U64), zip_low)
  SVE_EACH(PERMUTE, Zip2VV, (U8, U16, U32, U64), zip_high)
  SVE_EACH(PERMUTE, Uzp1VV, (U8, U16, U32, U64), even)
  SVE_EACH(PERMUTE, Uzp2VV, (U8, U16, U32, U64), odd)
  SVE_EACH(PERMUTE, Trn1VV, (U8, U16, U32, U64), pairs_even)
  SVE_EACH(PERMUTE, Trn2VV, (U8, U16, U32, U64), pairs_odd)
  SVE_EACH(PREDICATE_PERMUTE, Zip1PP, (P8, P16, P32, P64), zip_low)
  SVE_EACH(PREDICATE_PERMUTE, Uzp1PP, (P8, P16, P32, P64), even)
  SVE_EACH(PREDICATE_PERMUTE, Uzp2PP, (P8, P16, P32, P64), odd)
  SVE_EACH(PREDICATE_PERMUTE, Trn1PP, (P8, P16, P32, P64), pairs_even)
  SVE_EACH(PREDICATE_PERMUTE, Trn2PP, (P8, P16, P32, P64), pairs_odd)
}

}  // namespace
