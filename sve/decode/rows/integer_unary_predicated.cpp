// Integer and floating-point sign unary operations, predicated.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"
#include "sve/fast/move.h"
#include "sve/model/floating_point.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ABS Zd.T, Pg/M, Zn.T",  AbsVM,     (S8, S16, S32, S64), sized(0x0416a000), MODEL, Zd, OldZ, PgM, Zn)
ROW("NEG Zd.T, Pg/M, Zn.T",  NegVM,     (S8, S16, S32, S64), sized(0x0417a000), FAST,  sve_neg_zpz, Zd, PgM, Zn)
ROW("CLS Zd.T, Pg/M, Zn.T",  ClsVM,     (U8, U16, U32, U64), sized(0x0418a000), MODEL, Zd, OldZ, PgM, Zn)
ROW("CLZ Zd.T, Pg/M, Zn.T",  ClzVM,     (U8, U16, U32, U64), sized(0x0419a000), MODEL, Zd, OldZ, PgM, Zn)
ROW("CNT Zd.T, Pg/M, Zn.T",  CntVM,     (U8, U16, U32, U64), sized(0x041aa000), MODEL, Zd, OldZ, PgM, Zn)
ROW("CNOT Zd.T, Pg/M, Zn.T", NotVM,     (U8, U16, U32, U64), sized(0x041ba000), MODEL, Zd, OldZ, PgM, Zn)
ROW("FABS Zd.T, Pg/M, Zn.T", AbsVM,     (F32, D64),          sized(0x041ca000), FAST,  sve_fabs_zpz, Zd, PgM, Zn)
ROW("FNEG Zd.T, Pg/M, Zn.T", NegVM,     (F32, D64),          sized(0x041da000), FAST,  sve_fneg_zpz, Zd, PgM, Zn)
ROW("NOT Zd.T, Pg/M, Zn.T",  InvVM,     (U8, U16, U32, U64), sized(0x041ea000), MODEL, Zd, OldZ, PgM, Zn)
ROW("SXTB Zd.H, Pg/M, Zn.H", Extnd12VM, (S16),               0x0450a000,        FAST,  sve_sxtb_zpz, Zd, PgM, Zn)
ROW("UXTB Zd.H, Pg/M, Zn.H", Extnd12VM, (U16),               0x0451a000,        MODEL, Zd, OldZ, PgM, Zn)
ROW("FABS Zd.H, Pg/M, Zn.H", AbsVM,     (F16),               0x045ca000,        MODEL, Zd, OldZ, PgM, Zn)
ROW("FNEG Zd.H, Pg/M, Zn.H", NegVM,     (F16),               0x045da000,        MODEL, Zd, OldZ, PgM, Zn)
ROW("SXTB Zd.S, Pg/M, Zn.S", Extnd14VM, (S32),               0x0490a000,        FAST,  sve_sxtb_zpz, Zd, PgM, Zn)
ROW("UXTB Zd.S, Pg/M, Zn.S", Extnd14VM, (U32),               0x0491a000,        MODEL, Zd, OldZ, PgM, Zn)
ROW("SXTH Zd.S, Pg/M, Zn.S", Extnd24VM, (S32),               0x0492a000,        FAST,  sve_sxth_zpz, Zd, PgM, Zn)
ROW("UXTH Zd.S, Pg/M, Zn.S", Extnd24VM, (U32),               0x0493a000,        FAST,  sve_uxth_zpz, Zd, PgM, Zn)
ROW("SXTB Zd.D, Pg/M, Zn.D", Extnd18VM, (S64),               0x04d0a000,        FAST,  sve_sxtb_zpz, Zd, PgM, Zn)
ROW("UXTB Zd.D, Pg/M, Zn.D", Extnd18VM, (U64),               0x04d1a000,        MODEL, Zd, OldZ, PgM, Zn)
ROW("SXTH Zd.D, Pg/M, Zn.D", Extnd28VM, (S64),               0x04d2a000,        FAST,  sve_sxth_zpz, Zd, PgM, Zn)
ROW("UXTH Zd.D, Pg/M, Zn.D", Extnd28VM, (U64),               0x04d3a000,        FAST,  sve_uxth_zpz, Zd, PgM, Zn)
ROW("SXTW Zd.D, Pg/M, Zn.D", Extnd48VM, (S64),               0x04d4a000,        FAST,  sve_sxtw_zpz, Zd, PgM, Zn)
ROW("UXTW Zd.D, Pg/M, Zn.D", Extnd48VM, (U64),               0x04d5a000,        FAST,  sve_uxtw_zpz, Zd, PgM, Zn)
// clang-format on
