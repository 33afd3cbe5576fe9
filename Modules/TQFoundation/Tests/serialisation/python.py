#!/usr/bin/env python3
"""Compares the library's readers and writers of JSON and keyed archives with python's.

    python.py PROGRAM [DOCUMENTS [SEED]]

PROGRAM is TQPythonPeer, which reads a document and writes it again. Prints the first difference
and exits with status 1.
"""

import base64
import json
import math
import plistlib
import random
import re
import subprocess
import sys

LEAST, MOST = 1.1754943508222875e-38, 3.4028234663852886e+38  # magnitudes of doubles in archives


class Peer:
    def __init__(self, program):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def written_again(self, kind, document):
        """Returns what the library writes after it has read the document, None if it refuses it."""
        self.process.stdin.write(b"%s %d\n" % (kind, len(document)) + document)
        self.process.stdin.flush()
        length = self.process.stdout.readline()
        if not length:
            sys.exit(f"the program ended while it read {document!r}")
        return None if int(length) < 0 else self.process.stdout.read(int(length))


class Documents:
    """Random values, and texts that are almost JSON."""

    def __init__(self, seed):
        self.random = random.Random(seed)

    def value(self, depth, leaves):
        kind = self.random.randrange(4) if depth else 2
        count = self.random.randrange(6)
        if kind == 0:
            return [self.value(depth - 1, leaves) for _ in range(count)]
        if kind == 1:
            return {self.string(): self.value(depth - 1, leaves) for _ in range(count)}
        return self.random.choice(leaves)()

    def string(self):
        characters = 'abc 019"\\/\b\t\n\x01\x1f\x7f\xe9\u2028\ud7ff\ufffd\U0001f600'
        return "".join(self.random.choices(characters, k=self.random.randrange(9)))

    def integer(self):
        bits = self.random.getrandbits(self.random.randrange(1, 65))
        return self.random.choice([bits, -(bits >> 1)])

    def real(self):
        return self.random.choice([
            self.random.uniform(-1000, 1000), self.random.randrange(-999, 999) / 4,
            self.random.choice([-1, 1]) * 10 ** self.random.uniform(-300, 300)])

    def boolean(self):
        return self.random.random() < 0.5

    def text(self):
        leaves = [self.string, self.integer, self.real, self.boolean, lambda: None,
                  lambda: 10 ** self.random.randrange(19, 300)]
        value = self.value(4, leaves)
        return json.dumps(value, ensure_ascii=self.boolean(),
                          indent=self.random.choice([None, 1])).encode()

    def damaged(self, text):
        pieces = [b"{", b"}", b"[", b"]", b",", b":", b'"', b"\\", b"\\u", b"\\ud83d", b"\\ude00",
                  b"0", b"1", b"-", b"+", b".", b"e", b"E9", b"e400", b"e-400", b"null", b"NaN",
                  b"true", b" ", b"\n", b"\r", b"\x01", b"\x1f", b"\x7f", b"\xc3", b"\xa9",
                  b"\xed\xa0\x80", b"\xef\xbb\xbf", b"/", b""]
        for _ in range(self.random.randrange(1, 3)):
            at = self.random.randrange(len(text) + 1)
            text = text[:at] + self.random.choice(pieces) + text[at + self.random.randrange(3):]
        return text


# JSON


def json_value(text):
    """Returns the value that python reads, by the rules of archives. Raises ValueError."""
    def real(digits):
        value = float(digits)
        if math.isinf(value):
            raise ValueError("too large")
        return value

    def integer(digits):
        return int(digits) if -2**63 <= int(digits) < 2**64 else real(digits)

    def members(pairs):
        first_of_equal_keys = {}
        for key, member in pairs:
            first_of_equal_keys.setdefault(key, member)
        return first_of_equal_keys

    def refuse(word):
        raise ValueError(word)

    value = json.loads(text.decode("utf-8-sig"), parse_float=real, parse_int=integer,
                       parse_constant=refuse, object_pairs_hook=members)
    json.dumps(value, ensure_ascii=False).encode()  # unpaired surrogates
    return value


def json_text(value):
    """Returns the text that an archive has for the value."""
    if isinstance(value, dict):
        return "{" + ",".join(json_text(k) + ":" + json_text(v) for k, v in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(json_text, value)) + "]"
    if isinstance(value, bool):
        return "1" if value else "0"
    if isinstance(value, float):
        size = abs(value)
        return "%.16g" % math.copysign(min(size, MOST), value) if size >= LEAST else "0"
    return json.dumps(value, ensure_ascii=False).replace("/", "\\/")


def expected_json(text):
    """Returns the text that the library must write after it has read this one, None for none."""
    for attempt in text, re.sub(rb"[\x01-\x1f]", b"?", text):
        try:
            return json_text(json_value(attempt)).encode()
        except ValueError:
            pass
    return None


# Keyed archives. Their values, besides python's own: ("NSDate", seconds) and ("NSSet", [strings]).


def keyed_archive(root):
    objects = ["$null"]

    def added(entry):
        # Equal strings and classes are shared.
        if isinstance(entry, (str, dict)) and entry in objects[1:]:
            return plistlib.UID(objects.index(entry, 1))
        objects.append(entry)
        return plistlib.UID(len(objects) - 1)

    def record(name, **members):
        members = {key.replace("_", "."): value for key, value in members.items()}
        of = added({"$classname": name, "$classes": [name, "NSObject"]})
        return added(members | {"$class": of})

    def reference(value):
        if value is None:
            return record("NSNull")
        if isinstance(value, list):
            return record("NSArray", NS_objects=[reference(each) for each in value])
        if isinstance(value, dict):
            return record("NSDictionary", NS_keys=[reference(key) for key in value],
                          NS_objects=[reference(each) for each in value.values()])
        if isinstance(value, tuple) and value[0] == "NSDate":
            return record("NSDate", NS_time=value[1])
        if isinstance(value, tuple):
            return record("NSSet", NS_objects=[reference(each) for each in value[1]])
        return added(value)

    top = {"root": reference(root)}
    return plistlib.dumps({"$version": 100000, "$archiver": "NSKeyedArchiver", "$top": top,
                           "$objects": objects}, fmt=plistlib.FMT_BINARY, sort_keys=False)


def keyed_value(archive):
    archive = plistlib.loads(archive)

    def value(reference):
        entry = archive["$objects"][reference.data]
        if not isinstance(entry, dict):
            return entry
        name = archive["$objects"][entry["$class"].data]["$classname"].replace("Mutable", "")
        elements = [value(each) for each in entry.get("NS.objects", [])]
        if name == "NSDictionary":
            return dict(zip([value(each) for each in entry["NS.keys"]], elements))
        if name == "NSSet":
            return ("NSSet", sorted(elements))
        return {"NSNull": None, "NSArray": elements, "NSDate": ("NSDate", entry.get("NS.time")),
                "NSString": entry.get("NS.string"), "NSData": entry.get("NS.data")}[name]

    return value(archive["$top"]["root"])


def main(program, count=1000, seed=1):
    peer, documents = Peer(program), Documents(int(seed))

    def compare(document, seen, expected):
        if repr(seen) != repr(expected):  # 1, 1.0 and True are equal values, but other texts
            sys.exit(f"document: {document!r}\nexpected: {expected!r}\nseen:     {seen!r}")

    refused = 0
    for _ in range(int(count)):
        text = documents.text()
        for each in text, documents.damaged(text):
            expected = expected_json(each)
            refused += expected is None
            compare(each, peer.written_again(b"json", each), expected)

        date = ("NSDate", documents.real())
        leaves = [documents.string, documents.integer, documents.real, documents.boolean,
                  lambda: None, lambda: documents.string().encode(), lambda: date,
                  lambda: ("NSSet", sorted({documents.string(), documents.string()}))]
        value = documents.value(4, leaves)
        archive = keyed_archive(value)
        compare(archive, keyed_value(peer.written_again(b"keyed", archive)), value)

        inside = b'{"_archive":"%s"}' % base64.b64encode(keyed_archive(date))
        again = json.loads(peer.written_again(b"json", inside))
        compare(inside, keyed_value(base64.b64decode(again["_archive"])), date)
    print(f"no difference in {count} texts, {count} damaged texts and {count} keyed archives; "
          f"{refused} texts refused")


if __name__ == "__main__":
    main(*sys.argv[1:])
