#include "runtime/linux/machine.h"

#include <linux/prctl.h>
#include <sys/auxv.h>
#include <sys/sysinfo.h>

#include <algorithm>
#include <cerrno>
#include <sstream>
#include <string_view>

#include "runtime/core/entry.h"
#include "runtime/core/identification.h"
#include "runtime/linux/client_switches.h"
#include "runtime/linux/seccomp.h"
#include "runtime/linux/stack.h"
#include "runtime/linux/syscalls.h"

namespace os {
namespace {

// Bits of AT_HWCAP from 0 on, as /proc/cpuinfo calls them. What it shows stands in this order.
constexpr std::string_view kFeatures[] = {
    "fp",      "asimd", "evtstrm", "aes",   "pmull",    "sha1",   "sha2", "crc32",
    "atomics", "fphp",  "asimdhp", "cpuid", "asimdrdm", "jscvt",  "fcma", "lrcpc",
    "dcpop",   "sha3",  "sm3",     "sm4",   "asimddp",  "sha512", "sve",  "asimdfhm",
    "dit",     "uscat", "ilrcpc",  "flagm", "ssbs",     "sb",     "paca", "pacg",
};
constexpr unsigned kSveFeature = 22;
static_assert(kFeatures[kSveFeature] == "sve");

constexpr uint64_t bit(unsigned number) { return uint64_t{1} << number; }
constexpr uint64_t bits(unsigned first, unsigned last) {
  return (bit(last - first) * 2 - 1) << first;
}

// AT_HWCAP: SVE; from 37 on the additions of SVE 2.2 and SME 2.2.
constexpr uint64_t kScalableHwcap = bit(kSveFeature) | bits(37, 47);
// AT_HWCAP2: SVE2 and its parts, I8MM, F32MM, F64MM and BF16 for SVE; SME and its parts; what came
// to both later. 7 and 8, 13 to 22, 31, 32, 34, 35, 43, 44, 46 to 56 and 63 are others'.
constexpr uint64_t kScalableHwcap2 =
    bits(1, 6) | bits(9, 12) | bits(23, 30) | bit(33) | bits(36, 42) | bit(45) | bits(57, 62);

bool is_scalable_feature(std::string_view name) {
  return name.starts_with("sve") || name.starts_with("sme");
}

// A line of features, with SVE in its place if it is to be there.
std::string shown_features(const std::string& line) {
  const size_t colon = line.find(':');
  std::istringstream words(line.substr(colon + 1));
  std::string shown = line.substr(0, colon + 1), word;
  bool told = !core::tells_of_sve;
  const auto add = [&shown](std::string_view name) { shown.append(" ").append(name); };
  while (words >> word) {
    const auto* at = std::find(std::begin(kFeatures), std::end(kFeatures), word);
    if (!told && at - kFeatures > int{kSveFeature}) {
      add("sve");
      told = true;
    }
    if (!is_scalable_feature(word)) {
      add(word);
    }
  }
  if (!told) {
    add("sve");
  }
  return shown;
}

std::string made_up_cpuinfo() {
  std::string features = "Features\t:";
  const uint64_t hwcap = shown_hwcap(getauxval(AT_HWCAP));
  for (unsigned i = 0; i < std::size(kFeatures); ++i) {
    if ((hwcap & bit(i)) != 0) {
      features.append(" ").append(kFeatures[i]);
    }
  }
  std::string text;
  for (int i = 0; i < get_nprocs(); ++i) {
    text += "processor\t: " + std::to_string(i) + "\n" + features +
            "\nCPU implementer\t: 0x41\nCPU architecture: 8\n\n";
  }
  return text;
}

// ---- prctl --------------------------------------------------------------------------------------

constexpr uint64_t kLengthMask = PR_SVE_VL_LEN_MASK;
constexpr uint64_t kLongestLength = 512 * kVectorBytes;  // that a program may name
#ifndef PR_SME_SET_VL
#define PR_SME_SET_VL 63
#define PR_SME_GET_VL 64
#endif
#ifndef PR_GET_AUXV
#define PR_GET_AUXV 0x41555856
#endif

int64_t length_status(const Thread& thread) {
  return int64_t{kVectorBytes} | (thread.keeps_vector_length ? PR_SVE_VL_INHERIT : 0);
}

// Every valid length comes down to the only one that there is, now or at the next exec. What stays
// of the call is the flag.
int64_t set_vector_length(Thread& thread, uint64_t wanted) {
  const uint64_t length = wanted & kLengthMask, flags = wanted & ~kLengthMask;
  constexpr uint64_t kKnown = PR_SVE_VL_INHERIT | PR_SVE_SET_VL_ONEXEC;
  if ((flags & ~kKnown) != 0 || length == 0 || length % kVectorBytes != 0 ||
      length > kLongestLength) {
    return -EINVAL;
  }
  thread.keeps_vector_length = (flags & PR_SVE_VL_INHERIT) != 0;
  return length_status(thread);
}

int64_t give_auxiliary_vector(const Call& call) {
  const std::string& vector = stack_layout().auxiliary;
  if (call.arguments[3] != 0 || call.arguments[4] != 0) {
    return -EINVAL;
  }
  const size_t size = std::min<size_t>(call.arguments[2], vector.size());
  auto* to = reinterpret_cast<void*>(call.arguments[1]);
  return core_copy(to, vector.data(), size) == 0 ? static_cast<int64_t>(vector.size()) : -EFAULT;
}

}  // namespace

uint64_t shown_hwcap(uint64_t host) {
  return (host & ~kScalableHwcap) | (core::tells_of_sve ? bit(kSveFeature) : 0);
}

uint64_t shown_hwcap2(uint64_t host) { return host & ~kScalableHwcap2; }

std::string shown_cpuinfo(const std::string& host) {
  std::istringstream lines(host);
  std::string text, line;
  bool found = false;
  while (std::getline(lines, line)) {
    const bool features = line.starts_with("Features");
    found = found || features;
    text += (features ? shown_features(line) : line) + "\n";
  }
  return found ? text : made_up_cpuinfo();
}

int64_t sys_prctl(Thread& thread, const Call& call) {
  switch (call.arguments[0]) {
  case PR_SVE_SET_VL:
    return core::tells_of_sve ? set_vector_length(thread, call.arguments[1]) : -EINVAL;
  case PR_SVE_GET_VL:
    return core::tells_of_sve ? length_status(thread) : -EINVAL;
  case PR_SME_SET_VL:
  case PR_SME_GET_VL:
    return -EINVAL;
  case PR_SET_SECCOMP:
    return set_seccomp(thread, call.arguments[1], call.arguments[2]);
  case PR_GET_SECCOMP:
    return get_seccomp(thread);
  case PR_GET_AUXV:
    return give_auxiliary_vector(call);
  default:
    return pass_on(thread, call);
  }
}

}  // namespace os
