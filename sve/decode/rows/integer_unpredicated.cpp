// Integer add and subtract, unpredicated.
#include "sve/fast/integer_unpredicated.h"
#include "sve/decode/row.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ADD Zd.T, Zn.T, Zm.T",   AddVVX,  (U8, U16, U32, U64), sized(0x04200000), FAST,  sve_add_zzz, Zd, Zn, Zm)
ROW("SUB Zd.T, Zn.T, Zm.T",   SubVVX,  (U8, U16, U32, U64), sized(0x04200400), FAST,  sve_sub_zzz, Zd, Zn, Zm)
ROW("SQADD Zd.T, Zn.T, Zm.T", QAddVVX, (S8, S16, S32, S64), sized(0x04201000), MODEL, Zd, Zn, Zm)
ROW("UQADD Zd.T, Zn.T, Zm.T", QAddVVX, (U8, U16, U32, U64), sized(0x04201400), MODEL, Zd, Zn, Zm)
ROW("SQSUB Zd.T, Zn.T, Zm.T", QSubVVX, (S8, S16, S32, S64), sized(0x04201800), MODEL, Zd, Zn, Zm)
ROW("UQSUB Zd.T, Zn.T, Zm.T", QSubVVX, (U8, U16, U32, U64), sized(0x04201c00), MODEL, Zd, Zn, Zm)
// clang-format on
