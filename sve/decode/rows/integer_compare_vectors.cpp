// Integer compares of vectors.
#include "sve/decode/row.h"
#include "sve/fast/compare_integer.h"
#include "sve/model/compare.h"

// clang-format off
ROW("CMPHS Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgGEVVZ, (U8, U16, U32, U64), sized(0x24000000), FAST,  sve_cmphs_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPHI Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgGTVVZ, (U8, U16, U32, U64), sized(0x24000010), FAST,  sve_cmphi_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPEQ Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgEQVWZ, (S8, S16, S32),      sized(0x24002000), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPNE Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgNEVWZ, (S8, S16, S32),      sized(0x24002010), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPGE Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgGEVWZ, (S8, S16, S32),      sized(0x24004000), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPGT Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgGTVWZ, (S8, S16, S32),      sized(0x24004010), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPLT Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgLTVWZ, (S8, S16, S32),      sized(0x24006000), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPLE Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgLEVWZ, (S8, S16, S32),      sized(0x24006010), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPGE Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgGEVVZ, (S8, S16, S32, S64), sized(0x24008000), FAST,  sve_cmpge_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPGT Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgGTVVZ, (S8, S16, S32, S64), sized(0x24008010), FAST,  sve_cmpgt_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPEQ Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgEQVVZ, (S8, S16, S32, S64), sized(0x2400a000), FAST,  sve_cmpeq_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPNE Pd.T, Pg/Z, Zn.T, Zm.T", CmpFlgNEVVZ, (S8, S16, S32, S64), sized(0x2400a010), FAST,  sve_cmpne_ppzz, Pd, PgZ, Zn, Zm)
ROW("CMPHS Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgGEVWZ, (U8, U16, U32),      sized(0x2400c000), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPHI Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgGTVWZ, (U8, U16, U32),      sized(0x2400c010), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPLO Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgLTVWZ, (U8, U16, U32),      sized(0x2400e000), MODEL, Pd, PgZ, Zn, Zm)
ROW("CMPLS Pd.T, Pg/Z, Zn.T, Zm.D", CmpFlgLEVWZ, (U8, U16, U32),      sized(0x2400e010), MODEL, Pd, PgZ, Zn, Zm)
// clang-format on
