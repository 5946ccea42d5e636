// Lists of instructions.
#include "runtime/ir/arena.h"
#include "runtime/ir/ir.h"

namespace {

instr_t* first_app_from(instr_t* instr) {
  while (instr != nullptr && !ir::is_app(*instr)) {
    instr = instr->next;
  }
  return instr;
}

}  // namespace

instr_t* instrlist_first_app(instrlist_t* list) { return first_app_from(list->first); }

instr_t* instr_get_next_app(instr_t* instr) { return first_app_from(instr->next); }

void instrlist_preinsert(instrlist_t* list, instr_t* where, instr_t* instr) {
  instr_t* const before = where != nullptr ? where->previous : list->last;
  instr->previous = before;
  instr->next = where;
  (before != nullptr ? before->next : list->first) = instr;
  (where != nullptr ? where->previous : list->last) = instr;
}

void instrlist_remove(instrlist_t* list, instr_t* instr) {
  (instr->previous != nullptr ? instr->previous->next : list->first) = instr->next;
  (instr->next != nullptr ? instr->next->previous : list->last) = instr->previous;
  instr->previous = nullptr;
  instr->next = nullptr;
}

namespace ir {

void append(instrlist_t& list, instr_t* instr) { instrlist_preinsert(&list, nullptr, instr); }

void clear(arena& memory, instrlist_t& list) {
  if (list.first != nullptr) {
    list.last->next = memory.free;
    memory.free = list.first;
  }
  list = {};
}

}  // namespace ir
