// Loads and stores. At any vector length every access is one hook call for one element, in
// ascending order; for rows see direct_access.h.
//
// The digit is the memory element's size in bytes. Types S sign-extend what they load, types U
// zero-extend. Inactive elements are zero in loads and not stored in stores. Offsets are whole
// elements or, with X and Y, their low words sign- and zero-extended; in the forms SV they count
// memory elements.
#pragma once

#include "sve/model/family.h"

// clang-format off

// Gathers and first-fault gathers.
MODEL_FUNCTIONS(VecV, (PredV pg, VecV offsets, uint64_t base), (S32, U32, S64, U64),
                Load1VSZ, Load1XVSZ, Load2VSZ, Load2XVSZ,
                LoadFF1VSZ, LoadFF1XVSZ, LoadFF2VSZ, LoadFF2XVSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV offsets, uint64_t base), (U32, S64, U64),
                Load4VSZ, Load4XVSZ, LoadFF4VSZ, LoadFF4XVSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV offsets, uint64_t base), (S64, U64),
                Load1YVSZ, Load2YVSZ, Load4YVSZ, LoadFF1YVSZ, LoadFF2YVSZ, LoadFF4YVSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV offsets, uint64_t base), (U64),
                Load8VSZ, Load8XVSZ, Load8YVSZ, LoadFF8VSZ, LoadFF8XVSZ, LoadFF8YVSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, VecV offsets), (S32, U32, S64, U64),
                Load2SVZ, Load2XSVZ, LoadFF2SVZ, LoadFF2XSVZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, VecV offsets), (U32, S64, U64),
                Load4SVZ, Load4XSVZ, LoadFF4SVZ, LoadFF4XSVZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, VecV offsets), (S64, U64),
                Load2YSVZ, Load4YSVZ, LoadFF2YSVZ, LoadFF4YSVZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, VecV offsets), (U64),
                Load8SVZ, Load8XSVZ, Load8YSVZ, LoadFF8SVZ, LoadFF8XSVZ, LoadFF8YSVZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV addresses, uint64_t imm), (S32, U32, S64, U64),
                Load1VIZ, Load2VIZ, LoadFF1VIZ, LoadFF2VIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV addresses, uint64_t imm), (U32, S64, U64),
                Load4VIZ, LoadFF4VIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, VecV addresses, uint64_t imm), (U64), Load8VIZ, LoadFF8VIZ)

// Scatters. The higher of two elements with one address stays in memory.
MODEL_FUNCTIONS(void, (PredV pg, VecV offsets, uint64_t base, VecV data), (U32, U64),
                Store1VSZ, Store1XVSZ, Store2VSZ, Store2XVSZ, Store4VSZ, Store4XVSZ)
MODEL_FUNCTIONS(void, (PredV pg, VecV offsets, uint64_t base, VecV data), (U64),
                Store8VSZ, Store8XVSZ, Store1YVSZ, Store2YVSZ, Store4YVSZ, Store8YVSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, VecV offsets, VecV data), (U32, U64),
                Store2SVZ, Store2XSVZ, Store4SVZ, Store4XSVZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, VecV offsets, VecV data), (U64),
                Store8SVZ, Store8XSVZ, Store2YSVZ, Store4YSVZ, Store8YSVZ)
MODEL_FUNCTIONS(void, (PredV pg, VecV addresses, uint64_t imm, VecV data), (U32, U64),
                Store1VIZ, Store2VIZ, Store4VIZ)
MODEL_FUNCTIONS(void, (PredV pg, VecV addresses, uint64_t imm, VecV data), (U64), Store8VIZ)

// Contiguous forms: the immediate counts vectors' worth of memory, the index memory elements. NT
// differs in nothing, FF is first-fault, NF non-fault.
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U8, S16, U16, S32, U32, S64, U64),
                CLoad1SIZ, CLoadNF1SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U16, S32, U32, S64, U64),
                CLoad2SIZ, CLoadNF2SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U32, S64, U64),
                CLoad4SIZ, CLoadNF4SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U64),
                CLoad8SIZ, CLoadNF8SIZ, CLoadNT8SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U8), CLoadNT1SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U16), CLoadNT2SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U32), CLoadNT4SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U8, S16, U16, S32, U32, S64, U64),
                CLoad1LSSZ, CLoadFF1LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U16, S32, U32, S64, U64),
                CLoad2LSSZ, CLoadFF2LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U32, S64, U64),
                CLoad4LSSZ, CLoadFF4LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U64),
                CLoad8LSSZ, CLoadFF8LSSZ, CLoadNT8LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U8), CLoadNT1LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U16), CLoadNT2LSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U32), CLoadNT4LSSZ)

MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U8, U16, U32, U64), CStore1SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U16, U32, U64), CStore2SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U32, U64), CStore4SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U64), CStore8SIZ, CStoreNT8SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U8), CStoreNT1SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U16), CStoreNT2SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecV data), (U32), CStoreNT4SIZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U8, U16, U32, U64), CStore1LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U16, U32, U64), CStore2LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U32, U64), CStore4LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U64), CStore8LSSZ, CStoreNT8LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U8), CStoreNT1LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U16), CStoreNT2LSSZ)
MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecV data), (U32), CStoreNT4LSSZ)

// Complete types, as functions of C linkage want them.
static_assert(sizeof(VecGroup<2>) != 0 && sizeof(VecGroup<3>) != 0 && sizeof(VecGroup<4>) != 0);

// Structures: the members of one structure are the same elements of two to four registers.
#define MODEL_STRUCTURES(type, digit)                                                              \
  MODEL_FUNCTIONS(VecGroup<2>, (PredV pg, uint64_t base, uint64_t imm), (type), E2Load##digit##SIZ) \
  MODEL_FUNCTIONS(VecGroup<3>, (PredV pg, uint64_t base, uint64_t imm), (type), E3Load##digit##SIZ) \
  MODEL_FUNCTIONS(VecGroup<4>, (PredV pg, uint64_t base, uint64_t imm), (type), E4Load##digit##SIZ) \
  MODEL_FUNCTIONS(VecGroup<2>, (PredV pg, uint64_t base, uint64_t index), (type), E2Load##digit##LSSZ) \
  MODEL_FUNCTIONS(VecGroup<3>, (PredV pg, uint64_t base, uint64_t index), (type), E3Load##digit##LSSZ) \
  MODEL_FUNCTIONS(VecGroup<4>, (PredV pg, uint64_t base, uint64_t index), (type), E4Load##digit##LSSZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecGroup<2> data), (type), E2Store##digit##SIZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecGroup<3> data), (type), E3Store##digit##SIZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t imm, VecGroup<4> data), (type), E4Store##digit##SIZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecGroup<2> data), (type), E2Store##digit##LSSZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecGroup<3> data), (type), E3Store##digit##LSSZ) \
  MODEL_FUNCTIONS(void, (PredV pg, uint64_t base, uint64_t index, VecGroup<4> data), (type), E4Store##digit##LSSZ)
MODEL_STRUCTURES(U8, 1)
MODEL_STRUCTURES(U16, 2)
MODEL_STRUCTURES(U32, 4)
MODEL_STRUCTURES(U64, 8)
#undef MODEL_STRUCTURES

// Load and replicate: one element, or with Q 128 bits. The immediate counts memory elements, or
// 16 bytes.
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U8, S16, U16, S32, U32, S64, U64), LoadDup1SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U16, S32, U32, S64, U64), LoadDup2SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U32, S64, U64), LoadDup4SIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U64), LoadDup8SIZ, LoadDup8QSIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U8), LoadDup1QSIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U16), LoadDup2QSIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t imm), (U32), LoadDup4QSIZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U8), LoadDup1QSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U16), LoadDup2QSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U32), LoadDup4QSSZ)
MODEL_FUNCTIONS(VecV, (PredV pg, uint64_t base, uint64_t index), (U64), LoadDup8QSSZ)

// Whole registers, byte by byte. The immediate counts registers.
MODEL_FUNCTIONS(VecV, (uint64_t base, uint64_t imm), (U64), FillSI)
MODEL_FUNCTIONS(PredV, (uint64_t base, uint64_t imm), (P), FillSI)
MODEL_FUNCTIONS(void, (uint64_t base, uint64_t imm, VecV data), (U64), SpillSI)
MODEL_FUNCTIONS(void, (uint64_t base, uint64_t imm, PredV data), (P), SpillSI)

// clang-format on
