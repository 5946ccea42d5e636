// Twins of the reference model's own rows, for which the model is compiled for this vector length:
// the same tables, and the model for any length.
#include "tests/model/twin_row.h"

#undef MODEL
#undef MODEL_SIZED
#define MODEL(operation, types, value, ...) TWIN(operation, types, __VA_ARGS__)
#define MODEL_SIZED(operation, types, value, ...) TWIN(operation, types, __VA_ARGS__)

#include "sve/client/rows/model_counting.cpp"
#include "sve/client/rows/model_fp.cpp"
#include "sve/client/rows/model_fp_compare.cpp"
#include "sve/client/rows/model_integer.cpp"
#include "sve/client/rows/model_load_store.cpp"
#include "sve/client/rows/model_permute.cpp"
#include "sve/client/rows/model_predicate.cpp"
#include "sve/client/rows/model_shift.cpp"
