"""gdb pretty-printers for the library's types: they show values instead of fields.

    (gdb) source tqfoundation_gdb.py        # unless gdb has loaded it together with the library
    (gdb) print dictionary
    $1 = {"name": "Poster", "size": {210, 297}, "layers": ["back", "front"]}

`print/r` shows the fields as they are. Output is bounded, also for large or cyclic objects:
by gdb's own `print elements` for each text and for all elements together, and by kDepthLimit. Invalid
objects (null, freed, not initialised) are shown as such and never stop gdb.

Objects are read by offset, because compilers describe a class in full only in the library that defines its
virtual functions, and that library may have no debugging information. The offsets are those of a 64-bit
system with libstdc++; the test debugging.printers checks them against the library.
"""

import datetime
import math
import struct

import gdb
import gdb.printing

kDepthLimit = 8
kNumberKinds = ["boolean", "int8", "int16", "int32", "int64", "uint64", "float", "double"]
kReferenceDate = datetime.datetime(2001, 1, 1)


class Unreadable(Exception):
    """The address is not a valid object; the text gives the reason."""


# Memory.


def memory(address, count):
    try:
        return bytes(gdb.selected_inferior().read_memory(address, count))
    except (gdb.error, OverflowError) as error:
        raise Unreadable(f"<unreadable at {address:#x}>") from error


def word(address, count=8):
    return int.from_bytes(memory(address, count), "little")


def element_limit():
    limit = gdb.parameter("print elements")
    return 10**9 if not limit else limit  # 0 or None: unlimited


def quoted(data, length=None):
    """Text of UTF-8 bytes, which may be cut off."""
    text = data.decode("utf-8", "surrogatepass" if is_generalised(data) else "replace")
    text = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    text = "".join(c if c.isprintable() else f"\\u{ord(c):04x}" for c in text)
    return f'"{text}"' + ("…" if length is not None and length > len(data) else "")


def is_generalised(data):
    try:
        data.decode("utf-8", "surrogatepass")
        return True
    except UnicodeDecodeError:
        return False


def string_at(address):
    """Returns the text of a std::string."""
    length = word(address + 8)
    return memory(word(address), min(length, element_limit())).decode("utf-8", "replace")


# Numbers and geometry.


def number(value):
    if math.isfinite(value) and value == int(value) and abs(value) < 1e16:
        return "-0" if value == 0 and math.copysign(1, value) < 0 else str(int(value))
    return repr(value)


def number_text(kind, bits):
    if kind >= len(kNumberKinds):
        raise Unreadable(f"<number of unknown kind {kind}>")
    name = kNumberKinds[kind]
    if name == "boolean":
        return "true" if bits else "false"
    if name in ("float", "double"):
        text = number(struct.unpack("<d", bits.to_bytes(8, "little"))[0])
    else:
        text = str(bits if name == "uint64" or bits < 1 << 63 else bits - (1 << 64))
    return text if name in ("int64", "double") else f"{text} ({name})"


def pair(x, y):
    return f"{{{number(x)}, {number(y)}}}"


def rect(x, y, width, height):
    return "null rect" if math.inf in (x, y) else f"{{{pair(x, y)}, {pair(width, height)}}}"


def transform(*numbers):
    if numbers == (1, 0, 0, 1, 0, 0):
        return "identity"
    return "[" + " ".join(number(each) for each in numbers) + "]"


def doubles(value, *paths):
    """Returns the doubles at these dotted paths."""
    for path in paths:
        field = value
        for name in path.split("."):
            field = field[name]
        yield float(field)


def doubles_at(address, count):
    return struct.unpack(f"<{count}d", memory(address, 8 * count))


# Objects. Each function takes the address of an object.

kCount, kKind, kDetail, kOwn = 8, 12, 13, 16  # offsets of the header's fields and of a class's first field


class Budget:
    """The number of elements and levels that one text may still show."""

    def __init__(self):
        self.elements = element_limit()
        self.depth = 0


def listed(items, brackets, budget):
    """Texts of items (functions without arguments), limited by the budget."""
    if budget.depth >= kDepthLimit:
        return f"{brackets[0]}…{brackets[1]}"
    budget.depth += 1
    texts = []
    for item in items:
        if budget.elements <= 0:
            texts.append("…")
            break
        budget.elements -= 1
        try:
            texts.append(item())
        except Unreadable as reason:
            texts.append(f"{reason}…")
            break
    budget.depth -= 1
    return brackets[0] + ", ".join(texts) + brackets[1]


def referred(address, index, budget):
    """Returns the object at an index of an array of references."""
    return object_text(word(address + 8 * index), budget)


def array_text(address, budget):
    count = word(address + 24)
    storage = word(address + kDetail, 1)  # objects, integers, doubles, numbers of several kinds, growing
    bits = address + 32

    def element(index):
        if storage in (0, 4):
            return referred(word(address + kOwn), index, budget)
        kind = {1: 4, 2: 7}.get(storage)
        kind = word(bits + 8 * count + index, 1) if kind is None else kind
        return number_text(kind, word(bits + 8 * index))

    return listed((lambda index=index: element(index) for index in range(count)), "[]", budget)


def keys_at(address):
    """Returns the address and the number of the key references of a dictionary or set."""
    begin, end = word(address + kOwn), word(address + kOwn + 8)
    if end < begin or (end - begin) % 8:
        raise Unreadable("<keys are not in order>")
    return begin, (end - begin) // 8


def dictionary_text(address, budget):
    keys, count = keys_at(word(address + kOwn))
    values = word(address + 24)

    def entry(index):
        return f"{referred(keys, index, budget)}: {referred(values, index, budget)}"

    return listed((lambda index=index: entry(index) for index in range(count)), "{}", budget)


def set_text(address, budget):
    keys, count = keys_at(word(address + kOwn))
    items = (lambda index=index: referred(keys, index, budget) for index in range(count))
    return "Set " + listed(items, "{}", budget)


def string_text(address, _):
    length = word(address + kOwn, 4)
    return quoted(memory(address + 24, min(length, element_limit())), length)


def number_object_text(address, _):
    return number_text(word(address + kDetail, 1), word(address + kOwn))


def data_text(address, _):
    length = word(address + 24)
    shown = min(length, 16)
    text = ": " + memory(word(address + kOwn), shown).hex(" ") if shown else ""
    return f"<{length} bytes{text}{'…' if shown < length else ''}>"


def date_text(address, _):
    (seconds,) = doubles_at(address + kOwn, 1)
    try:
        return f"{kReferenceDate + datetime.timedelta(seconds=seconds)} UTC"
    except (OverflowError, ValueError):
        return f"{number(seconds)} seconds from 2001"


def boxed_text(address, _):
    signature = string_at(address + kOwn)
    structure = word(address + 48)
    if signature.startswith(("{CGPoint=", "{CGSize=")):
        return pair(*doubles_at(structure, 2))
    if signature.startswith("{CGRect="):
        return rect(*doubles_at(structure, 4))
    if signature.startswith("{_NSRange="):
        return f"{{{word(structure)}, {word(structure + 8)}}}"
    return f"<{signature}>"


def uuid_text(address, _):
    digits = memory(address + kOwn, 16).hex().upper()
    return "-".join([digits[:8], digits[8:12], digits[12:16], digits[16:20], digits[20:]])


def error_text(address, _):
    code = struct.unpack("<q", memory(address + 48, 8))[0]
    return f"Error {string_at(address + kOwn)} {code}"


# By the kind in the header; "other" is decided by the class.
kTextsByKind = [None, string_text, number_object_text, lambda *_: "null", data_text, date_text, boxed_text,
                array_text, dictionary_text]
kTextsByClass = {
    "Set": set_text,
    "UUID": uuid_text,
    "Error": error_text,
    "TQRect": lambda address, _: rect(*doubles_at(address + kOwn, 4)),
}


def class_of(address):
    """Returns the class name from the symbol of the virtual table."""
    symbol = gdb.execute(f"info symbol {word(address):#x}", to_string=True)
    if not symbol.startswith("vtable for "):
        raise Unreadable(f"<no object of a known class at {address:#x}>")
    name = symbol[len("vtable for "):].split(" + ")[0]
    return name[4:] if name.startswith("tq::") else name


def object_text(address, budget):
    if address == 0:
        return "none"
    name = class_of(address)
    references = word(address + kCount, 4) // 2
    kind = word(address + kKind, 1)
    if references == 0 or kind >= len(kTextsByKind):
        raise Unreadable(f"<{name} that is gone: {address:#x}>")
    text = kTextsByKind[kind] or kTextsByClass.get(name)
    return text(address, budget) if text else f"<{name}: {address:#x}, {references} references>"


def weakly(block, budget):
    if block == 0:
        return "none"
    observed = word(block + 8)
    return "gone" if observed == 0 else "weakly " + object_text(observed, budget)


class Printer:
    """A printer that calls a function of (value, budget)."""

    def __init__(self, value, text):
        self.value = value
        self.text = text

    def to_string(self):
        try:
            return self.text(self.value, Budget())
        except Unreadable as reason:
            return str(reason)
        except gdb.error as error:
            return f"<{error}>"


kObjects = ["Object", "String", "Number", "Null", "Data", "MutableData", "Date", "Value", "Array",
            "MutableArray", "Dictionary", "MutableDictionary", "Set", "UUID", "Error", "TQRect"]

kTexts = {
    "Ref<.*>": lambda value, budget: object_text(int(value["object_"]), budget),
    "Weak<.*>": lambda value, budget: weakly(int(value["block_"]), budget),
    "Held<.*>": lambda value, budget: object_text(int(value["owner_"]["object_"]), budget),
    "|".join(kObjects): lambda value, budget: object_text(int(value.address), budget),
    "NumberValue": lambda value, _: number_text(int(value["kind_"]), int(value["bits_"])),
    "Point": lambda value, _: pair(*doubles(value, "x", "y")),
    "Size": lambda value, _: pair(*doubles(value, "width", "height")),
    "Vector": lambda value, _: pair(*doubles(value, "dx", "dy")),
    "Rect": lambda value, _: rect(
        *doubles(value, "origin.x", "origin.y", "size.width", "size.height")),
    "Range": lambda value, _: f"{{{int(value['location'])}, {int(value['length'])}}}",
    "AffineTransform": lambda value, _: transform(*doubles(value, "a", "b", "c", "d", "tx", "ty")),
}


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("TQFoundation")
    for pattern, text in kTexts.items():
        collection.add_printer(pattern, f"^tq::({pattern})$", lambda value, text=text: Printer(value, text))
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
