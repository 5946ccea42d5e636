// Permutes of vectors, interleaving.
#include "sve/decode/row.h"
#include "sve/fast/permute.h"

// clang-format off
ROW("ZIP1 Zd.T, Zn.T, Zm.T", Zip1VV, (U8, U16, U32, U64), sized(0x05206000), FAST, sve_zip1_zzz, Zd, Zn, Zm)
ROW("ZIP2 Zd.T, Zn.T, Zm.T", Zip2VV, (U8, U16, U32, U64), sized(0x05206400), FAST, sve_zip2_zzz, Zd, Zn, Zm)
ROW("UZP1 Zd.T, Zn.T, Zm.T", Uzp1VV, (U8, U16, U32, U64), sized(0x05206800), FAST, sve_uzp1_zzz, Zd, Zn, Zm)
ROW("UZP2 Zd.T, Zn.T, Zm.T", Uzp2VV, (U8, U16, U32, U64), sized(0x05206c00), FAST, sve_uzp2_zzz, Zd, Zn, Zm)
ROW("TRN1 Zd.T, Zn.T, Zm.T", Trn1VV, (U8, U16, U32, U64), sized(0x05207000), FAST, sve_trn1_zzz, Zd, Zn, Zm)
ROW("TRN2 Zd.T, Zn.T, Zm.T", Trn2VV, (U8, U16, U32, U64), sized(0x05207400), FAST, sve_trn2_zzz, Zd, Zn, Zm)
// clang-format on
