// First-fault and non-fault loads.
#include "sve/client/stub.h"
#include "sve/fast/first_fault.h"

// clang-format off
FAST(CLoadNF1SIZ,  (U8),  0xa410a000, sve_ldnf1b_zpri,          Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (U16), 0xa430a000, sve_ldnf1b_h_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (U32), 0xa450a000, sve_ldnf1b_s_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (U64), 0xa470a000, sve_ldnf1b_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (S64), 0xa590a000, sve_ldnf1sb_d_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (S32), 0xa5b0a000, sve_ldnf1sb_s_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF1SIZ,  (S16), 0xa5d0a000, sve_ldnf1sb_h_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF2SIZ,  (U16), 0xa4b0a000, sve_ldnf1h_zpri,          Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF2SIZ,  (U32), 0xa4d0a000, sve_ldnf1h_s_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF2SIZ,  (U64), 0xa4f0a000, sve_ldnf1h_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF2SIZ,  (S64), 0xa510a000, sve_ldnf1sh_d_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF2SIZ,  (S32), 0xa530a000, sve_ldnf1sh_s_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF4SIZ,  (S64), 0xa490a000, sve_ldnf1sw_d_zpri,       Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF4SIZ,  (U32), 0xa550a000, sve_ldnf1w_zpri,          Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF4SIZ,  (U64), 0xa570a000, sve_ldnf1w_d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(CLoadNF8SIZ,  (U64), 0xa5f0a000, sve_ldnf1d_zpri,          Zt, PgZ, Base, SImm4At16)

FAST(CLoadFF1LSSZ, (U8),  0xa4006000, sve_ldff1b_scaled_zprr,   Zt, PgZ, Base, Xm)
FAST(CLoadFF1LSSZ, (U16), 0xa4206000, sve_ldff1b_h_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoadFF1LSSZ, (U32), 0xa4406000, sve_ldff1b_s_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoadFF1LSSZ, (U64), 0xa4606000, sve_ldff1b_d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoadFF4LSSZ, (U32), 0xa5406000, sve_ldff1w_scaled_zprr,   Zt, PgZ, Base, Xm)
FAST(CLoadFF4LSSZ, (U64), 0xa5606000, sve_ldff1w_d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(CLoadFF8LSSZ, (U64), 0xa5e06000, sve_ldff1d_scaled_zprr,   Zt, PgZ, Base, Xm)
// clang-format on
