"""Writes the module through which the package calls the C library, from the library's own headers.

    make_binding.py OUT.py HEADER...

The declarations are taken as they stand, so that the package can't differ from the headers; cffi reads them here, at
build time, and nothing is compiled."""

import pathlib
import re
import sys

import cffi

# What a C header has around its declarations, and a cdef can't have.
PREPROCESSOR = re.compile(r"^[ \t]*#(?:[^\n\\]|\\.|\\\n)*\n", re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
LINKAGE = re.compile(r'extern "C" \{|^\}[ \t]*$', re.MULTILINE)
MARKS = re.compile(r"\b(?:VLW_API|VLW_CHECKED)\b")


def declarations(header: pathlib.Path) -> str:
    text = header.read_text(encoding="utf-8")
    for pattern in (COMMENT, PREPROCESSOR, LINKAGE, MARKS):
        text = pattern.sub("", text)
    return text


def main(target: str, *headers: str) -> None:
    builder = cffi.FFI()
    builder.cdef("\n".join(declarations(pathlib.Path(header)) for header in headers))
    builder.set_source("vlwav._binding", None)
    builder.emit_python_code(target)


if __name__ == "__main__":
    main(*sys.argv[1:])
