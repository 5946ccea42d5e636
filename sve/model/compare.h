// Integer compares into a predicate. All set N, Z, C and V under the governing predicate.
#pragma once

#include "sve/model/family.h"

// clang-format off

// Element against element.
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, VecV zm), (S8, S16, S32, S64), CmpFlgEQVVZ, CmpFlgNEVVZ)
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, VecV zm), (S8, S16, S32, S64, U8, U16, U32, U64),
                CmpFlgGEVVZ, CmpFlgGTVVZ)

// Element against the 64-bit element over it.
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, VecV zm), (S8, S16, S32), CmpFlgEQVWZ, CmpFlgNEVWZ)
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, VecV zm), (S8, S16, S32, U8, U16, U32),
                CmpFlgGEVWZ, CmpFlgGTVWZ, CmpFlgLEVWZ, CmpFlgLTVWZ)

// Element against an immediate, extended to 64 bits by the type's sign.
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, uint64_t imm), (S8, S16, S32, S64), CmpFlgEQVIZ, CmpFlgNEVIZ)
MODEL_FUNCTIONS(PredV, (PredV pg, VecV zn, uint64_t imm), (S8, S16, S32, S64, U8, U16, U32, U64),
                CmpFlgGEVIZ, CmpFlgGTVIZ, CmpFlgLEVIZ, CmpFlgLTVIZ)

// clang-format on
