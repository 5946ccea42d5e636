// Address generation.
#include "sve/decode/row.h"
#include "sve/fast/integer_unpredicated.h"
#include "sve/model/integer.h"

// clang-format off
ROW("ADR Zd.D, [Zn.D, Zm.D, SXTW]",    LEA1XVV, (U64), 0x0420a000, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, SXTW #1]", LEA2XVV, (U64), 0x0420a400, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, SXTW #2]", LEA4XVV, (U64), 0x0420a800, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, SXTW #3]", LEA8XVV, (U64), 0x0420ac00, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, UXTW]",    LEA1YVV, (U64), 0x0460a000, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, UXTW #1]", LEA2YVV, (U64), 0x0460a400, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, UXTW #2]", LEA4YVV, (U64), 0x0460a800, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, UXTW #3]", LEA8YVV, (U64), 0x0460ac00, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.S, [Zn.S, Zm.S]",          LEA1VV,  (U32), 0x04a0a000, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.S, [Zn.S, Zm.S, LSL #1]",  LEA2VV,  (U32), 0x04a0a400, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.S, [Zn.S, Zm.S, LSL #2]",  LEA4VV,  (U32), 0x04a0a800, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.S, [Zn.S, Zm.S, LSL #3]",  LEA8VV,  (U32), 0x04a0ac00, MODEL, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D]",          LEA1VV,  (U64), 0x04e0a000, FAST,  sve_adr_scaled_zzz, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, LSL #1]",  LEA2VV,  (U64), 0x04e0a400, FAST,  sve_adr_scaled_zzz, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, LSL #2]",  LEA4VV,  (U64), 0x04e0a800, FAST,  sve_adr_scaled_zzz, Zd, Zn, Zm)
ROW("ADR Zd.D, [Zn.D, Zm.D, LSL #3]",  LEA8VV,  (U64), 0x04e0ac00, FAST,  sve_adr_scaled_zzz, Zd, Zn, Zm)
// clang-format on
