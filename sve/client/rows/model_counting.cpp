// Element counts and the arithmetic with them in the reference model.
#include "sve/client/bridge.h"
#include "sve/model/counting.h"

// clang-format off
MODEL_SIZED(CountVLSI, (U8, U16, U32, U64), 0x0420e000, Xd, Pattern, UImm4At16)

MODEL_SIZED(QIncrVL4SI, (S8, S16, S32, S64), 0x0420f000, SWdn, OldW, Pattern, UImm4At16)
MODEL_SIZED(QIncrVL4SI, (U8, U16, U32, U64), 0x0420f400, Wdn, OldW, Pattern, UImm4At16)
MODEL_SIZED(QDecrVL4SI, (S8, S16, S32, S64), 0x0420f800, SWdn, OldW, Pattern, UImm4At16)
MODEL_SIZED(QDecrVL4SI, (U16, U32, U64), 0x0420fc00, Wdn, OldW, Pattern, UImm4At16)
MODEL_SIZED(QIncrVL8SI, (S8, S16, S32, S64), 0x0430f000, Xdn, OldX, Pattern, UImm4At16)
MODEL_SIZED(QIncrVL8SI, (U8, U16, U32, U64), 0x0430f400, Xdn, OldX, Pattern, UImm4At16)
MODEL_SIZED(QDecrVL8SI, (S8, S16, S32, S64), 0x0430f800, Xdn, OldX, Pattern, UImm4At16)
MODEL_SIZED(QDecrVL8SI, (U16, U32, U64), 0x0430fc00, Xdn, OldX, Pattern, UImm4At16)

MODEL_SIZED(QIncrVLVI, (S16, S32, S64), 0x0420c000, Zd, OldZ, Pattern, UImm4At16)
MODEL_SIZED(QIncrVLVI, (U16, U32, U64), 0x0420c400, Zd, OldZ, Pattern, UImm4At16)
MODEL_SIZED(QDecrVLVI, (S16, S32, S64), 0x0420c800, Zd, OldZ, Pattern, UImm4At16)
MODEL_SIZED(QDecrVLVI, (U16, U32, U64), 0x0420cc00, Zd, OldZ, Pattern, UImm4At16)

MODEL_SIZED(DecrSCountPS, (U8, U16, U32, U64), 0x252d8800, Xdn, PgAt5, OldX)
MODEL_SIZED(QIncrSCount4PS, (S8, S16, S32, S64), 0x25288800, SWdn, PgAt5, OldW)
MODEL_SIZED(QIncrSCount4PS, (U8, U16, U32, U64), 0x25298800, Wdn, PgAt5, OldW)
MODEL_SIZED(QDecrSCount4PS, (S8, S16, S32, S64), 0x252a8800, SWdn, PgAt5, OldW)
MODEL_SIZED(QDecrSCount4PS, (U8, U16, U32, U64), 0x252b8800, Wdn, PgAt5, OldW)
MODEL_SIZED(QIncrSCount8PS, (S8, S16, S32, S64), 0x25288c00, Xdn, PgAt5, OldX)
MODEL_SIZED(QIncrSCount8PS, (U8, U16, U32, U64), 0x25298c00, Xdn, PgAt5, OldX)
MODEL_SIZED(QDecrSCount8PS, (S8, S16, S32, S64), 0x252a8c00, Xdn, PgAt5, OldX)
MODEL_SIZED(QDecrSCount8PS, (U8, U16, U32, U64), 0x252b8c00, Xdn, PgAt5, OldX)

MODEL_SIZED(IncrCountPV, (U16, U32, U64), 0x252c8000, Zd, PgAt5, OldZ)
MODEL_SIZED(DecrCountPV, (U16, U32, U64), 0x252d8000, Zd, PgAt5, OldZ)
MODEL_SIZED(QIncrCountPV, (S16, S32, S64), 0x25288000, Zd, PgAt5, OldZ)
MODEL_SIZED(QIncrCountPV, (U16, U32, U64), 0x25298000, Zd, PgAt5, OldZ)
MODEL_SIZED(QDecrCountPV, (S16, S32, S64), 0x252a8000, Zd, PgAt5, OldZ)
MODEL_SIZED(QDecrCountPV, (U16, U32, U64), 0x252b8000, Zd, PgAt5, OldZ)
// clang-format on
