// Permutes of vectors, unpredicated.
#include "sve/decode/row.h"
#include "sve/fast/move.h"
#include "sve/fast/permute.h"
#include "sve/model/permute.h"

// clang-format off
ROW("EXT Zdn.B, Zdn.B, Zm5.B, #ExtPosition", SlideVI,   (U8),                0x05200000,        FAST,  sve_ext_zzi, Zdn, Zm5, ExtPosition)
ROW("TBL Zd.T, {Zn.T}, Zm.T",                TblVV,     (U8, U16, U32, U64), sized(0x05203000), FAST,  sve_tbl_zzz, Zd, Zn, Zm)
ROW("DUP Zd.T, RnSP",                        DupS,      (U8, U16, U32, U64), sized(0x05203800), FAST,  sve_dup_zr, Zd, RnSP)
ROW("DUP Zd.B, Zn.B[DupIndex]",              ExtDupVI,  (U8),                0x05212000,        FAST,  sve_dup_zzi, Zd, Zn, DupIndex)
ROW("DUP Zd.H, Zn.H[DupIndex]",              ExtDupVI,  (U16),               0x05222000,        FAST,  sve_dup_zzi, Zd, Zn, DupIndex)
ROW("DUP Zd.S, Zn.S[DupIndex]",              ExtDupVI,  (U32),               0x05242000,        FAST,  sve_dup_zzi, Zd, Zn, DupIndex)
ROW("INSR Zdn.T, Rn",                        InsertS,   (U8, U16, U32, U64), sized(0x05243800), MODEL, Zdn, OldZ, Rn)
ROW("DUP Zd.D, Zn.D[DupIndex]",              ExtDupVI,  (U64),               0x05282000,        FAST,  sve_dup_zzi, Zd, Zn, DupIndex)
ROW("DUP Zd.Q, Zn.Q[DupIndex]",              ExtDupVI,  (U128),              0x05302000,        FAST,  sve_dup_zzi, Zd, Zn, DupIndex)
ROW("INSR Zdn.T, Vn",                        InsertS,   (B8, H16, F32, D64), sized(0x05343800), MODEL, Zdn, OldZ, Vn)
ROW("REV Zd.T, Zn.T",                        ReverseV,  (U8, U16, U32, U64), sized(0x05383800), FAST,  sve_rev_zz, Zd, Zn)
ROW("SUNPKLO Zd.H, Zn.B",                    UnpackLoV, (S16),               0x05703800,        MODEL, Zd, Zn)
ROW("SUNPKHI Zd.H, Zn.B",                    UnpackHiV, (S16),               0x05713800,        MODEL, Zd, Zn)
ROW("UUNPKLO Zd.H, Zn.B",                    UnpackLoV, (U16),               0x05723800,        FAST,  sve_uunpklo_b2h_zz, Zd, Zn)
ROW("UUNPKHI Zd.H, Zn.B",                    UnpackHiV, (U16),               0x05733800,        FAST,  sve_uunpkhi_b2h_zz, Zd, Zn)
ROW("SUNPKLO Zd.S, Zn.H",                    UnpackLoV, (S32),               0x05b03800,        MODEL, Zd, Zn)
ROW("SUNPKHI Zd.S, Zn.H",                    UnpackHiV, (S32),               0x05b13800,        MODEL, Zd, Zn)
ROW("UUNPKLO Zd.S, Zn.H",                    UnpackLoV, (U32),               0x05b23800,        FAST,  sve_uunpklo_h2s_zz, Zd, Zn)
ROW("UUNPKHI Zd.S, Zn.H",                    UnpackHiV, (U32),               0x05b33800,        FAST,  sve_uunpkhi_h2s_zz, Zd, Zn)
ROW("SUNPKLO Zd.D, Zn.S",                    UnpackLoV, (S64),               0x05f03800,        FAST,  sve_sunpklo_s2d_zz, Zd, Zn)
ROW("SUNPKHI Zd.D, Zn.S",                    UnpackHiV, (S64),               0x05f13800,        FAST,  sve_sunpkhi_s2d_zz, Zd, Zn)
ROW("UUNPKLO Zd.D, Zn.S",                    UnpackLoV, (U64),               0x05f23800,        FAST,  sve_uunpklo_s2d_zz, Zd, Zn)
ROW("UUNPKHI Zd.D, Zn.S",                    UnpackHiV, (U64),               0x05f33800,        FAST,  sve_uunpkhi_s2d_zz, Zd, Zn)
// clang-format on
