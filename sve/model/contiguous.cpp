// Contiguous loads and stores, structures, load and replicate, whole registers.
#include "sve/model/access.h"
#include "sve/model/load_store.h"

using namespace model;

namespace {

// Structure members are the inner loop, so memory is walked in ascending order.
template <class E, unsigned count>
VecGroup<count> load_structures(const PredV& pg, uint64_t address, CpuContext* context) {
  VecGroup<count> result;
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    for (unsigned k = 0; k < count; k++, address += sizeof(E))
      set<E>(result.vectors[k], e,
             active<E>(pg, e) ? read_element<E, sizeof(E)>(address, context) : E{0});
  return result;
}

template <class E, unsigned count>
void store_structures(const PredV& pg, uint64_t address, const VecGroup<count>& data,
                      CpuContext* context) {
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    for (unsigned k = 0; k < count; k++, address += sizeof(E))
      if (active<E>(pg, e))
        write<sizeof(E)>(get<E>(data.vectors[k], e), address, context);
}

// The first 128 bits, in every segment. Only the mask's first 16 bits count.
template <class E> VecV load_segment(const PredV& pg, uint64_t address, CpuContext* context) {
  VecV result;
  for (unsigned e = 0; e < segment_bytes / sizeof(E); e++)
    set<E>(result, e,
           active<E>(pg, e) ? read_element<E, sizeof(E)>(address + e * sizeof(E), context) : E{0});
  for (unsigned s = 1; s < segments(context); s++)
    memcpy(bytes_of(result) + size_t{s} * segment_bytes, bytes_of(result), segment_bytes);
  return result;
}

template <class E> uint64_t vectors_worth(int msize, const CpuContext* context) {
  return raw(elements<E>(context)) * raw(msize);
}

}  // namespace

#define LOAD_IMMEDIATE(type, operation, msize, loop)                                               \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, uint64_t base, uint64_t imm)) {                   \
    using E = model::type;                                                                         \
    const uint64_t start = base + imm * vectors_worth<E>(msize, context);                          \
    return loop<E, msize>(pg, context, [&](unsigned e) { return start + raw(e) * msize; });        \
  }
#define LOAD_INDEX(type, operation, msize, loop)                                                   \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, uint64_t base, uint64_t index)) {                 \
    using E = model::type;                                                                         \
    return loop<E, msize>(pg, context, [&](unsigned e) { return base + (index + e) * msize; });    \
  }
#define STORE_IMMEDIATE(type, operation, msize)                                                    \
  MODEL_DEFINE(type, operation, void, (PredV pg, uint64_t base, uint64_t imm, VecV data)) {        \
    using E = model::type;                                                                         \
    const uint64_t start = base + imm * vectors_worth<E>(msize, context);                          \
    store<E, msize>(pg, data, context, [&](unsigned e) { return start + raw(e) * msize; });        \
  }
#define STORE_INDEX(type, operation, msize)                                                        \
  MODEL_DEFINE(type, operation, void, (PredV pg, uint64_t base, uint64_t index, VecV data)) {      \
    using E = model::type;                                                                         \
    store<E, msize>(pg, data, context, [&](unsigned e) { return base + (index + e) * msize; });    \
  }
#define REPLICATE(type, operation, msize)                                                          \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, uint64_t base, uint64_t imm)) {                   \
    return load<model::type, msize>(pg, context, [&](unsigned) { return base + imm * msize; });    \
  }

#define STRUCTURES(type, digit, count)                                                             \
  MODEL_DEFINE(type, E##count##Load##digit##SIZ, VecGroup<count>,                                  \
               (PredV pg, uint64_t base, uint64_t imm)) {                                          \
    using E = model::type;                                                                         \
    return load_structures<E, count>(pg, base + imm * count * vectors_worth<E>(digit, context),    \
                                     context);                                                     \
  }                                                                                                \
  MODEL_DEFINE(type, E##count##Load##digit##LSSZ, VecGroup<count>,                                 \
               (PredV pg, uint64_t base, uint64_t index)) {                                        \
    return load_structures<model::type, count>(pg, base + index * digit, context);                 \
  }                                                                                                \
  MODEL_DEFINE(type, E##count##Store##digit##SIZ, void,                                            \
               (PredV pg, uint64_t base, uint64_t imm, VecGroup<count> data)) {                    \
    using E = model::type;                                                                         \
    store_structures<E, count>(pg, base + imm * count * vectors_worth<E>(digit, context), data,    \
                               context);                                                           \
  }                                                                                                \
  MODEL_DEFINE(type, E##count##Store##digit##LSSZ, void,                                           \
               (PredV pg, uint64_t base, uint64_t index, VecGroup<count> data)) {                  \
    store_structures<model::type, count>(pg, base + index * digit, data, context);                 \
  }

#define REPLICATE_SEGMENT(type, digit)                                                             \
  MODEL_DEFINE(type, LoadDup##digit##QSIZ, VecV, (PredV pg, uint64_t base, uint64_t imm)) {        \
    return load_segment<model::type>(pg, base + imm * segment_bytes, context);                     \
  }                                                                                                \
  MODEL_DEFINE(type, LoadDup##digit##QSSZ, VecV, (PredV pg, uint64_t base, uint64_t index)) {      \
    return load_segment<model::type>(pg, base + index * digit, context);                           \
  }

// The memory element's size, and the types that it is loaded into and stored from.
#define ELEMENT_SIZE(msize, loads, stores)                                                         \
  SVE_EACH(LOAD_IMMEDIATE, CLoad##msize##SIZ, loads, msize, load)                                  \
  SVE_EACH(LOAD_IMMEDIATE, CLoadNF##msize##SIZ, loads, msize, load_non_fault)                      \
  SVE_EACH(LOAD_INDEX, CLoad##msize##LSSZ, loads, msize, load)                                     \
  SVE_EACH(LOAD_INDEX, CLoadFF##msize##LSSZ, loads, msize, load_first_fault)                       \
  SVE_EACH(STORE_IMMEDIATE, CStore##msize##SIZ, stores, msize)                                     \
  SVE_EACH(STORE_INDEX, CStore##msize##LSSZ, stores, msize)                                        \
  SVE_EACH(REPLICATE, LoadDup##msize##SIZ, loads, msize)

// What exists for memory elements of the register element's size alone.
#define SAME_SIZE(type, digit)                                                                     \
  LOAD_IMMEDIATE(type, CLoadNT##digit##SIZ, digit, load)                                           \
  LOAD_INDEX(type, CLoadNT##digit##LSSZ, digit, load)                                              \
  STORE_IMMEDIATE(type, CStoreNT##digit##SIZ, digit)                                               \
  STORE_INDEX(type, CStoreNT##digit##LSSZ, digit)                                                  \
  STRUCTURES(type, digit, 2)                                                                       \
  STRUCTURES(type, digit, 3)                                                                       \
  STRUCTURES(type, digit, 4)                                                                       \
  REPLICATE_SEGMENT(type, digit)

ELEMENT_SIZE(1, (U8, S16, U16, S32, U32, S64, U64), (U8, U16, U32, U64))
ELEMENT_SIZE(2, (U16, S32, U32, S64, U64), (U16, U32, U64))
ELEMENT_SIZE(4, (U32, S64, U64), (U32, U64))
ELEMENT_SIZE(8, (U64), (U64))

SAME_SIZE(U8, 1)
SAME_SIZE(U16, 2)
SAME_SIZE(U32, 4)
SAME_SIZE(U64, 8)

VecV VecU64FillSI(uint64_t base, uint64_t imm, CpuContext* context) {
  const uint64_t start = base + imm * vector_bytes(context);
  return map<uint8_t>(context,
                      [&](unsigned i) { return read_element<uint8_t, 1>(start + i, context); });
}

void VecU64SpillSI(uint64_t base, uint64_t imm, VecV data, CpuContext* context) {
  const uint64_t start = base + imm * vector_bytes(context);
  for (unsigned i = 0; i < vector_bytes(context); i++)
    write<1>(get<uint8_t>(data, i), start + i, context);
}

// A byte in memory holds eight predicate bits, lowest first.
PredV VecPFillSI(uint64_t base, uint64_t imm, CpuContext* context) {
  const uint64_t start = base + imm * context->vl;
  PredV result = {};
  for (unsigned i = 0; i < context->vl; i++) {
    const auto byte = read_element<uint8_t, 1>(start + i, context);
    for (unsigned b = 0; b < 8; b++)
      set_bit(result, 8 * i + b, (byte >> b & 1) != 0);
  }
  return result;
}

void VecPSpillSI(uint64_t base, uint64_t imm, PredV data, CpuContext* context) {
  const uint64_t start = base + imm * context->vl;
  for (unsigned i = 0; i < context->vl; i++) {
    uint64_t byte = 0;
    for (unsigned b = 0; b < 8; b++)
      byte |= static_cast<uint64_t>(bit(data, 8 * i + b)) << b;
    write<1>(byte, start + i, context);
  }
}
