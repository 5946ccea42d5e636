// What identification registers tell the application, whatever the host has.
#pragma once

#include <cstdint>

namespace core {

// Whether the application is told that its processor has SVE. Set before it runs.
extern bool tells_of_sve;

// The application's value of a system register (as in encode.h) that does not show the host's:
// ID_AA64PFR0_EL1, ID_AA64PFR1_EL1, ID_AA64ZFR0_EL1 and ID_AA64SMFR0_EL1, and CTR_EL0. False for
// all others, and for the first four on a kernel that answers none to a program.
bool shown_register(unsigned system_register, uint64_t& value);

// CTR_EL0 without DIC: with it a program need not execute IC IVAU when it writes code, and the
// runtime would not hear of it.
uint64_t application_ctr();

}  // namespace core
