// Element moves and predicate permutes in the reference model.
#include "sve/client/bridge.h"
#include "sve/model/permute.h"

// clang-format off
MODEL_SIZED(LastAV, (U8, U16, U32, U64), 0x0520a000, Rd, Pg, Zn)
MODEL_SIZED(LastAV, (B8, H16, F32, D64), 0x05228000, Vd, Pg, Zn)
MODEL_SIZED(CondXASV, (U8, U16, U32, U64), 0x0530a000, Rdn, Pg, OldR, Zn)
MODEL_SIZED(CondXASV, (B8, H16, F32, D64), 0x052a8000, Vd, Pg, OldV, Zn)
MODEL_SIZED(CondXBSV, (B8, H16, F32, D64), 0x052b8000, Vd, Pg, OldV, Zn)
MODEL_SIZED(VCondXAVV, (U8, U16, U32, U64), 0x05288000, Zd, Pg, OldZ, Zn)
MODEL_SIZED(VCondXBVV, (U8, U16, U32, U64), 0x05298000, Zd, Pg, OldZ, Zn)

MODEL_SIZED(InsertS, (U8, U16, U32, U64), 0x05243800, Zd, OldZ, Rn)
MODEL_SIZED(InsertS, (B8, H16, F32, D64), 0x05343800, Zd, OldZ, Vn)
MODEL_SIZED(SpliceVV, (U8, U16, U32, U64), 0x052c8000, Zd, Pg, OldZ, Zn)
MODEL_SIZED(CompressVV, (U32, U64), 0x05218000, Zd, Pg, Zn)
MODEL_SIZED(DupIM, (F16, F32, D64), 0x0510c000, Zd, OldZ, PgAt16M, FPImm8)
MODEL_SIZED(UnpackLoV, (S16, S32), 0x05303800, Zd, Zn)
MODEL_SIZED(UnpackHiV, (S16, S32), 0x05313800, Zd, Zn)

MODEL_SIZED(Trn1PP, (P8, P16, P32, P64), 0x05205000, Pd, Pn, Pm)
MODEL_SIZED(Trn2PP, (P8, P16, P32, P64), 0x05205400, Pd, Pn, Pm)
MODEL_SIZED(Uzp2PP, (P8, P16, P32, P64), 0x05204c00, Pd, Pn, Pm)
// clang-format on
