"""Tells of links in a folder of pages that lead nowhere: check_links.py FOLDER

Looks at what lies in the folder: a page or file that isn't there, a place in a page that has no such name. Links to other hosts
aren't followed.
"""

import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.names = set(), set()
        self.feed(path.read_text())

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src") and value:
                self.links.add(value)
            elif name in ("id", "name") and value:
                self.names.add(value)


def dead_links(folder):
    pages = {path.resolve(): Page(path) for path in sorted(folder.rglob("*.html"))}
    for path, page in pages.items():
        for link in sorted(page.links):
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            known = target in pages and urllib.parse.unquote(parts.fragment) in pages[target].names
            if not target.is_file() or parts.fragment and target in pages and not known:
                yield f"{path.name}: {link}"
    print(f"   {sum(len(page.links) for page in pages.values())} links on {len(pages)} pages")


dead = list(dead_links(pathlib.Path(sys.argv[1])))
print("\n".join(dead), end="\n" if dead else "")
sys.exit(bool(dead))
