// What the model needs to know of a predicate: its first and last active elements, what it does to
// the condition flags, and how many elements a pattern selects.
//
// esize is in bits. An element is active when its element bit is set. Only bits 31 to 28 of nzcv
// ever change.
#pragma once

#include "sve/model/context.h"

// The lowest and the highest active element, or -1.
int FindFirstActive(PredV mask, int esize, CpuContext* context);
int FindLastActive(PredV mask, int esize, CpuContext* context);

// Sets N to the result at the mask's first active element, Z if no active element has any bit of
// its group set, and C if the last active one has none. No active element: N = 0, Z = 1, C = 1.
void PredSetNZC(PredV mask, PredV result, int esize, CpuContext* context);

// The architecture's PredTest: the same, and V = 0.
void PredSetNZCV(PredV mask, PredV result, int esize, CpuContext* context);

// The same, but Z stays.
void PredSetNCV(PredV mask, PredV result, int esize, CpuContext* context);

// N and C alone, and neither without an active element.
void PredSetNC(PredV mask, PredV result, int esize, CpuContext* context);

// The architecture's DecodePredCount: how many of the elements the pattern selects.
uint32_t VecTrueILength(uint64_t pattern, int elements);
