// Integer data processing of the reference model, lane by lane.
#include <limits>

#include "sve/model/integer.h"
#include "sve/state/each_type.h"
#include "tests/model/element.h"

namespace {

using namespace lanes;

// Merging families of old and zn, with active elements a of old and b of zn (exact integers) and
// their unsigned forms ua and ub. esize and low and high, the type's bounds, are at hand.
#define MERGING(operation, types, ...) SVE_EACH(MERGING_CHECK, operation, types, __VA_ARGS__)
#define MERGING_CHECK(type, operation, ...)                                                        \
  check_merging<element::type>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));
#define LANE(...)                                                                                  \
  +[]([[maybe_unused]] Wide a, [[maybe_unused]] Wide b, [[maybe_unused]] Wide ua,                  \
      [[maybe_unused]] Wide ub, [[maybe_unused]] int esize, [[maybe_unused]] Wide low,             \
      [[maybe_unused]] Wide high) -> Wide { return __VA_ARGS__; }

using Lane = Wide(Wide a, Wide b, Wide ua, Wide ub, int esize, Wide low, Wide high);

template <class E> Wide lane_of(Lane* lane, E a, E b) {
  using U = std::make_unsigned_t<E>;
  using Limits = std::numeric_limits<E>;
  return lane(a, b, static_cast<U>(a), static_cast<U>(b), 8 * static_cast<int>(sizeof(E)),
              Limits::min(), Limits::max());
}

using Ternary = VecV(VecV, PredV, VecV, CpuContext*);

template <class E> void check_merging(const char* name, Ternary* f, Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const E a = get<E>(o.d, e);
          expect_lane<E>(run.result.vector, e,
                         active<E>(o.pg, e) ? lane_of<E>(lane, a, get<E>(o.n, e)) : Wide{a});
        }
      });
}

// The same with the doubleword of zn over the element as b.
template <class E> void check_merging_wide(const char* name, Ternary* f, Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.m = {16, 0};
  check(
      form, no_immediate,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.n, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const Wide by = get<uint64_t>(o.n, e * sizeof(E) / 8);
          const E a = get<E>(o.d, e);
          expect_lane<E>(run.result.vector, e,
                         active<E>(o.pg, e) ? lane(a, by, a, by, 8 * sizeof(E), 0, 0) : Wide{a});
        }
      });
}

using Binary = VecV(VecV, VecV, CpuContext*);

template <class E> void check_plain(const char* name, Binary* f, Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.g = {10, 0};
  check(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++)
          expect_lane<E>(run.result.vector, e, lane_of<E>(lane, get<E>(o.n, e), get<E>(o.m, e)));
      });
}

template <class E> void check_plain_wide(const char* name, Binary* f, Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.g = {10, 0};
  check(
      form, no_immediate, [&](const Operands& o, CpuContext* c) { return outcome(f(o.n, o.m, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const Wide by = get<uint64_t>(o.m, e * sizeof(E) / 8), a = get<E>(o.n, e);
          expect_lane<E>(run.result.vector, e, lane(a, by, a, by, 8 * sizeof(E), 0, 0));
        }
      });
}

// An immediate b. SHIFTED: eight bits, shifted left by 8 if bit 13 is set; EIGHT: eight bits, of
// the type's sign; RIGHT: the count of a right shift at bit 5 or 16.
template <class E> Immediate shifted(Random& random) {
  const auto field = static_cast<uint32_t>(random() % 256),
             by = static_cast<uint32_t>(random() % 2);
  return {uint64_t{field} << 8 * by, field << 5 | by << 13};
}
template <class E> Immediate eight(Random& random) {
  const auto field = static_cast<uint32_t>(random() % 256);
  const auto value =
      std::is_signed_v<E> ? static_cast<uint64_t>(static_cast<int8_t>(field)) : field;
  return {value, field << 5};
}
template <class E, unsigned low> Immediate right(Random& random) {
  constexpr unsigned esize = 8 * sizeof(E);
  const uint64_t amount = 1 + random() % esize;
  const auto field = static_cast<uint32_t>(esize - amount);
  // The field's size marker is in the row's value; bit 5 of a doubleword's field is bit 22.
  return {amount, (field & 31) << low | (field >> 5 & 1) << 22};
}

using WithImmediate = VecV(VecV, uint64_t, CpuContext*);

template <class E>
void check_immediate(const char* name, WithImmediate* f, Immediate (*make)(Random&), Field source,
                     Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.n = source;
  form.m = {16, 0};
  form.g = {10, 0};
  const bool destructive = source.count == 0;
  check(
      form, make,
      [&](const Operands& o, CpuContext* c) {
        return outcome(f(destructive ? o.d : o.n, o.imm, c));
      },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const Wide a = get<E>(destructive ? o.d : o.n, e);
          using Limits = std::numeric_limits<E>;
          const Wide b = static_cast<int64_t>(o.imm);
          expect_lane<E>(run.result.vector, e,
                         lane(a, b, a, b, 8 * sizeof(E), Limits::min(), Limits::max()));
        }
      });
}

using MergingImmediate = VecV(VecV, PredV, uint64_t, CpuContext*);

template <class E> void check_shift_immediate(const char* name, MergingImmediate* f, Lane* lane) {
  Form form{name, Form::Result::vector, sizeof(E)};
  form.n = {5, 0};
  form.m = {16, 0};
  check(
      form, right<E, 5>,
      [&](const Operands& o, CpuContext* c) { return outcome(f(o.d, o.pg, o.imm, c)); },
      [&](const Execution& run) {
        const Operands& o = run.operands;
        for (unsigned e = 0; e < count<E>(run.vl); e++) {
          const Wide a = get<E>(o.d, e), b = static_cast<int64_t>(o.imm);
          expect_lane<E>(run.result.vector, e,
                         active<E>(o.pg, e) ? lane(a, b, a, b, 8 * sizeof(E), 0, 0) : a);
        }
      });
}

#define MERGING_WIDE(operation, types, ...)                                                        \
  SVE_EACH(MERGING_WIDE_CHECK, operation, types, __VA_ARGS__)
#define MERGING_WIDE_CHECK(type, operation, ...)                                                   \
  check_merging_wide<element::type>("Vec" #type #operation, Vec##type##operation,                  \
                                    LANE(__VA_ARGS__));
#define PLAIN(operation, types, ...) SVE_EACH(PLAIN_CHECK, operation, types, __VA_ARGS__)
#define PLAIN_CHECK(type, operation, ...)                                                          \
  check_plain<element::type>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));
#define PLAIN_WIDE(operation, types, ...) SVE_EACH(PLAIN_WIDE_CHECK, operation, types, __VA_ARGS__)
#define PLAIN_WIDE_CHECK(type, operation, ...)                                                     \
  check_plain_wide<element::type>("Vec" #type #operation, Vec##type##operation, LANE(__VA_ARGS__));
#define IMMEDIATE(operation, types, make, ...)                                                     \
  SVE_EACH(IMMEDIATE_CHECK, operation, types, make, __VA_ARGS__)
#define IMMEDIATE_CHECK(type, operation, make, ...)                                                \
  check_immediate<element::type>("Vec" #type #operation, Vec##type##operation,                     \
                                 make<element::type>, {5, 0}, LANE(__VA_ARGS__));
#define SHIFT(operation, types, ...) SVE_EACH(SHIFT_CHECK, operation, types, __VA_ARGS__)
#define SHIFT_CHECK(type, operation, ...)                                                          \
  check_shift_immediate<element::type>("Vec" #type #operation, Vec##type##operation,               \
                                       LANE(__VA_ARGS__));
#define SHIFT_PLAIN(operation, types, ...)                                                         \
  SVE_EACH(SHIFT_PLAIN_CHECK, operation, types, __VA_ARGS__)
#define SHIFT_PLAIN_CHECK(type, operation, ...)                                                    \
  check_immediate<element::type>("Vec" #type #operation, Vec##type##operation,                     \
                                 right<element::type, 16>, {5, 32}, LANE(__VA_ARGS__));
#define ALL_TYPES (S8, S16, S32, S64, U8, U16, U32, U64)
#define SIGNED_TYPES (S8, S16, S32, S64)
#define UNSIGNED_TYPES (U8, U16, U32, U64)
#define BELOW_64 (S8, S16, S32, U8, U16, U32)

Wide distance(Wide a, Wide b) { return a > b ? a - b : b - a; }
Wide bounded(Wide x, Wide low, Wide high) { return x < low ? low : x > high ? high : x; }
Wide power(Wide n) { return Wide{1} << static_cast<int>(n); }

// The high doubleword of the product of two unsigned ones, by their words.
Wide high_half(Wide a, Wide b) {
  const Wide word = power(32), a1 = a / word, a0 = a % word, b1 = b / word, b0 = b % word;
  return a1 * b1 + (a1 * b0 + a0 * b1 + a0 * b0 / word) / word;
}

// Shifts by division: floor for a right shift, and no bits left from the width on.
Wide left(Wide x, Wide by, int esize) { return by >= esize ? 0 : x * power(by); }
Wide right_floor(Wide x, Wide by, int esize) {
  if (by >= esize)
    return x < 0 ? -1 : 0;
  const Wide divisor = power(by);
  return (x - ((x % divisor) + divisor) % divisor) / divisor;
}

int highest_bit(Wide x) {
  int n = -1;
  for (; x > 0; x /= 2)
    n++;
  return n;
}
int set_bits(Wide x) {
  int n = 0;
  for (; x > 0; x /= 2)
    n += static_cast<int>(x % 2);
  return n;
}
// The bits below the top one that equal it.
int sign_bits(Wide a, int esize) {
  int n = 0;
  const Wide top = a >> (esize - 1) & 1;
  while (n < esize - 1 && (a >> (esize - 2 - n) & 1) == top)
    n++;
  return n;
}
// The parts of so many bits in reverse order.
Wide parts_reversed(Wide x, int esize, int part) {
  Wide result = 0;
  for (int i = 0; i < esize; i += part)
    result = result * power(part) + x / power(i) % power(part);
  return result;
}

// clang-format off
TEST(IntegerLanes, Arithmetic) {
  MERGING(AbdVVM, ALL_TYPES, distance(a, b))
  MERGING(AbsVM, SIGNED_TYPES, b < 0 ? -b : b)
  MERGING(NegVM, SIGNED_TYPES, -b)
  MERGING(AddVVM, UNSIGNED_TYPES, a + b)
  MERGING(SubVVM, UNSIGNED_TYPES, a - b)
  MERGING(SubRVVM, UNSIGNED_TYPES, b - a)
  MERGING(MulVVM, SIGNED_TYPES, a * b)
  MERGING(MulHVVM, SIGNED_TYPES, right_floor(a * b, esize, 128))
  MERGING(MulHVVM, (U8, U16, U32), a * b / power(esize))
  MERGING(MulHVVM, (U64), high_half(a, b))
  MERGING(MaxVVM, ALL_TYPES, a > b ? a : b)
  MERGING(MinVVM, ALL_TYPES, a < b ? a : b)
  MERGING(DivVVM, (S32, S64, U32, U64), b == 0 ? 0 : a / b)
  MERGING(DivRVVM, (S32, S64, U32, U64), a == 0 ? 0 : b / a)
  MERGING(Extnd12VM, (U16), b % 256)
  MERGING(Extnd14VM, (U32), b % 256)
  MERGING(Extnd18VM, (U64), b % 256)
  MERGING(Extnd12VM, (S16), ub % 256 < 128 ? ub % 256 : ub % 256 - 256)
  MERGING(Extnd28VM, (S64), ub % 65536 < 32768 ? ub % 65536 : ub % 65536 - 65536)
  MERGING(Extnd48VM, (U64), b % power(32))
}

TEST(IntegerLanes, Bits) {
  MERGING(InvVM, UNSIGNED_TYPES, high - b)
  MERGING(NotVM, UNSIGNED_TYPES, b == 0 ? 1 : 0)
  MERGING(ClsVM, UNSIGNED_TYPES, sign_bits(b, esize))
  MERGING(ClzVM, UNSIGNED_TYPES, esize - 1 - highest_bit(b))
  MERGING(CntVM, UNSIGNED_TYPES, set_bits(b))
  MERGING(RBitVM, UNSIGNED_TYPES, parts_reversed(b, esize, 1))
  MERGING(Rev1V, (U16, U32, U64), parts_reversed(b, esize, 8))
  MERGING(Rev2V, (U32, U64), parts_reversed(b, esize, 16))
  MERGING(Rev4V, (U64), parts_reversed(b, esize, 32))
}

TEST(IntegerLanes, Shifts) {
  MERGING(ShlVVM, UNSIGNED_TYPES, left(a, ub, esize))
  MERGING(ShrVVM, ALL_TYPES, right_floor(a, ub, esize))
  MERGING(ShlRVVM, UNSIGNED_TYPES, left(b, ua, esize))
  MERGING(ShrRVVM, ALL_TYPES, right_floor(b, ua, esize))
  MERGING_WIDE(ShlVWM, (U8, U16, U32), left(a, b, esize))
  MERGING_WIDE(ShrVWM, BELOW_64, right_floor(a, b, esize))
  PLAIN_WIDE(ShlVWX, (U8, U16, U32), left(a, b, esize))
  PLAIN_WIDE(ShrVWX, BELOW_64, right_floor(a, b, esize))
  SHIFT(ShrVIM, UNSIGNED_TYPES, right_floor(a, b, esize))
  SHIFT(ShrDVIM, SIGNED_TYPES, a / power(b))
  SHIFT_PLAIN(ShrVIX, UNSIGNED_TYPES, right_floor(a, b, esize))
}

TEST(IntegerLanes, Immediates) {
  IMMEDIATE(AddVIX, UNSIGNED_TYPES, shifted, a + b)
  IMMEDIATE(SubRVIX, UNSIGNED_TYPES, shifted, b - a)
  IMMEDIATE(QAddVIX, ALL_TYPES, shifted, bounded(a + b, low, high))
  IMMEDIATE(QSubVIX, ALL_TYPES, shifted, bounded(a - b, low, high))
  IMMEDIATE(MaxVIX, ALL_TYPES, eight, a > b ? a : b)
  IMMEDIATE(MinVIX, ALL_TYPES, eight, a < b ? a : b)
  IMMEDIATE(MulVIX, SIGNED_TYPES, eight, a * b)
}

TEST(IntegerLanes, WithoutPredicate) {
  PLAIN(AddVVX, UNSIGNED_TYPES, a + b)
  PLAIN(QAddVVX, ALL_TYPES, bounded(a + b, low, high))
  PLAIN(QSubVVX, ALL_TYPES, bounded(a - b, low, high))
  PLAIN(LEA1VV, (U32, U64), a + b)
  PLAIN(LEA2VV, (U32, U64), a + b * 2)
  PLAIN(LEA4VV, (U32, U64), a + b * 4)
  PLAIN(LEA8VV, (U32, U64), a + b * 8)
  PLAIN(LEA1YVV, (U64), a + b % power(32))
  PLAIN(LEA2YVV, (U64), a + b % power(32) * 2)
  PLAIN(LEA4YVV, (U64), a + b % power(32) * 4)
  PLAIN(LEA8YVV, (U64), a + b % power(32) * 8)
  PLAIN(LEA1XVV, (U64), a + (b % power(32) ^ power(31)) - power(31))
  PLAIN(LEA2XVV, (U64), a + ((b % power(32) ^ power(31)) - power(31)) * 2)
  PLAIN(LEA4XVV, (U64), a + ((b % power(32) ^ power(31)) - power(31)) * 4)
  PLAIN(LEA8XVV, (U64), a + ((b % power(32) ^ power(31)) - power(31)) * 8)
}
// clang-format on

}  // namespace
