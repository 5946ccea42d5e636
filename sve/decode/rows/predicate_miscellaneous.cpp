// Predicate test, initialisation and first and next elements.
#include "sve/decode/row.h"
#include "sve/fast/predicate.h"
#include "sve/model/predicate_ops.h"

// clang-format off
ROW("PTRUE Pd.T{, Pattern}",      TrueI,           (P8, P16, P32, P64), sized(0x2518e000), FAST,  sve_ptrue_pi, Pd, Pattern)
ROW("PFALSE Pd.B",                False,           (P),                 0x2518e400,        FAST,  sve_pfalse_p, Pd)
ROW("PNEXT Pdn.T, PgAt5, Pdn.T",  GenNextP,        (P8, P16, P32, P64), sized(0x2519c400), FAST,  sve_pnext_pp, Pdn, PgAt5)
ROW("PTRUES Pd.T{, Pattern}",     TrueFlgI,        (P8, P16, P32, P64), sized(0x2519e000), MODEL, Pd, Pattern)
ROW("PTEST Pg4, Pn.B",            TestPZ,          (P),                 0x2550c000,        FAST,  sve_ptest_pp, Pg4, Pn)
ROW("PFIRST Pdn.B, PgAt5, Pdn.B", SetFirstActiveP, (P),                 0x2558c000,        MODEL, Pdn, PgAt5, OldP)
// clang-format on
