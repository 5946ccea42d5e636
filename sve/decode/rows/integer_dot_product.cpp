// Integer dot products, by vectors and by indexed elements.
#include "sve/decode/row.h"
#include "sve/model/integer.h"

// clang-format off
ROW("SDOT Zda.S, Zn.B, Zm.B",             DotVVVX,  (S32), 0x44800000, MODEL, Zda, Zn, Zm, OldZ)
ROW("UDOT Zda.S, Zn.B, Zm.B",             DotVVVX,  (U32), 0x44800400, MODEL, Zda, Zn, Zm, OldZ)
ROW("SDOT Zda.S, Zn.B, Zm3.B[IndexAt19]", DotVVVIX, (S32), 0x44a00000, MODEL, Zda, Zn, Zm3, OldZ, IndexAt19)
ROW("UDOT Zda.S, Zn.B, Zm3.B[IndexAt19]", DotVVVIX, (U32), 0x44a00400, MODEL, Zda, Zn, Zm3, OldZ, IndexAt19)
ROW("SDOT Zda.D, Zn.H, Zm.H",             DotVVVX,  (S64), 0x44c00000, MODEL, Zda, Zn, Zm, OldZ)
ROW("UDOT Zda.D, Zn.H, Zm.H",             DotVVVX,  (U64), 0x44c00400, MODEL, Zda, Zn, Zm, OldZ)
ROW("SDOT Zda.D, Zn.H, Zm4.H[IndexAt20]", DotVVVIX, (S64), 0x44e00000, MODEL, Zda, Zn, Zm4, OldZ, IndexAt20)
ROW("UDOT Zda.D, Zn.H, Zm4.H[IndexAt20]", DotVVVIX, (U64), 0x44e00400, MODEL, Zda, Zn, Zm4, OldZ, IndexAt20)
// clang-format on
