// Scalar compares: WHILE and CTERM.
#include "sve/decode/row.h"
#include "sve/fast/count_while.h"
#include "sve/model/predicate_ops.h"

// clang-format off
ROW("WHILELT Pd.T, Wn, Wm", While4LTSS, (S8, S16, S32, S64), sized(0x25200400), FAST,  sve_whilelt_prr, Pd, Wn, Wm)
ROW("WHILELE Pd.T, Wn, Wm", While4LESS, (S8, S16, S32, S64), sized(0x25200410), MODEL, Pd, Wn, Wm)
ROW("WHILELO Pd.T, Wn, Wm", While4LTSS, (U8, U16, U32, U64), sized(0x25200c00), FAST,  sve_whilelo_prr, Pd, Wn, Wm)
ROW("WHILELS Pd.T, Wn, Wm", While4LESS, (U8, U16, U32, U64), sized(0x25200c10), FAST,  sve_whilels_prr, Pd, Wn, Wm)
ROW("WHILELT Pd.T, Xn, Xm", While8LTSS, (S8, S16, S32, S64), sized(0x25201400), FAST,  sve_whilelt_prr, Pd, Xn, Xm)
ROW("WHILELE Pd.T, Xn, Xm", While8LESS, (S8, S16, S32, S64), sized(0x25201410), MODEL, Pd, Xn, Xm)
ROW("WHILELO Pd.T, Xn, Xm", While8LTSS, (U8, U16, U32, U64), sized(0x25201c00), FAST,  sve_whilelo_prr, Pd, Xn, Xm)
ROW("WHILELS Pd.T, Xn, Xm", While8LESS, (U8, U16, U32, U64), sized(0x25201c10), FAST,  sve_whilels_prr, Pd, Xn, Xm)
ROW("CTERMEQ Wn, Wm",       CTermEQ,    (U32),               0x25a02000,        MODEL, NoResult, Wn, Wm)
ROW("CTERMNE Wn, Wm",       CTermNE,    (U32),               0x25a02010,        MODEL, NoResult, Wn, Wm)
ROW("CTERMEQ Xn, Xm",       CTermEQ,    (U64),               0x25e02000,        MODEL, NoResult, Xn, Xm)
ROW("CTERMNE Xn, Xm",       CTermNE,    (U64),               0x25e02010,        MODEL, NoResult, Xn, Xm)
// clang-format on
