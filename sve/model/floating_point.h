// Floating-point operations on the library of sve/fp.
//
// Control comes from CpuContext::fpcr; what an active element raises is ORed into fpsr. Names say
// the format: F16, F32 and D64 are half, single and double, H32, H64 and F64 a half or single in a
// wider element.
#pragma once

#include "sve/model/family.h"

// clang-format off

// Merging: one source zn, or old as the first source and zn as the second.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (F16, F32, D64),
                AddVVM, SubVVM, SubRVVM, AbdVVM, MulVVM, MulXVVM, DivVVM, DivRVVM,
                MaxVVM, MinVVM, MaxNumVVM, MinNumVVM, ScaleVVM,
                AbsVM, NegVM, SqrtVM, RecpXVM,
                FRIntAVM, FRIntIVM, FRIntMVM, FRIntNVM, FRIntPVM, FRIntXVM, FRIntZVM)

// Merging, with one of two constants as the second source.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t imm), (F16, F32, D64),
                AddVIM, SubVIM, SubRVIM, MulVIM, MaxVIM, MinVIM, MaxNumVIM, MinNumVIM)

// Without a predicate.
MODEL_FUNCTIONS(VecV, (VecV zn), (F16, F32, D64), RecpEV, RSqrtEV, EXPAV)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (F16, F32, D64),
                AddVVX, SubVVX, MulVVX, RecpSVV, RSqrtSVV, TRISMULVV, TRISSELVV)
MODEL_FUNCTIONS(VecV, (VecV old, VecV zn, uint64_t imm), (F16, F32, D64), TRIMADDVVI)

// Fused. MADD, MSUB and their negations add to zm the product of old and zn.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn, VecV zm), (F16, F32, D64),
                FMAVVVM, FMSVVVM, FNMAVVVM, FNMSVVVM, FMADDVVVM, FMSUBVVVM, FNMADDVVVM, FNMSUBVVVM)

// Complex: even elements are real, odd ones imaginary parts. Rotations count quarter turns, those
// of FCADD from the first one on.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn, uint64_t rotation), (F16, F32, D64), FCADDVVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn, VecV zm, uint64_t rotation), (F16, F32, D64),
                FCMLAVVVM)

// Indexed: zm's element (or pair) of that number in each 128-bit segment.
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm, uint64_t index), (F16, F32, D64), MulVVIX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm, VecV old, uint64_t index), (F16, F32, D64),
                FMAVVVIX, FMSVVVIX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm, VecV old, uint64_t rotation, uint64_t index), (F16, F32),
                FCMLAVVVIX)

// Compares, with another vector or with zero; Ac compares magnitudes.
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, VecV zm), (F16, F32, D64),
                CmpEQVVZ, CmpNEVVZ, CmpGEVVZ, CmpGTVVZ, CmpUNVVZ, AcGEVVZ, AcGTVVZ)
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn), (F16, F32, D64),
                CmpEQV0Z, CmpNEV0Z, CmpGEV0Z, CmpGTV0Z, CmpLEV0Z, CmpLTV0Z)

// Conversions between formats, from integers and to integers of so many bytes.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (F32, D64), ExtndHVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (D64), ExtndFVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (H32), TruncFVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (H64, F64), TruncDVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (F16), FromS2VM, FromU2VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (F16, F32, D64), FromS4VM, FromU4VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (F16, F64, D64), FromS8VM, FromU8VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S16, U16), _2FromHVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S32, U32), _4FromHVM, _4FromFVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S64, U64),
                _4FromDVM, _8FromHVM, _8FromFVM, _8FromDVM)

// Reductions: strictly ordered behind a scalar, and pairwise as a tree.
MODEL_FUNCTIONS(uint64_t, (PredV pg, uint64_t old, VecV zn), (F16, F32, D64), AddReduceAV)
MODEL_FUNCTIONS(uint64_t, (PredV pg, VecV zn), (F16, F32, D64),
                AddReduceFV, MaxReduceFV, MinReduceFV, MaxNumReduceFV, MinNumReduceFV)

// clang-format on
