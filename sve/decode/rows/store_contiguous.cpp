// Contiguous stores, with those that are non-temporal.
#include "sve/decode/row.h"
#include "sve/fast/contiguous.h"

// clang-format off
ROW("ST1B {Zt.B}, Pg, [Base, Xm]",                     CStore1LSSZ,   (U8),  0xe4004000, FAST, sve_st1b_scaled_zprr, Zt, Pg, Base, Xm)
ROW("STNT1B {Zt.B}, Pg, [Base, Xm]",                   CStoreNT1LSSZ, (U8),  0xe4006000, FAST, sve_stnt1b_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1B {Zt.B}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore1SIZ,    (U8),  0xe400e000, FAST, sve_st1b_zpri, Zt, Pg, Base, SImm4At16)
ROW("STNT1B {Zt.B}, Pg, [Base{, #SImm4At16, MUL VL}]", CStoreNT1SIZ,  (U8),  0xe410e000, FAST, sve_stnt1b_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1B {Zt.H}, Pg, [Base, Xm]",                     CStore1LSSZ,   (U16), 0xe4204000, FAST, sve_st1b_h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1B {Zt.H}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore1SIZ,    (U16), 0xe420e000, FAST, sve_st1b_h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1B {Zt.S}, Pg, [Base, Xm]",                     CStore1LSSZ,   (U32), 0xe4404000, FAST, sve_st1b_s_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1B {Zt.S}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore1SIZ,    (U32), 0xe440e000, FAST, sve_st1b_s_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1B {Zt.D}, Pg, [Base, Xm]",                     CStore1LSSZ,   (U64), 0xe4604000, FAST, sve_st1b_d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1B {Zt.D}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore1SIZ,    (U64), 0xe460e000, FAST, sve_st1b_d_zpri, Zt, Pg, Base, SImm4At16)
ROW("STNT1H {Zt.H}, Pg, [Base, Xm, LSL #1]",           CStoreNT2LSSZ, (U16), 0xe4806000, FAST, sve_stnt1h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("STNT1H {Zt.H}, Pg, [Base{, #SImm4At16, MUL VL}]", CStoreNT2SIZ,  (U16), 0xe490e000, FAST, sve_stnt1h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1H {Zt.H}, Pg, [Base, Xm, LSL #1]",             CStore2LSSZ,   (U16), 0xe4a04000, FAST, sve_st1h_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1H {Zt.H}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore2SIZ,    (U16), 0xe4a0e000, FAST, sve_st1h_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1H {Zt.S}, Pg, [Base, Xm, LSL #1]",             CStore2LSSZ,   (U32), 0xe4c04000, FAST, sve_st1h_s_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1H {Zt.S}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore2SIZ,    (U32), 0xe4c0e000, FAST, sve_st1h_s_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1H {Zt.D}, Pg, [Base, Xm, LSL #1]",             CStore2LSSZ,   (U64), 0xe4e04000, FAST, sve_st1h_d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1H {Zt.D}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore2SIZ,    (U64), 0xe4e0e000, FAST, sve_st1h_d_zpri, Zt, Pg, Base, SImm4At16)
ROW("STNT1W {Zt.S}, Pg, [Base, Xm, LSL #2]",           CStoreNT4LSSZ, (U32), 0xe5006000, FAST, sve_stnt1w_scaled_zprr, Zt, Pg, Base, Xm)
ROW("STNT1W {Zt.S}, Pg, [Base{, #SImm4At16, MUL VL}]", CStoreNT4SIZ,  (U32), 0xe510e000, FAST, sve_stnt1w_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1W {Zt.S}, Pg, [Base, Xm, LSL #2]",             CStore4LSSZ,   (U32), 0xe5404000, FAST, sve_st1w_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1W {Zt.S}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore4SIZ,    (U32), 0xe540e000, FAST, sve_st1w_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1W {Zt.D}, Pg, [Base, Xm, LSL #2]",             CStore4LSSZ,   (U64), 0xe5604000, FAST, sve_st1w_d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1W {Zt.D}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore4SIZ,    (U64), 0xe560e000, FAST, sve_st1w_d_zpri, Zt, Pg, Base, SImm4At16)
ROW("STNT1D {Zt.D}, Pg, [Base, Xm, LSL #3]",           CStoreNT8LSSZ, (U64), 0xe5806000, FAST, sve_stnt1d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("STNT1D {Zt.D}, Pg, [Base{, #SImm4At16, MUL VL}]", CStoreNT8SIZ,  (U64), 0xe590e000, FAST, sve_stnt1d_zpri, Zt, Pg, Base, SImm4At16)
ROW("ST1D {Zt.D}, Pg, [Base, Xm, LSL #3]",             CStore8LSSZ,   (U64), 0xe5e04000, FAST, sve_st1d_scaled_zprr, Zt, Pg, Base, Xm)
ROW("ST1D {Zt.D}, Pg, [Base{, #SImm4At16, MUL VL}]",   CStore8SIZ,    (U64), 0xe5e0e000, FAST, sve_st1d_zpri, Zt, Pg, Base, SImm4At16)
// clang-format on
