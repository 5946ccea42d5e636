// Which architecture extension an instruction word came with.
#pragma once

#include <cstdint>

namespace ir {

// The extension's name, for words outside the scalable encodings that came behind the first version
// of the architecture; null for all others. For a message: it knows the common extensions, and does
// not tell a reserved field from one that is allocated.
const char* extension_of(std::uint32_t word);

}  // namespace ir
