// Floating-point rounding, square root and exponent, predicated.
#include "sve/decode/row.h"
#include "sve/fast/fp_arithmetic.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FRINTN Zd.T, Pg/M, Zn.T", FRIntNVM, (F16, F32, D64), sized(0x6500a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRINTP Zd.T, Pg/M, Zn.T", FRIntPVM, (F16, F32, D64), sized(0x6501a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRINTM Zd.T, Pg/M, Zn.T", FRIntMVM, (F16, F32, D64), sized(0x6502a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRINTZ Zd.T, Pg/M, Zn.T", FRIntZVM, (F16, F32, D64), sized(0x6503a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRINTA Zd.T, Pg/M, Zn.T", FRIntAVM, (F32, D64),      sized(0x6504a000), HOST_FP, sve_frinta_zpz, Zd, PgM, Zn)
ROW("FRINTX Zd.T, Pg/M, Zn.T", FRIntXVM, (F16, F32, D64), sized(0x6506a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRINTI Zd.T, Pg/M, Zn.T", FRIntIVM, (F16, F32, D64), sized(0x6507a000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FRECPX Zd.T, Pg/M, Zn.T", RecpXVM,  (F16, F32, D64), sized(0x650ca000), MODEL,   Zd, OldZ, PgM, Zn)
ROW("FSQRT Zd.T, Pg/M, Zn.T",  SqrtVM,   (F32, D64),      sized(0x650da000), HOST_FP, sve_fsqrt_zpz, Zd, PgM, Zn)
ROW("FRINTA Zd.H, Pg/M, Zn.H", FRIntAVM, (F16),           0x6544a000,        MODEL,   Zd, OldZ, PgM, Zn)
ROW("FSQRT Zd.H, Pg/M, Zn.H",  SqrtVM,   (F16),           0x654da000,        MODEL,   Zd, OldZ, PgM, Zn)
// clang-format on
