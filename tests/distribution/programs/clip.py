# A clip of a few frames with something that moves, in 10 bits, as YUV4MPEG2 on standard output.
import sys

width, height, state = 96, 80, 1
out = sys.stdout.buffer
out.write(b"YUV4MPEG2 W%d H%d F25:1 Ip A1:1 C420p10\n" % (width, height))
for time in range(4):
    out.write(b"FRAME\n")
    for scale, slope in ((1, 3), (2, 5), (2, 7)):
        for y in range(height // scale):
            for x in range(width // scale):
                state = (state * 1103515245 + 12345) & 0x7FFFFFFF
                value = (3 * x + 2 * time + y * time // 4) * ((y + time) // 8) * slope * 4
                out.write(((value + (state >> 25)) & 1023).to_bytes(2, "little"))
