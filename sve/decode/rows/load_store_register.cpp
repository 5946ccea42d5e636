// Loads and stores of whole registers.
#include "sve/decode/row.h"
#include "sve/fast/contiguous.h"

// clang-format off
ROW("LDR Pt, [Base{, #SImm9, MUL VL}]", FillSI,  (P),   0x85800000, FAST, sve_ldr_pri, Pt, Base, SImm9)
ROW("LDR Zt, [Base{, #SImm9, MUL VL}]", FillSI,  (U64), 0x85804000, FAST, sve_ldr_zri, Zt, Base, SImm9)
ROW("STR Pt, [Base{, #SImm9, MUL VL}]", SpillSI, (P),   0xe5800000, FAST, sve_str_pri, Pt, Base, SImm9)
ROW("STR Zt, [Base{, #SImm9, MUL VL}]", SpillSI, (U64), 0xe5804000, FAST, sve_str_zri, Zt, Base, SImm9)
// clang-format on
