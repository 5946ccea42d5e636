// Integer miscellaneous: floating-point table look-ups and MOVPRFX.
#include "sve/decode/row.h"
#include "sve/fast/integer_unpredicated.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FTSSEL Zd.T, Zn.T, Zm.T", TRISSELVV,    (F16, F32, D64), sized(0x0420b000), MODEL, Zd, Zn, Zm)
ROW("FEXPA Zd.T, Zn.T",        EXPAV,        (F16, F32, D64), sized(0x0420b800), MODEL, Zd, Zn)
ROW("MOVPRFX Zd, Zn",          SpecialMoveV, (U32),           0x0420bc00,        FAST,  sve_movprfx_zz, Zd, Zn)
// clang-format on
