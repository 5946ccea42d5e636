// uint64_t sum_of_vector(const uint32_t* values): 5 SVE instructions. NAME is the function's name.
        .arch   armv8-a+sve
        .text
        .global NAME
        .type   NAME, %function
        .global sum_begin
        .hidden sum_begin
        .global sum_end
        .hidden sum_end
        .p2align 2
sum_begin:
NAME:
        ptrue   p0.s
        ld1w    {z0.s}, p0/z, [x0]
        uaddv   d1, p0, z0.s
        ptrue   p1.d, vl1
        lastb   x0, p1, z1.d
        ret
sum_end:
        .section .note.GNU-stack, "", %progbits
