// The types in the names of model functions, as the test's own element types.
#pragma once

#include "tests/model/lanes.h"

namespace element {

using S8 = int8_t;
using S16 = int16_t;
using S32 = int32_t;
using S64 = int64_t;
using U8 = uint8_t;
using U16 = uint16_t;
using U32 = uint32_t;
using U64 = uint64_t;
using B8 = uint8_t;
using H16 = uint16_t;
using F16 = uint16_t;
using F32 = uint32_t;
using D64 = uint64_t;
using P8 = uint8_t;
using P16 = uint16_t;
using P32 = uint32_t;
using P64 = uint64_t;

}  // namespace element
