// The vector type of the floating-point unit.
#pragma once

#include <cstdint>

namespace host {

template <class T> struct FPVector { typedef T type __attribute__((vector_size(16))); };
template <class T> using fp_vector = typename FPVector<T>::type;

}  // namespace host
