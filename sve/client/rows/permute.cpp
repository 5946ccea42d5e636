// Permutes of vectors and predicates.
#include "sve/fast/permute.h"
#include "sve/client/stub.h"

// clang-format off
FAST_SIZED(Zip1VV,   (U8, U16, U32, U64), 0x05206000, sve_zip1_zzz, Zd, Zn, Zm)
FAST_SIZED(Zip2VV,   (U8, U16, U32, U64), 0x05206400, sve_zip2_zzz, Zd, Zn, Zm)
FAST_SIZED(Uzp1VV,   (U8, U16, U32, U64), 0x05206800, sve_uzp1_zzz, Zd, Zn, Zm)
FAST_SIZED(Uzp2VV,   (U8, U16, U32, U64), 0x05206c00, sve_uzp2_zzz, Zd, Zn, Zm)
FAST_SIZED(Trn1VV,   (U8, U16, U32, U64), 0x05207000, sve_trn1_zzz, Zd, Zn, Zm)
FAST_SIZED(Trn2VV,   (U8, U16, U32, U64), 0x05207400, sve_trn2_zzz, Zd, Zn, Zm)
FAST_SIZED(TblVV,    (U8, U16, U32, U64), 0x05203000, sve_tbl_zzz,  Zd, Zn, Zm)
FAST_SIZED(ReverseV, (U8, U16, U32, U64), 0x05383800, sve_rev_zz,   Zd, Zn)

FAST_SIZED(Zip1PP,   (P8, P16, P32, P64), 0x05204000, sve_zip1_ppp, Pd, Pn, Pm)
FAST_SIZED(Zip2PP,   (P8, P16, P32, P64), 0x05204400, sve_zip2_ppp, Pd, Pn, Pm)
FAST_SIZED(Uzp1PP,   (P8, P16, P32, P64), 0x05204800, sve_uzp1_ppp, Pd, Pn, Pm)
FAST_SIZED(ReverseP, (P8, P16, P32, P64), 0x05344000, sve_rev_pp,   Pd, Pn)

FAST(UnpackLoV, (U16), 0x05723800, sve_uunpklo_b2h_zz, Zd, Zn)
FAST(UnpackLoV, (U32), 0x05b23800, sve_uunpklo_h2s_zz, Zd, Zn)
FAST(UnpackLoV, (U64), 0x05f23800, sve_uunpklo_s2d_zz, Zd, Zn)
FAST(UnpackLoV, (S64), 0x05f03800, sve_sunpklo_s2d_zz, Zd, Zn)
FAST(UnpackHiV, (U16), 0x05733800, sve_uunpkhi_b2h_zz, Zd, Zn)
FAST(UnpackHiV, (U32), 0x05b33800, sve_uunpkhi_h2s_zz, Zd, Zn)
FAST(UnpackHiV, (U64), 0x05f33800, sve_uunpkhi_s2d_zz, Zd, Zn)
FAST(UnpackHiV, (S64), 0x05f13800, sve_sunpkhi_s2d_zz, Zd, Zn)
FAST(UnpackLoP, (P),   0x05304000, sve_punpklo_pp,     Pd, Pn)
FAST(UnpackHiP, (P),   0x05314000, sve_punpkhi_pp,     Pd, Pn)

FAST(SlideVI,   (U8),  0x05200000, sve_ext_zzi,        Zdn, Zm5, ExtPosition)
// clang-format on
