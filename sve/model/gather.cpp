// Gathers, first-fault gathers and scatters.
#include "sve/model/access.h"
#include "sve/model/load_store.h"

using namespace model;

namespace {

// Element e as a 64-bit offset or address.
template <class E> uint64_t whole(const VecV& offsets, unsigned e) {
  return get<std::make_unsigned_t<E>>(offsets, e);
}
template <class E> uint64_t sign_extended(const VecV& offsets, unsigned e) {
  return raw(static_cast<int32_t>(whole<E>(offsets, e)));
}
template <class E> uint64_t zero_extended(const VecV& offsets, unsigned e) {
  return static_cast<uint32_t>(whole<E>(offsets, e));
}

}  // namespace

// One function for each type: the operation, the memory element's size, how an offset is read, and
// for loads the loop.
#define LOAD_UNSCALED(type, operation, msize, offset, loop)                                        \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV offsets, uint64_t base)) {                   \
    using E = model::type;                                                                         \
    return loop<E, msize>(pg, context, [&](unsigned e) { return base + offset<E>(offsets, e); });  \
  }
#define LOAD_SCALED(type, operation, msize, offset, loop)                                          \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, uint64_t base, VecV offsets)) {                   \
    using E = model::type;                                                                         \
    return loop<E, msize>(pg, context,                                                             \
                          [&](unsigned e) { return base + offset<E>(offsets, e) * msize; });       \
  }
#define LOAD_ADDRESSES(type, operation, msize, offset, loop)                                       \
  MODEL_DEFINE(type, operation, VecV, (PredV pg, VecV addresses, uint64_t imm)) {                  \
    using E = model::type;                                                                         \
    return loop<E, msize>(pg, context,                                                             \
                          [&](unsigned e) { return offset<E>(addresses, e) + imm * msize; });      \
  }
#define STORE_UNSCALED(type, operation, msize, offset)                                             \
  MODEL_DEFINE(type, operation, void, (PredV pg, VecV offsets, uint64_t base, VecV data)) {        \
    using E = model::type;                                                                         \
    store<E, msize>(pg, data, context, [&](unsigned e) { return base + offset<E>(offsets, e); });  \
  }
#define STORE_SCALED(type, operation, msize, offset)                                               \
  MODEL_DEFINE(type, operation, void, (PredV pg, uint64_t base, VecV offsets, VecV data)) {        \
    using E = model::type;                                                                         \
    store<E, msize>(pg, data, context,                                                             \
                    [&](unsigned e) { return base + offset<E>(offsets, e) * msize; });             \
  }
#define STORE_ADDRESSES(type, operation, msize, offset)                                            \
  MODEL_DEFINE(type, operation, void, (PredV pg, VecV addresses, uint64_t imm, VecV data)) {       \
    using E = model::type;                                                                         \
    store<E, msize>(pg, data, context,                                                             \
                    [&](unsigned e) { return offset<E>(addresses, e) + imm * msize; });            \
  }

// One address form: the memory element's size, the shape, the types of loads and of stores, and
// how an offset is read.
#define ADDRESS_FORM(kind, msize, shape, loads, stores, offset)                                    \
  SVE_EACH(LOAD_##kind, Load##msize##shape, loads, msize, offset, load)                            \
  SVE_EACH(LOAD_##kind, LoadFF##msize##shape, loads, msize, offset, load_first_fault)              \
  SVE_EACH(STORE_##kind, Store##msize##shape, stores, msize, offset)

// clang-format off
ADDRESS_FORM(UNSCALED, 1, VSZ, (S32, U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(UNSCALED, 2, VSZ, (S32, U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(UNSCALED, 4, VSZ, (U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(UNSCALED, 8, VSZ, (U64), (U64), whole)
ADDRESS_FORM(UNSCALED, 1, XVSZ, (S32, U32, S64, U64), (U32, U64), sign_extended)
ADDRESS_FORM(UNSCALED, 2, XVSZ, (S32, U32, S64, U64), (U32, U64), sign_extended)
ADDRESS_FORM(UNSCALED, 4, XVSZ, (U32, S64, U64), (U32, U64), sign_extended)
ADDRESS_FORM(UNSCALED, 8, XVSZ, (U64), (U64), sign_extended)
ADDRESS_FORM(UNSCALED, 1, YVSZ, (S64, U64), (U64), zero_extended)
ADDRESS_FORM(UNSCALED, 2, YVSZ, (S64, U64), (U64), zero_extended)
ADDRESS_FORM(UNSCALED, 4, YVSZ, (S64, U64), (U64), zero_extended)
ADDRESS_FORM(UNSCALED, 8, YVSZ, (U64), (U64), zero_extended)
ADDRESS_FORM(SCALED, 2, SVZ, (S32, U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(SCALED, 4, SVZ, (U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(SCALED, 8, SVZ, (U64), (U64), whole)
ADDRESS_FORM(SCALED, 2, XSVZ, (S32, U32, S64, U64), (U32, U64), sign_extended)
ADDRESS_FORM(SCALED, 4, XSVZ, (U32, S64, U64), (U32, U64), sign_extended)
ADDRESS_FORM(SCALED, 8, XSVZ, (U64), (U64), sign_extended)
ADDRESS_FORM(SCALED, 2, YSVZ, (S64, U64), (U64), zero_extended)
ADDRESS_FORM(SCALED, 4, YSVZ, (S64, U64), (U64), zero_extended)
ADDRESS_FORM(SCALED, 8, YSVZ, (U64), (U64), zero_extended)
ADDRESS_FORM(ADDRESSES, 1, VIZ, (S32, U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(ADDRESSES, 2, VIZ, (S32, U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(ADDRESSES, 4, VIZ, (U32, S64, U64), (U32, U64), whole)
ADDRESS_FORM(ADDRESSES, 8, VIZ, (U64), (U64), whole)
// clang-format on
