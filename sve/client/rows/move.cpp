// Element moves: duplication, selection, extraction of the last element, and sign bits.
#include "sve/fast/move.h"
#include "sve/client/stub.h"

// clang-format off
FAST_SIZED(SelVV,    (U8, U16, U32, U64),  0x0520c000, sve_sel_zpzz,   Zd, Pg4, Zn, Zm)
FAST_SIZED(DupIM,    (S8, S16, S32, S64),  0x05104000, sve_cpy_zpi,    Zd, PgAt16M, SImm8Shifted)
FAST_SIZED(DupIZ,    (S8, S16, S32, S64),  0x05100000, sve_cpy_zpi,    Zd, PgAt16Z, SImm8Shifted)
FAST_SIZED(DupSM,    (U8, U16, U32, U64),  0x0528a000, sve_cpy_zpr,    Zd, PgM, RnSP)
FAST_SIZED(DupSM,    (B8, H16, F32, D64),  0x05208000, sve_cpy_zpv,    Zd, PgM, Vn)
FAST_SIZED(DupI,     (S8, S16, S32, S64),  0x2538c000, sve_dup_zi,     Zd, SImm8Shifted)
FAST_SIZED(DupI,     (F16, F32, D64),      0x2539c000, sve_fdup_zi,    Zd, FPImm8)
FAST_SIZED(DupS,     (U8, U16, U32, U64),  0x05203800, sve_dup_zr,     Zd, RnSP)
FAST_SIZED(LastBV,   (U8, U16, U32, U64),  0x0521a000, sve_lastb_rpz,  Rd, Pg, Zn)
FAST_SIZED(LastBV,   (B8, H16, F32, D64),  0x05238000, sve_lastb_vpz,  Vd, Pg, Zn)
FAST_SIZED(CondXBSV, (U8, U16, U32, U64),  0x0531a000, sve_clastb_rpz, Rdn, Pg, Zn)

// The lowest set bit of 20 to 16 names the size, the bits above it are the index.
FAST(ExtDupVI,       (U8),                 0x05212000, sve_dup_zzi,    Zd, Zn, DupIndex)
FAST(ExtDupVI,       (U16),                0x05222000, sve_dup_zzi,    Zd, Zn, DupIndex)
FAST(ExtDupVI,       (U32),                0x05242000, sve_dup_zzi,    Zd, Zn, DupIndex)
FAST(ExtDupVI,       (U64),                0x05282000, sve_dup_zzi,    Zd, Zn, DupIndex)
FAST(ExtDupVI,       (U128),               0x05302000, sve_dup_zzi,    Zd, Zn, DupIndex)
FAST(DupMaskI,       (S64),                0x05c00000, sve_dupm_zi,    Zd, BitmaskImm)

FAST_SIZED(AbsVM,    (F32, D64),           0x041ca000, sve_fabs_zpz,   Zd, PgM, Zn)
FAST_SIZED(NegVM,    (F32, D64),           0x041da000, sve_fneg_zpz,   Zd, PgM, Zn)
// clang-format on
