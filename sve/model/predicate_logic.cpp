// Predicate logic, breaks and the first-fault register.
#include "sve/model/predicate.h"
#include "sve/model/predicate_ops.h"
#include "sve/model/vector.h"

using namespace model;

namespace {

constexpr int bit_esize = 8;  // single predicate bits are those of byte elements

PredV all_false() {
  PredV result = {};
  return result;
}

PredV all_true(const CpuContext* context) {
  return map_bits<uint8_t>(context, [](unsigned) { return true; });
}

// Bits of the two sources, where pg is set.
template <class Operation>
PredV combine(const PredV& pg, const PredV& pn, const PredV& pm, Operation operation) {
  PredV result;
  for (unsigned i = 0; i < predicate_words; i++)
    result.words[i] = pg.words[i] & operation(pn.words[i], pm.words[i]);
  return result;
}

PredV with_flags(const PredV& pg, const PredV& result, CpuContext* context) {
  PredSetNZCV(pg, result, bit_esize, context);
  return result;
}

// True up to the first true bit of pn, that one included if behind is set. Inactive bits are those
// of old.
PredV break_at(const PredV& old, const PredV& pg, const PredV& pn, bool behind,
               const CpuContext* context) {
  bool broken = false;
  return map_bits<uint8_t>(context, [&](unsigned i) {
    if (!bit(pg, i))
      return bit(old, i);
    const bool before = broken;
    broken = broken || bit(pn, i);
    return behind ? !before : !broken;
  });
}

bool last_active_bit(const PredV& pg, const PredV& pn, CpuContext* context) {
  const int last = FindLastActive(pg, bit_esize, context);
  return last >= 0 && bit(pn, static_cast<unsigned>(last));
}

// A break that goes on from the vector before: nothing is true unless pn was at its end.
PredV break_previous(const PredV& pg, const PredV& pn, const PredV& pm, bool behind,
                     CpuContext* context) {
  bool going = last_active_bit(pg, pn, context);
  return map_active_bits<uint8_t>(pg, context, [&](unsigned i) {
    const bool before = going;
    going = going && !bit(pm, i);
    return behind ? before : going;
  });
}

PredV break_next(const PredV& pg, const PredV& pn, const PredV& old, CpuContext* context) {
  return last_active_bit(pg, pn, context) ? old : all_false();
}

template <class E> PredV next_active(const PredV& pg, const PredV& old, CpuContext* context) {
  const unsigned n = elements<E>(context);
  auto e = static_cast<unsigned>(FindLastActive(old, esize<E>, context) + 1);
  while (e < n && !active<E>(pg, e))
    e++;
  PredV result = {};
  if (e < n)
    set_bit(result, e * sizeof(E), true);
  PredSetNZCV(pg, result, esize<E>, context);
  return result;
}

template <class E> PredV pattern_true(uint64_t pattern, const CpuContext* context) {
  const uint32_t n = VecTrueILength(pattern, static_cast<int>(elements<E>(context)));
  return map_bits<E>(context, [&](unsigned e) { return e < n; });
}

}  // namespace

// The operation without and with flags, in bits a of pn and b of pm.
#define PREDICATE_LOGIC(operation, ...)                                                            \
  MODEL_DEFINE(P, operation##PPZ, PredV, (PredV pg, PredV pn, PredV pm)) {                         \
    static_cast<void>(context);                                                                    \
    return combine(pg, pn, pm, [](uint64_t a, uint64_t b) { return __VA_ARGS__; });                \
  }                                                                                                \
  MODEL_DEFINE(P, operation##FlgPPZ, PredV, (PredV pg, PredV pn, PredV pm)) {                      \
    return with_flags(pg, VecP##operation##PPZ(pg, pn, pm, context), context);                     \
  }

PREDICATE_LOGIC(And, a& b)
PREDICATE_LOGIC(Bic, a & ~b)
PREDICATE_LOGIC(Or, a | b)
PREDICATE_LOGIC(OrN, a | ~b)
PREDICATE_LOGIC(Xor, a ^ b)
PREDICATE_LOGIC(Nand, ~(a& b))
PREDICATE_LOGIC(Nor, ~(a | b))

PredV VecPSelPP(PredV pg, PredV pn, PredV pm, CpuContext*) {
  PredV result;
  for (unsigned i = 0; i < predicate_words; i++)
    result.words[i] = (pn.words[i] & pg.words[i]) | (pm.words[i] & ~pg.words[i]);
  return result;
}

PredV VecPBreakAPZ(PredV pg, PredV pn, CpuContext* context) {
  return break_at(all_false(), pg, pn, true, context);
}
PredV VecPBreakBPZ(PredV pg, PredV pn, CpuContext* context) {
  return break_at(all_false(), pg, pn, false, context);
}
PredV VecPBreakAFlgPZ(PredV pg, PredV pn, CpuContext* context) {
  return with_flags(pg, break_at(all_false(), pg, pn, true, context), context);
}
PredV VecPBreakBFlgPZ(PredV pg, PredV pn, CpuContext* context) {
  return with_flags(pg, break_at(all_false(), pg, pn, false, context), context);
}
PredV VecPBreakAPM(PredV old, PredV pg, PredV pn, CpuContext* context) {
  return break_at(old, pg, pn, true, context);
}
PredV VecPBreakBPM(PredV old, PredV pg, PredV pn, CpuContext* context) {
  return break_at(old, pg, pn, false, context);
}

PredV VecPBreakPrevAPZ(PredV pg, PredV pn, PredV pm, CpuContext* context) {
  return break_previous(pg, pn, pm, true, context);
}
PredV VecPBreakPrevBPZ(PredV pg, PredV pn, PredV pm, CpuContext* context) {
  return break_previous(pg, pn, pm, false, context);
}
PredV VecPBreakPrevAFlgPZ(PredV pg, PredV pn, PredV pm, CpuContext* context) {
  return with_flags(pg, break_previous(pg, pn, pm, true, context), context);
}
PredV VecPBreakPrevBFlgPZ(PredV pg, PredV pn, PredV pm, CpuContext* context) {
  return with_flags(pg, break_previous(pg, pn, pm, false, context), context);
}

PredV VecPBreakNextPZ(PredV pg, PredV pn, PredV old, CpuContext* context) {
  return break_next(pg, pn, old, context);
}
// The flags do not look at pg.
PredV VecPBreakNextFlgPZ(PredV pg, PredV pn, PredV old, CpuContext* context) {
  return with_flags(all_true(context), break_next(pg, pn, old, context), context);
}

#define NEXT_ACTIVE(type, operation, ...)                                                          \
  MODEL_DEFINE(type, operation, PredV, (PredV pg, PredV old)) {                                    \
    return next_active<model::type>(pg, old, context);                                             \
  }
#define PATTERN_TRUE(type, operation, ...)                                                         \
  MODEL_DEFINE(type, operation, PredV, (uint64_t pattern)) {                                       \
    return pattern_true<model::type>(pattern, context);                                            \
  }
#define PATTERN_TRUE_FLAGS(type, operation, ...)                                                   \
  MODEL_DEFINE(type, operation, PredV, (uint64_t pattern)) {                                       \
    const PredV result = pattern_true<model::type>(pattern, context);                              \
    PredSetNZCV(result, result, esize<model::type>, context);                                      \
    return result;                                                                                 \
  }

SVE_EACH(NEXT_ACTIVE, GenNextP, (P8, P16, P32, P64), )
SVE_EACH(PATTERN_TRUE, TrueI, (P8, P16, P32, P64), )
SVE_EACH(PATTERN_TRUE_FLAGS, TrueFlgI, (P8, P16, P32, P64), )

PredV VecPSetFirstActiveP(PredV pn, PredV old, CpuContext* context) {
  const int first = FindFirstActive(pn, bit_esize, context);
  if (first >= 0)
    set_bit(old, static_cast<unsigned>(first), true);
  return with_flags(pn, old, context);
}

PredV VecPFalse(CpuContext*) { return all_false(); }

void VecPTestPZ(PredV pg, PredV pn, CpuContext* context) { with_flags(pg, pn, context); }

PredV VecPActualP(PredV pg, CpuContext* context) {
  return combine(pg, context->ffr, all_false(), [](uint64_t a, uint64_t) { return a; });
}

PredV VecPActualFlgP(PredV pg, CpuContext* context) {
  return with_flags(pg, VecPActualP(pg, context), context);
}

PredV VecPReadFFSRP(CpuContext* context) { return context->ffr; }

void VecPWriteFFSRP(PredV pn, CpuContext* context) { context->ffr = pn; }

void VecPClearFFSR(CpuContext* context) { context->ffr = all_true(context); }
