// Bitwise shifts, predicated.
#include "sve/decode/row.h"
#include "sve/fast/integer.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ASR Zdn.B, Pg/M, Zdn.B, #RightShiftAt5",  ShrVIM,  (S8),                0x04008100,        FAST,  sve_asr_zpi, Zdn, PgM, RightShiftAt5)
ROW("ASR Zdn.H, Pg/M, Zdn.H, #RightShiftAt5",  ShrVIM,  (S16),               0x04008200,        FAST,  sve_asr_zpi, Zdn, PgM, RightShiftAt5)
ROW("LSR Zdn.B, Pg/M, Zdn.B, #RightShiftAt5",  ShrVIM,  (U8),                0x04018100,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("LSR Zdn.H, Pg/M, Zdn.H, #RightShiftAt5",  ShrVIM,  (U16),               0x04018200,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("LSL Zdn.B, Pg/M, Zdn.B, #LeftShiftAt5",   ShlVIM,  (U8),                0x04038100,        FAST,  sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
ROW("LSL Zdn.H, Pg/M, Zdn.H, #LeftShiftAt5",   ShlVIM,  (U16),               0x04038200,        FAST,  sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
ROW("ASRD Zdn.B, Pg/M, Zdn.B, #RightShiftAt5", ShrDVIM, (S8),                0x04048100,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("ASRD Zdn.H, Pg/M, Zdn.H, #RightShiftAt5", ShrDVIM, (S16),               0x04048200,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("ASR Zdn.T, Pg/M, Zdn.T, Zm5.T",           ShrVVM,  (S8, S16, S32, S64), sized(0x04108000), FAST,  sve_asr_zpz, Zdn, PgM, Zm5)
ROW("LSR Zdn.T, Pg/M, Zdn.T, Zm5.T",           ShrVVM,  (U8, U16, U32, U64), sized(0x04118000), FAST,  sve_lsr_zpz, Zdn, PgM, Zm5)
ROW("LSL Zdn.T, Pg/M, Zdn.T, Zm5.T",           ShlVVM,  (U8, U16, U32, U64), sized(0x04138000), FAST,  sve_lsl_zpz, Zdn, PgM, Zm5)
ROW("ASRR Zdn.T, Pg/M, Zdn.T, Zm5.T",          ShrRVVM, (S8, S16, S32, S64), sized(0x04148000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("LSRR Zdn.T, Pg/M, Zdn.T, Zm5.T",          ShrRVVM, (U8, U16, U32, U64), sized(0x04158000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("LSLR Zdn.T, Pg/M, Zdn.T, Zm5.T",          ShlRVVM, (U8, U16, U32, U64), sized(0x04178000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("ASR Zdn.T, Pg/M, Zdn.T, Zm5.D",           ShrVWM,  (S8, S16, S32),      sized(0x04188000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("LSR Zdn.T, Pg/M, Zdn.T, Zm5.D",           ShrVWM,  (U8, U16, U32),      sized(0x04198000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("LSL Zdn.T, Pg/M, Zdn.T, Zm5.D",           ShlVWM,  (U8, U16, U32),      sized(0x041b8000), MODEL, Zdn, OldZ, PgM, Zm5)
ROW("ASR Zdn.S, Pg/M, Zdn.S, #RightShiftAt5",  ShrVIM,  (S32),               0x04408000,        FAST,  sve_asr_zpi, Zdn, PgM, RightShiftAt5)
ROW("LSR Zdn.S, Pg/M, Zdn.S, #RightShiftAt5",  ShrVIM,  (U32),               0x04418000,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("LSL Zdn.S, Pg/M, Zdn.S, #LeftShiftAt5",   ShlVIM,  (U32),               0x04438000,        FAST,  sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
ROW("ASRD Zdn.S, Pg/M, Zdn.S, #RightShiftAt5", ShrDVIM, (S32),               0x04448000,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("ASR Zdn.D, Pg/M, Zdn.D, #RightShiftAt5",  ShrVIM,  (S64),               0x04808000,        FAST,  sve_asr_zpi, Zdn, PgM, RightShiftAt5)
ROW("LSR Zdn.D, Pg/M, Zdn.D, #RightShiftAt5",  ShrVIM,  (U64),               0x04818000,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
ROW("LSL Zdn.D, Pg/M, Zdn.D, #LeftShiftAt5",   ShlVIM,  (U64),               0x04838000,        FAST,  sve_lsl_zpi, Zdn, PgM, LeftShiftAt5)
ROW("ASRD Zdn.D, Pg/M, Zdn.D, #RightShiftAt5", ShrDVIM, (S64),               0x04848000,        MODEL, Zdn, OldZ, PgM, RightShiftAt5)
// clang-format on
