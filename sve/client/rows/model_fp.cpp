// Floating-point operations in the reference model: all of half precision, and what the fast path
// lacks of single and double.
#include "sve/client/bridge.h"
#include "sve/model/floating_point.h"

// clang-format off
// Predicated, with the old destination as first source.
MODEL_SIZED(AddVVM, (F16), 0x65008000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(SubVVM, (F16), 0x65018000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MulVVM, (F16), 0x65028000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(SubRVVM, (F16), 0x65038000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MaxNumVVM, (F16), 0x65048000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MinNumVVM, (F16), 0x65058000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MaxVVM, (F16), 0x65068000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MinVVM, (F16, F32, D64), 0x65078000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(AbdVVM, (F16, F32, D64), 0x65088000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(ScaleVVM, (F16, F32, D64), 0x65098000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(MulXVVM, (F16, F32, D64), 0x650a8000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(DivRVVM, (F16), 0x650c8000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(DivVVM, (F16), 0x650d8000, Zd, OldZ, Pg, Zn)

// With one of two constants.
MODEL_SIZED(AddVIM, (F16), 0x65188000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(SubVIM, (F16), 0x65198000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(MulVIM, (F16), 0x651a8000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(SubRVIM, (F16), 0x651b8000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(MaxNumVIM, (F16, F32, D64), 0x651c8000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(MinNumVIM, (F16, F32, D64), 0x651d8000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(MaxVIM, (F16, F32, D64), 0x651e8000, Zd, OldZ, Pg, FPConstant)
MODEL_SIZED(MinVIM, (F16, F32, D64), 0x651f8000, Zd, OldZ, Pg, FPConstant)

// One source.
MODEL_SIZED(AbsVM, (F16), 0x041ca000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(NegVM, (F16), 0x041da000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntNVM, (F16, F32, D64), 0x6500a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntPVM, (F16, F32, D64), 0x6501a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntMVM, (F16, F32, D64), 0x6502a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntZVM, (F16, F32, D64), 0x6503a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntAVM, (F16), 0x6504a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntXVM, (F16, F32, D64), 0x6506a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(FRIntIVM, (F16, F32, D64), 0x6507a000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(RecpXVM, (F16, F32, D64), 0x650ca000, Zd, OldZ, Pg, Zn)
MODEL_SIZED(SqrtVM, (F16), 0x650da000, Zd, OldZ, Pg, Zn)

// Without a predicate.
MODEL_SIZED(AddVVX, (F16), 0x65000000, Zd, Zn, Zm)
MODEL_SIZED(SubVVX, (F16), 0x65000400, Zd, Zn, Zm)
MODEL_SIZED(MulVVX, (F16), 0x65000800, Zd, Zn, Zm)
MODEL_SIZED(TRISMULVV, (F16, F32, D64), 0x65000c00, Zd, Zn, Zm)
MODEL_SIZED(RecpSVV, (F16), 0x65001800, Zd, Zn, Zm)
MODEL_SIZED(RSqrtSVV, (F16, F32, D64), 0x65001c00, Zd, Zn, Zm)
MODEL_SIZED(RecpEV, (F16), 0x650e3000, Zd, Zn)
MODEL_SIZED(RSqrtEV, (F16, F32, D64), 0x650f3000, Zd, Zn)
MODEL_SIZED(EXPAV, (F16, F32, D64), 0x0420b800, Zd, Zn)
MODEL_SIZED(TRISSELVV, (F16, F32, D64), 0x0420b000, Zd, Zn, Zm)
MODEL_SIZED(TRIMADDVVI, (F16, F32, D64), 0x65108000, Zd, OldZ, Zn, UImm3At16)

// Fused and complex.
MODEL_SIZED(FMAVVVM, (F16), 0x65200000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FMSVVVM, (F16), 0x65202000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FNMAVVVM, (F16), 0x65204000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FNMSVVVM, (F16), 0x65206000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FMADDVVVM, (F16), 0x65208000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FMSUBVVVM, (F16), 0x6520a000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FNMADDVVVM, (F16), 0x6520c000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FNMSUBVVVM, (F16), 0x6520e000, Zd, OldZ, Pg, Zn, Zm)
MODEL_SIZED(FCADDVVM, (F16, F32, D64), 0x64008000, Zd, OldZ, Pg, Zn, RotAt16)
MODEL_SIZED(FCMLAVVVM, (F16), 0x64000000, Zd, OldZ, Pg, Zn, Zm, RotAt13)

// Indexed. Half precision leaves bit 22 to the index.
MODEL(MulVVIX, (F16), 0x64202000, Zd, Zn, Zm3, IndexAt22)
MODEL(MulVVIX, (F32), 0x64a02000, Zd, Zn, Zm3, IndexAt19)
MODEL(MulVVIX, (D64), 0x64e02000, Zd, Zn, Zm4, IndexAt20)
MODEL(FMAVVVIX, (F16), 0x64200000, Zd, Zn, Zm3, OldZ, IndexAt22)
MODEL(FMAVVVIX, (F32), 0x64a00000, Zd, Zn, Zm3, OldZ, IndexAt19)
MODEL(FMAVVVIX, (D64), 0x64e00000, Zd, Zn, Zm4, OldZ, IndexAt20)
MODEL(FMSVVVIX, (F16), 0x64200400, Zd, Zn, Zm3, OldZ, IndexAt22)
MODEL(FMSVVVIX, (F32), 0x64a00400, Zd, Zn, Zm3, OldZ, IndexAt19)
MODEL(FMSVVVIX, (D64), 0x64e00400, Zd, Zn, Zm4, OldZ, IndexAt20)
MODEL(FCMLAVVVIX, (F16), 0x64a01000, Zd, Zn, Zm3, OldZ, RotAt10, IndexAt19)
MODEL(FCMLAVVVIX, (F32), 0x64e01000, Zd, Zn, Zm4, OldZ, RotAt10, IndexAt20)

// Reductions.
MODEL_SIZED(AddReduceAV, (F16, F32, D64), 0x65182000, Vd, Pg, OldV, Zn)
MODEL_SIZED(AddReduceFV, (F16, F32, D64), 0x65002000, Vd, Pg, Zn)
MODEL_SIZED(MaxNumReduceFV, (F16), 0x65042000, Vd, Pg, Zn)
MODEL_SIZED(MinNumReduceFV, (F16), 0x65052000, Vd, Pg, Zn)
MODEL_SIZED(MaxReduceFV, (F16, F32, D64), 0x65062000, Vd, Pg, Zn)
MODEL_SIZED(MinReduceFV, (F16, F32, D64), 0x65072000, Vd, Pg, Zn)
// clang-format on
