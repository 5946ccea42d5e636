// Gather loads.
#include "sve/fast/gather.h"
#include "sve/client/stub.h"

// clang-format off
FAST(Load1VIZ,  (S64), 0xc4208000, sve_ld1sb_d_zpzi,             Zt, PgZ, Zn, UImm5At16)
FAST(Load1VIZ,  (U64), 0xc420c000, sve_ld1b_d_zpzi,              Zt, PgZ, Zn, UImm5At16)

FAST(Load1VSZ,  (S64), 0xc4408000, sve_ld1sb_d_zpzr,             Zt, PgZ, Zm, Base)
FAST(Load1VSZ,  (U64), 0xc440c000, sve_ld1b_d_zpzr,              Zt, PgZ, Zm, Base)

FAST(Load1XVSZ, (S32), 0x84400000, sve_ld1sb_s_sxtw_zpzr,        Zt, PgZ, Zm, Base)
FAST(Load1XVSZ, (U32), 0x84404000, sve_ld1b_s_sxtw_zpzr,         Zt, PgZ, Zm, Base)
FAST(Load1XVSZ, (S64), 0xc4400000, sve_ld1sb_d_sxtw_zpzr,        Zt, PgZ, Zm, Base)
FAST(Load1XVSZ, (U64), 0xc4404000, sve_ld1b_d_sxtw_zpzr,         Zt, PgZ, Zm, Base)

FAST(Load1YVSZ, (S64), 0xc4000000, sve_ld1sb_d_uxtw_zpzr,        Zt, PgZ, Zm, Base)

FAST(Load2SVZ,  (S64), 0xc4e08000, sve_ld1sh_d_scaled_zprz,      Zt, PgZ, Base, Zm)
FAST(Load2SVZ,  (U64), 0xc4e0c000, sve_ld1h_d_scaled_zprz,       Zt, PgZ, Base, Zm)

FAST(Load2VIZ,  (S64), 0xc4a08000, sve_ld1sh_d_zpzi,             Zt, PgZ, Zn, UImm5At16)
FAST(Load2VIZ,  (U64), 0xc4a0c000, sve_ld1h_d_zpzi,              Zt, PgZ, Zn, UImm5At16)

FAST(Load2VSZ,  (S64), 0xc4c08000, sve_ld1sh_d_zpzr,             Zt, PgZ, Zm, Base)
FAST(Load2VSZ,  (U64), 0xc4c0c000, sve_ld1h_d_zpzr,              Zt, PgZ, Zm, Base)

FAST(Load2XSVZ, (S32), 0x84e00000, sve_ld1sh_s_sxtw_scaled_zprz, Zt, PgZ, Base, Zm)
FAST(Load2XSVZ, (U32), 0x84e04000, sve_ld1h_s_sxtw_scaled_zprz,  Zt, PgZ, Base, Zm)
FAST(Load2XSVZ, (S64), 0xc4e00000, sve_ld1sh_d_sxtw_scaled_zprz, Zt, PgZ, Base, Zm)
FAST(Load2XSVZ, (U64), 0xc4e04000, sve_ld1h_d_sxtw_scaled_zprz,  Zt, PgZ, Base, Zm)

FAST(Load2XVSZ, (S32), 0x84c00000, sve_ld1sh_s_sxtw_zpzr,        Zt, PgZ, Zm, Base)
FAST(Load2XVSZ, (U32), 0x84c04000, sve_ld1h_s_sxtw_zpzr,         Zt, PgZ, Zm, Base)

FAST(Load2YSVZ, (S64), 0xc4a00000, sve_ld1sh_d_uxtw_scaled_zprz, Zt, PgZ, Base, Zm)

FAST(Load4SVZ,  (S64), 0xc5608000, sve_ld1sw_d_scaled_zprz,      Zt, PgZ, Base, Zm)
FAST(Load4SVZ,  (U64), 0xc560c000, sve_ld1w_d_scaled_zprz,       Zt, PgZ, Base, Zm)

FAST(Load4VIZ,  (S64), 0xc5208000, sve_ld1sw_d_zpzi,             Zt, PgZ, Zn, UImm5At16)
FAST(Load4VIZ,  (U64), 0xc520c000, sve_ld1w_d_zpzi,              Zt, PgZ, Zn, UImm5At16)

FAST(Load4VSZ,  (S64), 0xc5408000, sve_ld1sw_d_zpzr,             Zt, PgZ, Zm, Base)
FAST(Load4VSZ,  (U64), 0xc540c000, sve_ld1w_d_zpzr,              Zt, PgZ, Zm, Base)

FAST(Load4XSVZ, (U32), 0x85604000, sve_ld1w_sxtw_scaled_zprz,    Zt, PgZ, Base, Zm)
FAST(Load4XSVZ, (S64), 0xc5600000, sve_ld1sw_d_sxtw_scaled_zprz, Zt, PgZ, Base, Zm)
FAST(Load4XSVZ, (U64), 0xc5604000, sve_ld1w_d_sxtw_scaled_zprz,  Zt, PgZ, Base, Zm)

FAST(Load4XVSZ, (U32), 0x85404000, sve_ld1w_sxtw_zpzr,           Zt, PgZ, Zm, Base)

FAST(Load8SVZ,  (U64), 0xc5e0c000, sve_ld1d_scaled_zprz,         Zt, PgZ, Base, Zm)

FAST(Load8VIZ,  (U64), 0xc5a0c000, sve_ld1d_zpzi,                Zt, PgZ, Zn, UImm5At16)

FAST(Load8VSZ,  (U64), 0xc5c0c000, sve_ld1d_zpzr,                Zt, PgZ, Zm, Base)

FAST(Load8XSVZ, (U64), 0xc5e04000, sve_ld1d_sxtw_scaled_zprz,    Zt, PgZ, Base, Zm)

FAST(Load8YSVZ, (U64), 0xc5a04000, sve_ld1d_uxtw_scaled_zprz,    Zt, PgZ, Base, Zm)
// clang-format on
