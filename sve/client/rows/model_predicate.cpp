// Predicate logic, breaks, loop control and integer compares in the reference model.
#include "sve/client/bridge.h"
#include "sve/model/compare.h"
#include "sve/model/predicate_ops.h"

// clang-format off
MODEL(AndFlgPPZ, (P), 0x25404000, Pd, Pg4Z, Pn, Pm)
MODEL(BicFlgPPZ, (P), 0x25404010, Pd, Pg4Z, Pn, Pm)
MODEL(OrFlgPPZ, (P), 0x25c04000, Pd, Pg4Z, Pn, Pm)
MODEL(OrNFlgPPZ, (P), 0x25c04010, Pd, Pg4Z, Pn, Pm)
MODEL(XorFlgPPZ, (P), 0x25404200, Pd, Pg4Z, Pn, Pm)
MODEL(NandFlgPPZ, (P), 0x25c04210, Pd, Pg4Z, Pn, Pm)
MODEL(NorFlgPPZ, (P), 0x25c04200, Pd, Pg4Z, Pn, Pm)
MODEL(NandPPZ, (P), 0x25804210, Pd, Pg4Z, Pn, Pm)
MODEL(OrNPPZ, (P), 0x25804010, Pd, Pg4Z, Pn, Pm)

MODEL(BreakAFlgPZ, (P), 0x25504000, Pd, Pg4Z, Pn)
MODEL(BreakBFlgPZ, (P), 0x25d04000, Pd, Pg4Z, Pn)
MODEL(BreakPrevAPZ, (P), 0x2500c000, Pd, Pg4Z, Pn, Pm)
MODEL(BreakPrevAFlgPZ, (P), 0x2540c000, Pd, Pg4Z, Pn, Pm)
MODEL(SetFirstActiveP, (P), 0x2558c000, Pd, PgAt5, OldP)
MODEL(ActualFlgP, (P), 0x2558f000, Pd, PgAt5Z)
MODEL_SIZED(TrueFlgI, (P8, P16, P32, P64), 0x2519e000, Pd, Pattern)

MODEL_SIZED(While4LESS, (S8, S16, S32, S64), 0x25200410, Pd, Wn, Wm)
MODEL_SIZED(While8LESS, (S8, S16, S32, S64), 0x25201410, Pd, Xn, Xm)
MODEL(CTermEQ, (U32), 0x25a02000, NoResult, Wn, Wm)
MODEL(CTermEQ, (U64), 0x25e02000, NoResult, Xn, Xm)
MODEL(CTermNE, (U32), 0x25a02010, NoResult, Wn, Wm)
MODEL(CTermNE, (U64), 0x25e02010, NoResult, Xn, Xm)

MODEL_SIZED(CmpFlgEQVWZ, (S8, S16, S32), 0x24002000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgNEVWZ, (S8, S16, S32), 0x24002010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgGEVWZ, (S8, S16, S32), 0x24004000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgGEVWZ, (U8, U16, U32), 0x2400c000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgGTVWZ, (S8, S16, S32), 0x24004010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgGTVWZ, (U8, U16, U32), 0x2400c010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgLEVWZ, (S8, S16, S32), 0x24006010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgLEVWZ, (U8, U16, U32), 0x2400e010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgLTVWZ, (S8, S16, S32), 0x24006000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgLTVWZ, (U8, U16, U32), 0x2400e000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpFlgGEVIZ, (S8, S16, S32, S64), 0x25000000, Pd, PgZ, Zn, SImm5At16)
MODEL_SIZED(CmpFlgGEVIZ, (U8, U16, U32, U64), 0x24200000, Pd, PgZ, Zn, UImm7At14)
MODEL_SIZED(CmpFlgLEVIZ, (U8, U16, U32, U64), 0x24202010, Pd, PgZ, Zn, UImm7At14)
// clang-format on
