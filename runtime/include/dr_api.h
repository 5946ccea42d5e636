// The instrumentation interface: what a client library may ask of the runtime that loads it.
//
// The client sees each basic block of the application as a list of instructions before it runs and
// may insert instructions of its own. Addresses of the application are `app_pc`; a thread is known
// by its opaque `drcontext`. All functions have C linkage.
//
// A client library that is compiled with DR_RUNTIME_IS_OPTIONAL refers to them weakly: it loads
// without a runtime at hand, also where everything is bound at once.
#pragma once

#include <cstddef>
#include <cstdint>

#define DR_EXPORT extern "C" __attribute__((visibility("default")))
#ifdef DR_RUNTIME_IS_OPTIONAL
#define DR_API DR_EXPORT __attribute__((weak))
#else
#define DR_API DR_EXPORT
#endif

using byte = unsigned char;
using uint = unsigned int;
using app_pc = unsigned char*;
using ptr_int_t = std::int64_t;
using ptr_uint_t = std::uint64_t;
using client_id_t = unsigned int;
using file_t = int;

// ---- registers ----------------------------------------------------------------------------------

using reg_id_t = unsigned short;

// Each group is in the order of the register numbers: DR_REG_W5 is DR_REG_W0 + 5.
enum : reg_id_t {
  DR_REG_NULL = 0,
  // clang-format off
  DR_REG_X0, DR_REG_X1, DR_REG_X2, DR_REG_X3, DR_REG_X4, DR_REG_X5, DR_REG_X6, DR_REG_X7,
  DR_REG_X8, DR_REG_X9, DR_REG_X10, DR_REG_X11, DR_REG_X12, DR_REG_X13, DR_REG_X14, DR_REG_X15,
  DR_REG_X16, DR_REG_X17, DR_REG_X18, DR_REG_X19, DR_REG_X20, DR_REG_X21, DR_REG_X22, DR_REG_X23,
  DR_REG_X24, DR_REG_X25, DR_REG_X26, DR_REG_X27, DR_REG_X28, DR_REG_X29, DR_REG_X30,
  DR_REG_XZR,
  DR_REG_XSP,
  DR_REG_W0, DR_REG_W1, DR_REG_W2, DR_REG_W3, DR_REG_W4, DR_REG_W5, DR_REG_W6, DR_REG_W7,
  DR_REG_W8, DR_REG_W9, DR_REG_W10, DR_REG_W11, DR_REG_W12, DR_REG_W13, DR_REG_W14, DR_REG_W15,
  DR_REG_W16, DR_REG_W17, DR_REG_W18, DR_REG_W19, DR_REG_W20, DR_REG_W21, DR_REG_W22, DR_REG_W23,
  DR_REG_W24, DR_REG_W25, DR_REG_W26, DR_REG_W27, DR_REG_W28, DR_REG_W29, DR_REG_W30,
  DR_REG_WZR,
  DR_REG_WSP,
  DR_REG_Q0, DR_REG_Q1, DR_REG_Q2, DR_REG_Q3, DR_REG_Q4, DR_REG_Q5, DR_REG_Q6, DR_REG_Q7,
  DR_REG_Q8, DR_REG_Q9, DR_REG_Q10, DR_REG_Q11, DR_REG_Q12, DR_REG_Q13, DR_REG_Q14, DR_REG_Q15,
  DR_REG_Q16, DR_REG_Q17, DR_REG_Q18, DR_REG_Q19, DR_REG_Q20, DR_REG_Q21, DR_REG_Q22, DR_REG_Q23,
  DR_REG_Q24, DR_REG_Q25, DR_REG_Q26, DR_REG_Q27, DR_REG_Q28, DR_REG_Q29, DR_REG_Q30, DR_REG_Q31,
  // clang-format on
  DR_REG_NZCV,
  DR_REG_FPCR,
  DR_REG_FPSR,
  DR_REG_SP = DR_REG_XSP,
};

// ---- operands -----------------------------------------------------------------------------------

// An operand's width in bytes.
using opnd_size_t = unsigned char;
enum : opnd_size_t { OPSZ_NA = 0, OPSZ_1 = 1, OPSZ_4 = 4, OPSZ_8 = 8, OPSZ_16 = 16 };

using dr_opnd_flags_t = unsigned char;
enum : dr_opnd_flags_t {
  DR_OPND_DEFAULT = 0,
  DR_OPND_SHIFTED = 1,   // a register whose value is shifted by the shift operands behind it
  DR_OPND_IS_SHIFT = 2,  // an immediate that names the kind of shift, a dr_shift_type_t
};

enum dr_shift_type_t { DR_SHIFT_LSL = 0, DR_SHIFT_LSR = 1, DR_SHIFT_ASR = 2, DR_SHIFT_ROR = 3 };

enum opnd_kind_t : unsigned char { OPND_NULL, OPND_REG, OPND_BASE_DISP, OPND_IMMED_INT };

// An operand by value. Use the functions below rather than the fields.
struct opnd_t {
  opnd_kind_t kind;
  opnd_size_t size;
  dr_opnd_flags_t flags;
  reg_id_t reg;     // the register, or the base of a memory operand
  ptr_int_t value;  // the immediate, or the displacement in bytes
};

// A register operand; its size is that of the register's view.
DR_API opnd_t opnd_create_reg(reg_id_t reg);
// The same with the size and the flags given.
DR_API opnd_t opnd_create_reg_ex(reg_id_t reg, opnd_size_t size, dr_opnd_flags_t flags);
// Memory of `size` bytes at `base` + `disp`. `index` must be DR_REG_NULL and `scale` 0.
DR_API opnd_t opnd_create_base_disp(reg_id_t base, reg_id_t index, int scale, int disp,
                                    opnd_size_t size);
// An immediate of `size` bytes.
DR_API opnd_t opnd_create_immed_int(ptr_int_t value, opnd_size_t size);
// `opnd` with `flags` set in addition to its own.
DR_API opnd_t opnd_add_flags(opnd_t opnd, dr_opnd_flags_t flags);
DR_API bool opnd_is_reg(opnd_t opnd);
// The register of a register operand, DR_REG_NULL for any other operand.
DR_API reg_id_t opnd_get_reg(opnd_t opnd);
DR_API opnd_size_t opnd_get_size(opnd_t opnd);

// ---- instructions -------------------------------------------------------------------------------

struct instr_t;
struct instrlist_t;

// The opcodes that can be built, with the operands they take; `mem` is a base_disp operand whose
// size is that of the whole access, `shift` is an immediate with DR_OPND_IS_SHIFT, `amount` an
// immediate. Application instructions have one of these only where instr_get_opcode says so.
//
//   OP_add  1dst_4src  dst, src, immediate 0..4095, shift LSL, amount 0 or 12     (SP allowed)
//   OP_and  1dst_4src  dst, src, src with DR_OPND_SHIFTED, shift, amount          (XZR allowed)
//   OP_ldr  1dst_1src  W, X or Q register, mem
//   OP_str  1dst_1src  mem, W, X or Q register
//   OP_ldp  2dst_1src  X register, X register, mem
//   OP_stp  1dst_2src  mem, X register, X register
//   OP_mrs  1dst_1src  X register, DR_REG_NZCV, DR_REG_FPCR or DR_REG_FPSR
//   OP_msr  1dst_1src  DR_REG_NZCV, DR_REG_FPCR or DR_REG_FPSR, X register
enum {
  OP_INVALID = 0,
  OP_other,  // an application instruction that is none of the others
  OP_add,
  OP_and,
  OP_ldr,
  OP_str,
  OP_ldp,
  OP_stp,
  OP_mrs,
  OP_msr,
};

// New instructions, not yet in a list. They count as the application's own: a use of the stolen
// register in them means the application's value. Operands that an opcode cannot take end the
// process with a message.
DR_API instr_t* instr_create_1dst_1src(void* drcontext, int opcode, opnd_t dst, opnd_t src);
DR_API instr_t* instr_create_1dst_2src(void* drcontext, int opcode, opnd_t dst, opnd_t src1,
                                       opnd_t src2);
DR_API instr_t* instr_create_2dst_1src(void* drcontext, int opcode, opnd_t dst1, opnd_t dst2,
                                       opnd_t src);
DR_API instr_t* instr_create_1dst_4src(void* drcontext, int opcode, opnd_t dst, opnd_t src1,
                                       opnd_t src2, opnd_t src3, opnd_t src4);
// Frees an instruction that is in no list.
DR_API void instr_destroy(void* drcontext, instr_t* instr);

// A fault at `instr` shall show `pc` as the faulting address. Returns `instr`.
DR_API instr_t* instr_set_translation(instr_t* instr, app_pc pc);
// The address of an application instruction, or the translation of another one.
DR_API app_pc instr_get_app_pc(instr_t* instr);
// The four bytes of the instruction, null for an inserted call.
DR_API byte* instr_get_raw_bits(instr_t* instr);
// OP_msr for the application's MSR (register) to any system register, else OP_other; a created
// instruction gives the opcode it was created with.
DR_API int instr_get_opcode(instr_t* instr);
// Destinations and sources are told for MSR (register) alone; other instructions show none. A
// system register without a name here is DR_REG_NULL.
DR_API int instr_num_dsts(instr_t* instr);
DR_API opnd_t instr_get_dst(instr_t* instr, uint index);
DR_API opnd_t instr_get_src(instr_t* instr, uint index);

// The first instruction of the block that stands for one of the application, null if there is none.
DR_API instr_t* instrlist_first_app(instrlist_t* list);
// The next such instruction behind `instr`, null behind the last.
DR_API instr_t* instr_get_next_app(instr_t* instr);
// Puts `instr` in front of `where`, at the end if `where` is null. The list owns it from then on.
DR_API void instrlist_preinsert(instrlist_t* list, instr_t* where, instr_t* instr);
// Takes `instr` out of the list without freeing it.
DR_API void instrlist_remove(instrlist_t* list, instr_t* instr);

// ---- inserted sequences: never mangled, in front of `where` -------------------------------------

// Per-thread spill slots. A value spilled in a block may be read and written from within a call.
enum dr_spill_slot_t { SPILL_SLOT_1 = 1, SPILL_SLOT_2 = 2, SPILL_SLOT_3 = 3, SPILL_SLOT_MAX = 3 };

// Stores the X register `reg` to `slot`.
DR_API void dr_save_reg(void* drcontext, instrlist_t* list, instr_t* where, reg_id_t reg,
                        dr_spill_slot_t slot);
// Loads the X register `reg` from `slot`.
DR_API void dr_restore_reg(void* drcontext, instrlist_t* list, instr_t* where, reg_id_t reg,
                           dr_spill_slot_t slot);
// The slots of the calling thread, for use in a called function.
DR_API ptr_uint_t dr_read_saved_reg(void* drcontext, dr_spill_slot_t slot);
DR_API void dr_write_saved_reg(void* drcontext, dr_spill_slot_t slot, ptr_uint_t value);

// The register that the runtime keeps for itself: DR_REG_X28.
DR_API reg_id_t dr_get_stolen_reg();
// Moves the application's value of the stolen register into `reg`, or the other way. `reg` is an X
// register other than the stolen one. Returns whether it could be done.
DR_API bool dr_insert_get_stolen_reg_value(void* drcontext, instrlist_t* list, instr_t* where,
                                           reg_id_t reg);
DR_API bool dr_insert_set_stolen_reg_value(void* drcontext, instrlist_t* list, instr_t* where,
                                           reg_id_t reg);
// Loads the constant `value` into the X register `dst`. `first` and `last` receive the first and
// the last inserted instruction if they are not null.
DR_API void instrlist_insert_mov_immed_ptrsz(void* drcontext, ptr_int_t value, opnd_t dst,
                                             instrlist_t* list, instr_t* where, instr_t** first,
                                             instr_t** last);
// Calls `callee` with `argument_count` (0 to 3) arguments, each an immediate opnd_t, on the
// application's thread. `pc` is the application address that the call stands for. The inserted
// code has saved everything by itself: only SP and the callee-saved registers survive, and X26 and
// X27 are not needed.
DR_API void dr_insert_call_tavok(void* drcontext, instrlist_t* list, instr_t* where, app_pc pc,
                                 void* callee, uint argument_count, ...);

// ---- process and threads ------------------------------------------------------------------------

enum dr_emit_flags_t { DR_EMIT_DEFAULT = 0 };

// A module of the application: an executable or a library with its path.
struct module_data_t {
  app_pc start;
  app_pc end;  // behind the last byte
  app_pc entry_point;
  const char* full_path;
};

// The executable, null if there is none. The caller frees the data.
DR_API module_data_t* dr_get_main_module();
// The module that holds `pc`, null if none does. The caller frees the data.
DR_API module_data_t* dr_lookup_module(byte* pc);
DR_API void dr_free_module_data(module_data_t* data);
// The application address of the block with this tag.
DR_API app_pc dr_fragment_app_pc(void* tag);
// `func` runs once, when the process exits.
DR_API void dr_register_exit_event(void (*func)());

// The calling thread, also from within a call that inserted code makes.
DR_API void* dr_get_current_drcontext();
// Zeroed memory, 16-byte aligned, that belongs to the thread: it is part of the state that a signal
// handler of the application saves and restores.
DR_API void* dr_thread_alloc(void* drcontext, size_t size);
DR_API void dr_thread_free(void* drcontext, void* memory, size_t size);

// The name for diagnostics and where to report faults.
DR_API void dr_set_client_name(const char* name, const char* contact);
// Does not return.
DR_API __attribute__((noreturn)) void dr_abort();

// The runtime's standard error. Weak: a client without a runtime loads nevertheless.
extern "C" __attribute__((visibility("default"), weak)) file_t our_stderr;
// As fprintf; returns the number of bytes written or a negative number.
DR_API __attribute__((format(printf, 2, 3))) ptr_int_t dr_fprintf(file_t file, const char* format,
                                                                  ...);

enum : uint { DR_LOG_ALL = 0xffffff };
// A line for the runtime's log; `mask` and `level` select, `drcontext` may be null.
DR_API __attribute__((format(printf, 4, 5))) void dr_log(void* drcontext, uint mask, uint level,
                                                         const char* format, ...);

// ---- what the client exports --------------------------------------------------------------------

// Called once, before the first block is built.
DR_EXPORT void dr_client_main(client_id_t id, int argc, const char* argv[]);
