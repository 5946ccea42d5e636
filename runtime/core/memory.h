// The runtime's and its client's heap: what `new` gives. Other than the C library's it can be held
// by a thread that is killed in the midst of it, which a vfork child may be: each change takes
// effect with one store, so that at worst a block is lost.
#pragma once

#include "runtime/core/lock.h"

namespace core {

// The heap's lock, to be held over a fork. Whoever holds it may allocate.
extern Lock memory_mutex;

}  // namespace core
