// The element loops of loads and stores, over an address for each element.
#pragma once

#include "sve/model/vector.h"

#ifdef MODEL_OF_BUILT_LENGTH
#include "sve/model/direct_access.h"
#else
#include "sve/model/hook_access.h"
#endif

namespace model {

// The low msize bytes, extended by the element's sign.
template <class E, int msize> inline E extend(uint64_t value) {
  constexpr int above = 64 - 8 * msize;
  if constexpr (is_unsigned<E>)
    return static_cast<E>(value << above >> above);
  else
    return static_cast<E>(static_cast<int64_t>(value << above) >> above);
}

template <class E, int msize> inline E read_element(uint64_t address, CpuContext* context) {
  return extend<E, msize>(read<msize>(address, 0, nullptr, context));
}

template <class E, int msize, class Address>
inline VecV load(const PredV& pg, CpuContext* context, Address address) {
  return zero_inactive<E>(pg, context,
                          [&](unsigned e) { return read_element<E, msize>(address(e), context); });
}

template <class E, int msize, class Address>
inline void store(const PredV& pg, const VecV& data, CpuContext* context, Address address) {
  const unsigned n = elements<E>(context);
  for (unsigned e = 0; e < n; e++)
    if (active<E>(pg, e))
      write<msize>(raw(get<E>(data, e)), address(e), context);
}

// Reads stop at the first fault. The element that faulted and all behind it, active or not, are 0
// and lose their group in ffr. first_done: 1 for a non-fault load.
template <class E, int msize, class Address>
inline VecV load_guarded(const PredV& pg, CpuContext* context, int first_done, Address address) {
  bool fault = false;
  GuardedReads<msize> guarded{context, first_done};
  return map<E>(context, [&](unsigned e) {
    E x = 0;
    if (active<E>(pg, e) && !fault) {
      const uint64_t value = guarded(address(e), &fault);
      if (!fault)
        x = extend<E, msize>(value);
    }
    if (fault)
      set_group<E>(context->ffr, e, 0);
    return x;
  });
}

template <class E, int msize, class Address>
inline VecV load_first_fault(const PredV& pg, CpuContext* context, Address address) {
  return load_guarded<E, msize>(pg, context, 0, address);
}

template <class E, int msize, class Address>
inline VecV load_non_fault(const PredV& pg, CpuContext* context, Address address) {
  return load_guarded<E, msize>(pg, context, 1, address);
}

}  // namespace model
