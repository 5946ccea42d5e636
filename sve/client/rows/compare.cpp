// Integer compares.
#include "sve/client/stub.h"

#include "sve/fast/compare_integer.h"

// clang-format off

// Two vectors.
FAST_SIZED(CmpFlgEQVVZ, (S8, S16, S32, S64), 0x2400a000, sve_cmpeq_ppzz, Pd, PgZ, Zn, Zm)
FAST_SIZED(CmpFlgNEVVZ, (S8, S16, S32, S64), 0x2400a010, sve_cmpne_ppzz, Pd, PgZ, Zn, Zm)
FAST_SIZED(CmpFlgGEVVZ, (S8, S16, S32, S64), 0x24008000, sve_cmpge_ppzz, Pd, PgZ, Zn, Zm)
FAST_SIZED(CmpFlgGTVVZ, (S8, S16, S32, S64), 0x24008010, sve_cmpgt_ppzz, Pd, PgZ, Zn, Zm)
FAST_SIZED(CmpFlgGEVVZ, (U8, U16, U32, U64), 0x24000000, sve_cmphs_ppzz, Pd, PgZ, Zn, Zm)
FAST_SIZED(CmpFlgGTVVZ, (U8, U16, U32, U64), 0x24000010, sve_cmphi_ppzz, Pd, PgZ, Zn, Zm)

// A vector and an immediate.
FAST_SIZED(CmpFlgEQVIZ, (S8, S16, S32, S64), 0x25008000, sve_cmpeq_ppzi, Pd, PgZ, Zn, SImm5At16)
FAST_SIZED(CmpFlgNEVIZ, (S8, S16, S32, S64), 0x25008010, sve_cmpne_ppzi, Pd, PgZ, Zn, SImm5At16)
FAST_SIZED(CmpFlgGTVIZ, (S8, S16, S32, S64), 0x25000010, sve_cmpgt_ppzi, Pd, PgZ, Zn, SImm5At16)
FAST_SIZED(CmpFlgLTVIZ, (S8, S16, S32, S64), 0x25002000, sve_cmplt_ppzi, Pd, PgZ, Zn, SImm5At16)
FAST_SIZED(CmpFlgLEVIZ, (S8, S16, S32, S64), 0x25002010, sve_cmple_ppzi, Pd, PgZ, Zn, SImm5At16)
FAST_SIZED(CmpFlgGTVIZ, (U8, U16, U32, U64), 0x24200010, sve_cmphi_ppzi, Pd, PgZ, Zn, UImm7At14)
FAST_SIZED(CmpFlgLTVIZ, (U8, U16, U32, U64), 0x24202000, sve_cmplo_ppzi, Pd, PgZ, Zn, UImm7At14)

// clang-format on
