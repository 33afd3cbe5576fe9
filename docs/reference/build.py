#!/usr/bin/env python3
"""Builds the reference pages with Doxygen.

    docs/reference/build.py DOXYFILE

Before Doxygen runs, writes the pages of the topics (Topics.list), and for each class the guides whose
samples use it. Afterwards writes the data of the pages' search (search.js) from Doxygen's tag file and
Terms.list, and links the names in the guides. The exit status is 1 if a public header has no topic, a
guide belongs to no topic, a term has no such name, or Doxygen warns.
"""

import collections
import json
import pathlib
import re
import shutil
import subprocess
import sys
import xml.etree.ElementTree as ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCS = ROOT / "docs"
SOURCE = ROOT / "Modules/TQFoundation/Source"
DOXYGEN_COMMANDS = {"class": "class", "struct": "struct", "enum": "enum", "concept": "concept",
                    "using": "typedef"}

Topic = collections.namedtuple("Topic", "name title area about guides headers")
Entry = collections.namedtuple("Entry", "name url kind where")


def statements(name):
    """The lines of a list in this folder, without comments and empty lines."""
    lines = (pathlib.Path(__file__).parent / name).read_text().splitlines()
    return [line for line in lines if line and not line.startswith("#")]


def read_topics():
    """Returns the areas as {name: title}, and the topics in order."""
    areas, topics = {}, []
    for line in statements("Topics.list"):
        keyword, _, rest = line.partition(" ")
        name, _, title = rest.partition(" ")
        if keyword == "area":
            areas[name] = title
        elif keyword == "topic":
            topics.append(Topic(name, title, list(areas)[-1], [], [], []))
        else:
            getattr(topics[-1], keyword).extend([rest] if keyword == "about" else rest.split())
    return areas, topics


def check_topics(topics):
    """Every public header has one topic, and every guide has a topic at least."""
    umbrella = (SOURCE / "TQFoundation.h").read_text()
    public = collections.Counter(re.findall(r"#include <TQFoundation/(.+)>", umbrella))
    listed = collections.Counter(header for topic in topics for header in topic.headers)
    for header in public | listed:
        if public[header] != listed[header]:
            yield f"Topics.list: {header} is in {listed[header]} topics, expected {public[header]}"
    guides = {page.stem for page in DOCS.glob("guides/*.md")} - {"README"}
    for guide in guides ^ {guide for topic in topics for guide in topic.guides}:
        yield f"Topics.list: the guide {guide} has no topic, or does not exist"


def link_to(page):
    """A Doxygen link to a page, with its title."""
    title = page.read_text().split("\n", 1)[0].lstrip("# ").replace("`", "")
    label = "md_" + str(page.relative_to(ROOT).with_suffix("")).replace("/", "_")
    return f'@ref {label} "{title}"'


def summary_of(header):
    """The first sentence of a header."""
    text = re.search(r"@file .*\n((?:///.*\n)+)", (SOURCE / header).read_text())[1]
    words = " ".join(line.strip("/ ") for line in text.split("\n///\n")[0].splitlines())
    first = re.match(r".*?[.:](?= [A-Z]|$)", words)[0].rstrip(".:") + "."
    return re.sub(r"^[A-Z][a-z]+ [a-z]", r"%\g<0>", first)  # "Object monitors": not the class Object


def topic_pages(areas, topics):
    """The pages of areas and topics, as Doxygen's comments."""
    for name, title in areas.items():
        yield f"/** @defgroup area-{name} {title} */"
    for topic in topics:
        rows = [f"- `#include <TQFoundation/{header}>`<br>{summary_of(header)}" for header in topic.headers]
        guides = ", ".join(link_to(DOCS / f"guides/{guide}.md") for guide in topic.guides)
        yield "\n".join([f"/** @defgroup {topic.name} {topic.title}", f"@ingroup area-{topic.area}",
                         f"@brief {' '.join(topic.about)}", f"@details {' '.join(topic.about)}",
                         f"@par Guides\n{guides}", "", *rows, "*/"])


def guide_links(headers):
    """Adds to each class the pages whose samples use it, as Doxygen's comments."""
    order = re.findall(r"\((\w+)\.md\)", (DOCS / "guides/README.md").read_text())
    pages = [*(DOCS / f"guides/{guide}.md" for guide in order),
             *(DOCS / f"{page}.md" for page in ("Objects", "Conventions", "Format"))]
    listing = subprocess.run(["awk", "-v", "uses=1", "-f", DOCS / "CheckSamples.awk",
                              DOCS / "Unsampled.list", *pages,
                              *(SOURCE / header for header in headers)],
                             stdout=subprocess.PIPE, text=True, check=False).stdout
    for line in listing.splitlines():
        keyword, name, *used_by = line.split()
        if keyword in DOXYGEN_COMMANDS:
            links = ", ".join(link_to(pathlib.Path(page)) for page in used_by)
            yield f"/** @{DOXYGEN_COMMANDS[keyword]} tq::{name}\n@par Guides\n{links} */"


def read_entries(tag_file):
    """Everything that has a place in the pages: what the search finds."""
    def place(file, anchor=""):
        return (file if file.endswith(".html") else file + ".html") + ("#" + anchor if anchor else "")

    root = ElementTree.parse(tag_file).getroot()
    topic_of = {each.text: group.findtext("title") for group in root.iter("compound")
                if group.get("kind") == "group"
                for each in group.findall("class") + group.findall("concept")}
    entries = {}

    def add(name, url, kind, where):
        entries.setdefault((name, kind, where), Entry(name, url, kind, where))

    for compound in root.findall("compound"):
        kind, name = compound.get("kind"), compound.findtext("name")
        file, title = compound.findtext("filename"), compound.findtext("title")
        scope = name.removeprefix("tq::")
        if kind in ("group", "page"):
            add(title, place(file), "topic" if kind == "group" else "page", "")
            scope = title
        elif kind in ("class", "struct", "concept"):
            add(scope, place(file), kind, topic_of.get(name, ""))
        elif kind == "file" and name.endswith(".h"):
            path = re.sub(r".*/Include/", "", compound.findtext("path"))
            add(path + name, place(file), "header", "")
        if kind in ("file", "namespace", "dir"):
            continue
        for section in compound.findall("docanchor"):
            if section.get("title"):
                heading = re.sub("<[^>]*>", "", section.get("title"))
                add(heading, place(section.get("file"), section.text), "page", scope)
        for member in compound.findall("member"):
            url = place(member.findtext("anchorfile"), member.findtext("anchor"))
            if member.findtext("name").lstrip("~") != scope.split("::")[-1]:  # no constructors
                add(member.findtext("name"), url, member.get("kind"), scope)
            for value in member.findall("enumvalue"):
                add(value.text, url, "value", member.findtext("name"))
    return list(entries.values())


def urls_by_name(entries):
    """Returns the places of names: of a type, function or macro, and Class::member."""
    urls = {}
    for entry in entries:
        if entry.kind in ("topic", "page", "value"):
            continue
        if entry.kind == "header":
            urls[entry.name.rsplit("/", 1)[-1]] = urls[f"&lt;{entry.name}&gt;"] = entry.url
        elif entry.kind in ("class", "struct", "concept"):
            urls[entry.name] = entry.url
        elif entry.url.startswith("group"):
            urls.setdefault(entry.name, entry.url)
        else:
            urls.setdefault(f"{entry.where}::{entry.name}", entry.url)
    return urls


def read_terms(urls, faults):
    """Returns the other words for names, as entries."""
    terms = []
    for line in statements("Terms.list"):
        words, _, names = line.partition(": ")
        for name in names.split():
            if name in urls:
                terms += [Entry(name, urls[name], "term", term) for term in words.split(", ")]
            else:
                faults.append(f"Terms.list: {name} is not in the reference")
    return terms


def link_names(text, urls):
    """Links the public names in a page: those in `code`, types and called functions in samples."""
    def in_words(match):
        name = match[1].removeprefix("tq::").removesuffix("()")
        return f'<code><a href="{urls[name]}">{match[1]}</a></code>' if name in urls else match[0]

    def in_sample(match):
        name = match[2]
        if name not in urls or not (name[0].isupper() or match[3]):
            return match[0]
        return f'<a class="code" href="{urls[name]}">{name}</a>'

    def sample(text):
        return re.sub(r'(<a .*?</a>|<span class="(?:comment|stringliteral|preprocessor)">.*?</span>'
                      r"|<[^>]+>|&\w+;|(?:\.|-&gt;|::)\w+)|([A-Za-z_]\w*)(?=(\()?)", in_sample, text)

    parts = re.split(r'(<div class="fragment">.*?</div><!-- fragment -->)', text, flags=re.DOTALL)
    for i, part in enumerate(parts):
        parts[i] = sample(part) if i % 2 else re.sub(r"<code>([^<\s]+)</code>", in_words, part)
    return "".join(parts)


def tidied(text, urls):
    """Removes "More…", where the name is the same link, and links to a list of nested classes that is
    empty because all of them are private. Links includes; their paths may wrap after a slash."""
    def include(match):
        path = f'<a href="{urls[match[1]]}">{match[1][4:-4]}</a>' if match[1] in urls else match[1][4:-4]
        return f"#include &lt;{path}&gt;"

    text = re.sub(r"#include (&lt;TQFoundation/[\w/+.]+&gt;)", include, text)
    text = re.sub(r' *<a href="[^"]*">More\.\.\.</a>', "", text).replace(".h File Reference<", ".h<")
    text = re.sub(r">TQFoundation/[\w/+.]+<", lambda match: match[0].replace("/", "/<wbr>"), text)
    if 'id="nested-classes"' in text:
        return text
    return re.sub(r'<a href="#nested-classes">Classes</a>(?: &#124;)?', "", text)


def main():
    doxyfile = pathlib.Path(sys.argv[1])
    output = doxyfile.parent / "reference"
    shutil.rmtree(output, ignore_errors=True)  # no pages of earlier runs
    output.mkdir()
    areas, topics = read_topics()
    if faults := list(check_topics(topics)):
        sys.exit("\n".join(faults))
    headers = [header for topic in topics for header in topic.headers]
    pages = [*topic_pages(areas, topics), *guide_links(headers)]
    (doxyfile.parent / "Topics.dox").write_text("\n\n".join(pages) + "\n")
    doxygen = subprocess.run(["doxygen", doxyfile], cwd=ROOT, check=False)

    entries = read_entries(doxyfile.parent / "Reference.tag")
    urls = urls_by_name(entries)
    rows = [json.dumps(entry, ensure_ascii=False) for entry in entries + read_terms(urls, faults)]
    (output / "search-index.js").write_text("const searchIndex = [\n" + ",\n".join(rows) + "];\n")
    for page in output.glob("*.html"):
        if page.name.endswith("-members.html") or page.name.startswith("functions"):
            page.unlink()  # no page links to them
        else:
            text = page.read_text()
            is_page = page.name.startswith(("md_", "index"))
            page.write_text(tidied(link_names(text, urls) if is_page else text, urls))
    print("\n".join(faults) or f"{len(rows)} names and words in {output}")
    sys.exit(1 if faults or doxygen.returncode else 0)


if __name__ == "__main__":
    main()
