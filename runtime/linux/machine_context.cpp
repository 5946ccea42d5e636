#include "runtime/linux/machine_context.h"

#include <asm/hwcap.h>
#include <asm/sigcontext.h>
#include <sys/auxv.h>

#include <algorithm>
#include <cstring>

namespace os {
namespace {

constexpr uint64_t kFlagBits = 0xf0000000;  // N, Z, C and V of the processor state

// Bits of the processor state that a program may change by itself, and that are in force while the
// runtime runs, too: SSBS and DIT, where the processor has them.
constexpr uint64_t kSsbs = 1U << 12, kDit = 1U << 24;
bool has(uint64_t capability) { return (getauxval(AT_HWCAP) & capability) != 0; }

uint64_t read_modes() {
  uint64_t ssbs = 0, dit = 0;
  if (has(HWCAP_SSBS)) {
    asm volatile("mrs %0, s3_3_c4_c2_6" : "=r"(ssbs));
  }
  if (has(HWCAP_DIT)) {
    asm volatile("mrs %0, s3_3_c4_c2_5" : "=r"(dit));
  }
  return (ssbs & kSsbs) | (dit & kDit);
}

}  // namespace

void write_modes(const mcontext_t& machine) {
  if (has(HWCAP_SSBS)) {
    asm volatile("msr s3_3_c4_c2_6, %0" ::"r"(machine.pstate & kSsbs));
  }
  if (has(HWCAP_DIT)) {
    asm volatile("msr s3_3_c4_c2_5, %0" ::"r"(machine.pstate & kDit));
  }
}

const RecordHead* find_record(const mcontext_t& machine, uint32_t magic) {
  const auto* area = reinterpret_cast<const unsigned char*>(machine.__reserved);
  size_t at = 0;
  while (at + sizeof(RecordHead) <= sizeof machine.__reserved) {
    const auto* head = reinterpret_cast<const RecordHead*>(area + at);
    const size_t room = sizeof machine.__reserved - at;
    if (head->size < sizeof(RecordHead) || head->size > room) {
      return nullptr;
    }
    if (head->magic == magic) {
      return head;
    }
    at += head->size;
  }
  return nullptr;
}

void load_registers(core::Context& context, const mcontext_t& machine) {
  std::copy_n(machine.regs, 31, context.x);
  context.sp = machine.sp;
  context.pc = machine.pc;
  context.nzcv = machine.pstate & kFlagBits;
  const RecordHead* head = find_record(machine, FPSIMD_MAGIC);
  if (head != nullptr && head->size >= sizeof(fpsimd_context)) {
    const auto& vectors = *reinterpret_cast<const fpsimd_context*>(head);
    context.fpsr = vectors.fpsr;
    context.fpcr = vectors.fpcr;
    std::memcpy(context.q, vectors.vregs, sizeof context.q);
  }
}

void store_registers(const core::Context& context, mcontext_t& machine) {
  std::copy_n(context.x, 31, machine.regs);
  machine.sp = context.sp;
  machine.pc = context.pc;
  machine.pstate = context.nzcv | read_modes();
  auto& vectors = *reinterpret_cast<fpsimd_context*>(machine.__reserved);
  vectors.head = {FPSIMD_MAGIC, sizeof vectors};
  vectors.fpsr = static_cast<uint32_t>(context.fpsr);
  vectors.fpcr = static_cast<uint32_t>(context.fpcr);
  std::memcpy(vectors.vregs, context.q, sizeof context.q);
}

}  // namespace os
