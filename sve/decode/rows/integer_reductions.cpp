// Integer reductions, and MOVPRFX with a predicate.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"
#include "sve/fast/integer_reduce.h"
#include "sve/model/integer.h"

// clang-format off
ROW("SADDV Dd, Pg, Zn.T",       AddReduceV,    (S8, S16, S32),      sized(0x04002000), MODEL, Dd, Pg, Zn)
ROW("UADDV Dd, Pg, Zn.T",       AddReduceV,    (U8, U16, U32, U64), sized(0x04012000), FAST,  sve_uaddv_vpz, Vd, Pg, Zn)
ROW("SMAXV Vd, Pg, Zn.T",       MaxReduceV,    (S8, S16, S32, S64), sized(0x04082000), FAST,  sve_smaxv_vpz, Vd, Pg, Zn)
ROW("UMAXV Vd, Pg, Zn.T",       MaxReduceV,    (U8, U16, U32, U64), sized(0x04092000), FAST,  sve_umaxv_vpz, Vd, Pg, Zn)
ROW("SMINV Vd, Pg, Zn.T",       MinReduceV,    (S8, S16, S32, S64), sized(0x040a2000), FAST,  sve_sminv_vpz, Vd, Pg, Zn)
ROW("UMINV Vd, Pg, Zn.T",       MinReduceV,    (U8, U16, U32, U64), sized(0x040b2000), FAST,  sve_uminv_vpz, Vd, Pg, Zn)
ROW("MOVPRFX Zd.T, Pg/Z, Zn.T", MovePrefix1VZ, (U8, U16, U32, U64), sized(0x04102000), FAST,  sve_movprfx_zpz, Zd, PgZ, Zn)
ROW("MOVPRFX Zd.T, Pg/M, Zn.T", MovePrefix1VM, (U8, U16, U32, U64), sized(0x04112000), FAST,  sve_movprfx_zpz, Zd, PgM, Zn)
ROW("ORV Vd, Pg, Zn.T",         OrReduceV,     (U8, U16, U32, U64), sized(0x04182000), FAST,  sve_orv_vpz, Vd, Pg, Zn)
ROW("EORV Vd, Pg, Zn.T",        XorReduceV,    (U8, U16, U32, U64), sized(0x04192000), FAST,  sve_eorv_vpz, Vd, Pg, Zn)
ROW("ANDV Vd, Pg, Zn.T",        AndReduceV,    (U8, U16, U32, U64), sized(0x041a2000), FAST,  sve_andv_vpz, Vd, Pg, Zn)
// clang-format on
