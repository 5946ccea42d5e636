// Integer operations and copies with an immediate.
#include "sve/decode/row.h"
#include "sve/fast/integer_unpredicated.h"
#include "sve/fast/move.h"
#include "sve/model/integer.h"
#include "sve/model/permute.h"

// clang-format off
ROW("CPY Zd.T, PgAt16/Z, #SImm8Shifted", DupIZ,   (S8, S16, S32, S64), sized(0x05100000), FAST,  sve_cpy_zpi, Zd, PgAt16Z, SImm8Shifted)
ROW("CPY Zd.T, PgAt16/M, #SImm8Shifted", DupIM,   (S8, S16, S32, S64), sized(0x05104000), FAST,  sve_cpy_zpi, Zd, PgAt16M, SImm8Shifted)
ROW("FCPY Zd.T, PgAt16/M, #FPImm8",      DupIM,   (F16, F32, D64),     sized(0x0510c000), MODEL, Zd, OldZ, PgAt16M, FPImm8)
ROW("ADD Zdn.T, Zdn.T, #UImm8Shifted",   AddVIX,  (U8, U16, U32, U64), sized(0x2520c000), FAST,  sve_add_zi, Zdn, UImm8Shifted)
ROW("SUB Zdn.T, Zdn.T, #UImm8Shifted",   SubVIX,  (U8, U16, U32, U64), sized(0x2521c000), FAST,  sve_sub_zi, Zdn, UImm8Shifted)
ROW("SUBR Zdn.T, Zdn.T, #UImm8Shifted",  SubRVIX, (U8, U16, U32, U64), sized(0x2523c000), MODEL, Zdn, OldZ, UImm8Shifted)
ROW("SQADD Zdn.T, Zdn.T, #UImm8Shifted", QAddVIX, (S8, S16, S32, S64), sized(0x2524c000), MODEL, Zdn, OldZ, UImm8Shifted)
ROW("UQADD Zdn.T, Zdn.T, #UImm8Shifted", QAddVIX, (U8, U16, U32, U64), sized(0x2525c000), MODEL, Zdn, OldZ, UImm8Shifted)
ROW("SQSUB Zdn.T, Zdn.T, #UImm8Shifted", QSubVIX, (S8, S16, S32, S64), sized(0x2526c000), MODEL, Zdn, OldZ, UImm8Shifted)
ROW("UQSUB Zdn.T, Zdn.T, #UImm8Shifted", QSubVIX, (U8, U16, U32, U64), sized(0x2527c000), MODEL, Zdn, OldZ, UImm8Shifted)
ROW("SMAX Zdn.T, Zdn.T, #SImm8At5",      MaxVIX,  (S8, S16, S32, S64), sized(0x2528c000), MODEL, Zdn, OldZ, SImm8At5)
ROW("UMAX Zdn.T, Zdn.T, #UImm8At5",      MaxVIX,  (U8, U16, U32, U64), sized(0x2529c000), MODEL, Zdn, OldZ, UImm8At5)
ROW("SMIN Zdn.T, Zdn.T, #SImm8At5",      MinVIX,  (S8, S16, S32, S64), sized(0x252ac000), MODEL, Zdn, OldZ, SImm8At5)
ROW("UMIN Zdn.T, Zdn.T, #UImm8At5",      MinVIX,  (U8, U16, U32, U64), sized(0x252bc000), MODEL, Zdn, OldZ, UImm8At5)
ROW("MUL Zdn.T, Zdn.T, #SImm8At5",       MulVIX,  (S8, S16, S32, S64), sized(0x2530c000), FAST,  sve_mul_zi, Zdn, SImm8At5)
ROW("DUP Zd.T, #SImm8Shifted",           DupI,    (S8, S16, S32, S64), sized(0x2538c000), FAST,  sve_dup_zi, Zd, SImm8Shifted)
ROW("FDUP Zd.T, #FPImm8",                DupI,    (F16, F32, D64),     sized(0x2539c000), FAST,  sve_fdup_zi, Zd, FPImm8)
// clang-format on
