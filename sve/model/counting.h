// Element counts, by predicate pattern or by active elements, the arithmetic with them, and index
// vectors. A multiplier comes as the encoding has it, less 1.
#pragma once

#include "sve/model/family.h"

// clang-format off

// The count alone.
MODEL_FUNCTIONS(uint64_t, (uint64_t pattern, uint64_t multiplier), (U8, U16, U32, U64), CountVLSI)
MODEL_FUNCTIONS(uint64_t, (PredV pg, PredV pn), (U8, U16, U32, U64), SCountP)

// A scalar plus or minus the count; the digit is the scalar's width in bytes. The results of the
// 4-byte forms are extended by the type's sign.
MODEL_FUNCTIONS(uint64_t, (uint64_t old, uint64_t pattern, uint64_t multiplier), (U8, U16, U32, U64),
                IncrVLSI, DecrVLSI)
MODEL_FUNCTIONS(uint64_t, (uint64_t old, uint64_t pattern, uint64_t multiplier),
                (S8, S16, S32, S64, U8, U16, U32, U64), QIncrVL4SI, QIncrVL8SI, QDecrVL4SI, QDecrVL8SI)
MODEL_FUNCTIONS(uint64_t, (PredV pn, uint64_t old), (U8, U16, U32, U64), IncrSCountPS, DecrSCountPS)
MODEL_FUNCTIONS(uint64_t, (PredV pn, uint64_t old), (S8, S16, S32, S64, U8, U16, U32, U64),
                QIncrSCount4PS, QIncrSCount8PS, QDecrSCount4PS, QDecrSCount8PS)

// Every element of a vector plus or minus the count.
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t pattern, uint64_t multiplier), (U16, U32, U64),
                IncrVLVI, DecrVLVI)
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t pattern, uint64_t multiplier),
                (S16, S32, S64, U16, U32, U64), QIncrVLVI, QDecrVLVI)
MODEL_FUNCTIONS(VecV, (PredV pn, VecV old), (U16, U32, U64), IncrCountPV, DecrCountPV)
MODEL_FUNCTIONS(VecV, (PredV pn, VecV old), (S16, S32, S64, U16, U32, U64),
                QIncrCountPV, QDecrCountPV)

// Multiples of the vector's and the predicate's length in bytes.
MODEL_FUNCTIONS(uint64_t, (uint64_t multiplier), (S64), VLX)
MODEL_FUNCTIONS(uint64_t, (uint64_t x, uint64_t multiplier), (S64), AddVLX, AddPLX)

// base, base + step, base + 2 * step ...
MODEL_FUNCTIONS(VecV, (uint64_t base, uint64_t step), (S8, S16, S32, S64),
                IndexII, IndexIS, IndexSI, IndexSS)

// clang-format on
