// Permutes of predicates.
#include "sve/decode/row.h"
#include "sve/fast/permute.h"
#include "sve/model/permute.h"

// clang-format off
ROW("ZIP1 Pd.T, Pn.T, Pm.T", Zip1PP,    (P8, P16, P32, P64), sized(0x05204000), FAST,  sve_zip1_ppp, Pd, Pn, Pm)
ROW("ZIP2 Pd.T, Pn.T, Pm.T", Zip2PP,    (P8, P16, P32, P64), sized(0x05204400), FAST,  sve_zip2_ppp, Pd, Pn, Pm)
ROW("UZP1 Pd.T, Pn.T, Pm.T", Uzp1PP,    (P8, P16, P32, P64), sized(0x05204800), FAST,  sve_uzp1_ppp, Pd, Pn, Pm)
ROW("UZP2 Pd.T, Pn.T, Pm.T", Uzp2PP,    (P8, P16, P32, P64), sized(0x05204c00), MODEL, Pd, Pn, Pm)
ROW("TRN1 Pd.T, Pn.T, Pm.T", Trn1PP,    (P8, P16, P32, P64), sized(0x05205000), MODEL, Pd, Pn, Pm)
ROW("TRN2 Pd.T, Pn.T, Pm.T", Trn2PP,    (P8, P16, P32, P64), sized(0x05205400), MODEL, Pd, Pn, Pm)
ROW("PUNPKLO Pd.H, Pn.B",    UnpackLoP, (P),                 0x05304000,        FAST,  sve_punpklo_pp, Pd, Pn)
ROW("PUNPKHI Pd.H, Pn.B",    UnpackHiP, (P),                 0x05314000,        FAST,  sve_punpkhi_pp, Pd, Pn)
ROW("REV Pd.T, Pn.T",        ReverseP,  (P8, P16, P32, P64), sized(0x05344000), FAST,  sve_rev_pp, Pd, Pn)
// clang-format on
