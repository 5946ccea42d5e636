// Reads and writes of the first-fault register.
#include "sve/decode/row.h"
#include "sve/fast/predicate.h"
#include "sve/model/predicate_ops.h"

// clang-format off
ROW("RDFFR Pd.B, PgAt5/Z",  ActualP,    (P), 0x2518f000, FAST,  sve_rdffr_pp, Pd, PgAt5Z)
ROW("RDFFR Pd.B",           ReadFFSRP,  (P), 0x2519f000, FAST,  sve_rdffr_p, Pd)
ROW("WRFFR Pn.B",           WriteFFSRP, (P), 0x25289000, FAST,  sve_wrffr_p, Pn)
ROW("SETFFR",               ClearFFSR,  (P), 0x252c9000, FAST,  sve_setffr)
ROW("RDFFRS Pd.B, PgAt5/Z", ActualFlgP, (P), 0x2558f000, MODEL, Pd, PgAt5Z)
// clang-format on
