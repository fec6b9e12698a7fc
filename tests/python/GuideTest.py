"""Every program of the Python pages runs as it stands, and the pictures it shows are made."""

import contextlib
import io
import os
import pathlib
import re
import unittest
import warnings

from support import InFolder

DOCS = pathlib.Path(os.environ["SOURCE"]) / "docs"


def program(page: str) -> str:
    """The indented pieces of a page, one after the other."""
    lines = (DOCS / page).read_text(encoding="utf-8").splitlines()
    return "\n".join(line[4:] for line in lines if line.startswith("    "))


class Guide(InFolder):
    def run_page(self, page: str) -> str:
        self.make("in.wav", 30000)
        said = io.StringIO()
        with contextlib.redirect_stdout(said), warnings.catch_warnings():
            exec(compile(program(page), page, "exec"), {"__name__": "__main__"})
        return said.getvalue()

    def test_five_minutes(self) -> None:
        said = self.run_page("python-guide.md")
        for line in ("44100 (30000, 2) int16", "28000", "{'title': 'A', 'artist': 'Nobody'}", "Opening missing.wav failed"):
            self.assertIn(line, said)

    def test_coming_from_soundfile(self) -> None:
        self.assertIn("44100 2 30000\nPCM_16", self.run_page("python-from-soundfile.md"))

    def test_the_notebook_and_its_pictures(self) -> None:
        said = self.run_page("python-notebook.md")
        levels = [float(level) for level in re.findall(r"second \d: (\S+) dB", said)]
        self.assertEqual((len(levels), levels), (4, sorted(levels)))
        for picture in re.findall(r"\]\((\S+\.png)\)", (DOCS / "python-notebook.md").read_text(encoding="utf-8")):
            self.assertGreater(os.path.getsize(picture), 1000)
            self.assertTrue((DOCS / picture).exists())


if __name__ == "__main__":
    unittest.main()
