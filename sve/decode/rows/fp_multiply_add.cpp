// Floating-point multiply-add, predicated.
#include "sve/decode/row.h"
#include "sve/fast/fp_arithmetic.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FMLA Zda.T, Pg/M, Zn.T, Zm.T",   FMAVVVM,    (F32, D64), sized(0x65200000), HOST_FP, sve_fmla_zpzz, Zda, PgM, Zn, Zm)
ROW("FMLS Zda.T, Pg/M, Zn.T, Zm.T",   FMSVVVM,    (F32, D64), sized(0x65202000), HOST_FP, sve_fmls_zpzz, Zda, PgM, Zn, Zm)
ROW("FNMLA Zda.T, Pg/M, Zn.T, Zm.T",  FNMAVVVM,   (F32, D64), sized(0x65204000), HOST_FP, sve_fnmla_zpzz, Zda, PgM, Zn, Zm)
ROW("FNMLS Zda.T, Pg/M, Zn.T, Zm.T",  FNMSVVVM,   (F32, D64), sized(0x65206000), HOST_FP, sve_fnmls_zpzz, Zda, PgM, Zn, Zm)
ROW("FMAD Zdn.T, Pg/M, Zm5.T, Za.T",  FMADDVVVM,  (F32, D64), sized(0x65208000), HOST_FP, sve_fmad_zpzz, Zdn, PgM, Zm5, Za)
ROW("FMSB Zdn.T, Pg/M, Zm5.T, Za.T",  FMSUBVVVM,  (F32, D64), sized(0x6520a000), HOST_FP, sve_fmsb_zpzz, Zdn, PgM, Zm5, Za)
ROW("FNMAD Zdn.T, Pg/M, Zm5.T, Za.T", FNMADDVVVM, (F32, D64), sized(0x6520c000), HOST_FP, sve_fnmad_zpzz, Zdn, PgM, Zm5, Za)
ROW("FNMSB Zdn.T, Pg/M, Zm5.T, Za.T", FNMSUBVVVM, (F32, D64), sized(0x6520e000), HOST_FP, sve_fnmsb_zpzz, Zdn, PgM, Zm5, Za)
ROW("FMLA Zda.H, Pg/M, Zn.H, Zm.H",   FMAVVVM,    (F16),      0x65600000,        MODEL,   Zda, OldZ, PgM, Zn, Zm)
ROW("FMLS Zda.H, Pg/M, Zn.H, Zm.H",   FMSVVVM,    (F16),      0x65602000,        MODEL,   Zda, OldZ, PgM, Zn, Zm)
ROW("FNMLA Zda.H, Pg/M, Zn.H, Zm.H",  FNMAVVVM,   (F16),      0x65604000,        MODEL,   Zda, OldZ, PgM, Zn, Zm)
ROW("FNMLS Zda.H, Pg/M, Zn.H, Zm.H",  FNMSVVVM,   (F16),      0x65606000,        MODEL,   Zda, OldZ, PgM, Zn, Zm)
ROW("FMAD Zd.H, Pg/M, Zn.H, Zm.H",    FMADDVVVM,  (F16),      0x65608000,        MODEL,   Zd, OldZ, PgM, Zn, Zm)
ROW("FMSB Zd.H, Pg/M, Zn.H, Zm.H",    FMSUBVVVM,  (F16),      0x6560a000,        MODEL,   Zd, OldZ, PgM, Zn, Zm)
ROW("FNMAD Zd.H, Pg/M, Zn.H, Zm.H",   FNMADDVVVM, (F16),      0x6560c000,        MODEL,   Zd, OldZ, PgM, Zn, Zm)
ROW("FNMSB Zd.H, Pg/M, Zn.H, Zm.H",   FNMSUBVVVM, (F16),      0x6560e000,        MODEL,   Zd, OldZ, PgM, Zn, Zm)
// clang-format on
