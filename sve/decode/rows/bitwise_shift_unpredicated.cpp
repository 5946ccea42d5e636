// Bitwise shifts, unpredicated.
#include "sve/decode/row.h"
#include "sve/fast/integer_unpredicated.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ASR Zd.T, Zn.T, Zm.D",            ShrVWX, (S8, S16, S32), sized(0x04208000), MODEL, Zd, Zn, Zm)
ROW("LSR Zd.T, Zn.T, Zm.D",            ShrVWX, (U8, U16, U32), sized(0x04208400), MODEL, Zd, Zn, Zm)
ROW("LSL Zd.T, Zn.T, Zm.D",            ShlVWX, (U8, U16, U32), sized(0x04208c00), MODEL, Zd, Zn, Zm)
ROW("ASR Zd.B, Zn.B, #RightShiftAt16", ShrVIX, (S8),           0x04289000,        FAST,  sve_asr_zzi, Zd, Zn, RightShiftAt16)
ROW("LSR Zd.B, Zn.B, #RightShiftAt16", ShrVIX, (U8),           0x04289400,        MODEL, Zd, Zn, RightShiftAt16)
ROW("LSL Zd.B, Zn.B, #LeftShiftAt16",  ShlVIX, (U8),           0x04289c00,        FAST,  sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
ROW("ASR Zd.H, Zn.H, #RightShiftAt16", ShrVIX, (S16),          0x04309000,        FAST,  sve_asr_zzi, Zd, Zn, RightShiftAt16)
ROW("LSR Zd.H, Zn.H, #RightShiftAt16", ShrVIX, (U16),          0x04309400,        MODEL, Zd, Zn, RightShiftAt16)
ROW("LSL Zd.H, Zn.H, #LeftShiftAt16",  ShlVIX, (U16),          0x04309c00,        FAST,  sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
ROW("ASR Zd.S, Zn.S, #RightShiftAt16", ShrVIX, (S32),          0x04609000,        FAST,  sve_asr_zzi, Zd, Zn, RightShiftAt16)
ROW("LSR Zd.S, Zn.S, #RightShiftAt16", ShrVIX, (U32),          0x04609400,        MODEL, Zd, Zn, RightShiftAt16)
ROW("LSL Zd.S, Zn.S, #LeftShiftAt16",  ShlVIX, (U32),          0x04609c00,        FAST,  sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
ROW("ASR Zd.D, Zn.D, #RightShiftAt16", ShrVIX, (S64),          0x04a09000,        FAST,  sve_asr_zzi, Zd, Zn, RightShiftAt16)
ROW("LSR Zd.D, Zn.D, #RightShiftAt16", ShrVIX, (U64),          0x04a09400,        MODEL, Zd, Zn, RightShiftAt16)
ROW("LSL Zd.D, Zn.D, #LeftShiftAt16",  ShlVIX, (U64),          0x04a09c00,        FAST,  sve_lsl_zzi, Zd, Zn, LeftShiftAt16)
// clang-format on
