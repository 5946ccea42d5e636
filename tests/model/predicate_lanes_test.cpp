// Predicate logic, breaks, loop control and integer compares of the reference model.
#include "sve/model/compare.h"
#include "sve/model/predicate_ops.h"
#include "tests/model/element.h"

namespace {

using namespace lanes;

uint32_t condition(const CpuContext& context) { return context.nzcv & 0xf0000000; }

// Every bit of the result, and the flags under a mask if the form sets them.
void expect_bits(const Form& form, const Execution& run, const PredV& mask,
                 const std::function<bool(unsigned)>& expected) {
  for (unsigned i = 0; i < run.vl * 8; i++)
    expect_element(bit(run.result.predicate, i), i % form.width == 0 && expected(i), i);
  if (form.sets_flags) {
    EXPECT_EQ(fixture::hex(condition(run.after)),
              fixture::hex(flags_of(mask, run.result.predicate, form.width, run.vl)));
  }
}

Form predicate_form(const std::string& name, bool flags) {
  Form form{name, Form::Result::predicate, 1, flags};
  form.predicates = true;
  form.g = {10, 16};
  return form;
}

void check_logic(const std::string& name, PredV (*f)(PredV, PredV, PredV, CpuContext*), bool flags,
                 bool (*operation)(bool, bool)) {
  const Form form = predicate_form(name, flags);
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.pn, o.pm, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        expect_bits(form, run, o.pg, [&](unsigned i) {
          return bit(o.pg, i) && operation(bit(o.pn, i), bit(o.pm, i));
        });
      });
}

#define LOGIC(operation, ...)                                                                      \
  check_logic("VecP" #operation "PPZ", VecP##operation##PPZ, false,                                \
              [](bool a, bool b) -> bool { return __VA_ARGS__; });                                 \
  check_logic("VecP" #operation "FlgPPZ", VecP##operation##FlgPPZ, true,                           \
              [](bool a, bool b) -> bool { return __VA_ARGS__; });

TEST(PredicateLanes, Logic) {
  LOGIC(And, a && b)
  LOGIC(Bic, a && !b)
  LOGIC(Or, a || b)
  LOGIC(OrN, a || !b)
  LOGIC(Xor, a != b)
  LOGIC(Nand, !(a && b))
  LOGIC(Nor, !(a || b))
}

// The position of the first, or the last, active bit of which source is set; vl * 8 or -1 if none.
int first_set(const PredV& pg, const PredV& source, unsigned vl) {
  int i = 0;
  while (i < static_cast<int>(vl * 8) &&
         !(bit(pg, static_cast<unsigned>(i)) && bit(source, static_cast<unsigned>(i))))
    i++;
  return i;
}
int last_bit(const PredV& pg, unsigned vl) {
  int i = static_cast<int>(vl * 8) - 1;
  while (i >= 0 && !bit(pg, static_cast<unsigned>(i)))
    i--;
  return i;
}

void check_break(const std::string& name, PredV (*f)(PredV, PredV, CpuContext*), bool flags,
                 bool behind) {
  Form form = predicate_form(name, flags);
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.pn, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        const int at = first_set(o.pg, o.pn, run.vl);
        expect_bits(form, run, o.pg,
                    [&](unsigned i) { return bit(o.pg, i) && static_cast<int>(i) < at + behind; });
      });
}

void check_break_previous(const std::string& name, PredV (*f)(PredV, PredV, PredV, CpuContext*),
                          bool flags, bool behind) {
  const Form form = predicate_form(name, flags);
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.pn, o.pm, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        const int last = last_bit(o.pg, run.vl), at = first_set(o.pg, o.pm, run.vl);
        const bool goes_on = last >= 0 && bit(o.pn, static_cast<unsigned>(last));
        expect_bits(form, run, o.pg, [&](unsigned i) {
          return goes_on && bit(o.pg, i) && static_cast<int>(i) < at + behind;
        });
      });
}

TEST(PredicateLanes, Breaks) {
  check_break("VecPBreakAPZ", VecPBreakAPZ, false, true);
  check_break("VecPBreakAFlgPZ", VecPBreakAFlgPZ, true, true);
  check_break("VecPBreakBPZ", VecPBreakBPZ, false, false);
  check_break("VecPBreakBFlgPZ", VecPBreakBFlgPZ, true, false);
  check_break_previous("VecPBreakPrevAPZ", VecPBreakPrevAPZ, false, true);
  check_break_previous("VecPBreakPrevAFlgPZ", VecPBreakPrevAFlgPZ, true, true);
  check_break_previous("VecPBreakPrevBPZ", VecPBreakPrevBPZ, false, false);
  check_break_previous("VecPBreakPrevBFlgPZ", VecPBreakPrevBFlgPZ, true, false);
}

TEST(PredicateLanes, FirstActive) {
  Form form = predicate_form("VecPSetFirstActiveP", true);
  form.n = {16, 0};
  form.m = {16, 0};
  form.g = {5, 16};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(VecPSetFirstActiveP(o.pg, o.pd, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        const int at = first_set(o.pg, o.pg, run.vl);
        expect_bits(form, run, o.pg,
                    [&](unsigned i) { return bit(o.pd, i) || static_cast<int>(i) == at; });
      });
}

TEST(PredicateLanes, FirstFaultRegister) {
  Form form = predicate_form("VecPActualFlgP", true);
  form.n = {16, 0};
  form.m = {16, 0};
  form.g = {5, 16};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(VecPActualFlgP(o.pg, c)); },
      [&](const Execution& run) {
        expect_bits(form, run, run.operands.pg,
                    [&](unsigned i) { return bit(run.operands.pg, i) && bit(run.before.ffr, i); });
      });
}

template <class E> void check_pattern(const std::string& name, PredV (*f)(uint64_t, CpuContext*)) {
  Form form{name, Form::Result::predicate, sizeof(E), true};
  form.n = {5, 0};
  form.m = {16, 0};
  form.g = {10, 0};
  constexpr unsigned numbers[] = {1, 2, 3, 4, 5, 6, 7, 8, 16, 32, 64, 128, 256};
  check(
      form,
      [&](Random& random) {
        const auto pattern = static_cast<uint32_t>(1 + random() % 28);
        return Immediate{pattern, pattern << 5};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.imm, c)); },
      [&](const Execution& run) {
        const uint64_t pattern = run.operands.imm;
        const unsigned number = pattern <= std::size(numbers) ? numbers[pattern - 1] : 0;
        const unsigned n = number <= count<E>(run.vl) ? number : 0;
        expect_bits(form, run, run.result.predicate, [&](unsigned i) { return i / sizeof(E) < n; });
      });
}

TEST(PredicateLanes, Patterns) {
  check_pattern<uint8_t>("VecP8TrueFlgI", VecP8TrueFlgI);
  check_pattern<uint16_t>("VecP16TrueFlgI", VecP16TrueFlgI);
  check_pattern<uint32_t>("VecP32TrueFlgI", VecP32TrueFlgI);
  check_pattern<uint64_t>("VecP64TrueFlgI", VecP64TrueFlgI);
}

// The scalars a and b as numbers of so many bytes and the type's sign.
template <class E> Wide number(uint64_t x, unsigned bytes) {
  x &= fixture::width_mask(bytes);
  return std::is_signed_v<E> ? Wide{fixture::as_signed(x, bytes)} : Wide{x};
}

template <class E>
void check_while(const std::string& name, PredV (*f)(uint64_t, uint64_t, CpuContext*),
                 unsigned bytes, bool or_equal) {
  Form form{name, Form::Result::predicate, sizeof(E), true};
  form.g = {10, 0};
  const PredV all_true = {{~0ull, ~0ull, ~0ull, ~0ull}};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.xn, o.xm, c)); },
      [&](const Execution& run) {
        const Wide a = number<E>(run.operands.xn, bytes), b = number<E>(run.operands.xm, bytes);
        const bool endless =
            or_equal && b == number<E>(fixture::width_mask(bytes) >> std::is_signed_v<E>, bytes);
        expect_bits(form, run, all_true, [&](unsigned i) {
          const Wide at = a + static_cast<Wide>(i / sizeof(E));
          return endless || at < b || (or_equal && at == b);
        });
      });
}

#define WHILE(type, operation, bytes, or_equal)                                                    \
  check_while<element::type>("Vec" #type #operation, Vec##type##operation, bytes, or_equal);

TEST(PredicateLanes, While) {
  SVE_EACH(WHILE, While4LESS, (S8, S16, S32, S64, U8, U32), 4, true)
  SVE_EACH(WHILE, While8LESS, (S8, S16, S32, S64, U16, U64), 8, true)
  SVE_EACH(WHILE, While4LTSS, (S16, U64), 4, false)
  SVE_EACH(WHILE, While8LTSS, (S64, U8), 8, false)
}

template <class E>
void check_termination(const std::string& name, void (*f)(uint64_t, uint64_t, CpuContext*),
                       bool equal) {
  Form form{name, Form::Result::none, sizeof(E), true};
  form.g = {10, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) {
        f(o.xn, o.xm, c);
        return Outcome{};
      },
      [&](const Execution& run) {
        const bool same = static_cast<E>(run.operands.xn) == static_cast<E>(run.operands.xm);
        const bool ends = same == equal;
        const uint32_t c = run.before.nzcv & 1u << 29, z = run.before.nzcv & 1u << 30;
        const uint32_t expected = ends ? 1u << 31 | z | c : z | c | (c == 0 ? 1u << 28 : 0);
        EXPECT_EQ(fixture::hex(condition(run.after)), fixture::hex(expected));
      });
}

TEST(PredicateLanes, Termination) {
  check_termination<uint32_t>("VecU32CTermEQ", VecU32CTermEQ, true);
  check_termination<uint64_t>("VecU64CTermEQ", VecU64CTermEQ, true);
  check_termination<uint32_t>("VecU32CTermNE", VecU32CTermNE, false);
  check_termination<uint64_t>("VecU64CTermNE", VecU64CTermNE, false);
}

using Relation = bool(Wide, Wide);
enum class Second { element, wide };

template <class E>
void check_compare(const std::string& name, PredV (*f)(PredV, VecV, VecV, CpuContext*),
                   Second second, Relation* relation) {
  using Doubleword = std::conditional_t<std::is_signed_v<E>, int64_t, uint64_t>;
  const Form form{name, Form::Result::predicate, sizeof(E), true};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, o.m, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        expect_bits(form, run, o.pg, [&](unsigned i) {
          const Wide a = get<E>(o.n, i / sizeof(E));
          const Wide b = second == Second::wide ? Wide{get<Doubleword>(o.m, i / 8)}
                                                : Wide{get<E>(o.m, i / sizeof(E))};
          return bit(o.pg, i) && relation(a, b);
        });
      });
}

template <class E>
void check_compare_immediate(const std::string& name,
                             PredV (*f)(PredV, VecV, uint64_t, CpuContext*), Relation* relation) {
  Form form{name, Form::Result::predicate, sizeof(E), true};
  form.m = {16, 0};
  check(
      form,
      [](Random& random) {
        if (std::is_signed_v<E>) {
          const auto value = static_cast<int>(random() % 32) - 16;
          return Immediate{static_cast<uint64_t>(value), (static_cast<uint32_t>(value) & 31) << 16};
        }
        const auto value = static_cast<uint32_t>(random() % 128);
        return Immediate{value, value << 14};
      },
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.pg, o.n, o.imm, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        expect_bits(form, run, o.pg, [&](unsigned i) {
          return bit(o.pg, i) && relation(get<E>(o.n, i / sizeof(E)), static_cast<int64_t>(o.imm));
        });
      });
}

#define COMPARE(type, operation, second, ...)                                                      \
  check_compare<element::type>("Vec" #type #operation, Vec##type##operation, Second::second,       \
                               [](Wide a, Wide b) { return __VA_ARGS__; });
#define COMPARE_IMMEDIATE(type, operation, ...)                                                    \
  check_compare_immediate<element::type>("Vec" #type #operation, Vec##type##operation,             \
                                         [](Wide a, Wide b) { return __VA_ARGS__; });

TEST(PredicateLanes, Compares) {
  SVE_EACH(COMPARE, CmpFlgEQVVZ, (S8, S64), element, a == b)
  SVE_EACH(COMPARE, CmpFlgGTVVZ, (S16, U16), element, a > b)
  SVE_EACH(COMPARE, CmpFlgEQVWZ, (S8, S16, S32), wide, a == b)
  SVE_EACH(COMPARE, CmpFlgNEVWZ, (S8, S16, S32), wide, a != b)
  SVE_EACH(COMPARE, CmpFlgGEVWZ, (S8, S16, S32, U8, U16, U32), wide, a >= b)
  SVE_EACH(COMPARE, CmpFlgGTVWZ, (S8, S16, S32, U8, U16, U32), wide, a > b)
  SVE_EACH(COMPARE, CmpFlgLEVWZ, (S8, S16, S32, U8, U16, U32), wide, a <= b)
  SVE_EACH(COMPARE, CmpFlgLTVWZ, (S8, S16, S32, U8, U16, U32), wide, a < b)
  SVE_EACH(COMPARE_IMMEDIATE, CmpFlgGEVIZ, (S8, S16, S32, S64, U8, U16, U32, U64), a >= b)
  SVE_EACH(COMPARE_IMMEDIATE, CmpFlgLEVIZ, (U8, U16, U32, U64), a <= b)
}

}  // namespace
