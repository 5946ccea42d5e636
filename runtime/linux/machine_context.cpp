#include "runtime/linux/machine_context.h"

#include <asm/sigcontext.h>

#include <algorithm>
#include <cstring>

namespace os {
namespace {

constexpr uint64_t kFlagBits = 0xf0000000;  // N, Z, C and V of the processor state

}  // namespace

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
  machine.pstate = context.nzcv;
  auto& vectors = *reinterpret_cast<fpsimd_context*>(machine.__reserved);
  vectors.head = {FPSIMD_MAGIC, sizeof vectors};
  vectors.fpsr = static_cast<uint32_t>(context.fpsr);
  vectors.fpcr = static_cast<uint32_t>(context.fpcr);
  std::memcpy(vectors.vregs, context.q, sizeof context.q);
}

}  // namespace os
