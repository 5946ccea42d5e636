// Load and replicate.
#include "sve/client/stub.h"
#include "sve/fast/replicate.h"

// clang-format off
FAST(LoadDup1SIZ, (U8),  0x84408000, sve_ld1rb_zpri,    Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (U16), 0x8440a000, sve_ld1rb_h_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (U32), 0x8440c000, sve_ld1rb_s_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (U64), 0x8440e000, sve_ld1rb_d_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (S64), 0x85c08000, sve_ld1rsb_d_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (S32), 0x85c0a000, sve_ld1rsb_s_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup1SIZ, (S16), 0x85c0c000, sve_ld1rsb_h_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup2SIZ, (U16), 0x84c0a000, sve_ld1rh_zpri,    Zt, PgZ, Base, UImm6At16)
FAST(LoadDup2SIZ, (U32), 0x84c0c000, sve_ld1rh_s_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup2SIZ, (U64), 0x84c0e000, sve_ld1rh_d_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup2SIZ, (S64), 0x85408000, sve_ld1rsh_d_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup2SIZ, (S32), 0x8540a000, sve_ld1rsh_s_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup4SIZ, (S64), 0x84c08000, sve_ld1rsw_d_zpri, Zt, PgZ, Base, UImm6At16)
FAST(LoadDup4SIZ, (U32), 0x8540c000, sve_ld1rw_zpri,    Zt, PgZ, Base, UImm6At16)
FAST(LoadDup4SIZ, (U64), 0x8540e000, sve_ld1rw_d_zpri,  Zt, PgZ, Base, UImm6At16)
FAST(LoadDup8SIZ, (U64), 0x85c0e000, sve_ld1rd_zpri,    Zt, PgZ, Base, UImm6At16)
// clang-format on
