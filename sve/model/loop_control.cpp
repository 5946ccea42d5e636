// Loop predicates and the end of a loop.
#include "sve/model/flags.h"
#include "sve/model/predicate.h"
#include "sve/model/predicate_ops.h"
#include "sve/model/vector.h"
#include "sve/model/wide_integer.h"

using namespace model;

namespace {

constexpr int bits_per_byte = 8;

// Whether a + e stands in the relation to b, without wrapping.
struct Less {
  static bool holds(WideInt a, WideInt b) { return a < b; }
  static bool always(WideInt, WideInt) { return false; }
};
struct LessOrEqual {
  static bool holds(WideInt a, WideInt b) { return a <= b; }
  // The architecture's counter wraps, so it never exceeds the greatest value.
  static bool always(WideInt b, WideInt greatest) { return b == greatest; }
};

template <class E, int scalar_bytes, class Relation>
PredV loop_predicate(uint64_t a, uint64_t b, CpuContext* context) {
  constexpr int width = scalar_bytes * bits_per_byte;
  const WideInt start = Int(a, width, is_unsigned<E>), end = Int(b, width, is_unsigned<E>);
  const auto greatest = static_cast<WideInt>(ones(is_unsigned<E> ? width : width - 1));
  // As long as it holds, it holds for all before.
  const PredV result = map_bits<E>(context, [&](unsigned e) {
    return Relation::always(end, greatest) || Relation::holds(start + e, end);
  });
  const PredV all_true = map_bits<E>(context, [](unsigned) { return true; });
  PredSetNZCV(all_true, result, esize<E>, context);
  return result;
}

void set_termination(bool terminated, CpuContext* context) {
  set_flag(context, flag_n, terminated);
  set_flag(context, flag_v, !terminated && (context->nzcv & flag_c) == 0);
}

}  // namespace

#define WHILE(type, operation, scalar_bytes, relation)                                             \
  MODEL_DEFINE(type, operation, PredV, (uint64_t a, uint64_t b)) {                                 \
    return loop_predicate<model::type, scalar_bytes, relation>(a, b, context);                     \
  }
#define TERMINATE(type, operation, equal)                                                          \
  MODEL_DEFINE(type, operation, void, (uint64_t a, uint64_t b)) {                                  \
    using E = model::type;                                                                         \
    set_termination((static_cast<E>(a) == static_cast<E>(b)) == equal, context);                   \
  }

// clang-format off
SVE_EACH(WHILE, While4LESS, (S8, S16, S32, S64, U8, U16, U32, U64), 4, LessOrEqual)
SVE_EACH(WHILE, While8LESS, (S8, S16, S32, S64, U8, U16, U32, U64), 8, LessOrEqual)
SVE_EACH(WHILE, While4LTSS, (S8, S16, S32, S64, U8, U16, U32, U64), 4, Less)
SVE_EACH(WHILE, While8LTSS, (S8, S16, S32, S64, U8, U16, U32, U64), 8, Less)
SVE_EACH(TERMINATE, CTermEQ, (U32, U64), true)
SVE_EACH(TERMINATE, CTermNE, (U32, U64), false)
// clang-format on
