// The code that the client inserts into a block: the exchange between the host's registers and the
// thread's record around an emulated instruction, and the watch over FPCR.FZ16.
#pragma once

#include "dr_api.h"
#include "sve/state/cpu_state.h"

// Where code is inserted, and for whom.
struct insertion_point {
  void* drcontext;
  instrlist_t* block;
  instr_t* where;     // code goes in front of this instruction of the application
  app_pc pc;          // the application's address that the code stands for
  cpu_state* record;  // the thread's; its address becomes a constant of the code
};

// Slots that hold the application's registers while inserted code uses them as its own.
inline constexpr dr_spill_slot_t slot_of_x26 = SPILL_SLOT_1;
inline constexpr dr_spill_slot_t slot_of_x27 = SPILL_SLOT_2;
inline constexpr dr_spill_slot_t slot_of_x28 = SPILL_SLOT_3;

// Inserts the move of all registers that the emulation knows into the record and, for X26 to X28,
// into their slots. Behind it X26 and X27 are free.
void insert_save_state(const insertion_point& point);

// Inserts the way back. X26 and X27 may hold anything in front of it.
void insert_restore_state(const insertion_point& point);

// If the instruction at the point is MSR FPCR, inserts a store of the new value's FZ16 bit to the
// record's fz16. The host's own FPCR need not keep that bit.
void insert_fz16_hook(const insertion_point& point);
