// Integer multiply-add, predicated.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"

// clang-format off
ROW("MLA Zda.T, Pg/M, Zn.T, Zm.T",  MLAVVVM,  (S8, S16, S32, S64), sized(0x04004000), FAST, sve_mla_zpzz, Zda, PgM, Zn, Zm)
ROW("MLS Zda.T, Pg/M, Zn.T, Zm.T",  MLSVVVM,  (S8, S16, S32, S64), sized(0x04006000), FAST, sve_mls_zpzz, Zda, PgM, Zn, Zm)
ROW("MAD Zdn.T, Pg/M, Zm.T, Za5.T", MADDVVVM, (S8, S16, S32, S64), sized(0x0400c000), FAST, sve_mad_zpzz, Zdn, PgM, Zm, Za5)
ROW("MSB Zdn.T, Pg/M, Zm.T, Za5.T", MSUBVVVM, (S8, S16, S32, S64), sized(0x0400e000), FAST, sve_msb_zpzz, Zdn, PgM, Zm, Za5)
// clang-format on
