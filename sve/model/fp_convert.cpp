// Conversions between formats and integers, and rounding to integral values. The container of an
// element is the wider of source and result; results fill it.
#include "sve/fp/convert.h"

#include "sve/model/floating_point.h"
#include "sve/model/fp_element.h"

#ifdef MODEL_OF_BUILT_LENGTH
#include "sve/model/host_conversions.h"
#endif

using namespace model;

// clang-format off
FP_MERGING_UNARY(FRIntAVM, (F16, F32, D64), FPRoundInt(x, FPRounding_TIEAWAY, false, fpscr))
FP_MERGING_UNARY(FRIntIVM, (F16, F32, D64), FPRoundInt(x, FPRoundingMode(fpscr), false, fpscr))
FP_MERGING_UNARY(FRIntMVM, (F16, F32, D64), FPRoundInt(x, FPRounding_NEGINF, false, fpscr))
FP_MERGING_UNARY(FRIntNVM, (F16, F32, D64), FPRoundInt(x, FPRounding_TIEEVEN, false, fpscr))
FP_MERGING_UNARY(FRIntPVM, (F16, F32, D64), FPRoundInt(x, FPRounding_POSINF, false, fpscr))
FP_MERGING_UNARY(FRIntXVM, (F16, F32, D64), FPRoundInt(x, FPRoundingMode(fpscr), true, fpscr))
FP_MERGING_UNARY(FRIntZVM, (F16, F32, D64), FPRoundInt(x, FPRounding_ZERO, false, fpscr))
// clang-format on

namespace {

// Active elements of a container, of which each holds a From and gets a To.

template <class Container, class From, class To>
VecV reformat(VecV old, PredV pg, VecV zn, CpuContext* context) {
#ifdef MODEL_OF_BUILT_LENGTH
  return host_convert<Container>(old, pg, zn, context, [](Container x, HostUnit&) {
    return host_reformat<From, To>(static_cast<From>(x));
  });
#else
  return merge<Container>(old, pg, context, [&](unsigned e) -> Container {
    const auto x = static_cast<From>(get<Container>(zn, e));
    return conversion_step(
        context, [&](FPSCR& fpscr) { return FPConvert<To>(x, FPRoundingMode(fpscr), fpscr); });
  });
#endif
}

template <class Container, class From, class To>
VecV from_integer(VecV old, PredV pg, VecV zn, CpuContext* context) {
#ifdef MODEL_OF_BUILT_LENGTH
  return host_convert<Container>(old, pg, zn, context, [](Container x, HostUnit&) {
    return host_from_integer<From, To>(static_cast<From>(x));
  });
#else
  return merge<Container>(old, pg, context, [&](unsigned e) -> Container {
    const uint64_t x = raw(static_cast<From>(get<Container>(zn, e)));
    return step(context, [&](FPSCR& fpscr) {
      return fplibFixedToFP<To>(x, 0, is_unsigned<From>, FPRoundingMode(fpscr), fpscr);
    });
  });
#endif
}

template <class Container, class From, class To>
VecV to_integer(VecV old, PredV pg, VecV zn, CpuContext* context) {
#ifdef MODEL_OF_BUILT_LENGTH
  if (sizeof(From) != sizeof(uint16_t) || (context->fpcr & FPSCR_FZ16) == 0)
    return host_convert<Container>(old, pg, zn, context, [](Container x, HostUnit& unit) {
      return host_to_integer<From, To>(static_cast<From>(x), unit);
    });
#endif
  return merge<Container>(old, pg, context, [&](unsigned e) -> Container {
    const auto x = static_cast<From>(get<Container>(zn, e));
    return static_cast<Container>(static_cast<To>(step(context, [&](FPSCR& fpscr) {
      return fplibFPToFixed<std::make_unsigned_t<To>>(x, 0, is_unsigned<To>, FPRounding_ZERO,
                                                      fpscr);
    })));
  });
}

}  // namespace

// The type, the operation, container, and the types of source and result.
#define CONVERSION(convert, type, operation, ...)                                                  \
  MODEL_DEFINE(type, operation, VecV, (VecV old, PredV pg, VecV zn)) {                             \
    return convert<__VA_ARGS__>(old, pg, zn, context);                                             \
  }

// clang-format off
CONVERSION(reformat, F32, ExtndHVM, uint32_t, uint16_t, uint32_t)
CONVERSION(reformat, D64, ExtndHVM, uint64_t, uint16_t, uint64_t)
CONVERSION(reformat, D64, ExtndFVM, uint64_t, uint32_t, uint64_t)
CONVERSION(reformat, H32, TruncFVM, uint32_t, uint32_t, uint16_t)
CONVERSION(reformat, H64, TruncDVM, uint64_t, uint64_t, uint16_t)
CONVERSION(reformat, F64, TruncDVM, uint64_t, uint64_t, uint32_t)

CONVERSION(from_integer, F16, FromS2VM, uint16_t, int16_t, uint16_t)
CONVERSION(from_integer, F16, FromU2VM, uint16_t, uint16_t, uint16_t)
CONVERSION(from_integer, F16, FromS4VM, uint32_t, int32_t, uint16_t)
CONVERSION(from_integer, F16, FromU4VM, uint32_t, uint32_t, uint16_t)
CONVERSION(from_integer, F16, FromS8VM, uint64_t, int64_t, uint16_t)
CONVERSION(from_integer, F16, FromU8VM, uint64_t, uint64_t, uint16_t)
CONVERSION(from_integer, F32, FromS4VM, uint32_t, int32_t, uint32_t)
CONVERSION(from_integer, F32, FromU4VM, uint32_t, uint32_t, uint32_t)
CONVERSION(from_integer, F64, FromS8VM, uint64_t, int64_t, uint32_t)
CONVERSION(from_integer, F64, FromU8VM, uint64_t, uint64_t, uint32_t)
CONVERSION(from_integer, D64, FromS4VM, uint64_t, int32_t, uint64_t)
CONVERSION(from_integer, D64, FromU4VM, uint64_t, uint32_t, uint64_t)
CONVERSION(from_integer, D64, FromS8VM, uint64_t, int64_t, uint64_t)
CONVERSION(from_integer, D64, FromU8VM, uint64_t, uint64_t, uint64_t)

CONVERSION(to_integer, S16, _2FromHVM, uint16_t, uint16_t, int16_t)
CONVERSION(to_integer, U16, _2FromHVM, uint16_t, uint16_t, uint16_t)
CONVERSION(to_integer, S32, _4FromHVM, uint32_t, uint16_t, int32_t)
CONVERSION(to_integer, U32, _4FromHVM, uint32_t, uint16_t, uint32_t)
CONVERSION(to_integer, S64, _8FromHVM, uint64_t, uint16_t, int64_t)
CONVERSION(to_integer, U64, _8FromHVM, uint64_t, uint16_t, uint64_t)
CONVERSION(to_integer, S32, _4FromFVM, uint32_t, uint32_t, int32_t)
CONVERSION(to_integer, U32, _4FromFVM, uint32_t, uint32_t, uint32_t)
CONVERSION(to_integer, S64, _8FromFVM, uint64_t, uint32_t, int64_t)
CONVERSION(to_integer, U64, _8FromFVM, uint64_t, uint32_t, uint64_t)
CONVERSION(to_integer, S64, _4FromDVM, uint64_t, uint64_t, int32_t)
CONVERSION(to_integer, U64, _4FromDVM, uint64_t, uint64_t, uint32_t)
CONVERSION(to_integer, S64, _8FromDVM, uint64_t, uint64_t, int64_t)
CONVERSION(to_integer, U64, _8FromDVM, uint64_t, uint64_t, uint64_t)
// clang-format on
