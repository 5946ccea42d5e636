#include "sve/client/inserted_code.h"

namespace {

constexpr reg_id_t transfer = DR_REG_X26;  // for what has no store of its own
constexpr reg_id_t base = DR_REG_X27;      // the record's address

constexpr unsigned general_pairs_end = 26;  // X0 to X25 travel as pairs, and so do X29 and X30

void insert(const insertion_point& point, instr_t* instr) {
  instrlist_preinsert(point.block, point.where, instr_set_translation(instr, point.pc));
}

opnd_t reg(reg_id_t id) { return opnd_create_reg(id); }

reg_id_t x(unsigned number) { return static_cast<reg_id_t>(DR_REG_X0 + number); }

reg_id_t q(unsigned number) { return static_cast<reg_id_t>(DR_REG_Q0 + number); }

// The 32-bit view of an X register.
reg_id_t w_view(reg_id_t id) { return static_cast<reg_id_t>(id - DR_REG_X0 + DR_REG_W0); }

// A field of the record, by its offset.
opnd_t field(reg_id_t record, size_t offset, opnd_size_t size) {
  return opnd_create_base_disp(record, DR_REG_NULL, 0, static_cast<int>(offset), size);
}

opnd_t x_slot(unsigned number, opnd_size_t size) {
  return field(base, offsetof(cpu_state, x) + number * sizeof(cpu_state::x[0]), size);
}

opnd_t z_slot(unsigned number) {
  return field(base, offsetof(cpu_state, z) + number * sizeof(cpu_state::z[0]), OPSZ_16);
}

opnd_t shift_lsl() {
  return opnd_add_flags(opnd_create_immed_int(DR_SHIFT_LSL, OPSZ_1), DR_OPND_IS_SHIFT);
}

opnd_t small_constant(int value) { return opnd_create_immed_int(value, OPSZ_1); }

// MOV between SP and a general register exists only as ADD of 0.
void insert_sp_move(const insertion_point& point, reg_id_t to, reg_id_t from) {
  insert(point, instr_create_1dst_4src(point.drcontext, OP_add, reg(to), reg(from),
                                       small_constant(0), shift_lsl(), small_constant(0)));
}

void insert_load(const insertion_point& point, reg_id_t to, opnd_t from) {
  insert(point, instr_create_1dst_1src(point.drcontext, OP_ldr, reg(to), from));
}

void insert_store(const insertion_point& point, opnd_t to, reg_id_t from) {
  insert(point, instr_create_1dst_1src(point.drcontext, OP_str, to, reg(from)));
}

void insert_store_pair(const insertion_point& point, unsigned first) {
  insert(point, instr_create_1dst_2src(point.drcontext, OP_stp, x_slot(first, OPSZ_16),
                                       reg(x(first)), reg(x(first + 1))));
}

void insert_load_pair(const insertion_point& point, unsigned first) {
  insert(point, instr_create_2dst_1src(point.drcontext, OP_ldp, reg(x(first)), reg(x(first + 1)),
                                       x_slot(first, OPSZ_16)));
}

void insert_record_address(const insertion_point& point, reg_id_t to) {
  instrlist_insert_mov_immed_ptrsz(point.drcontext, reinterpret_cast<ptr_int_t>(point.record),
                                   reg(to), point.block, point.where, nullptr, nullptr);
}

// A system register and its image in the record.
struct status_field {
  reg_id_t id;
  size_t offset;
  opnd_size_t size;
};

constexpr status_field nzcv = {DR_REG_NZCV, offsetof(cpu_state, nzcv), OPSZ_8};
constexpr status_field fpsr = {DR_REG_FPSR, offsetof(cpu_state, fpsr), OPSZ_4};
constexpr status_field fpcr = {DR_REG_FPCR, offsetof(cpu_state, fpcr), OPSZ_4};

reg_id_t transfer_view(const status_field& status) {
  return status.size == OPSZ_4 ? w_view(transfer) : transfer;
}

void insert_store_status(const insertion_point& point, const status_field& status) {
  insert(point, instr_create_1dst_1src(point.drcontext, OP_mrs, reg(transfer), reg(status.id)));
  insert_store(point, field(base, status.offset, status.size), transfer_view(status));
}

void insert_load_status(const insertion_point& point, const status_field& status) {
  insert_load(point, transfer_view(status), field(base, status.offset, status.size));
  insert(point, instr_create_1dst_1src(point.drcontext, OP_msr, reg(status.id), reg(transfer)));
}

void save(const insertion_point& point, reg_id_t id, dr_spill_slot_t slot) {
  dr_save_reg(point.drcontext, point.block, point.where, id, slot);
}

void restore(const insertion_point& point, reg_id_t id, dr_spill_slot_t slot) {
  dr_restore_reg(point.drcontext, point.block, point.where, id, slot);
}

bool writes_fpcr(instr_t* instr) {
  return instr_get_opcode(instr) == OP_msr && instr_num_dsts(instr) == 1 &&
         opnd_is_reg(instr_get_dst(instr, 0)) &&
         opnd_get_reg(instr_get_dst(instr, 0)) == DR_REG_FPCR;
}

}  // namespace

//   save  X26, slot 1             STP   X0, X1, [X27, x[0]] ...    MRS X26, NZCV
//   save  X27, slot 2             STP   X24, X25, [X27, x[24]]     STR X26, [X27, nzcv]
//   X27 = the application's X28   STP   X29, X30, [X27, x[29]]     MRS X26, FPSR
//   save  X27, slot 3             STR   Q0, [X27, z[0]] ...        STR W26, [X27, fpsr]
//   X27 = record                  STR   Q31, [X27, z[31]]          MRS X26, FPCR
//   ADD   X26, SP, #0                                              STR W26, [X27, fpcr]
//   STR   X26, [X27, x[31]]
void insert_save_state(const insertion_point& point) {
  save(point, DR_REG_X26, slot_of_x26);
  save(point, DR_REG_X27, slot_of_x27);
  dr_insert_get_stolen_reg_value(point.drcontext, point.block, point.where, base);
  save(point, base, slot_of_x28);
  insert_record_address(point, base);
  insert_sp_move(point, transfer, DR_REG_SP);
  insert_store(point, x_slot(stack_pointer, OPSZ_8), transfer);
  for (unsigned n = 0; n < general_pairs_end; n += 2)
    insert_store_pair(point, n);
  insert_store_pair(point, 29);
  for (unsigned n = 0; n < z_registers; n++)
    insert_store(point, z_slot(n), q(n));
  insert_store_status(point, nzcv);
  insert_store_status(point, fpsr);
  insert_store_status(point, fpcr);
}

//   X27 = record                  LDR   Q0, [X27, z[0]] ...        LDR X26, [X27, x[31]]
//   LDR   W26, [X27, fpcr]        LDR   Q31, [X27, z[31]]          ADD SP, X26, #0
//   MSR   FPCR, X26               LDP   X0, X1, [X27, x[0]] ...    restore X27, slot 3
//   LDR   W26, [X27, fpsr]        LDP   X24, X25, [X27, x[24]]     the application's X28 = X27
//   MSR   FPSR, X26               LDP   X29, X30, [X27, x[29]]     restore X27, slot 2
//   LDR   X26, [X27, nzcv]                                         restore X26, slot 1
//   MSR   NZCV, X26
void insert_restore_state(const insertion_point& point) {
  insert_record_address(point, base);
  insert_load_status(point, fpcr);
  insert_load_status(point, fpsr);
  insert_load_status(point, nzcv);
  for (unsigned n = 0; n < z_registers; n++)
    insert_load(point, q(n), z_slot(n));
  for (unsigned n = 0; n < general_pairs_end; n += 2)
    insert_load_pair(point, n);
  insert_load_pair(point, 29);
  insert_load(point, transfer, x_slot(stack_pointer, OPSZ_8));
  insert_sp_move(point, DR_REG_SP, transfer);
  restore(point, base, slot_of_x28);
  dr_insert_set_stolen_reg_value(point.drcontext, point.block, point.where, base);
  restore(point, DR_REG_X27, slot_of_x27);
  restore(point, DR_REG_X26, slot_of_x26);
}

//   save  mask, slot 2;  save address, slot 3
//   mask = 1
//   AND   mask, source, mask, LSL #19
//   address = record
//   STR   W(mask), [address, fz16]
//   restore mask, slot 2;  restore address, slot 3
void insert_fz16_hook(const insertion_point& point) {
  if (!writes_fpcr(point.where))
    return;
  const reg_id_t source = opnd_get_reg(instr_get_src(point.where, 0));
  const reg_id_t mask = source == DR_REG_X20 ? DR_REG_X22 : DR_REG_X20;
  const reg_id_t address = source == DR_REG_X21 ? DR_REG_X22 : DR_REG_X21;
  constexpr dr_spill_slot_t slot_of_mask = SPILL_SLOT_2, slot_of_address = SPILL_SLOT_3;
  constexpr int fz16_bit = __builtin_ctz(fpcr_fz16);

  save(point, mask, slot_of_mask);
  save(point, address, slot_of_address);
  instrlist_insert_mov_immed_ptrsz(point.drcontext, 1, reg(mask), point.block, point.where, nullptr,
                                   nullptr);
  insert(point, instr_create_1dst_4src(point.drcontext, OP_and, reg(mask), reg(source),
                                       opnd_create_reg_ex(mask, OPSZ_8, DR_OPND_SHIFTED),
                                       shift_lsl(), small_constant(fz16_bit)));
  insert_record_address(point, address);
  insert_store(point, field(address, offsetof(cpu_state, fz16), OPSZ_4), w_view(mask));
  restore(point, mask, slot_of_mask);
  restore(point, address, slot_of_address);
}
