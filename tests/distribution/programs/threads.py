import concurrent.futures
import queue
import signal
import socket
import sys
import threading

jobs, results = queue.Queue(), queue.Queue()


def work():
    while (n := jobs.get()) is not None:
        results.put((n, sum(k * k for k in range(n))))


threads = [threading.Thread(target=work) for _ in range(4)]
for thread in threads:
    thread.start()
for n in range(100):
    jobs.put(n * 7)
for _ in threads:
    jobs.put(None)
for thread in threads:
    thread.join()
print(sorted(results.get() for _ in range(100))[::9])

ours, theirs = socket.socketpair()
echo = threading.Thread(target=lambda: theirs.sendall(theirs.recv(99).upper()))
echo.start()
ours.sendall(b"over a socket")
print(ours.recv(99))
echo.join()

# A signal for a thread that waits, by another one.
woken = threading.Event()
signal.signal(signal.SIGUSR1, lambda number, frame: woken.set())
main = threading.get_ident()
threading.Timer(0.1, lambda: signal.pthread_kill(main, signal.SIGUSR1)).start()
print(woken.wait(30))

local = threading.local()


def deep(n):
    local.depth = getattr(local, "depth", 0) + 1
    return local.depth if n == 0 else deep(n - 1)


with concurrent.futures.ThreadPoolExecutor(4) as pool:
    print(list(pool.map(deep, [10, 10, 10]))[0], threading.active_count() >= 1)
for _ in range(8):
    thread = threading.Thread(target=int)
    thread.start()
    thread.join()
threading.Thread(target=lambda: 1 // 0, name="failing").start()
sys.exit(3)
