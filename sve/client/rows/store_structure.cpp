// Structure stores.
#include "sve/client/stub.h"
#include "sve/fast/structure.h"

// clang-format off
FAST(E2Store1SIZ,  (U8),  0xe430e000, sve_st2b_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E2Store2SIZ,  (U16), 0xe4b0e000, sve_st2h_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E2Store4SIZ,  (U32), 0xe530e000, sve_st2w_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E2Store8SIZ,  (U64), 0xe5b0e000, sve_st2d_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E3Store1SIZ,  (U8),  0xe450e000, sve_st3b_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E3Store2SIZ,  (U16), 0xe4d0e000, sve_st3h_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E3Store4SIZ,  (U32), 0xe550e000, sve_st3w_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E3Store8SIZ,  (U64), 0xe5d0e000, sve_st3d_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E4Store1SIZ,  (U8),  0xe470e000, sve_st4b_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E4Store2SIZ,  (U16), 0xe4f0e000, sve_st4h_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E4Store4SIZ,  (U32), 0xe570e000, sve_st4w_zpri,        Zt, Pg, Base, SImm4At16)
FAST(E4Store8SIZ,  (U64), 0xe5f0e000, sve_st4d_zpri,        Zt, Pg, Base, SImm4At16)

FAST(E2Store1LSSZ, (U8),  0xe4206000, sve_st2b_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E2Store2LSSZ, (U16), 0xe4a06000, sve_st2h_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E2Store4LSSZ, (U32), 0xe5206000, sve_st2w_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E2Store8LSSZ, (U64), 0xe5a06000, sve_st2d_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E3Store1LSSZ, (U8),  0xe4406000, sve_st3b_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E3Store2LSSZ, (U16), 0xe4c06000, sve_st3h_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E3Store4LSSZ, (U32), 0xe5406000, sve_st3w_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E3Store8LSSZ, (U64), 0xe5c06000, sve_st3d_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E4Store1LSSZ, (U8),  0xe4606000, sve_st4b_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E4Store2LSSZ, (U16), 0xe4e06000, sve_st4h_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E4Store4LSSZ, (U32), 0xe5606000, sve_st4w_scaled_zprr, Zt, Pg, Base, Xm)
FAST(E4Store8LSSZ, (U64), 0xe5e06000, sve_st4d_scaled_zprr, Zt, Pg, Base, Xm)
// clang-format on
