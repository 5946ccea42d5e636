// Floating-point arithmetic in single and double precision.
#include "sve/fast/fp_arithmetic.h"
#include "sve/client/stub.h"

// clang-format off
// Predicated, with the first operand overwritten.
HOST_FP_SIZED(AddVVM,    (F32, D64), 0x65008000, sve_fadd_zpz,   Zdn, PgM, Zm5)
HOST_FP_SIZED(SubVVM,    (F32, D64), 0x65018000, sve_fsub_zpz,   Zdn, PgM, Zm5)
HOST_FP_SIZED(SubRVVM,   (F32, D64), 0x65038000, sve_fsubr_zpz,  Zdn, PgM, Zm5)
HOST_FP_SIZED(MulVVM,    (F32, D64), 0x65028000, sve_fmul_zpz,   Zdn, PgM, Zm5)
HOST_FP_SIZED(DivVVM,    (F32, D64), 0x650d8000, sve_fdiv_zpz,   Zdn, PgM, Zm5)
HOST_FP_SIZED(DivRVVM,   (F32, D64), 0x650c8000, sve_fdivr_zpz,  Zdn, PgM, Zm5)
HOST_FP_SIZED(MaxVVM,    (F32, D64), 0x65068000, sve_fmax_zpz,   Zdn, PgM, Zm5)
HOST_FP_SIZED(MaxNumVVM, (F32, D64), 0x65048000, sve_fmaxnm_zpz, Zdn, PgM, Zm5)
HOST_FP_SIZED(MinNumVVM, (F32, D64), 0x65058000, sve_fminnm_zpz, Zdn, PgM, Zm5)

// With one of two constants.
HOST_FP_SIZED(AddVIM,    (F32, D64), 0x65188000, sve_fadd_zpi,   Zdn, PgM, FPConstant)
HOST_FP_SIZED(SubVIM,    (F32, D64), 0x65198000, sve_fsub_zpi,   Zdn, PgM, FPConstant)
HOST_FP_SIZED(SubRVIM,   (F32, D64), 0x651b8000, sve_fsubr_zpi,  Zdn, PgM, FPConstant)
HOST_FP_SIZED(MulVIM,    (F32, D64), 0x651a8000, sve_fmul_zpi,   Zdn, PgM, FPConstant)

// Unpredicated.
HOST_FP_SIZED(AddVVX,    (F32, D64), 0x65000000, sve_fadd_zzz,   Zd, Zn, Zm)
HOST_FP_SIZED(SubVVX,    (F32, D64), 0x65000400, sve_fsub_zzz,   Zd, Zn, Zm)
HOST_FP_SIZED(MulVVX,    (F32, D64), 0x65000800, sve_fmul_zzz,   Zd, Zn, Zm)
HOST_FP_SIZED(RecpSVV,   (F32, D64), 0x65001800, sve_frecps_zzz, Zd, Zn, Zm)
HOST_FP_SIZED(RecpEV,    (F32, D64), 0x650e3000, sve_frecpe_zz,  Zd, Zn)

// One operand.
HOST_FP_SIZED(FRIntAVM,  (F32, D64), 0x6504a000, sve_frinta_zpz, Zd, PgM, Zn)
HOST_FP_SIZED(SqrtVM,    (F32, D64), 0x650da000, sve_fsqrt_zpz,  Zd, PgM, Zn)

// Fused multiply-accumulate, adding to the accumulator.
HOST_FP_SIZED(FMAVVVM,   (F32, D64), 0x65200000, sve_fmla_zpzz,  Zda, PgM, Zn, Zm)
HOST_FP_SIZED(FMSVVVM,   (F32, D64), 0x65202000, sve_fmls_zpzz,  Zda, PgM, Zn, Zm)
HOST_FP_SIZED(FNMAVVVM,  (F32, D64), 0x65204000, sve_fnmla_zpzz, Zda, PgM, Zn, Zm)
HOST_FP_SIZED(FNMSVVVM,  (F32, D64), 0x65206000, sve_fnmls_zpzz, Zda, PgM, Zn, Zm)

// The same, adding to the last operand.
HOST_FP_SIZED(FMADDVVVM,  (F32, D64), 0x65208000, sve_fmad_zpzz,  Zdn, PgM, Zm5, Za)
HOST_FP_SIZED(FMSUBVVVM,  (F32, D64), 0x6520a000, sve_fmsb_zpzz,  Zdn, PgM, Zm5, Za)
HOST_FP_SIZED(FNMADDVVVM, (F32, D64), 0x6520c000, sve_fnmad_zpzz, Zdn, PgM, Zm5, Za)
HOST_FP_SIZED(FNMSUBVVVM, (F32, D64), 0x6520e000, sve_fnmsb_zpzz, Zdn, PgM, Zm5, Za)

// Complex.
HOST_FP_SIZED(FCMLAVVVM, (F32, D64), 0x64000000, sve_fcmla_zpzzr, Zda, PgM, Zn, Zm, RotAt13)

// Reductions.
HOST_FP_SIZED(MaxNumReduceFV, (F32, D64), 0x65042000, sve_fmaxnmv_vpz, Vd, Pg, Zn)
HOST_FP_SIZED(MinNumReduceFV, (F32, D64), 0x65052000, sve_fminnmv_vpz, Vd, Pg, Zn)
// clang-format on
