// Floating-point multiply and multiply-add by indexed elements.
#include "sve/decode/row.h"
#include "sve/model/floating_point.h"

// clang-format off
ROW("FMLA Zda.H, Zn.H, Zm3.H[IndexAt22]",               FMAVVVIX,   (F16), 0x64200000, MODEL, Zda, Zn, Zm3, OldZ, IndexAt22)
ROW("FMLS Zda.H, Zn.H, Zm3.H[IndexAt22]",               FMSVVVIX,   (F16), 0x64200400, MODEL, Zda, Zn, Zm3, OldZ, IndexAt22)
ROW("FMUL Zd.H, Zn.H, Zm3.H[IndexAt22]",                MulVVIX,    (F16), 0x64202000, MODEL, Zd, Zn, Zm3, IndexAt22)
ROW("FMLA Zda.S, Zn.S, Zm3.S[IndexAt19]",               FMAVVVIX,   (F32), 0x64a00000, MODEL, Zda, Zn, Zm3, OldZ, IndexAt19)
ROW("FMLS Zda.S, Zn.S, Zm3.S[IndexAt19]",               FMSVVVIX,   (F32), 0x64a00400, MODEL, Zda, Zn, Zm3, OldZ, IndexAt19)
ROW("FCMLA Zda.H, Zn.H, Zm3.H[IndexAt19], #RotAt10*90", FCMLAVVVIX, (F16), 0x64a01000, MODEL, Zda, Zn, Zm3, OldZ, RotAt10, IndexAt19)
ROW("FMUL Zd.S, Zn.S, Zm3.S[IndexAt19]",                MulVVIX,    (F32), 0x64a02000, MODEL, Zd, Zn, Zm3, IndexAt19)
ROW("FMLA Zda.D, Zn.D, Zm4.D[IndexAt20]",               FMAVVVIX,   (D64), 0x64e00000, MODEL, Zda, Zn, Zm4, OldZ, IndexAt20)
ROW("FMLS Zda.D, Zn.D, Zm4.D[IndexAt20]",               FMSVVVIX,   (D64), 0x64e00400, MODEL, Zda, Zn, Zm4, OldZ, IndexAt20)
ROW("FCMLA Zda.S, Zn.S, Zm4.S[IndexAt20], #RotAt10*90", FCMLAVVVIX, (F32), 0x64e01000, MODEL, Zda, Zn, Zm4, OldZ, RotAt10, IndexAt20)
ROW("FMUL Zd.D, Zn.D, Zm4.D[IndexAt20]",                MulVVIX,    (D64), 0x64e02000, MODEL, Zd, Zn, Zm4, IndexAt20)
// clang-format on
