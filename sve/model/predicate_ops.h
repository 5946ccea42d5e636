// Predicate logic, breaks, the first-fault register, and loop control.
//
// Names with Flg set N, Z, C and V, as do GenNext, SetFirstActive, While and Test. Type P works on
// single predicate bits.
#pragma once

#include "sve/model/family.h"

// clang-format off

MODEL_FUNCTIONS(PredV, (PredV pg, PredV pn, PredV pm), (P),
                AndPPZ, AndFlgPPZ, BicPPZ, BicFlgPPZ, OrPPZ, OrFlgPPZ, OrNPPZ, OrNFlgPPZ, XorPPZ,
                XorFlgPPZ, NandPPZ, NandFlgPPZ, NorPPZ, NorFlgPPZ, SelPP)

// Breaks: behind (A) or before (B) the first true element of pn.
MODEL_FUNCTIONS(PredV, (PredV pg, PredV pn), (P), BreakAPZ, BreakAFlgPZ, BreakBPZ, BreakBFlgPZ)
MODEL_FUNCTIONS(PredV, (PredV old, PredV pg, PredV pn), (P), BreakAPM, BreakBPM)
MODEL_FUNCTIONS(PredV, (PredV pg, PredV pn, PredV pm), (P),
                BreakPrevAPZ, BreakPrevAFlgPZ, BreakPrevBPZ, BreakPrevBFlgPZ)
MODEL_FUNCTIONS(PredV, (PredV pg, PredV pn, PredV old), (P), BreakNextPZ, BreakNextFlgPZ)

// The next or the first active element.
MODEL_FUNCTIONS(PredV, (PredV pg, PredV old), (P8, P16, P32, P64), GenNextP)
MODEL_FUNCTIONS(PredV, (PredV pn, PredV old), (P), SetFirstActiveP)

// Constants, by pattern, and the test of a predicate.
MODEL_FUNCTIONS(PredV, (uint64_t pattern), (P8, P16, P32, P64), TrueI, TrueFlgI)
MODEL_FUNCTIONS(PredV, (), (P), False)
MODEL_FUNCTIONS(void, (PredV pg, PredV pn), (P), TestPZ)

// The first-fault register: read, masked by a predicate or not, written, and set to all true.
MODEL_FUNCTIONS(PredV, (PredV pg), (P), ActualP, ActualFlgP)
MODEL_FUNCTIONS(PredV, (), (P), ReadFFSRP)
MODEL_FUNCTIONS(void, (PredV pn), (P), WriteFFSRP)
MODEL_FUNCTIONS(void, (), (P), ClearFFSR)

// Elements as long as a + e is less than b, or at most b. The digit is the scalars' width in bytes.
MODEL_FUNCTIONS(PredV, (uint64_t a, uint64_t b), (S8, S16, S32, S64, U8, U16, U32, U64),
                While4LESS, While8LESS, While4LTSS, While8LTSS)

// Compares two scalars for the end of a loop: N and V.
MODEL_FUNCTIONS(void, (uint64_t a, uint64_t b), (U32, U64), CTermEQ, CTermNE)

// clang-format on
