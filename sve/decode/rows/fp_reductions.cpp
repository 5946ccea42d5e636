// Floating-point reductions.
#include "sve/decode/row.h"
#include "sve/fast/fp_arithmetic.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FADDV Vd, Pg, Zn.T",        AddReduceFV,    (F16, F32, D64), sized(0x65002000), MODEL,   Vd, Pg, Zn)
ROW("FMAXNMV Vd, Pg, Zn.T",      MaxNumReduceFV, (F32, D64),      sized(0x65042000), HOST_FP, sve_fmaxnmv_vpz, Vd, Pg, Zn)
ROW("FMINNMV Vd, Pg, Zn.T",      MinNumReduceFV, (F32, D64),      sized(0x65052000), HOST_FP, sve_fminnmv_vpz, Vd, Pg, Zn)
ROW("FMAXV Vd, Pg, Zn.T",        MaxReduceFV,    (F16, F32, D64), sized(0x65062000), MODEL,   Vd, Pg, Zn)
ROW("FMINV Vd, Pg, Zn.T",        MinReduceFV,    (F16, F32, D64), sized(0x65072000), MODEL,   Vd, Pg, Zn)
ROW("FADDA Vdn, Pg, Vdn, Zm5.T", AddReduceAV,    (F16, F32, D64), sized(0x65182000), MODEL,   Vdn, Pg, OldV, Zm5)
ROW("FMAXNMV Vd, Pg, Zn.H",      MaxNumReduceFV, (F16),           0x65442000,        MODEL,   Vd, Pg, Zn)
ROW("FMINNMV Vd, Pg, Zn.H",      MinNumReduceFV, (F16),           0x65452000,        MODEL,   Vd, Pg, Zn)
// clang-format on
