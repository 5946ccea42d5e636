// The host's page size.
#pragma once

#include <cstdint>

// In bytes, a power of two.
extern uint32_t page_size;
