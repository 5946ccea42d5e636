// Contiguous stores of one register, and spills of whole registers.
#include "sve/client/stub.h"
#include "sve/fast/contiguous.h"

// clang-format off
FAST(CStore1SIZ,    (U8),  0xe400e000, sve_st1b_zpri,          Zt, Pg, Base, SImm4At16)
FAST(CStore1SIZ,    (U16), 0xe420e000, sve_st1b_h_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore1SIZ,    (U32), 0xe440e000, sve_st1b_s_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore1SIZ,    (U64), 0xe460e000, sve_st1b_d_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore2SIZ,    (U16), 0xe4a0e000, sve_st1h_zpri,          Zt, Pg, Base, SImm4At16)
FAST(CStore2SIZ,    (U32), 0xe4c0e000, sve_st1h_s_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore2SIZ,    (U64), 0xe4e0e000, sve_st1h_d_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore4SIZ,    (U32), 0xe540e000, sve_st1w_zpri,          Zt, Pg, Base, SImm4At16)
FAST(CStore4SIZ,    (U64), 0xe560e000, sve_st1w_d_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStore8SIZ,    (U64), 0xe5e0e000, sve_st1d_zpri,          Zt, Pg, Base, SImm4At16)

FAST(CStoreNT1SIZ,  (U8),  0xe410e000, sve_stnt1b_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStoreNT2SIZ,  (U16), 0xe490e000, sve_stnt1h_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStoreNT4SIZ,  (U32), 0xe510e000, sve_stnt1w_zpri,        Zt, Pg, Base, SImm4At16)
FAST(CStoreNT8SIZ,  (U64), 0xe590e000, sve_stnt1d_zpri,        Zt, Pg, Base, SImm4At16)

FAST(CStore1LSSZ,   (U8),  0xe4004000, sve_st1b_scaled_zprr,   Zt, Pg, Base, Xm)
FAST(CStore1LSSZ,   (U16), 0xe4204000, sve_st1b_h_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore1LSSZ,   (U32), 0xe4404000, sve_st1b_s_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore1LSSZ,   (U64), 0xe4604000, sve_st1b_d_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore2LSSZ,   (U16), 0xe4a04000, sve_st1h_scaled_zprr,   Zt, Pg, Base, Xm)
FAST(CStore2LSSZ,   (U32), 0xe4c04000, sve_st1h_s_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore2LSSZ,   (U64), 0xe4e04000, sve_st1h_d_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore4LSSZ,   (U32), 0xe5404000, sve_st1w_scaled_zprr,   Zt, Pg, Base, Xm)
FAST(CStore4LSSZ,   (U64), 0xe5604000, sve_st1w_d_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStore8LSSZ,   (U64), 0xe5e04000, sve_st1d_scaled_zprr,   Zt, Pg, Base, Xm)

FAST(CStoreNT1LSSZ, (U8),  0xe4006000, sve_stnt1b_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStoreNT2LSSZ, (U16), 0xe4806000, sve_stnt1h_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStoreNT4LSSZ, (U32), 0xe5006000, sve_stnt1w_scaled_zprr, Zt, Pg, Base, Xm)
FAST(CStoreNT8LSSZ, (U64), 0xe5806000, sve_stnt1d_scaled_zprr, Zt, Pg, Base, Xm)

FAST(SpillSI,       (P),   0xe5800000, sve_str_pri,            Pt, Base, SImm9)
FAST(SpillSI,       (U64), 0xe5804000, sve_str_zri,            Zt, Base, SImm9)
// clang-format on
