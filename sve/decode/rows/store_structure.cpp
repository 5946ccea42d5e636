// Contiguous structure stores.
#include "sve/decode/row.h"
#include "sve/fast/structure.h"

// clang-format off
ROW("ST2B {Zt.B x2}, Pg, [Base, Xm]",                     E2Store1LSSZ, (U8),  0xe4206000, FAST, sve_st2b_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST2B {Zt.B x2}, Pg, [Base{, #SImm4At16*2, MUL VL}]", E2Store1SIZ,  (U8),  0xe430e000, FAST, sve_st2b_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST3B {Zt.B x3}, Pg, [Base, Xm]",                     E3Store1LSSZ, (U8),  0xe4406000, FAST, sve_st3b_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST3B {Zt.B x3}, Pg, [Base{, #SImm4At16*3, MUL VL}]", E3Store1SIZ,  (U8),  0xe450e000, FAST, sve_st3b_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST4B {Zt.B x4}, Pg, [Base, Xm]",                     E4Store1LSSZ, (U8),  0xe4606000, FAST, sve_st4b_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST4B {Zt.B x4}, Pg, [Base{, #SImm4At16*4, MUL VL}]", E4Store1SIZ,  (U8),  0xe470e000, FAST, sve_st4b_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST2H {Zt.H x2}, Pg, [Base, Xm, LSL #1]",             E2Store2LSSZ, (U16), 0xe4a06000, FAST, sve_st2h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST2H {Zt.H x2}, Pg, [Base{, #SImm4At16*2, MUL VL}]", E2Store2SIZ,  (U16), 0xe4b0e000, FAST, sve_st2h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST3H {Zt.H x3}, Pg, [Base, Xm, LSL #1]",             E3Store2LSSZ, (U16), 0xe4c06000, FAST, sve_st3h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST3H {Zt.H x3}, Pg, [Base{, #SImm4At16*3, MUL VL}]", E3Store2SIZ,  (U16), 0xe4d0e000, FAST, sve_st3h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST4H {Zt.H x4}, Pg, [Base, Xm, LSL #1]",             E4Store2LSSZ, (U16), 0xe4e06000, FAST, sve_st4h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST4H {Zt.H x4}, Pg, [Base{, #SImm4At16*4, MUL VL}]", E4Store2SIZ,  (U16), 0xe4f0e000, FAST, sve_st4h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST2W {Zt.S x2}, Pg, [Base, Xm, LSL #2]",             E2Store4LSSZ, (U32), 0xe5206000, FAST, sve_st2w_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST2W {Zt.S x2}, Pg, [Base{, #SImm4At16*2, MUL VL}]", E2Store4SIZ,  (U32), 0xe530e000, FAST, sve_st2w_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST3W {Zt.S x3}, Pg, [Base, Xm, LSL #2]",             E3Store4LSSZ, (U32), 0xe5406000, FAST, sve_st3w_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST3W {Zt.S x3}, Pg, [Base{, #SImm4At16*3, MUL VL}]", E3Store4SIZ,  (U32), 0xe550e000, FAST, sve_st3w_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST4W {Zt.S x4}, Pg, [Base, Xm, LSL #2]",             E4Store4LSSZ, (U32), 0xe5606000, FAST, sve_st4w_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST4W {Zt.S x4}, Pg, [Base{, #SImm4At16*4, MUL VL}]", E4Store4SIZ,  (U32), 0xe570e000, FAST, sve_st4w_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST2D {Zt.D x2}, Pg, [Base, Xm, LSL #3]",             E2Store8LSSZ, (U64), 0xe5a06000, FAST, sve_st2d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST2D {Zt.D x2}, Pg, [Base{, #SImm4At16*2, MUL VL}]", E2Store8SIZ,  (U64), 0xe5b0e000, FAST, sve_st2d_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST3D {Zt.D x3}, Pg, [Base, Xm, LSL #3]",             E3Store8LSSZ, (U64), 0xe5c06000, FAST, sve_st3d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST3D {Zt.D x3}, Pg, [Base{, #SImm4At16*3, MUL VL}]", E3Store8SIZ,  (U64), 0xe5d0e000, FAST, sve_st3d_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST4D {Zt.D x4}, Pg, [Base, Xm, LSL #3]",             E4Store8LSSZ, (U64), 0xe5e06000, FAST, sve_st4d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST4D {Zt.D x4}, Pg, [Base{, #SImm4At16*4, MUL VL}]", E4Store8SIZ,  (U64), 0xe5f0e000, FAST, sve_st4d_zpri, Zt, Pg, Base, SImm4At16)
// clang-format on
