// Integer binary arithmetic, logic, multiply and divide, predicated.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ADD Zdn.T, Pg/M, Zdn.T, Zm5.T",   AddVVM,  (U8, U16, U32, U64), sized(0x04000000), FAST,  sve_add_zpz, Zdn, PgM, Zm5)
ROW("SUB Zdn.T, Pg/M, Zdn.T, Zm5.T",   SubVVM,  (U8, U16, U32, U64), sized(0x04010000), FAST,  sve_sub_zpz, Zdn, PgM, Zm5)
ROW("SUBR Zdn.T, Pg/M, Zdn.T, Zm5.T",  SubRVVM, (U8, U16, U32, U64), sized(0x04030000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("SMAX Zdn.T, Pg/M, Zdn.T, Zm5.T",  MaxVVM,  (S8, S16, S32, S64), sized(0x04080000), FAST,  sve_smax_zpz, Zdn, PgM, Zm5)
ROW("UMAX Zdn.T, Pg/M, Zdn.T, Zm5.T",  MaxVVM,  (U8, U16, U32, U64), sized(0x04090000), FAST,  sve_umax_zpz, Zdn, PgM, Zm5)
ROW("SMIN Zdn.T, Pg/M, Zdn.T, Zm5.T",  MinVVM,  (S8, S16, S32, S64), sized(0x040a0000), FAST,  sve_smin_zpz, Zdn, PgM, Zm5)
ROW("UMIN Zdn.T, Pg/M, Zdn.T, Zm5.T",  MinVVM,  (U8, U16, U32, U64), sized(0x040b0000), FAST,  sve_umin_zpz, Zdn, PgM, Zm5)
ROW("SABD Zdn.T, Pg/M, Zdn.T, Zm5.T",  AbdVVM,  (S8, S16, S32, S64), sized(0x040c0000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("UABD Zdn.T, Pg/M, Zdn.T, Zm5.T",  AbdVVM,  (U8, U16, U32, U64), sized(0x040d0000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("MUL Zdn.T, Pg/M, Zdn.T, Zm5.T",   MulVVM,  (S8, S16, S32, S64), sized(0x04100000), FAST,  sve_mul_zpz, Zdn, PgM, Zm5)
ROW("SMULH Zdn.T, Pg/M, Zdn.T, Zm5.T", MulHVVM, (S8, S16, S32, S64), sized(0x04120000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("UMULH Zdn.T, Pg/M, Zdn.T, Zm5.T", MulHVVM, (U8, U16, U32, U64), sized(0x04130000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("SDIV Zdn.T, Pg/M, Zdn.T, Zm5.T",  DivVVM,  (S32, S64),          sized(0x04140000), FAST,  sve_sdiv_zpz, Zdn, PgM, Zm5)
ROW("UDIV Zdn.T, Pg/M, Zdn.T, Zm5.T",  DivVVM,  (U32, U64),          sized(0x04150000), FAST,  sve_udiv_zpz, Zdn, PgM, Zm5)
ROW("SDIVR Zdn.T, Pg/M, Zdn.T, Zm5.T", DivRVVM, (S32, S64),          sized(0x04160000), FAST,  sve_sdivr_zpz, Zdn, PgM, Zm5)
ROW("UDIVR Zdn.T, Pg/M, Zdn.T, Zm5.T", DivRVVM, (U32, U64),          sized(0x04170000), FAST,  sve_udivr_zpz, Zdn, PgM, Zm5)
ROW("ORR Zdn.T, Pg/M, Zdn.T, Zm5.T",   OrVVM,   (U8, U16, U32, U64), sized(0x04180000), FAST,  sve_orr_zpz, Zdn, PgM, Zm5)
ROW("EOR Zdn.T, Pg/M, Zdn.T, Zm5.T",   XorVVM,  (U8, U16, U32, U64), sized(0x04190000), FAST,  sve_eor_zpz, Zdn, PgM, Zm5)
ROW("AND Zdn.T, Pg/M, Zdn.T, Zm5.T",   AndVVM,  (U8, U16, U32, U64), sized(0x041a0000), FAST,  sve_and_zpz, Zdn, PgM, Zm5)
ROW("BIC Zdn.T, Pg/M, Zdn.T, Zm5.T",   BicVVM,  (U8, U16, U32, U64), sized(0x041b0000), FAST,  sve_bic_zpz, Zdn, PgM, Zm5)
// clang-format on
