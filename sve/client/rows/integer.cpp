// Integer arithmetic, logic and shifts.
#include "sve/client/stub.h"
#include "sve/fast/integer.h"

// clang-format off
FAST_SIZED(AddVVM, (U8, U16, U32, U64), 0x04000000, sve_add_zpz, Zdn, PgM, Zm5)
// clang-format on
