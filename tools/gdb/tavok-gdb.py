"""The command `sve` for gdb: the emulated state of a stopped application.

    (gdb) source tavok-gdb.py
    (gdb) help sve

Everything is read from memory, and found by names of the symbol table: no function of the process
is called, and no debug information is needed. See docs/debugging.md.
"""

import os
import re
import struct
import sys

import gdb

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import tavok_state  # noqa: E402  (the directory of this file is no package)

ROW = struct.Struct("<IIQQBB6x")     # value, mask, stub, name, tier, map
MODULE = struct.Struct("<QQQQ")        # start, end, entry point, path
THREAD = struct.Struct("<QQq")         # next, record, id
TREE_NODE = struct.Struct("<QQQQQI4xQ")  # colour, parent, left, right; address, word, count
PLACE = struct.Struct("<QQ")           # address, count
PLACES = 1024                          # of a thread's share of the counts, with the next share behind
TIERS = ("fast", "host_fp", "model", "no_operation")
ARGUMENT_REGISTERS = {"aarch64": "$x0", "i386:x86-64": "$rdi"}
INSTRUCTION_BYTES = 4
MOST_SCANNED = 4096  # bytes of a function without a known end
MOST_FRAMES = 32


# ---- memory and symbols -------------------------------------------------------------------------

def read(address, size):
    try:
        return bytes(gdb.selected_inferior().read_memory(address, size))
    except gdb.MemoryError:
        raise gdb.GdbError("cannot read %d bytes at 0x%x" % (size, address)) from None


def read_pointer(address):
    return struct.unpack("<Q", read(address, 8))[0]


def read_string(address):
    text = b""
    while b"\0" not in text:
        text += read(address + len(text), 16)
    return text.split(b"\0")[0].decode(errors="replace")


class Symbols:
    """Addresses of the client's names, kept: an application may have the same names."""

    found = {}

    @classmethod
    def address(cls, name):
        if name in cls.found:
            return cls.found[name]
        try:
            address = int(gdb.parse_and_eval("(unsigned long)&" + name))
        except gdb.error:
            raise gdb.GdbError("no symbol '%s': is this tavok, or a program that has loaded "
                               "libtavok.so, with its symbol table?" % name) from None
        # Before it is started a program does not know yet where it will lie.
        if gdb.selected_thread() is not None:
            cls.found[name] = address
        return address

    @classmethod
    def forget(cls, _event):
        cls.found.clear()


gdb.events.exited.connect(Symbols.forget)
gdb.events.clear_objfiles.connect(Symbols.forget)


def require_process():
    if gdb.selected_thread() is None:
        raise gdb.GdbError("there is no process")


# ---- rows ---------------------------------------------------------------------------------------

class Rows:
    """The emulated instruction forms, by their fixed bits."""

    def __init__(self):
        begin = Symbols.address("__start_sve_rows")
        data = read(begin, Symbols.address("__stop_sve_rows") - begin)
        self.maps = {}
        self.stubs = set()
        for value, mask, stub, name, tier, _ in ROW.iter_unpack(data):
            self.maps.setdefault(mask, {})[value] = (stub, name, TIERS[tier])
            self.stubs.add(stub)

    def find(self, word):
        """Stub, address of the name, and tier of the word's row, or None."""
        for mask, rows in self.maps.items():
            if word & mask in rows:
                return rows[word & mask]
        return None


# ---- the record ---------------------------------------------------------------------------------

def listed_threads():
    threads = {}
    entry = read_pointer(Symbols.address("sve_threads"))
    while entry:
        entry, record, number = THREAD.unpack(read(entry, THREAD.size))
        threads[number] = record
    return threads


def thread_record():
    """The selected thread's record as the client's list has it, or None."""
    try:
        threads = listed_threads()
    except gdb.GdbError:
        return None
    _, lwp, tid = gdb.selected_thread().ptid
    only = next(iter(threads.values())) if len(threads) == 1 else None
    return threads.get(lwp, threads.get(tid, only))


def argument_register():
    name = gdb.selected_frame().architecture().name()
    if name not in ARGUMENT_REGISTERS:
        raise gdb.GdbError("not a processor that tavok runs on: " + name)
    return ARGUMENT_REGISTERS[name]


def at_stub():
    """Whether the selected frame stands at the first instruction of a row's stub."""
    try:
        return gdb.selected_frame().pc() in Rows().stubs
    except gdb.GdbError:
        return False


def record_of_variable(frame, symbol):
    if not (symbol.is_variable or symbol.is_argument):
        return None
    value = symbol.value(frame) if symbol.needs_frame else symbol.value()
    plain = value.type.strip_typedefs()
    if plain.code == gdb.TYPE_CODE_PTR:
        plain = plain.target().unqualified().strip_typedefs()
        return int(value) or None if plain.name == "cpu_state" else None
    return int(value.address) if plain.unqualified().name == "cpu_state" else None


def record_of_frame(frame):
    block = frame.block()
    while block is not None and not block.is_global:
        for symbol in block:
            try:
                record = record_of_variable(frame, symbol)
            except (gdb.error, TypeError):
                continue  # optimised out
            if record is not None:
                return record
        block = block.superblock
    return None


def embedded_record():
    """A record that the selected frame or one of its callers has as a variable, or None."""
    if at_stub():
        return int(gdb.parse_and_eval("(unsigned long)" + argument_register()))
    frame = gdb.selected_frame()
    for _ in range(MOST_FRAMES):
        try:
            record = record_of_frame(frame)
        except (gdb.error, RuntimeError):
            record = None  # no debug information here
        if record is not None:
            return record
        try:
            frame = frame.older()
        except gdb.error:
            return None
        if frame is None:
            return None
    return None


def find_record():
    record = thread_record()
    if record is None:
        record = embedded_record()
    if record is None:
        raise gdb.GdbError("no record found for this thread: it has not begun, or the record is "
                           "the program's own; then say sve --at <expression>")
    gdb.set_convenience_variable("sve_record", record)
    return record


def read_record(address):
    return read(address, tavok_state.RECORD_BYTES)


def show(text):
    # gdb's streams take no NUL, which dump_state prints as the mark of some flags.
    gdb.write(text.replace("\0", ""))


# ---- statistics ---------------------------------------------------------------------------------

def counts_in_shares():
    """By address, what threads have counted."""
    counts = {}
    share = read_pointer(Symbols.address("sve_thread_counts"))
    while share:
        for address, count in PLACE.iter_unpack(read(share, PLACES * PLACE.size)):
            counts[address] = counts.get(address, 0) + count
        share = read_pointer(share + PLACES * PLACE.size)
    return counts


def sites():
    """Address, word and count of each executed place, in the order of addresses."""
    shares = counts_in_shares()
    header = Symbols.address("icounts") + 8  # behind the comparison, which is empty

    def walk(node):
        stack = []
        while node or stack:
            while node:
                fields = TREE_NODE.unpack(read(node, TREE_NODE.size))
                stack.append(fields)
                node = fields[2]
            _, _, _, node, address, word, count = stack.pop()
            yield address, word, count + shares.get(address, 0)

    return walk(read_pointer(header + 8))


def stats_text():
    """What dump_sve_stats prints."""
    return "".join("0x%x: 0x%08x %d\n" % (address, word, count - (count >> 63 << 64))
                   for address, word, count in sites())


# ---- the application ----------------------------------------------------------------------------

class Module:
    """The application's executable, or nothing where a program of its own embeds the client."""

    def __init__(self):
        data = read_pointer(Symbols.address("exe"))
        if data == 0:
            raise gdb.GdbError("the application is not loaded yet: sve start")
        self.start, self.end, _, path = MODULE.unpack(read(data, MODULE.size))
        self.path = read_string(path)

    def offset(self, path):
        """What loading added to the addresses in the file."""
        lowest = None
        with open(path, "rb") as file:
            header = file.read(64)
            if header[:5] != b"\x7fELF\2":
                raise gdb.GdbError("%s: not a 64-bit ELF file" % path)
            table, = struct.unpack_from("<Q", header, 32)
            size, count = struct.unpack_from("<HH", header, 54)
            file.seek(table)
            for _ in range(count):
                kind, _, _, address = struct.unpack_from("<IIQQ", file.read(size))
                if kind == 1 and (lowest is None or address < lowest):
                    lowest = address
        return 0 if lowest is None else self.start - (lowest & -4096)


def app_command(path):
    module = Module()
    path = path or module.path
    try:
        offset = module.offset(path)
    except OSError as error:
        raise gdb.GdbError("%s: %s" % (path, error.strerror)) from None
    for name in ("icounts", "sve_threads", "sve_thread_counts", "__start_sve_rows",
                 "__stop_sve_rows"):
        Symbols.address(name)  # before the application's names come
    gdb.execute("add-symbol-file %s -o 0x%x" % (path, offset), to_string=True)
    show("%s at 0x%x to 0x%x\n" % (path, module.start, module.end))


def start_command(_argument):
    Symbols.address("exe")
    gdb.execute("tbreak event_thread_init", to_string=True)
    gdb.execute("run" if gdb.selected_thread() is None else "continue", to_string=True)


def stats_command(path):
    if not path:
        show(stats_text())
        return
    module = Module()
    text = "module: 0x%x 0x%x %s\n" % (module.start, module.end, module.path) + stats_text()
    try:
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    except OSError as error:
        raise gdb.GdbError("%s: %s" % (path, error.strerror)) from None


# ---- places -------------------------------------------------------------------------------------

def disassembly(address, word):
    architecture = gdb.selected_frame().architecture()
    if architecture.name() != "aarch64":
        return ".inst 0x%08x" % word
    return " ".join(architecture.disassemble(address)[0]["asm"].split())


def describe(address):
    """An address in the application, with function, line and instruction as far as known."""
    text = "0x%x" % address
    symbol = gdb.execute("info symbol 0x%x" % address, to_string=True)
    if " in section " in symbol:
        text += " <%s>" % symbol.split(" in section ")[0].replace(" + ", "+")
    line = gdb.find_pc_line(address)
    if line.symtab is not None:
        text += " %s:%d" % (os.path.basename(line.symtab.filename), line.line)
    word, = struct.unpack("<I", read(address, INSTRUCTION_BYTES))
    text += ": " + disassembly(address, word)
    row = Rows().find(word)
    if row is not None:
        text += " (%s, %s)" % (read_string(row[1]), row[2])
    return text


def where_command(_argument):
    begun = at_stub()
    record = read_record(find_record())
    address, = struct.unpack_from("<Q", record, tavok_state.PC)
    if address == 0:
        raise gdb.GdbError("no instruction has been emulated on this thread yet")
    show("%s %s\n" % ("next:" if begun else "last:", describe(address)))


def instructions_from(address):
    """Addresses and words up to the end of the address's function."""
    block = gdb.block_for_pc(address)
    while block is not None and block.function is None:
        block = block.superblock
    end = block.end if block is not None else address + MOST_SCANNED
    for place in range(address, end, INSTRUCTION_BYTES):
        try:
            yield place, struct.unpack("<I", read(place, INSTRUCTION_BYTES))[0]
        except gdb.GdbError:
            return


def application_places(location):
    """The addresses that a location means, without those in the process's other programs."""
    try:
        _, found = gdb.decode_line(location)
    except gdb.error as error:
        raise gdb.GdbError(str(error)) from None
    places = [sal.pc for sal in found or () if sal.pc]
    if not location.startswith("*") and read_pointer(Symbols.address("exe")):
        module = Module()
        places = [pc for pc in places if module.start <= pc < module.end]
    if not places:
        raise gdb.GdbError("%s is no place in the application (sve app loads its symbols)" %
                           location)
    return places


def break_command(location):
    if not location:
        raise gdb.GdbError("sve break <location>")
    rows = Rows()
    for start in application_places(location):
        for place, word in instructions_from(start):
            row = rows.find(word)
            if row is not None:
                break
        else:
            raise gdb.GdbError("no emulated instruction from 0x%x to the end of its function" %
                               start)
        breakpoint = gdb.Breakpoint("*0x%x" % row[0])
        breakpoint.condition = "*(unsigned long *)(%s + %d) == 0x%x" % (
            argument_register(), tavok_state.PC, place)
        breakpoint.silent = True
        breakpoint.commands = "sve where"
        show("stops in front of %s\n" % describe(place))


def run_to(location):
    """Lets the process go on until this thread is there. Whether it came there."""
    breakpoint = gdb.Breakpoint(location, internal=True)
    breakpoint.thread = gdb.selected_thread().num
    breakpoint.silent = True
    gdb.execute("continue", to_string=True)
    if not breakpoint.is_valid():
        return False
    arrived = gdb.selected_thread() is not None and breakpoint.hit_count > 0
    breakpoint.delete()
    return arrived


def function_entry(name):
    """Where a function begins; gdb's own place for a breakpoint is behind the first instructions."""
    _, found = gdb.decode_line(name)
    address = found[0].pc
    symbol = gdb.execute("info symbol 0x%x" % address, to_string=True)
    inside = re.search(r" \+ (\d+) in section ", symbol)
    return address - int(inside.group(1)) if inside else address


def told():
    """How often a stop has told its place by itself."""
    return sum(b.hit_count for b in gdb.breakpoints() if "sve where" in (b.commands or ""))


def step_command(_argument):
    if thread_record() is None:
        raise gdb.GdbError("only for a thread of an application under tavok")
    before = told()
    # Its third argument is the stub.
    arrived = run_to("*0x%x" % function_entry("emulate_instruction"))
    if arrived:
        arrived = run_to("*0x%x" % int(gdb.parse_and_eval("(unsigned long)$x2")))
    if gdb.selected_thread() is None:
        show("the process has ended\n")
    elif arrived and told() == before:
        where_command("")
    elif not arrived:
        gdb.execute("frame")


# ---- the command --------------------------------------------------------------------------------

class SveCommand(gdb.Command):
    """Print the emulated SVE state of the selected thread.

sve [QUERY]              registers, as the query selects them; sve help tells the language
sve --at EXPR [QUERY]    the same of the record at an address, for an embedding program
sve where                the application's instruction that is, or last was, emulated
sve step                 go on to the thread's next emulated instruction
sve stats [FILE]         how often each place was emulated; to a file for tavok-profile
sve start                go on until the application is loaded
sve app [FILE]           load the application's symbols at their place
sve break LOCATION       stop in front of the first emulated instruction from there on

The record's address is in $sve_record afterwards.

Queries: z0  z0[1].d.f  [4].h.s  p..x  .d.f  ip  cc  help.
Z registers, ip and cc are as the last emulated instruction left them, predicates always current."""

    SUBCOMMANDS = {"where": where_command, "stats": stats_command, "start": start_command,
                   "app": app_command, "break": break_command, "step": step_command}
    WITHOUT_PROCESS = ("start",)

    def __init__(self):
        super().__init__("sve", gdb.COMMAND_DATA)

    def invoke(self, argument, from_tty):
        self.dont_repeat()
        word, _, rest = argument.strip().partition(" ")
        if word not in self.WITHOUT_PROCESS:
            require_process()
        if word in self.SUBCOMMANDS:
            self.SUBCOMMANDS[word](rest.strip())
            return
        if word == "--at":
            record, query = self.explicit_record(rest)
        else:
            record, query = None, argument.strip()
        if len(query) > 1 and query[0] == query[-1] == '"':
            query = query[1:-1]
        show(tavok_state.dump(read_record(find_record() if record is None else record), query))

    @staticmethod
    def explicit_record(text):
        words = gdb.string_to_argv(text)
        if not 1 <= len(words) <= 2:
            raise gdb.GdbError("sve --at <expression> [query]; quote an expression with blanks")
        try:
            value = gdb.parse_and_eval(words[0])
        except gdb.error as error:
            raise gdb.GdbError(str(error)) from None
        plain = value.type.strip_typedefs()
        if plain.code == gdb.TYPE_CODE_STRUCT:
            value = value.address
        return int(value) & 0xFFFFFFFFFFFFFFFF, words[1] if len(words) == 2 else ""

    def complete(self, text, word):
        first, blank, _ = text.partition(" ")
        if first == "break" and blank:
            return gdb.COMPLETE_LOCATION
        if first in ("stats", "app") and blank:
            return gdb.COMPLETE_FILENAME
        if first == "--at" and blank:
            return gdb.COMPLETE_EXPRESSION
        if blank:
            return gdb.COMPLETE_NONE
        if "." in text:
            letters = "xfus" if text.count(".") > 1 or ".." in text else "dshb"
            return [letter for letter in letters if letter.startswith(word)]
        registers = ["z%d" % n for n in range(tavok_state.Z_REGISTERS)]
        registers += ["p%d" % n for n in range(tavok_state.P_REGISTERS)]
        candidates = [*self.SUBCOMMANDS, "--at", "help", "ip", "cc", *registers]
        return [candidate for candidate in candidates if candidate.startswith(word)]


SveCommand()
