// Shifts in the reference model. An immediate's size stands in bits of the shift amount's field.
#include "sve/client/bridge.h"
#include "sve/model/integer.h"

// clang-format off
MODEL_SIZED(ShlRVVM, (U8, U16, U32, U64), 0x04178000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShrRVVM, (S8, S16, S32, S64), 0x04148000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShrRVVM, (U8, U16, U32, U64), 0x04158000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShlVWM, (U8, U16, U32), 0x041b8000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShrVWM, (S8, S16, S32), 0x04188000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShrVWM, (U8, U16, U32), 0x04198000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ShlVWX, (U8, U16, U32), 0x04208c00, Zd, Zn, Zm)
MODEL_SIZED(ShrVWX, (S8, S16, S32), 0x04208000, Zd, Zn, Zm)
MODEL_SIZED(ShrVWX, (U8, U16, U32), 0x04208400, Zd, Zn, Zm)

MODEL(ShrVIM, (U8), 0x04018100, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrVIM, (U16), 0x04018200, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrVIM, (U32), 0x04418000, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrVIM, (U64), 0x04818000, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrDVIM, (S8), 0x04048100, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrDVIM, (S16), 0x04048200, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrDVIM, (S32), 0x04448000, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrDVIM, (S64), 0x04848000, Zd, OldZ, Pg, RightShiftAt5)
MODEL(ShrVIX, (U8), 0x04289400, Zd, Zn, RightShiftAt16)
MODEL(ShrVIX, (U16), 0x04309400, Zd, Zn, RightShiftAt16)
MODEL(ShrVIX, (U32), 0x04609400, Zd, Zn, RightShiftAt16)
MODEL(ShrVIX, (U64), 0x04a09400, Zd, Zn, RightShiftAt16)
// clang-format on
