// Element moves, extractions and predicate permutes. None touches a flag; forms with a
// floating-point type move bits.
#pragma once

#include "sve/model/family.h"

// clang-format off

// The last active element (B) or the one behind it (A). In the conditional forms old stands in when
// there is none.
MODEL_FUNCTIONS(uint64_t, (PredV pg, VecV zn), (U8, U16, U32, U64, B8, H16, F32, D64), LastAV, LastBV)
MODEL_FUNCTIONS(uint64_t, (PredV pg, uint64_t old, VecV zn), (U8, U16, U32, U64, B8, H16, F32, D64),
                CondXASV, CondXBSV)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV old, VecV zn), (U8, U16, U32, U64), VCondXAVV, VCondXBVV)

// Duplication of a scalar or an element, insertion, and copies.
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t scalar), (U8, U16, U32, U64, B8, H16, F32, D64), InsertS)
MODEL_FUNCTIONS(VecV, (uint64_t imm), (S8, S16, S32, S64, F16, F32, D64), DupI)
MODEL_FUNCTIONS(VecV, (uint64_t imm), (S64), DupMaskI)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t imm), (S8, S16, S32, S64, F16, F32, D64), DupIM)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t imm), (S8, S16, S32, S64), DupIZ)
MODEL_FUNCTIONS(VecV, (uint64_t scalar), (U8, U16, U32, U64), DupS)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t scalar), (U8, U16, U32, U64, B8, H16, F32, D64), DupSM)
MODEL_FUNCTIONS(VecV, (VecV zn, uint64_t index), (U8, U16, U32, U64, U128), ExtDupVI)
MODEL_FUNCTIONS(VecV, (VecV zn), (U32), SpecialMoveV)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U8, U16, U32, U64), MovePrefix1VM)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV zn), (U8, U16, U32, U64), MovePrefix1VZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV zn, VecV zm), (U8, U16, U32, U64), SelVV)

// Orders of elements.
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (U8, U16, U32, U64),
                Zip1VV, Zip2VV, Uzp1VV, Uzp2VV, Trn1VV, Trn2VV, TblVV)
MODEL_FUNCTIONS(VecV, (VecV zn), (U8, U16, U32, U64), ReverseV)
MODEL_FUNCTIONS(VecV, (VecV zn), (S16, S32, S64, U16, U32, U64), UnpackLoV, UnpackHiV)
MODEL_FUNCTIONS(VecV, (VecV old, VecV zm, uint64_t position), (U8), SlideVI)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV old, VecV zn), (U8, U16, U32, U64), SpliceVV)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV zn), (U32, U64), CompressVV)

// The same for predicates: whole groups move.
MODEL_FUNCTIONS(PredV, (PredV pn, PredV pm), (P8, P16, P32, P64),
                Zip1PP, Zip2PP, Uzp1PP, Uzp2PP, Trn1PP, Trn2PP)
MODEL_FUNCTIONS(PredV, (PredV pn), (P8, P16, P32, P64), ReverseP)
MODEL_FUNCTIONS(PredV, (PredV pn), (P), UnpackLoP, UnpackHiP)

// clang-format on
