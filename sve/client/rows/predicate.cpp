// Predicate logic, predicate constants and breaks, and the first-fault register.
#include "sve/client/stub.h"

#include "sve/fast/predicate.h"
#include "sve/fast/predicate_break.h"

// clang-format off

// Logic.
FAST(AndPPZ, (P), 0x25004000, sve_and_pppp, Pd, Pg4Z, Pn, Pm)
FAST(BicPPZ, (P), 0x25004010, sve_bic_pppp, Pd, Pg4Z, Pn, Pm)
FAST(XorPPZ, (P), 0x25004200, sve_eor_pppp, Pd, Pg4Z, Pn, Pm)
FAST(SelPP,  (P), 0x25004210, sve_sel_pppp, Pd, Pg4,  Pn, Pm)
FAST(OrPPZ,  (P), 0x25804000, sve_orr_pppp, Pd, Pg4Z, Pn, Pm)
FAST(NorPPZ, (P), 0x25804200, sve_nor_pppp, Pd, Pg4Z, Pn, Pm)

// Constants, tests and iteration.
FAST(False, (P), 0x2518e400, sve_pfalse_p, Pd)
FAST_SIZED(TrueI,    (P8, P16, P32, P64), 0x2518e000, sve_ptrue_pi, Pd, Pattern)
FAST(TestPZ, (P), 0x2550c000, sve_ptest_pp, Pg4, Pn)
FAST_SIZED(GenNextP, (P8, P16, P32, P64), 0x2519c400, sve_pnext_pp, Pdn, PgAt5)

// Breaks.
FAST(BreakAPZ,        (P), 0x25104000, sve_brka_ppp,    Pd, Pg4Z, Pn)
FAST(BreakAPM,        (P), 0x25104010, sve_brka_ppp,    Pd, Pg4M, Pn)
FAST(BreakBPZ,        (P), 0x25904000, sve_brkb_ppp,    Pd, Pg4Z, Pn)
FAST(BreakBPM,        (P), 0x25904010, sve_brkb_ppp,    Pd, Pg4M, Pn)
FAST(BreakNextPZ,     (P), 0x25184000, sve_brkn_ppp,    Pdm, Pg4Z, Pn)
FAST(BreakNextFlgPZ,  (P), 0x25584000, sve_brkns_ppp,   Pdm, Pg4Z, Pn)
FAST(BreakPrevBPZ,    (P), 0x2500c010, sve_brkpb_pppp,  Pd, Pg4Z, Pn, Pm)
FAST(BreakPrevBFlgPZ, (P), 0x2540c010, sve_brkpbs_pppp, Pd, Pg4Z, Pn, Pm)

// The first-fault register.
FAST(ReadFFSRP,  (P), 0x2519f000, sve_rdffr_p,  Pd)
FAST(ActualP,    (P), 0x2518f000, sve_rdffr_pp, Pd, PgAt5Z)
FAST(WriteFFSRP, (P), 0x25289000, sve_wrffr_p,  Pn)
FAST(ClearFFSR,  (P), 0x252c9000, sve_setffr)

// clang-format on
