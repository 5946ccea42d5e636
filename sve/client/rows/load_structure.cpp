// Structure loads.
#include "sve/client/stub.h"
#include "sve/fast/structure.h"

// clang-format off
FAST(E2Load1SIZ,  (U8),  0xa420e000, sve_ld2b_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E2Load2SIZ,  (U16), 0xa4a0e000, sve_ld2h_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E2Load4SIZ,  (U32), 0xa520e000, sve_ld2w_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E2Load8SIZ,  (U64), 0xa5a0e000, sve_ld2d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E3Load1SIZ,  (U8),  0xa440e000, sve_ld3b_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E3Load2SIZ,  (U16), 0xa4c0e000, sve_ld3h_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E3Load4SIZ,  (U32), 0xa540e000, sve_ld3w_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E3Load8SIZ,  (U64), 0xa5c0e000, sve_ld3d_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E4Load1SIZ,  (U8),  0xa460e000, sve_ld4b_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E4Load2SIZ,  (U16), 0xa4e0e000, sve_ld4h_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E4Load4SIZ,  (U32), 0xa560e000, sve_ld4w_zpri,        Zt, PgZ, Base, SImm4At16)
FAST(E4Load8SIZ,  (U64), 0xa5e0e000, sve_ld4d_zpri,        Zt, PgZ, Base, SImm4At16)

FAST(E2Load1LSSZ, (U8),  0xa420c000, sve_ld2b_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E2Load2LSSZ, (U16), 0xa4a0c000, sve_ld2h_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E2Load4LSSZ, (U32), 0xa520c000, sve_ld2w_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E2Load8LSSZ, (U64), 0xa5a0c000, sve_ld2d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E3Load1LSSZ, (U8),  0xa440c000, sve_ld3b_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E3Load2LSSZ, (U16), 0xa4c0c000, sve_ld3h_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E3Load4LSSZ, (U32), 0xa540c000, sve_ld3w_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E3Load8LSSZ, (U64), 0xa5c0c000, sve_ld3d_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E4Load1LSSZ, (U8),  0xa460c000, sve_ld4b_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E4Load2LSSZ, (U16), 0xa4e0c000, sve_ld4h_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E4Load4LSSZ, (U32), 0xa560c000, sve_ld4w_scaled_zprr, Zt, PgZ, Base, Xm)
FAST(E4Load8LSSZ, (U64), 0xa5e0c000, sve_ld4d_scaled_zprr, Zt, PgZ, Base, Xm)
// clang-format on
