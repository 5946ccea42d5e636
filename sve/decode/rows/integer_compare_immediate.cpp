// Integer compares with an immediate.
#include "sve/decode/row.h"
#include "sve/fast/compare_integer.h"
#include "sve/model/compare.h"

// clang-format off
ROW("CMPHS Pd.T, Pg/Z, Zn.T, #UImm7At14", CmpFlgGEVIZ, (U8, U16, U32, U64), sized(0x24200000), MODEL, Pd, PgZ, Zn, UImm7At14)
ROW("CMPHI Pd.T, Pg/Z, Zn.T, #UImm7At14", CmpFlgGTVIZ, (U8, U16, U32, U64), sized(0x24200010), FAST,  sve_cmphi_ppzi, Pd, PgZ, Zn, UImm7At14)
ROW("CMPLO Pd.T, Pg/Z, Zn.T, #UImm7At14", CmpFlgLTVIZ, (U8, U16, U32, U64), sized(0x24202000), FAST,  sve_cmplo_ppzi, Pd, PgZ, Zn, UImm7At14)
ROW("CMPLS Pd.T, Pg/Z, Zn.T, #UImm7At14", CmpFlgLEVIZ, (U8, U16, U32, U64), sized(0x24202010), MODEL, Pd, PgZ, Zn, UImm7At14)
ROW("CMPGE Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgGEVIZ, (S8, S16, S32, S64), sized(0x25000000), MODEL, Pd, PgZ, Zn, SImm5At16)
ROW("CMPGT Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgGTVIZ, (S8, S16, S32, S64), sized(0x25000010), FAST,  sve_cmpgt_ppzi, Pd, PgZ, Zn, SImm5At16)
ROW("CMPLT Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgLTVIZ, (S8, S16, S32, S64), sized(0x25002000), FAST,  sve_cmplt_ppzi, Pd, PgZ, Zn, SImm5At16)
ROW("CMPLE Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgLEVIZ, (S8, S16, S32, S64), sized(0x25002010), FAST,  sve_cmple_ppzi, Pd, PgZ, Zn, SImm5At16)
ROW("CMPEQ Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgEQVIZ, (S8, S16, S32, S64), sized(0x25008000), FAST,  sve_cmpeq_ppzi, Pd, PgZ, Zn, SImm5At16)
ROW("CMPNE Pd.T, Pg/Z, Zn.T, #SImm5At16", CmpFlgNEVIZ, (S8, S16, S32, S64), sized(0x25008010), FAST,  sve_cmpne_ppzi, Pd, PgZ, Zn, SImm5At16)
// clang-format on
