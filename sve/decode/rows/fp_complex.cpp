// Floating-point complex arithmetic.
#include "sve/decode/row.h"
#include "sve/fast/fp_arithmetic.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FCMLA Zda.T, Pg/M, Zn.T, Zm.T, #RotAt13*90",       FCMLAVVVM, (F32, D64),      sized(0x64000000), HOST_FP, sve_fcmla_zpzzr, Zda, PgM, Zn, Zm, RotAt13)
ROW("FCADD Zdn.T, Pg/M, Zdn.T, Zm5.T, #RotAt16*180+90", FCADDVVM,  (F16, F32, D64), sized(0x64008000), MODEL,   Zdn, OldZ, PgM, Zm5, RotAt16)
ROW("FCMLA Zda.H, Pg/M, Zn.H, Zm.H, #RotAt13*90",       FCMLAVVVM, (F16),           0x64400000,        MODEL,   Zda, OldZ, PgM, Zn, Zm, RotAt13)
// clang-format on
