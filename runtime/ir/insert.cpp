// Sequences that the runtime inserts on the client's behalf. They are final: X28 in them is the
// thread's context.
#include <cstdarg>

#include "runtime/ir/arena.h"
#include "runtime/ir/encode.h"
#include "runtime/ir/ir.h"
#include "runtime/ir/mov_immediate.h"

namespace {

// A fault in inserted code shows the instruction in front of which it stands.
app_pc translation(const instr_t* where) { return where != nullptr ? where->pc : nullptr; }

instr_t* insert_meta(void* drcontext, instrlist_t* list, instr_t* where, std::uint32_t word) {
  instr_t* const instr = ir::new_meta(ir::arena_of(drcontext), word, translation(where));
  instrlist_preinsert(list, where, instr);
  return instr;
}

bool is_usable(reg_id_t reg) {
  return reg >= DR_REG_X0 && reg <= DR_REG_X30 && reg != dr_get_stolen_reg();
}

unsigned usable_number(reg_id_t reg) {
  if (!is_usable(reg)) {
    ir::cannot_encode("spill or constant load of a register other than X0 to X27, X29, X30");
  }
  return ir::register_number(reg);
}

}  // namespace

namespace ir {

unsigned slot_offset(dr_spill_slot_t slot) {
  if (slot < SPILL_SLOT_1 || slot > SPILL_SLOT_MAX) {
    cannot_encode("spill slot");
  }
  return runtime_layout.first_slot + (slot - SPILL_SLOT_1) * unsigned{sizeof(std::uint64_t)};
}

}  // namespace ir

reg_id_t dr_get_stolen_reg() { return DR_REG_X0 + ir::stolen_register; }

void dr_save_reg(void* drcontext, instrlist_t* list, instr_t* where, reg_id_t reg,
                 dr_spill_slot_t slot) {
  insert_meta(drcontext, list, where,
              ir::enc::str_x(usable_number(reg), ir::stolen_register, ir::slot_offset(slot)));
}

void dr_restore_reg(void* drcontext, instrlist_t* list, instr_t* where, reg_id_t reg,
                    dr_spill_slot_t slot) {
  insert_meta(drcontext, list, where,
              ir::enc::ldr_x(usable_number(reg), ir::stolen_register, ir::slot_offset(slot)));
}

bool dr_insert_get_stolen_reg_value(void* drcontext, instrlist_t* list, instr_t* where,
                                    reg_id_t reg) {
  if (!is_usable(reg)) {
    return false;
  }
  insert_meta(drcontext, list, where,
              ir::enc::ldr_x(ir::register_number(reg), ir::stolen_register,
                             ir::runtime_layout.stolen_value));
  return true;
}

bool dr_insert_set_stolen_reg_value(void* drcontext, instrlist_t* list, instr_t* where,
                                    reg_id_t reg) {
  if (!is_usable(reg)) {
    return false;
  }
  insert_meta(drcontext, list, where,
              ir::enc::str_x(ir::register_number(reg), ir::stolen_register,
                             ir::runtime_layout.stolen_value));
  return true;
}

void instrlist_insert_mov_immed_ptrsz(void* drcontext, ptr_int_t value, opnd_t dst,
                                      instrlist_t* list, instr_t* where, instr_t** first,
                                      instr_t** last) {
  std::uint32_t words[ir::mov_immediate_max];
  const unsigned length =
      ir::mov_immediate(usable_number(opnd_get_reg(dst)), static_cast<std::uint64_t>(value), words);
  for (unsigned i = 0; i < length; ++i) {
    instr_t* const instr = insert_meta(drcontext, list, where, words[i]);
    if (i == 0 && first != nullptr) {
      *first = instr;
    }
    if (i == length - 1 && last != nullptr) {
      *last = instr;
    }
  }
}

void dr_insert_call_tavok(void* drcontext, instrlist_t* list, instr_t* where, app_pc pc,
                          void* callee, uint argument_count, ...) {
  if (argument_count > ir::max_call_arguments) {
    ir::cannot_encode("call with more than three arguments");
  }
  instr_t* const call = ir::allocate(ir::arena_of(drcontext));
  call->kind = ir::kind::call;
  call->pc = pc;
  call->call.callee = callee;
  std::va_list arguments;
  va_start(arguments, argument_count);
  for (uint i = 0; i < argument_count; ++i) {
    const opnd_t argument = va_arg(arguments, opnd_t);
    if (argument.kind != OPND_IMMED_INT) {
      ir::cannot_encode("call with an argument that is no immediate");
    }
    // A 4-byte argument is passed as the callee's unsigned int: the upper half means nothing.
    const auto value = static_cast<std::uint64_t>(argument.value);
    call->call.arguments[i] = argument.size == OPSZ_4 ? static_cast<std::uint32_t>(value) : value;
  }
  va_end(arguments);
  instrlist_preinsert(list, where, call);
  list->calls = true;
}
