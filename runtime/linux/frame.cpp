// The frame that a handler of the application sees, and the return from it.
//
//   application's SP (or the end of its alternate stack)
//     frame record {X29, X30}      the handler's X29 points here
//     kernel's frame: siginfo, ucontext with the FPSIMD record, that of the fault's syndrome, the
//     SVE record if the application knows of SVE, one of the runtime's own, an end record
//                                                                          <- the handler's SP
//
// The runtime's record holds the client's memory for the thread: it is restored on return, like
// registers that the kernel would save. A frame is no larger for it, so an alternate stack of the
// least size still holds one.
#include <asm/sigcontext.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "runtime/core/code_map.h"
#include "runtime/core/entry.h"
#include "runtime/core/fatal.h"
#include "runtime/core/identification.h"
#include "runtime/ir/encode.h"
#include "runtime/linux/client_switches.h"
#include "runtime/linux/machine_context.h"
#include "runtime/linux/mappings.h"
#include "runtime/linux/pages.h"
#include "runtime/linux/signals.h"
#include "runtime/linux/syscalls.h"

namespace os {

bool on_alternate_stack(const Thread& thread) {
  const stack_t& stack = thread.signals.alternate;
  const uint64_t sp = thread.context.sp;
  const auto begin = reinterpret_cast<uint64_t>(stack.ss_sp);
  return (stack.ss_flags & SS_DISABLE) == 0 && sp > begin && sp - begin <= stack.ss_size;
}

namespace {

constexpr uint64_t kStackAlignment = 16;
constexpr uint32_t kThreadMemoryMagic = 0x54564b4d;

struct Frame {
  siginfo_t info;
  ucontext_t context;
};
static_assert(sizeof(Frame) + 2 * kStackAlignment <= kSignalFrameSize);

bool is_fault(const siginfo_t& info) { return info.si_signo == SIGSEGV || info.si_signo == SIGBUS; }

uint64_t align_down(uint64_t address) { return address & ~(kStackAlignment - 1); }

uint64_t frame_top(const Thread& thread, const SignalAction& action) {
  const stack_t& alternate = thread.signals.alternate;
  const bool change = (action.flags & SA_ONSTACK) != 0 && (alternate.ss_flags & SS_DISABLE) == 0 &&
                      !on_alternate_stack(thread);
  return align_down(change ? reinterpret_cast<uint64_t>(alternate.ss_sp) + alternate.ss_size
                           : thread.context.sp);
}

bool write(uint64_t address, const void* from, size_t size) {
  return core_copy(reinterpret_cast<void*>(address), from, size) == 0;
}

// Of a record with `size` bytes behind its head.
size_t record_size(size_t size) {
  return (sizeof(RecordHead) + size + kStackAlignment - 1) & ~(kStackAlignment - 1);
}

// The next record of the area behind the registers, with `size` bytes behind its head.
unsigned char* add_record(mcontext_t& machine, size_t& used, uint32_t magic, size_t size) {
  const size_t total = record_size(size);
  if (used + total + sizeof(RecordHead) > sizeof machine.__reserved) {
    core::fatal("the client's memory for a thread does not fit a signal frame");
  }
  unsigned char* at = machine.__reserved + used;
  new (at) RecordHead{magic, static_cast<uint32_t>(total)};
  used += total;
  return at + sizeof(RecordHead);
}

// As Linux lays it out: the head, then Z0 to Z31, P0 to P15 and FFR.
struct SveRecord {
  uint16_t length;  // of a Z register, in bytes
  uint16_t flags;
  uint16_t reserved[2];
  unsigned char z[32][kVectorBytes];
  unsigned char predicates[kPredicateBytes];
};
static_assert(sizeof(RecordHead) + offsetof(SveRecord, z) == SVE_SIG_REGS_OFFSET);
static_assert(sizeof(RecordHead) + offsetof(SveRecord, predicates) == SVE_SIG_PREGS_OFFSET(1));

bool keeps_sve_record() { return core::tells_of_sve && sve_save_predicates != nullptr; }

void add_sve_record(Thread& thread, mcontext_t& machine, size_t& used) {
  SveRecord record = {kVectorBytes, 0, {}, {}, {}};
  std::memcpy(record.z, thread.context.q, sizeof record.z);
  sve_save_predicates(&thread.context, record.predicates);
  unsigned char* to = add_record(machine, used, SVE_MAGIC, sizeof record);
  std::memcpy(to, &record, sizeof record);
}

// What the handler left: the predicates are the record's, and zero without any, or if it has its
// head alone. Of Z all bits come back from the FPSIMD record. False for a record of another vector
// length or of streaming mode, or in part.
bool load_sve_record(Thread& thread, const mcontext_t& machine) {
  SveRecord record = {};
  const RecordHead* head = find_record(machine, SVE_MAGIC);
  if (head != nullptr) {
    const size_t given = head->size - sizeof *head;
    std::memcpy(&record, head + 1, std::min(given, sizeof record));
    const bool whole = given >= sizeof record || head->size == SVE_SIG_REGS_OFFSET;
    if (record.length != kVectorBytes || (record.flags & SVE_SIG_FLAG_SM) != 0 || !whole) {
      return false;
    }
  }
  sve_load_predicates(&thread.context, record.predicates);
  return true;
}

void fill_frame(Thread& thread, const SignalAction& action, const siginfo_t& info, Frame& frame) {
  const ThreadSignals& signals = thread.signals;
  std::memset(static_cast<void*>(&frame), 0, sizeof frame);
  frame.info = info;
  if (is_fault(info) && (action.flags & kExposeTag) != 0) {
    frame.info.si_addr =
        reinterpret_cast<void*>(reinterpret_cast<uint64_t>(info.si_addr) | signals.fault_tag);
  }
  frame.context.uc_stack = signals.alternate;
  if (on_alternate_stack(thread)) {
    frame.context.uc_stack.ss_flags = SS_ONSTACK;
  }
  std::memcpy(&frame.context.uc_sigmask, &signals.mask, sizeof signals.mask);
  mcontext_t& machine = frame.context.uc_mcontext;
  store_registers(thread.context, machine);
  size_t used = sizeof(fpsimd_context);
  if (is_fault(info)) {
    machine.fault_address = reinterpret_cast<uint64_t>(info.si_addr);
    if (signals.fault_syndrome != 0) {
      auto* to = add_record(machine, used, ESR_MAGIC, sizeof signals.fault_syndrome);
      std::memcpy(to, &signals.fault_syndrome, sizeof signals.fault_syndrome);
    }
  }
  if (keeps_sve_record()) {
    add_sve_record(thread, machine, used);
  }
  const size_t memory = core::thread_memory_size(thread.context);
  core::save_thread_memory(thread.context, add_record(machine, used, kThreadMemoryMagic, memory));
}

void set_handler_mask(Thread& thread, const SignalAction& action, int signal) {
  ThreadSignals& signals = thread.signals;
  const uint64_t base = signals.has_temporary_mask ? signals.temporary_mask : signals.mask;
  signals.has_temporary_mask = false;
  signals.mask = base | action.mask;
  if ((action.flags & SA_NODEFER) == 0) {
    signals.mask |= signal_bit(signal);
  }
}

// Whether Linux would take the records of a frame: these and no others, up to the end record. It
// also takes one that lies elsewhere, if there is no room for it.
bool has_valid_records(const core::Context& context, const mcontext_t& machine) {
  constexpr size_t kArea = sizeof machine.__reserved;
  bool vectors = false, sve = false;
  for (size_t at = 0; at % kStackAlignment == 0 && kArea - at >= sizeof(RecordHead);) {
    const auto& head = *reinterpret_cast<const RecordHead*>(machine.__reserved + at);
    if (head.magic == 0) {
      return head.size == 0 && vectors;
    }
    bool valid = head.size >= sizeof head && head.size <= kArea - at;
    if (head.magic == FPSIMD_MAGIC) {
      valid = valid && !vectors && head.size == sizeof(fpsimd_context);
      vectors = true;
    } else if (head.magic == SVE_MAGIC) {
      valid = valid && !sve && keeps_sve_record() && head.size >= SVE_SIG_REGS_OFFSET;
      sve = true;
    } else if (head.magic == kThreadMemoryMagic) {
      valid = valid && head.size == record_size(core::thread_memory_size(context));
    } else {
      valid = valid && head.magic == ESR_MAGIC;
    }
    if (!valid) {
      return false;
    }
    at += head.size;
  }
  return false;
}

// What rt_sigreturn finds at SP. False if Linux would not take it: then some of it is done.
bool load_frame(Thread& thread) {
  constexpr uint64_t kOtherModes = 0x3df;  // of the processor state: not a program's to choose
  core::Context& context = thread.context;
  Frame frame;
  if (context.sp % kStackAlignment != 0 ||
      core_copy(&frame, reinterpret_cast<const void*>(context.sp), sizeof frame) != 0) {
    return false;
  }
  const mcontext_t& machine = frame.context.uc_mcontext;
  const bool valid = (machine.pstate & kOtherModes) == 0 && has_valid_records(context, machine);
  uint64_t mask;
  std::memcpy(&mask, &frame.context.uc_sigmask, sizeof mask);
  thread.signals.mask = mask & ~kUnblockable;
  thread.signals.has_temporary_mask = false;
  load_registers(context, machine);
  write_modes(machine);
  if (!valid) {
    return false;
  }
  // First, since it has predicates, too: those of the SVE record are what the handler may change.
  if (const RecordHead* record = find_record(machine, kThreadMemoryMagic)) {
    core::restore_thread_memory(context, reinterpret_cast<const unsigned char*>(record + 1));
  }
  if (keeps_sve_record() && !load_sve_record(thread, machine)) {
    return false;
  }
  set_alternate_stack(thread, frame.context.uc_stack);
  return true;
}

// No frame can be written: as the kernel does.
[[noreturn]] void force_segv() {
  act_by_default(SIGSEGV);
  core::fatal("a signal frame cannot be written");
}

}  // namespace

uint64_t sigreturn_page() {
  static const uint64_t page = [] {
    void* memory =
        mmap(nullptr, page_size(), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
      core::fatal("no memory for the signal return page");
    }
    // Unwinders know a signal frame by these two instructions.
    constexpr unsigned kNumberRegister = 8, kRtSigreturn = 139;
    const uint32_t code[] = {ir::enc::movz(kNumberRegister, kRtSigreturn), ir::enc::svc(0)};
    std::memcpy(memory, code, sizeof code);
    mprotect(memory, page_size(), PROT_READ);
    const auto begin = reinterpret_cast<uint64_t>(memory);
    core::allow_execution(begin, begin + page_size());
    note_application_memory(begin, begin + page_size());
    return begin;
  }();
  return page;
}

void push_frame(Thread& thread, const SignalAction& action, const siginfo_t& info) {
  core::Context& context = thread.context;
  const uint64_t record = frame_top(thread, action) - 2 * sizeof(uint64_t);
  const uint64_t record_words[] = {context.x[29], context.x[30]};
  const uint64_t frame_at = align_down(record - sizeof(Frame));
  Frame frame;
  fill_frame(thread, action, info, frame);
  if (!write(record, record_words, sizeof record_words) || !write(frame_at, &frame, sizeof frame)) {
    if (info.si_signo == SIGSEGV || !application_handles(thread, SIGSEGV)) {
      force_segv();
    }
    raise_fault(thread, SIGSEGV, SI_KERNEL, 0);
    return;
  }
  set_handler_mask(thread, action, info.si_signo);
  context.x[0] = static_cast<uint64_t>(info.si_signo);
  if ((action.flags & SA_SIGINFO) != 0) {
    context.x[1] = frame_at + offsetof(Frame, info);
    context.x[2] = frame_at + offsetof(Frame, context);
  }
  context.x[29] = record;
  context.x[30] = (action.flags & kRestorer) != 0 ? action.restorer : sigreturn_page();
  context.sp = frame_at;
  context.pc = action.handler;
}

int64_t sys_rt_sigreturn(Thread& thread, const Call&) {
  core::Context& context = thread.context;
  // What the handler's mask lets in comes before the return, whose mask may not.
  set_kernel_mask(kAllSignals);
  if ((context.pending & ~core::kChangesPending) != 0) {
    return kNotMade;
  }
  const bool taken = load_frame(thread);
  apply_mask(thread);
  if (!taken) {
    context.x[0] = 0;  // the call's result
    raise_fault(thread, SIGSEGV, SEGV_ACCERR, context.sp);
  }
  return kNoResult;
}

}  // namespace os
