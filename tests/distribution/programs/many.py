import ctypes
import hashlib
import json
import mmap
import os
import re
import signal
import struct
import zlib
from decimal import Decimal, getcontext
from fractions import Fraction

print(sum(Fraction(1, n) for n in range(1, 60)), 3**500 % 10**40, 0.1 + 0.2, float("nan"))
getcontext().prec = 60
print(Decimal(2).sqrt(), round(2.675, 2), struct.pack("<dfe", 1 / 3, 1 / 3, 1 / 3).hex())
text = json.dumps({"k%d" % i: [i / 7, str(i)] for i in range(500)})
print(hashlib.sha256(text.encode()).hexdigest(), zlib.crc32(zlib.compress(text.encode())))
print(re.sub(r'"(\w+)": \[(.*?),', r"\2 \1", text)[:60])

# The C library calls back into code that was made at run time.
order = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_int))
array = (ctypes.c_int * 200)(*((i * 7919) % 211 for i in range(200)))
ctypes.CDLL(None).qsort(array, 200, 4, order(lambda a, b: a[0] - b[0]))
print(list(array) == sorted(array))

shared = mmap.mmap(-1, 1 << 16)
child = os.fork()
if child == 0:
    shared[100:105] = b"child"
    os._exit(13)
print(os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]), shared[100:105])

ticks = []
signal.signal(signal.SIGALRM, lambda number, frame: ticks.append(number))
signal.setitimer(signal.ITIMER_REAL, 0.01, 0.01)


def spin():
    while len(ticks) < 20:
        pass


spin()
signal.setitimer(signal.ITIMER_REAL, 0)
print(set(ticks), os.path.basename(os.readlink("/proc/self/exe")))
signal.signal(signal.SIGTERM, signal.SIG_DFL)
signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGTERM])
os.kill(os.getpid(), signal.SIGTERM)
print(signal.sigpending(), flush=True)
signal.pthread_sigmask(signal.SIG_UNBLOCK, [signal.SIGTERM])
