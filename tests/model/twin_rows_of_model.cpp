// Twins of the reference model's own rows, for which the model is compiled for this vector length:
// the same tables, and the model for any length.
#include "tests/model/twin_row.h"

#include "sve/decode/row.h"

#undef ROW
#define ROW(assembly, operation, types, value, tier, ...)                                          \
  TWIN_OF_##tier(operation, types, __VA_ARGS__)
#define TWIN_OF_MODEL TWIN
#define TWIN_OF_FAST(...)
#define TWIN_OF_HOST_FP(...)

#include "sve/decode/rows/address_generation.cpp"
#include "sve/decode/rows/bitwise_shift_predicated.cpp"
#include "sve/decode/rows/bitwise_shift_unpredicated.cpp"
#include "sve/decode/rows/element_count.cpp"
#include "sve/decode/rows/first_fault_register.cpp"
#include "sve/decode/rows/fp_arithmetic_predicated.cpp"
#include "sve/decode/rows/fp_arithmetic_unpredicated.cpp"
#include "sve/decode/rows/fp_compare.cpp"
#include "sve/decode/rows/fp_complex.cpp"
#include "sve/decode/rows/fp_convert.cpp"
#include "sve/decode/rows/fp_indexed.cpp"
#include "sve/decode/rows/fp_multiply_add.cpp"
#include "sve/decode/rows/fp_reductions.cpp"
#include "sve/decode/rows/fp_unary.cpp"
#include "sve/decode/rows/gather.cpp"
#include "sve/decode/rows/gather_first_fault.cpp"
#include "sve/decode/rows/integer_binary_predicated.cpp"
#include "sve/decode/rows/integer_compare_immediate.cpp"
#include "sve/decode/rows/integer_compare_vectors.cpp"
#include "sve/decode/rows/integer_dot_product.cpp"
#include "sve/decode/rows/integer_immediate.cpp"
#include "sve/decode/rows/integer_miscellaneous.cpp"
#include "sve/decode/rows/integer_reductions.cpp"
#include "sve/decode/rows/integer_unary_predicated.cpp"
#include "sve/decode/rows/integer_unpredicated.cpp"
#include "sve/decode/rows/load_broadcast.cpp"
#include "sve/decode/rows/load_first_fault.cpp"
#include "sve/decode/rows/permute_predicated.cpp"
#include "sve/decode/rows/permute_predicates.cpp"
#include "sve/decode/rows/permute_unpredicated.cpp"
#include "sve/decode/rows/predicate_break.cpp"
#include "sve/decode/rows/predicate_count.cpp"
#include "sve/decode/rows/predicate_logic.cpp"
#include "sve/decode/rows/predicate_miscellaneous.cpp"
#include "sve/decode/rows/scalar_compare.cpp"
#include "sve/decode/rows/scatter.cpp"
