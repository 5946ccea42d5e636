"""The text that the client's dump_state prints for a query, made from the bytes of a record.

A debugger cannot always call dump_state: the stopped thread may hold the stream's lock, or stand in
code of the cache. Reading memory always works, so the text is made here once more; a test compares
the two letter by letter.
"""

import re
import struct

VECTOR_BYTES = 16
Z_REGISTERS = 32
P_REGISTERS = 16
ALL = 0xFFFFFFFF  # of an index: none is selected

# Places in cpu_state.
PC = 256
NZCV = 264
Z = 288
P = 800
RECORD_BYTES = 1088

FLAG_N, FLAG_Z, FLAG_C, FLAG_V = 1 << 31, 1 << 30, 1 << 29, 1 << 28

HELP = """
Prints the contents of selected SVE state to stderr.

Usage:
\t "<register_class><register_idx>[<element_idx].<element_size>.<element_type>"

Examples:
\t ""        - Print all available SVE state.
\t "z"       - Print all data vectors.
\t "p"       - Print all predicate vectors.
\t "z0"      - Print the first data vector.
\t "z0[1]"   - Print the second element of the first data vectors.
\t "[1]"     - Print the second element of all vectors.
\t ".d.f"    - Print all 64bit floating point vector elements.
\t "[4].h.s" - Print the fifth 16bit signed element of all vectors.
\t "p.h"     - Print all 16bit elements of all predicate vectors.
\t "p..x"    - Print all element sizes of all predicate vectors in hex.
\t "ip"      - Print the instruction pointer.
\t "cc"      - Print the condition codes.

WARNING: Values are only correct during emulation.
         A message will be printed if this is not the case.
"""


# ---- the query ----------------------------------------------------------------------------------

class Request:
    """What a query selects; letters in lower case, 'a' and ALL where it leaves things open."""

    def __init__(self, query):
        self.reg_class = self.size = self.type = "a"
        self.reg_index = self.element_index = ALL
        if query is None:
            return
        if query.lower() in ("help", "ip", "cc"):
            self.reg_class = query[0].lower()
            return
        self._parse_format(query[self._parse_selection(query):])

    def _parse_selection(self, query):
        for form in _SELECTIONS:
            match = form.match(query)
            if match:
                fields = match.groupdict()
                self.reg_class = (fields.get("class") or "a").lower()
                self.reg_index = _index(fields.get("register"))
                self.element_index = _index(fields.get("element"))
                return match.end()
        return 0

    def _parse_format(self, rest):
        for form in _FORMATS:
            match = form.match(rest)
            if match:
                fields = match.groupdict()
                self.size = fields.get("size", "a").lower()
                self.type = fields.get("type", "a").lower()
                return


def _index(text):
    """A number as scanf's %u takes it: of 64 bits and saturated, then cut to 32."""
    if text is None:
        return ALL
    value = int(text)
    limit = (1 << 64) - 1
    return (limit if abs(value) > limit else value) & ALL


_CLASS = "(?P<class>[zpZP])"
_NUMBER = r"[ \t\n\v\f\r]*(?P<%s>[+-]?[0-9]+)"
_REGISTER = _NUMBER % "register"
_ELEMENT = r"\[" + _NUMBER % "element" + r"\]"
# The first that fits decides.
_SELECTIONS = [re.compile(form) for form in (
    _CLASS + _REGISTER + _ELEMENT, _CLASS + _ELEMENT, _CLASS + _REGISTER, _CLASS, _ELEMENT)]
_SIZE = r"\.(?P<size>[dshbDSHB])"
_TYPE = r"\.(?P<type>[xfusXFUS])"
_FORMATS = [re.compile(form) for form in (_SIZE + _TYPE, _SIZE, r"\." + _TYPE)]


# ---- elements -----------------------------------------------------------------------------------

def _float(value):
    """As C's "% f": it tells the sign of a NaN, too. The value is given with its sign bit."""
    number, negative = value
    if number != number:
        return "-nan" if negative else " nan"
    return "% f" % number


def _floats(code, integer_code, data):
    sign = 1 << (8 * struct.calcsize(code) - 1)
    numbers = struct.unpack("<%d%s" % (len(data) // struct.calcsize(code), code), data)
    patterns = struct.unpack("<%d%s" % (len(numbers), integer_code), data)
    return [(n, bool(p & sign)) for n, p in zip(numbers, patterns)]


# size: bytes, codes of struct for unsigned and floating-point, formats x, u, s
_Z_SIZES = {
    "d": (8, "Q", "d", "0x%016x", "%u", "%i"),
    "s": (4, "I", "f", " 0x%08x", "%11u", "% 11i"),
    "h": (2, "H", "e", "0x%04x", "%6u", "% 6i"),
    "b": (1, "B", None, "0x%02x", "%4u", "% 4i"),
}

# size: bytes, then group and format for the type asked: x, u, s, anything else
_P_SIZES = {
    "d": (8, {"x": ("x", "% 18i"), "u": ("u", "%i"), "s": ("u", "%i")}),
    "s": (4, {"x": ("x", "% 11i"), "u": ("u", "% 11i"), "s": ("s", "% 11i")}),
    "h": (2, {"x": ("x", "% 6i"), "u": ("u", "% 6i"), "s": ("s", "% 6i")}),
    "b": (1, {"x": ("x", "% 4i"), "u": ("u", "% 4i"), "s": ("s", "% 4i")}),
}
_P_OTHER = ("u", "%i")


def _selects(asked, value):
    return asked in ("a", ALL) or asked == value


def _group(letter, items):
    return letter + " = {" + ", ".join(items) + "}"


def _type_group(request, letter, elements):
    return _group(letter, [text for e, text in enumerate(elements)
                           if _selects(request.element_index, e)])


def _z_size(request, size, data):
    size_bytes, code, float_code, hexadecimal, unsigned, signed = _Z_SIZES[size]
    count = VECTOR_BYTES // size_bytes
    groups = []
    for letter in "xfus":
        if not _selects(request.type, letter) or (letter == "f" and float_code is None):
            continue
        if letter == "f":
            elements = [_float(v) for v in _floats(float_code, code, data)]
        else:
            number = code.lower() if letter == "s" else code
            text = {"x": hexadecimal, "u": unsigned, "s": signed}[letter]
            elements = [text % v for v in struct.unpack("<%d%s" % (count, number), data)]
        groups.append(_type_group(request, letter, elements))
    return _group(size, groups)


def _p_size(request, size, data):
    size_bytes, formats = _P_SIZES[size]
    letter, text = formats.get(request.type, _P_OTHER)
    elements = [text % (data[i] & 1) for i in range(0, VECTOR_BYTES, size_bytes)]
    return _group(size, [_type_group(request, letter, elements)])


# ---- lines --------------------------------------------------------------------------------------

def _lines(request, letter, count, first, record, size_text):
    if not _selects(request.reg_class, letter):
        return
    element = request.element_index
    suffix = "" if element == ALL else "[%i]" % (element - (element >> 31 << 32))
    for number in range(count):
        if _selects(request.reg_index, number):
            data = record[first + number * VECTOR_BYTES:][:VECTOR_BYTES]
            sizes = [size_text(request, size, data) for size in "dshb"
                     if _selects(request.size, size)]
            yield "%s%d%s\t\t{%s}\n" % (letter, number, suffix, ", ".join(sizes))


def condition_codes(nzcv):
    def mark(negated):
        return "!" if negated else "\0"
    return "cc\t\tN[%sFirstActive] Z[%sNoneActive] C[%sLastActive] V[%i]\n" % (
        mark(not nzcv & FLAG_N), mark(not nzcv & FLAG_Z), mark(nzcv & FLAG_C), nzcv & FLAG_V)


def dump(record, query):
    """What dump_state prints of the record's bytes for the query; None is the null query."""
    request = Request(query)
    no_index = request.reg_index == ALL and request.element_index == ALL
    text = list(_lines(request, "z", Z_REGISTERS, Z, record, _z_size))
    text += _lines(request, "p", P_REGISTERS, P, record, _p_size)
    if _selects(request.reg_class, "i") and no_index:
        pc = struct.unpack_from("<Q", record, PC)[0]
        text.append("ip\t\t%s\n" % (hex(pc) if pc else "(nil)"))
    if _selects(request.reg_class, "c") and no_index:
        text.append(condition_codes(struct.unpack_from("<Q", record, NZCV)[0]))
    if request.reg_class == "h":
        text.append(HELP)
    return "".join(text)
