// Index generation.
#include "sve/decode/row.h"
#include "sve/fast/count_while.h"

// clang-format off
ROW("INDEX Zd.T, #SImm5At5, #SImm5At16", IndexII, (S8, S16, S32, S64), sized(0x04204000), FAST, sve_index_zii, Zd, SImm5At5, SImm5At16)
ROW("INDEX Zd.T, Rn, #SImm5At16",        IndexSI, (S8, S16, S32, S64), sized(0x04204400), FAST, sve_index_zri, Zd, Rn, SImm5At16)
ROW("INDEX Zd.T, #SImm5At5, Rm",         IndexIS, (S8, S16, S32, S64), sized(0x04204800), FAST, sve_index_zir, Zd, SImm5At5, Rm)
ROW("INDEX Zd.T, Rn, Rm",                IndexSS, (S8, S16, S32, S64), sized(0x04204c00), FAST, sve_index_zrr, Zd, Rn, Rm)
// clang-format on
