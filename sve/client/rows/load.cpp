// Contiguous loads of one register, and fills of whole registers.
#include "sve/client/stub.h"
#include "sve/fast/contiguous.h"

// clang-format off
FAST(CLoad1SIZ,    (U8),  0xa400a000, sve_ld1b_zpri,           Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (U16), 0xa420a000, sve_ld1b_h_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (U32), 0xa440a000, sve_ld1b_s_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (U64), 0xa460a000, sve_ld1b_d_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (S64), 0xa580a000, sve_ld1sb_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (S32), 0xa5a0a000, sve_ld1sb_s_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad1SIZ,    (S16), 0xa5c0a000, sve_ld1sb_h_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad2SIZ,    (U16), 0xa4a0a000, sve_ld1h_zpri,           Zt, PgZ, Base, SImm4At16)
FAST(CLoad2SIZ,    (U32), 0xa4c0a000, sve_ld1h_s_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad2SIZ,    (U64), 0xa4e0a000, sve_ld1h_d_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad2SIZ,    (S64), 0xa500a000, sve_ld1sh_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad2SIZ,    (S32), 0xa520a000, sve_ld1sh_s_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad4SIZ,    (S64), 0xa480a000, sve_ld1sw_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoad4SIZ,    (U32), 0xa540a000, sve_ld1w_zpri,           Zt, PgZ, Base, SImm4At16)
FAST(CLoad4SIZ,    (U64), 0xa560a000, sve_ld1w_d_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoad8SIZ,    (U64), 0xa5e0a000, sve_ld1d_zpri,           Zt, PgZ, Base, SImm4At16)

FAST(CLoadNT1SIZ,  (U8),  0xa400e000, sve_ldnt1b_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoadNT2SIZ,  (U16), 0xa480e000, sve_ldnt1h_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoadNT4SIZ,  (U32), 0xa500e000, sve_ldnt1w_zpri,         Zt, PgZ, Base, SImm4At16)
FAST(CLoadNT8SIZ,  (U64), 0xa580e000, sve_ldnt1d_zpri,         Zt, PgZ, Base, SImm4At16)

FAST(CLoad1LSSZ,   (U8),  0xa4004000, sve_ld1b_scaled_zprr,    Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (U16), 0xa4204000, sve_ld1b_h_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (U32), 0xa4404000, sve_ld1b_s_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (U64), 0xa4604000, sve_ld1b_d_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (S64), 0xa5804000, sve_ld1sb_d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (S32), 0xa5a04000, sve_ld1sb_s_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad1LSSZ,   (S16), 0xa5c04000, sve_ld1sb_h_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad2LSSZ,   (U16), 0xa4a04000, sve_ld1h_scaled_zprr,    Zt, PgZ, Base, Xm)
FAST(CLoad2LSSZ,   (U32), 0xa4c04000, sve_ld1h_s_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad2LSSZ,   (U64), 0xa4e04000, sve_ld1h_d_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad2LSSZ,   (S64), 0xa5004000, sve_ld1sh_d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad2LSSZ,   (S32), 0xa5204000, sve_ld1sh_s_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad4LSSZ,   (S64), 0xa4804000, sve_ld1sw_d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoad4LSSZ,   (U32), 0xa5404000, sve_ld1w_scaled_zprr,    Zt, PgZ, Base, Xm)
FAST(CLoad4LSSZ,   (U64), 0xa5604000, sve_ld1w_d_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoad8LSSZ,   (U64), 0xa5e04000, sve_ld1d_scaled_zprr,    Zt, PgZ, Base, Xm)

FAST(CLoadNT1LSSZ, (U8),  0xa400c000, sve_ldnt1b_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoadNT2LSSZ, (U16), 0xa480c000, sve_ldnt1h_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoadNT4LSSZ, (U32), 0xa500c000, sve_ldnt1w_scaled_zprr,  Zt, PgZ, Base, Xm)
FAST(CLoadNT8LSSZ, (U64), 0xa580c000, sve_ldnt1d_scaled_zprr,  Zt, PgZ, Base, Xm)

FAST(FillSI,       (P),   0x85800000, sve_ldr_pri,             Pt, Base, SImm9)
FAST(FillSI,       (U64), 0x85804000, sve_ldr_zri,             Zt, Base, SImm9)
// clang-format on
