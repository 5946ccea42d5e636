#include "runtime/core/identification.h"

#include <sys/auxv.h>

#include "runtime/ir/encode.h"

#ifndef HWCAP_CPUID
#define HWCAP_CPUID (1 << 11)
#endif

namespace core {

constinit bool tells_of_sve = false;

namespace {

constexpr unsigned id_register(unsigned crm, unsigned op2) {
  return ir::system_register(3, 0, 0, crm, op2);
}
constexpr unsigned kProcessorFeatures0 = id_register(4, 0);  // ID_AA64PFR0_EL1
constexpr unsigned kProcessorFeatures1 = id_register(4, 1);  // ID_AA64PFR1_EL1
constexpr unsigned kSveFeatures = id_register(4, 4);         // ID_AA64ZFR0_EL1
constexpr unsigned kStreamingFeatures = id_register(4, 5);   // ID_AA64SMFR0_EL1

// Four-bit fields.
constexpr unsigned kSveField = 32, kSmeField = 24;

uint64_t with_field(uint64_t value, unsigned field, uint64_t wanted) {
  return (value & ~(uint64_t{15} << field)) | wanted << field;
}

uint64_t host_features_0() {
  uint64_t value;
  asm("mrs %0, s3_0_c0_c4_0" : "=r"(value));
  return value;
}

uint64_t host_features_1() {
  uint64_t value;
  asm("mrs %0, s3_0_c0_c4_1" : "=r"(value));
  return value;
}

bool feature_register(unsigned system_register, uint64_t& value) {
  switch (system_register) {
  case kProcessorFeatures0:
    value = with_field(host_features_0(), kSveField, tells_of_sve ? 1 : 0);
    return true;
  case kProcessorFeatures1:
    value = with_field(host_features_1(), kSmeField, 0);
    return true;
  case kSveFeatures:  // all zero is SVE without any extension of it, or none at all
  case kStreamingFeatures:
    value = 0;
    return true;
  default:
    return false;
  }
}

}  // namespace

bool shown_register(unsigned system_register, uint64_t& value) {
  if (system_register == ir::sys_ctr_el0) {
    value = application_ctr();
    return true;
  }
  return (getauxval(AT_HWCAP) & HWCAP_CPUID) != 0 && feature_register(system_register, value);
}

uint64_t application_ctr() {
  constexpr uint64_t kDic = uint64_t{1} << 29;
  uint64_t value;
  asm("mrs %0, ctr_el0" : "=r"(value));
  return value & ~kDic;
}

}  // namespace core
