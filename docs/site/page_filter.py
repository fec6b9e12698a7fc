"""Makes of a Markdown page of this repository one that Doxygen puts into the site: page_filter.py PAGE

The page gets a name, that of its file, under which others link to it. Names of pages become links, as Markdown links and where
they stand in code quotes ("`docs/limits.md`"). What is indented or fenced stays as it is, and so does a name of anything else.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
START = "README"


def page_name(target, folder):
    """The name in the site of the page that a path means, seen from a page's folder or from the top; None where it is no page."""
    for place in (folder, ROOT):
        path = (place / target).resolve()
        if path.suffix == ".md" and path.is_file() and path.parent in (ROOT, ROOT / "docs"):
            return "index" if path.stem == START else path.stem.lower()
    return None


def link(text, target, folder, otherwise):
    name = page_name(target, folder)
    return f'<a href="{name}.html">{text}</a>' if name else otherwise


def filtered(path):
    folder = path.resolve().parent
    fenced = blank = False
    named = path.stem == START
    for line in path.read_text().splitlines():
        if line.startswith("```"):
            fenced = not fenced
        elif not fenced and not (blank and line.startswith("    ")):
            line = re.sub(r"\[([^]]+)\]\(([^)#\s:]+\.md)\)", lambda m: link(m[1], m[2], folder, m[0]), line)
            line = re.sub(r"`([\w./-]+\.md)`", lambda m: link(m[1], m[1], folder, m[0]), line)
            if not named and line.startswith("# "):
                line += f" {{#{path.stem.lower()}}}"
                named = True
        blank = not line.strip() or (blank and line.startswith("    "))
        yield line


print("\n".join(filtered(pathlib.Path(sys.argv[1]))))
