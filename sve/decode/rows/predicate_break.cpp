// Propagating and partitioning breaks.
#include "sve/fast/predicate_break.h"
#include "sve/decode/row.h"
#include "sve/model/predicate_ops.h"

// clang-format off
ROW("BRKPA Pd.B, Pg4/Z, Pn.B, Pm.B",   BreakPrevAPZ,    (P), 0x2500c000, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("BRKPB Pd.B, Pg4/Z, Pn.B, Pm.B",   BreakPrevBPZ,    (P), 0x2500c010, FAST,  sve_brkpb_pppp, Pd, Pg4Z, Pn, Pm)
ROW("BRKA Pd.B, Pg4/Z, Pn.B",          BreakAPZ,        (P), 0x25104000, FAST,  sve_brka_ppp, Pd, Pg4Z, Pn)
ROW("BRKA Pd.B, Pg4/M, Pn.B",          BreakAPM,        (P), 0x25104010, FAST,  sve_brka_ppp, Pd, Pg4M, Pn)
ROW("BRKN Pdm.B, Pg4/Z, Pn.B, Pdm.B",  BreakNextPZ,     (P), 0x25184000, FAST,  sve_brkn_ppp, Pdm, Pg4Z, Pn)
ROW("BRKPAS Pd.B, Pg4/Z, Pn.B, Pm.B",  BreakPrevAFlgPZ, (P), 0x2540c000, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("BRKPBS Pd.B, Pg4/Z, Pn.B, Pm.B",  BreakPrevBFlgPZ, (P), 0x2540c010, FAST,  sve_brkpbs_pppp, Pd, Pg4Z, Pn, Pm)
ROW("BRKAS Pd.B, Pg4/Z, Pn.B",         BreakAFlgPZ,     (P), 0x25504000, MODEL, Pd, Pg4Z, Pn)
ROW("BRKNS Pdm.B, Pg4/Z, Pn.B, Pdm.B", BreakNextFlgPZ,  (P), 0x25584000, FAST,  sve_brkns_ppp, Pdm, Pg4Z, Pn)
ROW("BRKB Pd.B, Pg4/Z, Pn.B",          BreakBPZ,        (P), 0x25904000, FAST,  sve_brkb_ppp, Pd, Pg4Z, Pn)
ROW("BRKB Pd.B, Pg4/M, Pn.B",          BreakBPM,        (P), 0x25904010, FAST,  sve_brkb_ppp, Pd, Pg4M, Pn)
ROW("BRKBS Pd.B, Pg4/Z, Pn.B",         BreakBFlgPZ,     (P), 0x25d04000, MODEL, Pd, Pg4Z, Pn)
// clang-format on
