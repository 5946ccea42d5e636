// Permutes of vectors, predicated, and SEL.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"
#include "sve/fast/move.h"
#include "sve/model/integer.h"
#include "sve/model/permute.h"

// clang-format off
ROW("CPY Zd.T, Pg/M, Vn",             DupSM,      (B8, H16, F32, D64), sized(0x05208000), FAST,  sve_cpy_zpv, Zd, PgM, Vn)
ROW("LASTA Rd, Pg, Zn.T",             LastAV,     (U8, U16, U32, U64), sized(0x0520a000), MODEL, Rd, Pg, Zn)
ROW("SEL Zd.T, Pg4, Zn.T, Zm.T",      SelVV,      (U8, U16, U32, U64), sized(0x0520c000), FAST,  sve_sel_zpzz, Zd, Pg4, Zn, Zm)
ROW("COMPACT Zd.T, Pg, Zn.T",         CompressVV, (U32, U64),          sized(0x05218000), MODEL, Zd, Pg, Zn)
ROW("LASTB Rd, Pg, Zn.T",             LastBV,     (U8, U16, U32, U64), sized(0x0521a000), FAST,  sve_lastb_rpz, Rd, Pg, Zn)
ROW("LASTA Vd, Pg, Zn.T",             LastAV,     (B8, H16, F32, D64), sized(0x05228000), MODEL, Vd, Pg, Zn)
ROW("LASTB Vd, Pg, Zn.T",             LastBV,     (B8, H16, F32, D64), sized(0x05238000), FAST,  sve_lastb_vpz, Vd, Pg, Zn)
ROW("REVB Zd.T, Pg/M, Zn.T",          Rev1V,      (U16, U32, U64),     sized(0x05248000), MODEL, Zd, OldZ, PgM, Zn)
ROW("REVH Zd.T, Pg/M, Zn.T",          Rev2V,      (U32, U64),          sized(0x05258000), MODEL, Zd, OldZ, PgM, Zn)
ROW("RBIT Zd.T, Pg/M, Zn.T",          RBitVM,     (U8, U16, U32, U64), sized(0x05278000), FAST,  sve_rbit_zpz, Zd, PgM, Zn)
ROW("CLASTA Zdn.T, Pg, Zdn.T, Zm5.T", VCondXAVV,  (U8, U16, U32, U64), sized(0x05288000), MODEL, Zdn, Pg, OldZ, Zm5)
ROW("CPY Zd.T, Pg/M, RnSP",           DupSM,      (U8, U16, U32, U64), sized(0x0528a000), FAST,  sve_cpy_zpr, Zd, PgM, RnSP)
ROW("CLASTB Zdn.T, Pg, Zdn.T, Zm5.T", VCondXBVV,  (U8, U16, U32, U64), sized(0x05298000), MODEL, Zdn, Pg, OldZ, Zm5)
ROW("CLASTA Vdn, Pg, Vdn, Zm5.T",     CondXASV,   (B8, H16, F32, D64), sized(0x052a8000), MODEL, Vdn, Pg, OldV, Zm5)
ROW("CLASTB Vdn, Pg, Vdn, Zm5.T",     CondXBSV,   (B8, H16, F32, D64), sized(0x052b8000), MODEL, Vdn, Pg, OldV, Zm5)
ROW("SPLICE Zdn.T, Pg, Zdn.T, Zm5.T", SpliceVV,   (U8, U16, U32, U64), sized(0x052c8000), MODEL, Zdn, Pg, OldZ, Zm5)
ROW("CLASTA Rdn, Pg, Rdn, Zn.T",      CondXASV,   (U8, U16, U32, U64), sized(0x0530a000), MODEL, Rdn, Pg, OldR, Zn)
ROW("CLASTB Rdn, Pg, Rdn, Zn.T",      CondXBSV,   (U8, U16, U32, U64), sized(0x0531a000), FAST,  sve_clastb_rpz, Rdn, Pg, Zn)
ROW("REVW Zd.D, Pg/M, Zn.D",          Rev4V,      (U64),               0x05e68000,        FAST,  sve_revw_zpz, Zd, PgM, Zn)
// clang-format on
