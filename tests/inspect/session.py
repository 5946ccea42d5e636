"""Runs gdb on a program, natively or through a simulator's gdb port, and tells what it printed."""

import os
import shutil
import subprocess
import sys
import tempfile
import time

SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "gdb",
                      "tavok-gdb.py")
# Seconds until a session that hangs is ended.
PATIENCE = int(os.environ.get("TAVOK_TEST_PATIENCE", "240"))


def split_host(arguments):
    """The arguments in front of `--`, and the words behind it that run a program."""
    at = arguments.index("--")
    return arguments[:at], arguments[at + 1:]


def gdb_program(host):
    """gdb for this processor, or for any where the program runs simulated."""
    name = "gdb-multiarch" if host else "gdb"
    found = shutil.which(name) or shutil.which("gdb-multiarch")
    if found is None:
        sys.exit("the test needs " + name)
    return found


def wait_for(path):
    for _ in range(PATIENCE * 10):
        if os.path.exists(path):
            return
        time.sleep(0.1)
    sys.exit("the simulator opens no port for gdb")


def run(host, command, gdb_arguments, directory=None):
    """What gdb printed, errors among it, when it debugged the command. The arguments begin when
    gdb is connected, or has the program but has not started it."""
    with tempfile.TemporaryDirectory() as scratch:
        environment = dict(os.environ, PYTHONDONTWRITEBYTECODE="1", DEBUGINFOD_URLS="",
                           ASAN_OPTIONS="detect_leaks=0")
        line = [gdb_program(host), "-nx", "-q", "-batch", "-ex", "set confirm off",
                "-ex", "set style enabled off"]
        simulator = None
        if host:
            socket = os.path.join(scratch, "gdb")
            simulator = subprocess.Popen([*host, *command], env=dict(os.environ, QEMU_GDB=socket),
                                         stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                         stderr=subprocess.DEVNULL, cwd=directory)
            if "-L" in host:
                line += ["-ex", "set sysroot " + host[host.index("-L") + 1]]
            wait_for(socket)
            line += ["-ex", "file " + command[0], "-ex", "target remote " + socket]
            line += gdb_arguments
        else:
            line += gdb_arguments + ["--args", *command]
        try:
            result = subprocess.run(line, capture_output=True, text=True, errors="replace",
                                    timeout=PATIENCE, env=environment, cwd=directory, check=False)
        finally:
            if simulator is not None:
                simulator.kill()
                simulator.wait()
        return result.stdout + result.stderr
