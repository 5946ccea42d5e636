// Contiguous structure loads.
#include "sve/decode/row.h"
#include "sve/fast/structure.h"

// clang-format off
ROW("LD2B {Zt.B x2}, Pg/Z, [Base, Xm]",                     E2Load1LSSZ, (U8),  0xa420c000, FAST, sve_ld2b_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD2B {Zt.B x2}, Pg/Z, [Base{, #SImm4At16*2, MUL VL}]", E2Load1SIZ,  (U8),  0xa420e000, FAST, sve_ld2b_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD3B {Zt.B x3}, Pg/Z, [Base, Xm]",                     E3Load1LSSZ, (U8),  0xa440c000, FAST, sve_ld3b_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD3B {Zt.B x3}, Pg/Z, [Base{, #SImm4At16*3, MUL VL}]", E3Load1SIZ,  (U8),  0xa440e000, FAST, sve_ld3b_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD4B {Zt.B x4}, Pg/Z, [Base, Xm]",                     E4Load1LSSZ, (U8),  0xa460c000, FAST, sve_ld4b_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD4B {Zt.B x4}, Pg/Z, [Base{, #SImm4At16*4, MUL VL}]", E4Load1SIZ,  (U8),  0xa460e000, FAST, sve_ld4b_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD2H {Zt.H x2}, Pg/Z, [Base, Xm, LSL #1]",             E2Load2LSSZ, (U16), 0xa4a0c000, FAST, sve_ld2h_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD2H {Zt.H x2}, Pg/Z, [Base{, #SImm4At16*2, MUL VL}]", E2Load2SIZ,  (U16), 0xa4a0e000, FAST, sve_ld2h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD3H {Zt.H x3}, Pg/Z, [Base, Xm, LSL #1]",             E3Load2LSSZ, (U16), 0xa4c0c000, FAST, sve_ld3h_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD3H {Zt.H x3}, Pg/Z, [Base{, #SImm4At16*3, MUL VL}]", E3Load2SIZ,  (U16), 0xa4c0e000, FAST, sve_ld3h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD4H {Zt.H x4}, Pg/Z, [Base, Xm, LSL #1]",             E4Load2LSSZ, (U16), 0xa4e0c000, FAST, sve_ld4h_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD4H {Zt.H x4}, Pg/Z, [Base{, #SImm4At16*4, MUL VL}]", E4Load2SIZ,  (U16), 0xa4e0e000, FAST, sve_ld4h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD2W {Zt.S x2}, Pg/Z, [Base, Xm, LSL #2]",             E2Load4LSSZ, (U32), 0xa520c000, FAST, sve_ld2w_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD2W {Zt.S x2}, Pg/Z, [Base{, #SImm4At16*2, MUL VL}]", E2Load4SIZ,  (U32), 0xa520e000, FAST, sve_ld2w_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD3W {Zt.S x3}, Pg/Z, [Base, Xm, LSL #2]",             E3Load4LSSZ, (U32), 0xa540c000, FAST, sve_ld3w_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD3W {Zt.S x3}, Pg/Z, [Base{, #SImm4At16*3, MUL VL}]", E3Load4SIZ,  (U32), 0xa540e000, FAST, sve_ld3w_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD4W {Zt.S x4}, Pg/Z, [Base, Xm, LSL #2]",             E4Load4LSSZ, (U32), 0xa560c000, FAST, sve_ld4w_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD4W {Zt.S x4}, Pg/Z, [Base{, #SImm4At16*4, MUL VL}]", E4Load4SIZ,  (U32), 0xa560e000, FAST, sve_ld4w_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD2D {Zt.D x2}, Pg/Z, [Base, Xm, LSL #3]",             E2Load8LSSZ, (U64), 0xa5a0c000, FAST, sve_ld2d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD2D {Zt.D x2}, Pg/Z, [Base{, #SImm4At16*2, MUL VL}]", E2Load8SIZ,  (U64), 0xa5a0e000, FAST, sve_ld2d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD3D {Zt.D x3}, Pg/Z, [Base, Xm, LSL #3]",             E3Load8LSSZ, (U64), 0xa5c0c000, FAST, sve_ld3d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD3D {Zt.D x3}, Pg/Z, [Base{, #SImm4At16*3, MUL VL}]", E3Load8SIZ,  (U64), 0xa5c0e000, FAST, sve_ld3d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LD4D {Zt.D x4}, Pg/Z, [Base, Xm, LSL #3]",             E4Load8LSSZ, (U64), 0xa5e0c000, FAST, sve_ld4d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LD4D {Zt.D x4}, Pg/Z, [Base{, #SImm4At16*4, MUL VL}]", E4Load8SIZ,  (U64), 0xa5e0e000, FAST, sve_ld4d_zpri, Zt, PgZ, Base, SImm4At16)
// clang-format on
