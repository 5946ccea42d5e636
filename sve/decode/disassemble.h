// Instructions as text, by the assembly forms of the rows.
#pragma once

#include <cstdint>
#include <string>

#include "sve/decode/dispatch.h"

// The word as the row's instruction, in the architecture's notation, lower case and without
// aliases: "add z0.h, p1/m, z0.h, z2.h".
//
// An assembly form is that text in upper case, in which
//   Zn, PgAt5, SImm4At16, ...  a word that names an operand form is that operand; numbers stand
//   behind # .T                         is the size of the row's elements #Form*2+1 is the number
//   of the form, multiplied and added to #Form(0.5, 1.0)            is one of two texts, by a form
//   of one bit {Zt.B x3}                  is a list of registers from Zt on
//   {, #Form, MUL VL}          is left out if all its operands are what they are by default
std::string disassemble(const Row& row, uint32_t word);
