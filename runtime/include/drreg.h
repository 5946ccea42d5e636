// Register reservation. This runtime offers initialisation and exit only: the client reserves none.
#pragma once

#include "dr_api.h"

enum drreg_status_t { DRREG_SUCCESS = 0, DRREG_ERROR = 1, DRREG_ERROR_INVALID_PARAMETER = 2 };

struct drreg_options_t {
  size_t struct_size;  // sizeof(drreg_options_t): 32
  uint num_spill_slots;
  bool conservative;
  bool (*error_callback)(drreg_status_t status);
  bool do_not_sum_slots;
};
static_assert(sizeof(drreg_options_t) == 32);

// DRREG_ERROR_INVALID_PARAMETER if `struct_size` is not the structure's or slots are asked for.
DR_API drreg_status_t drreg_init(drreg_options_t* options);
// DRREG_ERROR without a drreg_init before it.
DR_API drreg_status_t drreg_exit();
