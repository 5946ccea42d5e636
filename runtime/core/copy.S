// Memory that the application named may not be there. A fault in this loop is sent by the handler
// to core_copy_fault, with X2 the bytes that remain.
//
//   X0 to, X1 from, X2 size  ->  X0 bytes not copied

        .text
        .global core_copy, core_copy_begin, core_copy_end, core_copy_fault
        .hidden core_copy, core_copy_begin, core_copy_end, core_copy_fault
        .type core_copy, %function
        .balign 16
core_copy:
core_copy_begin:
        // Words while both sides are aligned to them: the kernel's structures and code are.
        orr x3, x0, x1
        tst x3, #3
        b.ne 2f
        tst x3, #7
        b.ne 4f
1:      subs x3, x2, #8
        b.lo 4f
        ldr x4, [x1], #8
        str x4, [x0], #8
        mov x2, x3
        b 1b
4:      subs x3, x2, #4
        b.lo 2f
        ldr w4, [x1], #4
        str w4, [x0], #4
        mov x2, x3
        b 4b
2:      cbz x2, 3f
        ldrb w4, [x1], #1
        strb w4, [x0], #1
        sub x2, x2, #1
        b 2b
core_copy_fault:
3:      mov x0, x2
        ret
core_copy_end:

        .section .note.GNU-stack, "", %progbits
