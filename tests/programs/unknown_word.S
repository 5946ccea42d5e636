// A word of the SVE encoding space that is no SVE instruction of the first version: BSL Z0.D,
// Z0.D, Z1.D, Z2.D, which came with SVE2.
        .text
        .global run_unknown_word
        .type   run_unknown_word, %function
        .global unknown_word
        .p2align 2
run_unknown_word:
        mov     w0, #1
        .inst   0x25d8e3e0      // PTRUE P0.D, which is known
unknown_word:
        .inst   0x04213c40
        mov     w0, #2
        ret

        .section .note.GNU-stack, "", %progbits
