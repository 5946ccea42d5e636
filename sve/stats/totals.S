// The total, and directly behind it the mutex whose lock word a step of counting changes together
// with it (statistics.cpp): 16 bytes that one atomic instruction can take. Zero is a free mutex.

        .bss
        .balign 64  // nothing else is written in their cache line
        .global sve_instr_count
        .type sve_instr_count, %object
        .size sve_instr_count, 8
        .global icounts_mutex
        .type icounts_mutex, %object
        .size icounts_mutex, 56
sve_instr_count:
        .zero 8
icounts_mutex:
        .zero 56

        .section .note.GNU-stack, "", %progbits
