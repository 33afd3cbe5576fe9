#!/usr/bin/env python3
"""Compares the library's resolution of URLs with the algorithm of RFC 3986, section 5.2.

    rfc3986.py PROGRAM [PAIRS [SEED]]

PROGRAM is TQURLPeer. Prints the first difference and exits with status 1.
"""

import random
import re
import subprocess
import sys

PARTS = re.compile(r"(?:([^:/?#]+):)?(?://([^/?#]*))?([^?#]*)(?:\?([^#]*))?(?:#(.*))?")  # appendix B
SEGMENTS = ["a", "b", ".", "..", "...", ".x", "", "c;d", "%2F", "e=f", "g:h", "@", "~", "!$&", "*+,", ";"]
AUTHORITIES = ["h", "h:80", "u@h", "u;p:q@h:8", "h%2Fi", "%40", "h+i", "[::1]", "[::1%25e]", "1.2.3.4", "", "h;x", ";", "u@h;p"]
TAILS = ["", "", "?", "?x=1", "?a/../b?", "#", "#f", "?x#/./g"]


# Sections 5.4.1 and 5.4.2, but for references with a scheme: what they are seen from the base.
BASE = "http://a/b/c/d;p?q"
WORDS = """
    g    http://a/b/c/g         ./g    http://a/b/c/g       g/     http://a/b/c/g/   /g    http://a/g
    //g  http://g               ?y     http://a/b/c/d;p?y   g?y    http://a/b/c/g?y
    #s   http://a/b/c/d;p?q#s   g#s    http://a/b/c/g#s     g?y#s  http://a/b/c/g?y#s
    ;x   http://a/b/c/;x        g;x    http://a/b/c/g;x     g;x?y#s  http://a/b/c/g;x?y#s
    .    http://a/b/c/          ./     http://a/b/c/        ..     http://a/b/       ../   http://a/b/
    ../g http://a/b/g           ../..  http://a/            ../../ http://a/         ../../g  http://a/g
    ../../../g  http://a/g      ../../../../g  http://a/g   /./g   http://a/g        /../g  http://a/g
    g.   http://a/b/c/g.        .g     http://a/b/c/.g      g..    http://a/b/c/g..  ..g  http://a/b/c/..g
    ./../g  http://a/b/g        ./g/.  http://a/b/c/g/      g/./h  http://a/b/c/g/h  g/../h  http://a/b/c/h
    g;x=1/./y  http://a/b/c/g;x=1/y   g;x=1/../y  http://a/b/c/y   g?y/./x  http://a/b/c/g?y/./x
    g?y/../x   http://a/b/c/g?y/../x  g#s/./x  http://a/b/c/g#s/./x  g#s/../x  http://a/b/c/g#s/../x
""".split()
EXAMPLES = [("", BASE), *zip(WORDS[::2], WORDS[1::2])]


def without_dots(path):
    """Section 5.2.4, for a path that is empty or begins with a slash."""
    segments, kept = path.split("/")[1:], []
    for segment in segments:
        if segment == "..":
            kept = kept[:-1]
        elif segment != ".":
            kept.append(segment)
    if segments and segments[-1] in (".", ".."):
        kept.append("")
    return "".join("/" + segment for segment in kept)


def resolved(base, reference):
    """Sections 5.2.2, 5.2.3 and 5.3, for a base with an authority. Its dots are removed first.

    The library refuses hosts with a semicolon."""
    scheme, authority, path, query, _ = PARTS.fullmatch(base).groups()
    path = without_dots(path)
    own_scheme, own_authority, own_path, own_query, fragment = PARTS.fullmatch(reference).groups()
    if any(";" in (each or "").split("@")[-1] for each in (authority, own_authority)):
        return ""
    if own_scheme is not None or own_authority is not None:
        scheme, authority, path, query = own_scheme or scheme, own_authority, own_path, own_query
    elif own_path:
        folder = path[:path.rfind("/")] if path else ""
        path = own_path if own_path.startswith("/") else folder + "/" + own_path
        query = own_query
    elif own_query is not None:
        query = own_query
    tail = ("" if query is None else "?" + query) + ("" if fragment is None else "#" + fragment)
    return f"{scheme}://{authority}{without_dots(path)}{tail}"


def main(program, count=20_000, seed=1):
    chance = random.Random(int(seed))

    def path(most):
        return "/".join(chance.choices(SEGMENTS, k=chance.randrange(most)))

    def absolute():
        scheme = chance.choice(["http", "x", "foo+bar"])
        return scheme + ":" + network()

    def network():
        return "//" + chance.choice(AUTHORITIES) + chance.choice(["", "/" + path(5)]) + chance.choice(TAILS)

    def relative():
        text = chance.choice(["", "", "/"]) + path(6)
        first = text.split("/")[0]
        return ("./" if ":" in first or text.startswith("//") else "") + text + chance.choice(TAILS)

    pairs = [(absolute(), chance.choice([relative, relative, relative, network, absolute])())
             for _ in range(int(count))]
    for reference, expected in EXAMPLES:
        assert resolved(BASE, reference) == expected, reference
        pairs.append((BASE, reference))
    lines = "".join(f"{base}\n{reference}\n" for base, reference in pairs)
    answers = subprocess.run([program], input=lines, capture_output=True, text=True, check=True).stdout
    answers = answers.splitlines()
    assert len(answers) == len(pairs)
    for (base, reference), answer in zip(pairs, answers):
        if answer != resolved(base, reference):
            sys.exit(f"{reference} from {base}: {answer}, not {resolved(base, reference)}")
    print(f"{len(pairs)} references, no difference")


main(*sys.argv[1:])
