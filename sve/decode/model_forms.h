// Operand forms of rows of the reference model, beside those that the fast path has too.
#pragma once

#include "sve/decode/operand_forms.h"

namespace stubs {

// Stands for the destination where an instruction has none.
template <class> struct NoResult { static constexpr uint32_t bits = 0; };

// The old value of the destination, which is a parameter of its own and has the same bits.
template <class Form> struct Old : Form { static constexpr bool of_destination = true; };
template <class T> using OldZ = Old<Zd<T>>;
template <class T> using OldP = Old<Pd<T>>;
template <class T> using OldR = Old<Rdn<T>>;
template <class T> using OldW = Old<Wdn<T>>;
template <class T> using OldX = Old<Xdn<T>>;
template <class T> using Vdn = Vd<T>;
template <class T> using OldV = Old<Vdn<T>>;

// A W register whose new value is sign-extended to the whole register.
template <class T> struct SWdn : Wdn<T> { static constexpr bool sign_extends = true; };

// The result of a reduction that is a doubleword whatever the element.
template <class> using Dd = VField<0, U64>;

// Zm of indexed forms, and the index that takes the bits it leaves.
template <unsigned count, class T> struct ZmPart {
  static constexpr uint32_t bits = field_bits(16, count);
  static constexpr aarch64_z_reg decode(uint32_t word) {
    return {field(word, 16, count), T::size, aarch64_z_reg::none, aarch64_z_reg::none};
  }
};
template <class T> using Zm3 = ZmPart<3, T>;
template <class T> using Zm4 = ZmPart<4, T>;
template <class> using IndexAt20 = UnsignedField<20, 1>;
template <class> using IndexAt19 = UnsignedField<19, 2>;
template <class> struct IndexAt22 {  // bit 22 above bits 20 and 19
  static constexpr uint32_t bits = field_bits(19, 2) | field_bits(22, 1);
  static constexpr unsigned decode(uint32_t word) {
    return field(word, 22, 1) << 2 | field(word, 19, 2);
  }
};

}  // namespace stubs
