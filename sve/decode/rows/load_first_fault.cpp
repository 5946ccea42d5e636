// Contiguous first-fault and non-fault loads.
#include "sve/decode/row.h"
#include "sve/fast/first_fault.h"
#include "sve/model/load_store.h"

// clang-format off
ROW("LDFF1B {Zt.B}, Pg/Z, [Base, Xm]",                    CLoadFF1LSSZ, (U8),  0xa4006000, FAST,  sve_ldff1b_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1B {Zt.B}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF1SIZ,  (U8),  0xa410a000, FAST,  sve_ldnf1b_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1B {Zt.H}, Pg/Z, [Base, Xm]",                    CLoadFF1LSSZ, (U16), 0xa4206000, FAST,  sve_ldff1b_h_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1B {Zt.H}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF1SIZ,  (U16), 0xa430a000, FAST,  sve_ldnf1b_h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1B {Zt.S}, Pg/Z, [Base, Xm]",                    CLoadFF1LSSZ, (U32), 0xa4406000, FAST,  sve_ldff1b_s_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1B {Zt.S}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF1SIZ,  (U32), 0xa450a000, FAST,  sve_ldnf1b_s_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1B {Zt.D}, Pg/Z, [Base, Xm]",                    CLoadFF1LSSZ, (U64), 0xa4606000, FAST,  sve_ldff1b_d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1B {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF1SIZ,  (U64), 0xa470a000, FAST,  sve_ldnf1b_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SW {Zt.D}, Pg/Z, [Base, Xm, LSL #2]",           CLoadFF4LSSZ, (S64), 0xa4806000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SW {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF4SIZ,  (S64), 0xa490a000, FAST,  sve_ldnf1sw_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1H {Zt.H}, Pg/Z, [Base, Xm, LSL #1]",            CLoadFF2LSSZ, (U16), 0xa4a06000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1H {Zt.H}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF2SIZ,  (U16), 0xa4b0a000, FAST,  sve_ldnf1h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1H {Zt.S}, Pg/Z, [Base, Xm, LSL #1]",            CLoadFF2LSSZ, (U32), 0xa4c06000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1H {Zt.S}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF2SIZ,  (U32), 0xa4d0a000, FAST,  sve_ldnf1h_s_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1H {Zt.D}, Pg/Z, [Base, Xm, LSL #1]",            CLoadFF2LSSZ, (U64), 0xa4e06000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1H {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF2SIZ,  (U64), 0xa4f0a000, FAST,  sve_ldnf1h_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SH {Zt.D}, Pg/Z, [Base, Xm, LSL #1]",           CLoadFF2LSSZ, (S64), 0xa5006000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SH {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF2SIZ,  (S64), 0xa510a000, FAST,  sve_ldnf1sh_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SH {Zt.S}, Pg/Z, [Base, Xm, LSL #1]",           CLoadFF2LSSZ, (S32), 0xa5206000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SH {Zt.S}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF2SIZ,  (S32), 0xa530a000, FAST,  sve_ldnf1sh_s_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1W {Zt.S}, Pg/Z, [Base, Xm, LSL #2]",            CLoadFF4LSSZ, (U32), 0xa5406000, FAST,  sve_ldff1w_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1W {Zt.S}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF4SIZ,  (U32), 0xa550a000, FAST,  sve_ldnf1w_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1W {Zt.D}, Pg/Z, [Base, Xm, LSL #2]",            CLoadFF4LSSZ, (U64), 0xa5606000, FAST,  sve_ldff1w_d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1W {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF4SIZ,  (U64), 0xa570a000, FAST,  sve_ldnf1w_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SB {Zt.D}, Pg/Z, [Base, Xm]",                   CLoadFF1LSSZ, (S64), 0xa5806000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SB {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF1SIZ,  (S64), 0xa590a000, FAST,  sve_ldnf1sb_d_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SB {Zt.S}, Pg/Z, [Base, Xm]",                   CLoadFF1LSSZ, (S32), 0xa5a06000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SB {Zt.S}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF1SIZ,  (S32), 0xa5b0a000, FAST,  sve_ldnf1sb_s_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1SB {Zt.H}, Pg/Z, [Base, Xm]",                   CLoadFF1LSSZ, (S16), 0xa5c06000, MODEL, Zt, PgZ, Base, Xm)
ROW("LDNF1SB {Zt.H}, Pg/Z, [Base{, #SImm4At16, MUL VL}]", CLoadNF1SIZ,  (S16), 0xa5d0a000, FAST,  sve_ldnf1sb_h_zpri, Zt, PgZ, Base, SImm4At16)
ROW("LDFF1D {Zt.D}, Pg/Z, [Base, Xm, LSL #3]",            CLoadFF8LSSZ, (U64), 0xa5e06000, FAST,  sve_ldff1d_scaled_zprr, Zt, PgZ, Base, Xm)
ROW("LDNF1D {Zt.D}, Pg/Z, [Base{, #SImm4At16, MUL VL}]",  CLoadNF8SIZ,  (U64), 0xa5f0a000, FAST,  sve_ldnf1d_zpri, Zt, PgZ, Base, SImm4At16)
// clang-format on
