#!/usr/bin/python3
"""Compares the binary interface of the public headers with the one in Interface.list.

    cmake/interface.py [--write] [--include FOLDER]

The interface is a list of facts: sizes, offsets and types of members, base classes, virtual
functions in the order of their slots, functions with the types of their results, enumerators and
constants. A fact that has changed or is missing breaks programs that were built before, as does a new
member or virtual function of a class; other new facts do not. The exit status is 1 if there is such a
break, or if the version begins a new series (0.2), whose interface must be written.

--write      writes Interface.list anew
--include    the folder with the headers, by default that of this tree

Debian's libclang reads the headers in seconds; nothing is built.
"""

import argparse
import pathlib
import re
import sys

import clang.cindex as libclang
from clang.cindex import AccessSpecifier as Access, CursorKind as Kind

ROOT = pathlib.Path(__file__).resolve().parents[1]
MODULE = ROOT / "Modules/TQFoundation"
LIST = MODULE / "Interface.list"
LAYOUTS = MODULE / "Tests/packaging/layouts.cpp"  # all headers, and one instance of each template

RECORDS = (Kind.CLASS_DECL, Kind.STRUCT_DECL)
FUNCTIONS = (Kind.FUNCTION_DECL, Kind.CXX_METHOD, Kind.CONSTRUCTOR, Kind.DESTRUCTOR,
             Kind.CONVERSION_FUNCTION)
KNOWN = {kind.value for kind in Kind.get_all_kinds()}


def children_of(cursor):
    """Returns the declarations in a cursor. The bindings do not know concepts."""
    return [child for child in cursor.get_children() if child._kind_id in KNOWN]


def short(text):
    """Returns the name of a type without the namespace that all of ours are in."""
    return re.sub(r"\btq::", "", text)


def type_of(thing):
    return short(thing.type.get_canonical().spelling)


def qualified(cursor):
    """Returns the name of a declaration, with those that it is nested in."""
    names = []
    while cursor.kind != Kind.TRANSLATION_UNIT:
        names.append(cursor.spelling)
        cursor = cursor.semantic_parent
    return "::".join(reversed(names[:-1]))


def facts_of_function(cursor, heading):
    """Inline functions and templates have no fact: hosts contain their code. Nor has noexcept."""
    result = short(cursor.result_type.get_canonical().spelling)
    parameters = type_of(cursor).removeprefix(result).replace(" noexcept", "").strip()
    line = cursor.spelling + parameters
    if cursor.kind not in (Kind.CONSTRUCTOR, Kind.DESTRUCTOR):
        line += f" -> {result}"
    if cursor.is_virtual_method():
        yield heading, ("virtual = 0 " if cursor.is_pure_virtual_method() else "virtual ") + line
    elif cursor.get_definition() is None and not cursor.is_default_method():
        yield heading, ("function static " if cursor.is_static_method() else "function ") + line


def facts_of_layout(type_, heading):
    yield heading, f"size {type_.get_size()} align {type_.get_align()}"
    for field in type_.get_fields():
        width = f" : {field.get_bitfield_width()}" if field.is_bitfield() else ""
        at = type_.get_offset(field.spelling) / 8
        yield heading, f"at {at:g} {field.spelling}{width} {type_of(field)}"


def lacks_key_function(cursor):
    """Whether each program has its own vtable of an exported class: all virtual functions are inline.

    Casts to it fail then: clang compares the addresses of vtables, libc++ those of type_infos.
    Interfaces without a base may be so, because objects are not cast to them.
    """
    parts = children_of(cursor)
    virtual = [part for part in parts if part.kind in FUNCTIONS and part.is_virtual_method()]
    has_key = any(part.get_definition() is None and not part.is_pure_virtual_method()
                  for part in virtual)
    has_base = any("Subclass<" in part.spelling for part in parts
                   if part.kind == Kind.CXX_BASE_SPECIFIER)
    is_exported = any(part.kind == Kind.VISIBILITY_ATTR for part in parts)
    return is_exported and has_base and not has_key


def facts_of_record(cursor):
    heading = f"class {qualified(cursor)}"
    if lacks_key_function(cursor):
        sys.exit(f"{heading} has a vtable in each program: define its destructor in the .cpp")
    yield from facts_of_layout(cursor.type, heading)
    for child in children_of(cursor):
        if child.kind == Kind.CXX_BASE_SPECIFIER:
            yield heading, f"base {type_of(child)}"
        elif child.kind in FUNCTIONS:
            yield from facts_of_function(child, heading)
        else:
            yield from facts_of(child, heading)


def facts_of_instances(cursor):
    """Each member of LayoutsOfTemplates has, or points to, an instance of a template of ours."""
    for field in cursor.type.get_fields():
        type_ = field.type.get_canonical()
        if type_.kind == libclang.TypeKind.POINTER:
            type_ = type_.get_pointee()
        yield from facts_of_layout(type_, f"class {short(type_.spelling)}")


def facts_of(cursor, heading):
    """Yields the facts of a declaration, each as a heading and a line."""
    if cursor.kind == Kind.NAMESPACE:
        for child in children_of(cursor):
            yield from facts_of(child, "free")
    elif cursor.kind in RECORDS and cursor.is_definition():
        yield from facts_of_record(cursor)
    elif cursor.kind in FUNCTIONS:
        yield from facts_of_function(cursor, heading)
    elif cursor.kind == Kind.ENUM_DECL and cursor.is_definition():
        for child in children_of(cursor):
            yield f"enum {qualified(cursor)} : {short(cursor.enum_type.get_canonical().spelling)}", \
                f"{child.spelling} = {child.enum_value}"
    elif cursor.kind == Kind.VAR_DECL and cursor.access_specifier != Access.PRIVATE:
        text = " ".join(token.spelling for token in cursor.get_tokens())
        value = re.search(r"\bconstexpr .*? = (.*)|\bconstexpr [^{]*(\{.*)", text)
        value = f" = {value[1] or value[2]}" if value else ""
        yield heading, f"variable {cursor.spelling} {type_of(cursor)}{value}"


def interface(include):
    """Returns {heading: [line, ...]}, read from the headers in the folder."""
    arguments = ["-std=c++20", "-I", str(include)]
    unit = libclang.Index.create().parse(str(LAYOUTS), arguments)
    errors = [str(d) for d in unit.diagnostics if d.severity >= libclang.Diagnostic.Error]
    if errors:
        sys.exit("\n".join(errors))
    found = {}
    for cursor in children_of(unit.cursor):
        if cursor.kind != Kind.NAMESPACE or cursor.spelling != "tq":
            continue
        instances = [c for c in children_of(cursor) if c.spelling == "LayoutsOfTemplates"]
        for heading, line in facts_of_instances(instances[0]) if instances else facts_of(cursor, ""):
            lines = found.setdefault(heading, [])
            if line not in lines:  # a function may be declared twice
                lines.append(line)
    return found


def text_of(series, found):
    """Returns the contents of the list. The order of bases and virtual functions has a meaning."""
    lines = [f"# The binary interface of the series {series}; ./run abi compares with it."]
    for heading in sorted(found):
        lines.append(heading)
        ordered = [line for line in found[heading] if line.startswith(("size", "at", "base", "virtual"))]
        lines += [f"  {line}" for line in ordered + sorted(set(found[heading]) - set(ordered))]
    return "\n".join(lines) + "\n"


def facts_in(text):
    """Returns the facts of a list. The number of a slot is part of a virtual function's fact."""
    facts, heading, slots = [], "", 0
    for line in text.splitlines()[1:]:
        if not line.startswith(" "):
            heading, slots = line, 0
            continue
        line = line.strip()
        if line.startswith(("base", "virtual")):
            slots += 1
            line = f"{line}, number {slots}"
        facts.append(f"{heading}: {line}")
    return facts


def new_parts(before, now):
    """Returns the new members, bases and virtual functions of classes that hosts know. They move what
    a host's subclass adds, and hosts that were built before do not initialise new members."""
    known = {fact.split(": ")[0] for fact in before}
    return [fact for fact in now if fact not in before and fact.split(": ")[0] in known
            and fact.split(": ", 1)[1].startswith(("at", "base", "virtual"))]


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--write", action="store_true")
    parser.add_argument("--include", type=pathlib.Path, default=MODULE / "Include")
    options = parser.parse_args()

    project = (ROOT / "CMakeLists.txt").read_text()
    version = re.search(r"project\(TQFoundation VERSION (\d+)\.(\d+)", project)
    series = f"{version[1]}.{version[2]}" if version[1] == "0" else version[1]
    text = text_of(series, interface(options.include))
    now = facts_in(text)
    if options.write:
        LIST.write_text(text)
        print(f"{len(now)} facts written to {LIST.relative_to(ROOT)}")
        return 0

    listed = LIST.read_text()
    before = facts_in(listed)
    missing = [fact for fact in before if fact not in set(now)]
    moved = new_parts(set(before), now)
    for sign, facts in (("-", missing), ("+", [fact for fact in now if fact not in set(before)])):
        for fact in facts:
            print(f"{sign} {fact}")
    same_series = f" {series};" in listed.splitlines()[0]
    if not same_series:
        print(f"the series is now {series}: write its interface with ./run abi --write")
        return 1
    if missing or moved:
        print(f"programs that were built for {series} break: {len(missing)} facts are missing, "
              f"{len(moved)} parts of classes are new")
        return 1
    print(f"the interface is that of {series}: {len(before)} facts hold, "
          f"{len(now) - len(before)} are new")
    return 0


if __name__ == "__main__":
    sys.exit(main())
