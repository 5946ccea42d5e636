// Predicate logical operations.
#include "sve/decode/row.h"
#include "sve/fast/predicate.h"
#include "sve/model/predicate_ops.h"

// clang-format off
ROW("AND Pd.B, Pg4/Z, Pn.B, Pm.B",   AndPPZ,     (P), 0x25004000, FAST,  sve_and_pppp, Pd, Pg4Z, Pn, Pm)
ROW("BIC Pd.B, Pg4/Z, Pn.B, Pm.B",   BicPPZ,     (P), 0x25004010, FAST,  sve_bic_pppp, Pd, Pg4Z, Pn, Pm)
ROW("EOR Pd.B, Pg4/Z, Pn.B, Pm.B",   XorPPZ,     (P), 0x25004200, FAST,  sve_eor_pppp, Pd, Pg4Z, Pn, Pm)
ROW("SEL Pd.B, Pg4, Pn.B, Pm.B",     SelPP,      (P), 0x25004210, FAST,  sve_sel_pppp, Pd, Pg4, Pn, Pm)
ROW("ANDS Pd.B, Pg4/Z, Pn.B, Pm.B",  AndFlgPPZ,  (P), 0x25404000, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("BICS Pd.B, Pg4/Z, Pn.B, Pm.B",  BicFlgPPZ,  (P), 0x25404010, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("EORS Pd.B, Pg4/Z, Pn.B, Pm.B",  XorFlgPPZ,  (P), 0x25404200, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("ORR Pd.B, Pg4/Z, Pn.B, Pm.B",   OrPPZ,      (P), 0x25804000, FAST,  sve_orr_pppp, Pd, Pg4Z, Pn, Pm)
ROW("ORN Pd.B, Pg4/Z, Pn.B, Pm.B",   OrNPPZ,     (P), 0x25804010, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("NOR Pd.B, Pg4/Z, Pn.B, Pm.B",   NorPPZ,     (P), 0x25804200, FAST,  sve_nor_pppp, Pd, Pg4Z, Pn, Pm)
ROW("NAND Pd.B, Pg4/Z, Pn.B, Pm.B",  NandPPZ,    (P), 0x25804210, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("ORRS Pd.B, Pg4/Z, Pn.B, Pm.B",  OrFlgPPZ,   (P), 0x25c04000, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("ORNS Pd.B, Pg4/Z, Pn.B, Pm.B",  OrNFlgPPZ,  (P), 0x25c04010, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("NORS Pd.B, Pg4/Z, Pn.B, Pm.B",  NorFlgPPZ,  (P), 0x25c04200, MODEL, Pd, Pg4Z, Pn, Pm)
ROW("NANDS Pd.B, Pg4/Z, Pn.B, Pm.B", NandFlgPPZ, (P), 0x25c04210, MODEL, Pd, Pg4Z, Pn, Pm)
// clang-format on
