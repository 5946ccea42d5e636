// A system call of the application, made by the runtime.
//
// A signal between os_call_check and the SVC (the SVC included: that is also where the kernel sends
// a call back that it restarts) is sent to os_call_bail by the handler, so a call never begins while
// a signal waits to be delivered.

#include "runtime/core/context_offsets.h"

#define CALL_NOT_MADE 512

        .text
        .global os_call, os_call_check, os_call_svc, os_call_bail
        .hidden os_call, os_call_check, os_call_svc, os_call_bail
        .type os_call, %function
        .balign 16
// int64_t os_call(core::Context* context, uint64_t number, const uint64_t arguments[6])
os_call:
        mov x9, x0
        mov x8, x1
        mov x10, x2
        ldp x0, x1, [x10]
        ldp x2, x3, [x10, #16]
        ldp x4, x5, [x10, #32]
os_call_check:
        ldr x11, [x9, #CTX_PENDING]
        lsr x11, x11, #1        // bit 0 asks for a flush: no business of a call
        cbnz x11, os_call_bail
os_call_svc:
        svc #0
        ret
os_call_bail:
        mov x0, #-CALL_NOT_MADE
        ret

// int64_t os_vfork(uint64_t flags, void (*child)(void*), void* argument)
//
// The child goes on below this frame; the parent finds its return address in X30, not in memory that
// the child may have changed.
        .global os_vfork
        .hidden os_vfork
        .type os_vfork, %function
        .balign 16
os_vfork:
        mov x9, x1
        mov x10, x2
        mov x1, #0
        mov x2, #0
        mov x3, #0
        mov x4, #0
        mov x8, #220            // clone
        svc #0
        cbz x0, 1f
        ret
1:      sub sp, sp, #256        // clear of what the caller keeps
        mov x29, #0
        mov x30, #0
        mov x0, x10
        blr x9
        brk #0

        .section .note.GNU-stack, "", %progbits
