// What the library's static initialiser sets up beside the decoder maps.
#pragma once

#include <cstdint>

// The host's page size in bytes, a power of two.
extern uint32_t page_size;
