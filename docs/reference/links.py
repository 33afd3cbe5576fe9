#!/usr/bin/env python3
"""Follows the links of HTML pages to each other.

    docs/reference/links.py FOLDER

Prints each link to a file or an anchor that does not exist. Links to other sites are not followed. The
exit status is 1 if a link is broken, or if there are no links.
"""

import html.parser
import json
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    """The anchors of a page, and the links in it."""

    def __init__(self, text):
        super().__init__()
        self.anchors = set()
        self.links = set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.anchors.update(values[key] for key in ("id", "name") if values.get(key))
        self.links.update(values[key] for key in ("href", "src", "data") if values.get(key))


def read_search(path):
    """Returns what the search finds, as lists of name, place, kind and where."""
    return json.loads(path.read_text().removeprefix("const searchIndex = ").rstrip(";\n"))


def faults_in(folder, pages):
    """Returns the broken links as text."""
    for name, page in pages.items():
        for link in sorted(page.links):
            target = urllib.parse.urlsplit(link)
            if target.scheme or target.netloc:
                continue
            path = urllib.parse.unquote(target.path) or name
            anchor = urllib.parse.unquote(target.fragment)
            if not (folder / path).is_file():
                yield f"{name}: {link}: no such file"
            elif anchor and path in pages and anchor not in pages[path].anchors:
                yield f"{name}: {link}: no such anchor"


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = {path.name: Page(path.read_text()) for path in folder.glob("*.html")}
    search = Page("")
    search.links.update(place for _, place, *_ in read_search(folder / "search-index.js"))
    pages["search-index.js"] = search
    faults = list(faults_in(folder, pages))
    print("\n".join(faults))
    count = sum(len(page.links) for page in pages.values())
    print(f"{len(faults)} of {count} links in {len(pages)} pages are broken")
    sys.exit(1 if faults or count == 0 else 0)


if __name__ == "__main__":
    main()
