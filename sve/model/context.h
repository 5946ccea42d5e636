// The values of the reference model: vectors and predicates, and what a model function knows of the
// processor.
//
// The model's sources are compiled twice: for any vector length, which is what its functions are
// known as, and for this build's alone, which is what the rows call.
#pragma once

#ifdef MODEL_OF_BUILT_LENGTH
#include "sve/model/built_length.h"
#else
#include "sve/model/any_length.h"
#endif
