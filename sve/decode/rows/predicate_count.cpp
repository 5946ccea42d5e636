// Predicate counts, and counting by them.
#include "sve/decode/row.h"
#include "sve/fast/count.h"
#include "sve/model/counting.h"

// clang-format off
ROW("CNTP Xd, Pg4, Pn.T",       SCountP,        (U8, U16, U32, U64), sized(0x25208000), FAST,  sve_cntp_rpp, Xd, Pg4, Pn)
ROW("SQINCP Zdn.T, PgAt5.T",    QIncrCountPV,   (S16, S32, S64),     sized(0x25288000), MODEL, Zdn, PgAt5, OldZ)
ROW("SQINCP Xdn, PgAt5.T, Wdn", QIncrSCount4PS, (S8, S16, S32, S64), sized(0x25288800), MODEL, SWdn, PgAt5, OldW)
ROW("SQINCP Xdn, PgAt5.T",      QIncrSCount8PS, (S8, S16, S32, S64), sized(0x25288c00), MODEL, Xdn, PgAt5, OldX)
ROW("UQINCP Zdn.T, PgAt5.T",    QIncrCountPV,   (U16, U32, U64),     sized(0x25298000), MODEL, Zdn, PgAt5, OldZ)
ROW("UQINCP Wdn, PgAt5.T",      QIncrSCount4PS, (U8, U16, U32, U64), sized(0x25298800), MODEL, Wdn, PgAt5, OldW)
ROW("UQINCP Xdn, PgAt5.T",      QIncrSCount8PS, (U8, U16, U32, U64), sized(0x25298c00), MODEL, Xdn, PgAt5, OldX)
ROW("SQDECP Zdn.T, PgAt5.T",    QDecrCountPV,   (S16, S32, S64),     sized(0x252a8000), MODEL, Zdn, PgAt5, OldZ)
ROW("SQDECP Xdn, PgAt5.T, Wdn", QDecrSCount4PS, (S8, S16, S32, S64), sized(0x252a8800), MODEL, SWdn, PgAt5, OldW)
ROW("SQDECP Xdn, PgAt5.T",      QDecrSCount8PS, (S8, S16, S32, S64), sized(0x252a8c00), MODEL, Xdn, PgAt5, OldX)
ROW("UQDECP Zdn.T, PgAt5.T",    QDecrCountPV,   (U16, U32, U64),     sized(0x252b8000), MODEL, Zdn, PgAt5, OldZ)
ROW("UQDECP Wdn, PgAt5.T",      QDecrSCount4PS, (U8, U16, U32, U64), sized(0x252b8800), MODEL, Wdn, PgAt5, OldW)
ROW("UQDECP Xdn, PgAt5.T",      QDecrSCount8PS, (U8, U16, U32, U64), sized(0x252b8c00), MODEL, Xdn, PgAt5, OldX)
ROW("INCP Zdn.T, PgAt5.T",      IncrCountPV,    (U16, U32, U64),     sized(0x252c8000), MODEL, Zdn, PgAt5, OldZ)
ROW("INCP Xdn, Pn.T",           IncrSCountPS,   (U8, U16, U32, U64), sized(0x252c8800), FAST,  sve_incp_rp, Xdn, Pn)
ROW("DECP Zdn.T, PgAt5.T",      DecrCountPV,    (U16, U32, U64),     sized(0x252d8000), MODEL, Zdn, PgAt5, OldZ)
ROW("DECP Xdn, PgAt5.T",        DecrSCountPS,   (U8, U16, U32, U64), sized(0x252d8800), MODEL, Xdn, PgAt5, OldX)
// clang-format on
