// Floating-point compares and conversions in the reference model.
#include "sve/client/bridge.h"
#include "sve/model/floating_point.h"

// clang-format off
MODEL_SIZED(CmpGEVVZ, (F16), 0x65004000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpGTVVZ, (F16), 0x65004010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpEQVVZ, (F16), 0x65006000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpNEVVZ, (F16), 0x65006010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(CmpUNVVZ, (F16), 0x6500c000, Pd, PgZ, Zn, Zm)
MODEL_SIZED(AcGEVVZ, (F16, F32, D64), 0x6500c010, Pd, PgZ, Zn, Zm)
MODEL_SIZED(AcGTVVZ, (F16, F32, D64), 0x6500e010, Pd, PgZ, Zn, Zm)

MODEL_SIZED(CmpGEV0Z, (F16), 0x65102000, Pd, PgZ, Zn)
MODEL_SIZED(CmpGTV0Z, (F16), 0x65102010, Pd, PgZ, Zn)
MODEL_SIZED(CmpLTV0Z, (F16), 0x65112000, Pd, PgZ, Zn)
MODEL_SIZED(CmpLEV0Z, (F16), 0x65112010, Pd, PgZ, Zn)
MODEL_SIZED(CmpEQV0Z, (F16), 0x65122000, Pd, PgZ, Zn)
MODEL_SIZED(CmpNEV0Z, (F16, F32, D64), 0x65132000, Pd, PgZ, Zn)

MODEL(TruncFVM, (H32), 0x6588a000, Zd, OldZ, Pg, Zn)
MODEL(ExtndHVM, (F32), 0x6589a000, Zd, OldZ, Pg, Zn)
MODEL(TruncDVM, (H64), 0x65c8a000, Zd, OldZ, Pg, Zn)
MODEL(ExtndHVM, (D64), 0x65c9a000, Zd, OldZ, Pg, Zn)

MODEL(FromS2VM, (F16), 0x6552a000, Zd, OldZ, Pg, Zn)
MODEL(FromU2VM, (F16), 0x6553a000, Zd, OldZ, Pg, Zn)
MODEL(FromS4VM, (F16), 0x6554a000, Zd, OldZ, Pg, Zn)
MODEL(FromU4VM, (F16), 0x6555a000, Zd, OldZ, Pg, Zn)
MODEL(FromS8VM, (F16), 0x6556a000, Zd, OldZ, Pg, Zn)
MODEL(FromU8VM, (F16), 0x6557a000, Zd, OldZ, Pg, Zn)
MODEL(FromU8VM, (F64), 0x65d5a000, Zd, OldZ, Pg, Zn)

MODEL(_2FromHVM, (S16), 0x655aa000, Zd, OldZ, Pg, Zn)
MODEL(_2FromHVM, (U16), 0x655ba000, Zd, OldZ, Pg, Zn)
MODEL(_4FromHVM, (S32), 0x655ca000, Zd, OldZ, Pg, Zn)
MODEL(_4FromHVM, (U32), 0x655da000, Zd, OldZ, Pg, Zn)
MODEL(_8FromHVM, (S64), 0x655ea000, Zd, OldZ, Pg, Zn)
MODEL(_8FromHVM, (U64), 0x655fa000, Zd, OldZ, Pg, Zn)
MODEL(_4FromFVM, (U32), 0x659da000, Zd, OldZ, Pg, Zn)
MODEL(_8FromFVM, (U64), 0x65dda000, Zd, OldZ, Pg, Zn)
// clang-format on
