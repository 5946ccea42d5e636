// Integer data processing: arithmetic, logic, shifts, saturation, dot products and reductions.
//
// Operands stand in the order of the declarations: old is the destination's former value, zn and zm
// are the sources. With a governing predicate pg, inactive elements are those of old.
#pragma once

#include "sve/model/family.h"

// clang-format off

// One source, or old as the first source and zn as the second. In the wide shifts the 64-bit
// elements of zn are the counts.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S8, S16, S32, S64, U8, U16, U32, U64),
                AbdVVM, MaxVVM, MinVVM, MulHVVM, ShrRVVM, ShrVVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S8, S16, S32, S64), AbsVM, MulVVM, NegVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U8, U16, U32, U64),
                AddVVM, AndVVM, BicVVM, ClsVM, ClzVM, CntVM, InvVM, NotVM, OrVVM, RBitVM, ShlRVVM,
                ShlVVM, SubRVVM, SubVVM, XorVVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S32, S64, U32, U64), DivVVM, DivRVVM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U16, U32, U64), Rev1V)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U32, U64), Rev2V)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U64), Rev4V)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S16, U16), Extnd12VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S32, U32), Extnd14VM, Extnd24VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S64, U64), Extnd18VM, Extnd28VM, Extnd48VM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (S8, S16, S32, U8, U16, U32), ShrVWM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn), (U8, U16, U32), ShlVWM)

// Three sources. MADD and MSUB add to or subtract from zn the product of old and zm.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, VecV zn, VecV zm), (S8, S16, S32, S64),
                MLAVVVM, MLSVVVM, MADDVVVM, MSUBVVVM)

// An immediate; signed ones are sign-extended.
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t count), (S8, S16, S32, S64, U8, U16, U32, U64),
                ShrVIM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t count), (S8, S16, S32, S64), ShrDVIM)
MODEL_FUNCTIONS(VecV, (VecV old, PredV pg, uint64_t count), (U8, U16, U32, U64), ShlVIM)
MODEL_FUNCTIONS(VecV, (VecV zn, uint64_t count), (S8, S16, S32, S64, U8, U16, U32, U64), ShrVIX)
MODEL_FUNCTIONS(VecV, (VecV zn, uint64_t count), (U8, U16, U32, U64), ShlVIX)
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t imm), (S8, S16, S32, S64, U8, U16, U32, U64),
                MaxVIX, MinVIX, QAddVIX, QSubVIX)
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t imm), (U8, U16, U32, U64), AddVIX, SubVIX, SubRVIX)
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t imm), (S8, S16, S32, S64), MulVIX)
MODEL_FUNCTIONS(VecV, (VecV old, uint64_t imm), (U64), AndVIX, OrVIX, XorVIX)

// Two sources without a predicate.
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (S8, S16, S32, S64, U8, U16, U32, U64), QAddVVX, QSubVVX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (U8, U16, U32, U64), AddVVX, SubVVX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (U64), AndVVX, BicVVX, OrVVX, XorVVX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (S8, S16, S32, U8, U16, U32), ShrVWX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm), (U8, U16, U32), ShlVWX)
MODEL_FUNCTIONS(VecV, (VecV base, VecV offset), (U32, U64), LEA1VV, LEA2VV, LEA4VV, LEA8VV)
MODEL_FUNCTIONS(VecV, (VecV base, VecV offset), (U64),
                LEA1XVV, LEA2XVV, LEA4XVV, LEA8XVV, LEA1YVV, LEA2YVV, LEA4YVV, LEA8YVV)

// Each element of old plus the sum of four products of quarter-width elements.
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm, VecV old), (S32, U32, S64, U64), DotVVVX)
MODEL_FUNCTIONS(VecV, (VecV zn, VecV zm, VecV old, uint64_t index), (S32, U32, S64, U64), DotVVVIX)

// Reductions of the active elements.
MODEL_FUNCTIONS(uint64_t, (PredV pg, VecV zn), (S8, S16, S32, U8, U16, U32, U64), AddReduceV)
MODEL_FUNCTIONS(uint64_t, (PredV pg, VecV zn), (U8, U16, U32, U64),
                AndReduceV, OrReduceV, XorReduceV)
MODEL_FUNCTIONS(uint64_t, (PredV pg, VecV zn), (S8, S16, S32, S64, U8, U16, U32, U64),
                MaxReduceV, MinReduceV)

// clang-format on
