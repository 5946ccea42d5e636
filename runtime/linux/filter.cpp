#include "runtime/linux/filter.h"

#include <algorithm>
#include <cstring>

namespace os {
namespace {

struct Machine {
  uint32_t a = 0, x = 0;
  uint32_t memory[BPF_MEMWORDS] = {};
};

bool is_arithmetic(const sock_filter& at) {
  const uint32_t operation = BPF_OP(at.code);
  const bool by_constant = BPF_SRC(at.code) == BPF_K;
  if ((at.code & ~(0xf0 | BPF_X)) != BPF_ALU || operation > BPF_XOR) {
    return false;
  }
  if (operation == BPF_NEG) {
    return by_constant;
  }
  const bool divides = operation == BPF_DIV || operation == BPF_MOD;
  const bool shifts = operation == BPF_LSH || operation == BPF_RSH;
  return !by_constant || ((!divides || at.k != 0) && (!shifts || at.k < 32));
}

// `behind`: how many instructions follow.
bool is_jump(const sock_filter& at, size_t behind) {
  switch (at.code & ~BPF_X) {
  case BPF_JMP | BPF_JEQ:
  case BPF_JMP | BPF_JGT:
  case BPF_JMP | BPF_JGE:
  case BPF_JMP | BPF_JSET:
    return at.jt < behind && at.jf < behind;
  default:
    return at.code == (BPF_JMP | BPF_JA) && at.k < behind;
  }
}

bool is_other(const sock_filter& at) {
  switch (at.code) {
  case BPF_LD | BPF_W | BPF_ABS:
    return at.k < sizeof(seccomp_data) && at.k % sizeof(uint32_t) == 0;
  case BPF_LD | BPF_MEM:
  case BPF_LDX | BPF_MEM:
  case BPF_ST:
  case BPF_STX:
    return at.k < BPF_MEMWORDS;
  case BPF_LD | BPF_IMM:
  case BPF_LDX | BPF_IMM:
  case BPF_LD | BPF_W | BPF_LEN:
  case BPF_LDX | BPF_W | BPF_LEN:
  case BPF_MISC | BPF_TAX:
  case BPF_MISC | BPF_TXA:
  case BPF_RET | BPF_K:
  case BPF_RET | BPF_A:
    return true;
  default:
    return false;
  }
}

// Division by an X of zero ends the program with 0: false.
bool compute(uint32_t code, uint32_t operand, uint32_t& a) {
  switch (BPF_OP(code)) {
  case BPF_ADD:
    a += operand;
    break;
  case BPF_SUB:
    a -= operand;
    break;
  case BPF_MUL:
    a *= operand;
    break;
  case BPF_DIV:
  case BPF_MOD:
    if (operand == 0) {
      return false;
    }
    a = BPF_OP(code) == BPF_DIV ? a / operand : a % operand;
    break;
  case BPF_AND:
    a &= operand;
    break;
  case BPF_OR:
    a |= operand;
    break;
  case BPF_XOR:
    a ^= operand;
    break;
  case BPF_LSH:
    a <<= operand & 31;
    break;
  case BPF_RSH:
    a >>= operand & 31;
    break;
  default:
    a = -a;
    break;
  }
  return true;
}

bool holds(uint32_t code, uint32_t operand, uint32_t a) {
  switch (BPF_OP(code)) {
  case BPF_JEQ:
    return a == operand;
  case BPF_JGT:
    return a > operand;
  case BPF_JGE:
    return a >= operand;
  default:
    return (a & operand) != 0;
  }
}

void move(const sock_filter& at, const seccomp_data& data, Machine& machine) {
  uint32_t& to = BPF_CLASS(at.code) == BPF_LDX ? machine.x : machine.a;
  switch (at.code) {
  case BPF_LD | BPF_W | BPF_ABS:
    std::memcpy(&to, reinterpret_cast<const char*>(&data) + at.k, sizeof to);
    break;
  case BPF_LD | BPF_MEM:
  case BPF_LDX | BPF_MEM:
    to = machine.memory[at.k];
    break;
  case BPF_ST:
    machine.memory[at.k] = machine.a;
    break;
  case BPF_STX:
    machine.memory[at.k] = machine.x;
    break;
  case BPF_MISC | BPF_TAX:
    machine.x = machine.a;
    break;
  case BPF_MISC | BPF_TXA:
    machine.a = machine.x;
    break;
  default:
    to = BPF_MODE(at.code) == BPF_LEN ? sizeof data : at.k;
    break;
  }
}

}  // namespace

bool is_filter(const std::vector<sock_filter>& program) {
  size_t behind = program.size();
  return behind != 0 && behind <= BPF_MAXINSNS && BPF_CLASS(program.back().code) == BPF_RET &&
         std::ranges::all_of(program, [&](const sock_filter& at) {
           --behind;
           return is_arithmetic(at) || is_jump(at, behind) || is_other(at);
         });
}

uint32_t run_filter(const std::vector<sock_filter>& program, const seccomp_data& data) {
  Machine machine;
  for (const sock_filter* at = program.data();; ++at) {
    const uint32_t operand = BPF_SRC(at->code) == BPF_X ? machine.x : at->k;
    switch (BPF_CLASS(at->code)) {
    case BPF_RET:
      return BPF_RVAL(at->code) == BPF_A ? machine.a : at->k;
    case BPF_JMP:
      at += BPF_OP(at->code) == BPF_JA ? at->k
                                       : (holds(at->code, operand, machine.a) ? at->jt : at->jf);
      break;
    case BPF_ALU:
      if (!compute(at->code, operand, machine.a)) {
        return SECCOMP_RET_KILL_THREAD;
      }
      break;
    default:
      move(*at, data, machine);
      break;
    }
  }
}

}  // namespace os
