// Floating-point arithmetic, unpredicated, with estimates.
#include "sve/decode/row.h"
#include "sve/fast/fp_arithmetic.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FADD Zd.T, Zn.T, Zm.T",    AddVVX,    (F32, D64),      sized(0x65000000), HOST_FP, sve_fadd_zzz, Zd, Zn, Zm)
ROW("FSUB Zd.T, Zn.T, Zm.T",    SubVVX,    (F32, D64),      sized(0x65000400), HOST_FP, sve_fsub_zzz, Zd, Zn, Zm)
ROW("FMUL Zd.T, Zn.T, Zm.T",    MulVVX,    (F32, D64),      sized(0x65000800), HOST_FP, sve_fmul_zzz, Zd, Zn, Zm)
ROW("FTSMUL Zd.T, Zn.T, Zm.T",  TRISMULVV, (F16, F32, D64), sized(0x65000c00), MODEL,   Zd, Zn, Zm)
ROW("FRECPS Zd.T, Zn.T, Zm.T",  RecpSVV,   (F32, D64),      sized(0x65001800), HOST_FP, sve_frecps_zzz, Zd, Zn, Zm)
ROW("FRSQRTS Zd.T, Zn.T, Zm.T", RSqrtSVV,  (F16, F32, D64), sized(0x65001c00), MODEL,   Zd, Zn, Zm)
ROW("FRECPE Zd.T, Zn.T",        RecpEV,    (F32, D64),      sized(0x650e3000), HOST_FP, sve_frecpe_zz, Zd, Zn)
ROW("FRSQRTE Zd.T, Zn.T",       RSqrtEV,   (F16, F32, D64), sized(0x650f3000), MODEL,   Zd, Zn)
ROW("FADD Zd.H, Zn.H, Zm.H",    AddVVX,    (F16),           0x65400000,        MODEL,   Zd, Zn, Zm)
ROW("FSUB Zd.H, Zn.H, Zm.H",    SubVVX,    (F16),           0x65400400,        MODEL,   Zd, Zn, Zm)
ROW("FMUL Zd.H, Zn.H, Zm.H",    MulVVX,    (F16),           0x65400800,        MODEL,   Zd, Zn, Zm)
ROW("FRECPS Zd.H, Zn.H, Zm.H",  RecpSVV,   (F16),           0x65401800,        MODEL,   Zd, Zn, Zm)
ROW("FRECPE Zd.H, Zn.H",        RecpEV,    (F16),           0x654e3000,        MODEL,   Zd, Zn)
// clang-format on
