// Conversions of single values by the host's unit: From and To are unsigned types for
// floating-point formats, and integers by sign and width. What has no instruction goes by a format
// that holds all values of the source.
#pragma once

#include <algorithm>
#include <limits>

#include "sve/model/host_lanes.h"

namespace model {

template <class From, class To> inline To host_reformat(From x) {
  uint64_t result;
  if constexpr (sizeof(From) == 2)
    result = sizeof(To) == 4 ? host::fcvt_h2s(x) : host::fcvt_h2d(x);
  else if constexpr (sizeof(From) == 4)
    result = sizeof(To) == 2 ? host::fcvt_s2h(x) : host::fcvt_s2d(x);
  else
    result = sizeof(To) == 2 ? host::fcvt_d2h(x) : host::fcvt_d2s(x);
  return static_cast<To>(result);
}

// To half precision by double: an integer that is not exact there overflows.
template <class From, class To> inline To host_from_integer(From x) {
  const uint64_t wide = raw(x);
  uint64_t result;
  if constexpr (sizeof(To) == 4)
    result = is_unsigned<From> ? host::ucvtf_d2s(wide) : host::scvtf_d2s(wide);
  else
    result = is_unsigned<From> ? host::ucvtf_d2d(wide) : host::scvtf_d2d(wide);
  return static_cast<To>(sizeof(To) == 2 ? host::fcvt_d2h(result) : result);
}

// Rounded toward zero. Half precision goes by single; to 16 bits, which have no instruction, by 32:
// what they cannot hold is integral, but for what the 32 bits have flagged already.
template <class From, class To> inline To host_to_integer(From x, HostUnit& unit) {
  if constexpr (sizeof(From) == 2) {
    return host_to_integer<uint32_t, To>(host_reformat<uint16_t, uint32_t>(x), unit);
  } else if constexpr (sizeof(To) == 2) {
    using Word = std::conditional_t<is_unsigned<To>, uint32_t, int32_t>;
    const auto word = host_to_integer<From, Word>(x, unit);
    const Word clamped =
        std::clamp<Word>(word, std::numeric_limits<To>::min(), std::numeric_limits<To>::max());
    if (word != clamped)
      unit.raise(FPSCR_IOC);
    return static_cast<To>(clamped);
  } else if constexpr (sizeof(From) == 4) {
    if constexpr (sizeof(To) == 4)
      return static_cast<To>(is_unsigned<To> ? host::fcvtzu_s2s(x) : host::fcvtzs_s2s(x));
    else
      return static_cast<To>(is_unsigned<To> ? host::fcvtzu_s2d(x) : host::fcvtzs_s2d(x));
  } else {
    if constexpr (sizeof(To) == 4)
      return static_cast<To>(is_unsigned<To> ? host::fcvtzu_d2s(x) : host::fcvtzs_d2s(x));
    else
      return static_cast<To>(is_unsigned<To> ? host::fcvtzu_d2d(x) : host::fcvtzs_d2d(x));
  }
}

// Active elements one by one, under the context's controls.
template <class Container, class Conversion>
inline VecV host_convert(VecV old, PredV pg, VecV zn, CpuContext* context, Conversion convert) {
  HostUnit unit(context);
  return merge<Container>(old, pg, context, [&](unsigned e) {
    return static_cast<Container>(convert(get<Container>(zn, e), unit));
  });
}

}  // namespace model
