// Bitwise logical, unpredicated, and with a bitmask immediate.
#include "sve/decode/row.h"
#include "sve/fast/integer_unpredicated.h"
#include "sve/fast/move.h"

// clang-format off
ROW("AND Zd.D, Zn.D, Zm.D",          AndVVX,   (U64), 0x04203000, FAST, sve_and_zzz, Zd, Zn, Zm)
ROW("ORR Zd.D, Zn.D, Zm.D",          OrVVX,    (U64), 0x04603000, FAST, sve_orr_zzz, Zd, Zn, Zm)
ROW("EOR Zd.D, Zn.D, Zm.D",          XorVVX,   (U64), 0x04a03000, FAST, sve_eor_zzz, Zd, Zn, Zm)
ROW("BIC Zd.D, Zn.D, Zm.D",          BicVVX,   (U64), 0x04e03000, FAST, sve_bic_zzz, Zd, Zn, Zm)
ROW("ORR Zdn.T, Zdn.T, #BitmaskImm", OrVIX,    (U64), 0x05000000, FAST, sve_orr_zi, Zdn, BitmaskImm)
ROW("EOR Zdn.T, Zdn.T, #BitmaskImm", XorVIX,   (U64), 0x05400000, FAST, sve_eor_zi, Zdn, BitmaskImm)
ROW("AND Zdn.T, Zdn.T, #BitmaskImm", AndVIX,   (U64), 0x05800000, FAST, sve_and_zi, Zdn, BitmaskImm)
ROW("DUPM Zd.T, #BitmaskImm",        DupMaskI, (S64), 0x05c00000, FAST, sve_dupm_zi, Zd, BitmaskImm)
// clang-format on
