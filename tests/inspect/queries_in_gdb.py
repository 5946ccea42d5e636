"""Runs inside gdb, for check_queries: stops at each record of embedding_host and compares."""

import os

import gdb
import tavok_state

compared = 0


def printed(name):
    with open(os.path.join(scratch, name), "rb") as file:  # noqa: F821  (set by check_queries)
        return file.read().decode("latin-1")


def expect(what, value, wanted):
    if value != wanted:
        raise AssertionError("%s:\n%r\ninstead of\n%r" % (what, value, wanted))


def shown(command):
    return gdb.execute(command, to_string=True)


def compare_record(number, queries):
    global compared
    address = int(gdb.parse_and_eval("(unsigned long)state"))
    record = bytes(gdb.selected_inferior().read_memory(address, tavok_state.RECORD_BYTES))
    for i, query in enumerate(queries):
        wanted = printed("%d.%d" % (number, i))
        text = tavok_state.dump(record, None if query == "(null)" else query)
        expect("record %d, query %r" % (number, query), text, wanted)
        compared += 1
    # The command finds the record by itself, and by an expression.
    for query in ("z1[1].d.x", "", "p.h", "cc", "help", "ip"):
        wanted = printed("%d.%d" % (number, queries.index(query))).replace("\0", "")
        expect("sve " + query, shown("sve " + query), wanted)
        expect("sve --at", shown('sve --at state "%s"' % query), wanted)
    expect("$sve_record", int(gdb.convenience_variable("sve_record")), address)
    wanted = printed("%d.%d" % (number, queries.index("z0.s.u")))
    expect("quoted", shown('sve "z0.s.u"'), wanted)
    expect("a structure", shown("sve --at *state z0.s.u"), wanted)
    expect("a number", shown("sve --at 0x%x z0.s.u" % address), wanted)


def fails(command):
    try:
        shown(command)
    except gdb.error as error:
        return str(error)
    raise AssertionError(command + " should fail")


def compare():
    if gdb.selected_thread() is None:
        expect("without a process", fails("sve"), "there is no process")
        Symbols.address("main")  # noqa: F821  (of the script); it will lie elsewhere
    with open(os.path.join(scratch, "queries"), encoding="utf-8") as file:  # noqa: F821
        queries = file.read().split("\n")[:-1]
    gdb.execute("set breakpoint pending on")
    gdb.execute("break stop_here")
    gdb.execute("run" if gdb.selected_thread() is None else "continue", to_string=True)
    expect("an address behind the start", Symbols.address("main"),  # noqa: F821
           int(gdb.parse_and_eval("(unsigned long)&main")))
    for number in range(4):
        compare_record(number, queries)
        if number < 3:
            gdb.execute("continue", to_string=True)

    expect("an executable", fails("sve app"), "the application is not loaded yet: sve start")
    expect("memory that is not there", "cannot read" in fails("sve --at 8 z0"), True)
    expect("no expression", "sve --at" in fails("sve --at"), True)
    expect("a wrong expression", "No symbol" in fails("sve --at nowhere"), True)
    expect("no location", "sve break" in fails("sve break"), True)
    expect("no place", fails("sve break nowhere.c:1") != "", True)

    # The third word is carried out in the second and third round alone.
    code = int(gdb.parse_and_eval("(unsigned long)&emulated_words"))
    text = shown("sve break *%d" % (code + 8))
    expect("the place", "VecU32AddVVX, fast" in text, True)
    stops = []
    for _ in range(2):
        gdb.execute("continue", to_string=True)
        stops.append(shown("sve where").split()[:2])
        expect("ip at the stop", shown("sve ip"), "ip\t\t0x%x\n" % (code + 8))
    expect("the stops", stops, [["next:", "0x%x" % (code + 8)]] * 2)
    gdb.execute("continue", to_string=True)
    expect("the last stop", gdb.selected_frame().name(), "stop_here")
    expect("statistics", shown("sve stats"), printed("stats"))
    counts = [line.split()[-1] for line in shown("sve stats").splitlines()]
    expect("counts", counts, ["3", "3", "2"])


compare()
print("%d texts compared" % compared)
print("QUERIES: passed")
