"""Makes of the comments of a public header those that Doxygen reads: header_filter.py HEADER

The headers are written to be read as they are. What a reader sees, and Doxygen doesn't:
- the comment that opens a header belongs to the file, and to its first class if that has no comment of its own;
- a comment above declarations belongs to all of them, up to the next comment or empty line;
- a comment at the end of a line belongs to what is declared there, and goes on in lines of comment alone that are indented as it is;
- what every handle has (_new, _free, _error, …), and the identifiers of interfaces, need no words in a header.
"""

import pathlib
import re
import sys

# For names that carry no comment in the header, or a mark of threads alone ("[handle]").
SAID_BY_NAME = (
    (r"#define VLW_VERSION\w*", "The version of this header; vlw_version tells that of the library that runs."),
    (r"#define VLW_API", "Marks a function of the library."),
    (r"typedef struct (vlw_\w+) \1;", "A handle, which only the library looks into."),
    (r"typedef enum vlw_code", "What a function returns: VLW_OK, an end (positive) or a failure (negative)."),
    (r"VLW_OK = 0", "Success."),
    (r"VLW_NO_MEMORY = ", "No memory was found."),
    (r"VLW_NO_PERMISSION = ", "The system forbids it."),
    (r"VLW_UNKNOWN_KEYWORD = ", "No tag has this keyword."),
    (r"uint32_t channels;", "Samples in a frame."),
    (r"vlw_text text;", "How text of tags is read and written."),
    (r"void \*user;", "The program's own, for its functions."),
    (r"IID_(\w+)", r"Names \1 in QueryInterface."),
    (r"~(\w+)", r"Not for callers: see Release of IBase."),
    (r"vlw_(\w+)_new", r"Makes a handle, to be freed by vlw_\1_free."),
    (r"vlw_\w+_free", r"Frees the handle; NULL is fine."),
    (r"vlw_(\w+)_error", r"What failed last on the handle. A vlw_error."),
    (r"vlw_(\w+)_count", r"How many there are."),
    (r"vlw_(\w+)_format", r"What the file is."),
)
SCOPE = re.compile(r"^(?:typedef |inline |template <.*> )*(?:namespace|class|struct|union|enum|extern \"C\")(?!\w)[^;()]*\{$")
CODE_AND_COMMENT = re.compile(r"^(?P<code>.*?\S)\s*(?://+<?|/\*(?![*<]))\s?(?P<text>.*?)\s*(?:\*/)?$")
MARK = re.compile(r"^(?:\[[^]]*\]\s*)+$")


def escaped(text):
    """Text in which nothing but Markdown has a meaning."""
    parts = re.split(r"(`[^`]*`)", text)
    return "".join(part if i % 2 else re.sub(r"([<>@\\])", r"\\\1", part) for i, part in enumerate(parts))


def without_text(line):
    """A line without comments within it, and without what is quoted."""
    return re.sub(r"/\*.*?\*/|\"(?:\\.|[^\"\\])*\"|'(?:\\.|[^'\\])'", "", line)


def split_comment(line):
    """Code and the comment at its end; None where there is none. A comment inside brackets is the parameter's."""
    if line.lstrip().startswith(("//", "/*", "*")):
        return line, None
    found = CODE_AND_COMMENT.match(line)
    if not found or found["code"].count("(") > found["code"].count(")") or "NOLINT" in found["text"]:
        return line, None
    if found["code"].count('"') % 2 or (("/*" in line[len(found["code"]):]) and not line.rstrip().endswith("*/")):
        return line, None
    return found["code"], found["text"]


class HeaderFilter:
    def __init__(self, path):
        self.lines = path.read_text().splitlines()
        self.at = 0
        self.out = []
        self.doc = None  # the comment that holds for what is declared next
        self.fresh = False  # it stands directly above
        self.class_doc = None  # the header's own, until a class has it

    def run(self):
        self.opening_comment()
        while self.at < len(self.lines):
            self.one()
        return "\n".join(self.out)

    def take_plain(self):
        """The lines of a // comment, without their marks."""
        text = []
        while self.at < len(self.lines) and self.lines[self.at].lstrip().startswith("//"):
            text.append(re.sub(r"^\s*// ?", "", self.lines[self.at]))
            self.at += 1
        return text

    def take_block(self):
        """The lines of a /** comment, without their marks."""
        text = []
        while True:
            line = self.lines[self.at]
            self.at += 1
            text.append(re.sub(r"^\s*(?:/\*\*|\*)? ?", "", line.replace("*/", "").rstrip()))
            if "*/" in line:
                return text

    def say(self, text):
        self.out.append("/** " + "\n".join(text) + " */")

    def opening_comment(self):
        if self.lines[0].startswith("//"):
            self.class_doc = [escaped(line) for line in self.take_plain()]
            self.say(["@file", *self.class_doc])
        elif self.lines[0].startswith("/**"):
            self.say(with_items(self.take_block()))

    def one(self):
        line = self.lines[self.at]
        bare = line.strip()
        if bare == "private:":
            self.skip_private()
        elif not bare or bare in ("public:", "protected:") or bare.startswith(("}", "/* ----")):
            self.at += 1
            self.doc = None
            self.out.append(line)
        elif bare.startswith("#"):
            self.directive()
        elif bare.startswith("//"):
            text = self.take_plain()
            if bare.startswith(("// ---", "// clang-format")):
                return
            self.remember([escaped(part) for part in text])
        elif bare.startswith("/**"):
            self.remember(self.take_block())
        else:
            self.declaration()

    def skip_private(self):
        """To the brace that ends the class."""
        depth = 0
        while True:
            plain = without_text(re.sub(r"//.*", "", self.lines[self.at]))
            depth += plain.count("{") - plain.count("}")
            if depth < 0:
                return
            self.at += 1

    def remember(self, text):
        self.doc, self.fresh = text, True

    def directive(self):
        code, trailing = split_comment(self.lines[self.at])
        if code.startswith("#define ") and not code.endswith("_H"):
            self.comment_for(code, escaped(trailing) if trailing else None)
        self.out.append(code)
        self.at += 1

    def declaration(self):
        code, trailing = self.take_declaration()
        first = " ".join(part.strip() for part in code)
        if re.match(r"[\w<>:, ]+ \w+(<[^>]*>)?::\w+\(", first):
            self.fresh = False  # the body of what the class declares
            return
        several = re.match(r"^([\w ]+) (\w+(?:, \w+)+);$", first)
        for part in [f"{several[1]} {name};" for name in several[2].split(", ")] if several else [first]:
            self.comment_for(part, trailing)
            self.out.extend([part] if several else code)
        if SCOPE.match(first):
            self.doc = None

    def comment_for(self, code, trailing):
        """Writes what the header says of a declaration, in one comment above it."""
        doc = self.doc if self.fresh or trailing is None else None
        if doc is None and re.match(r"(template <[^>]*> )?(class|struct|union) \w+[^;]*\{$", code):
            doc, self.class_doc = self.class_doc, None
        if doc is None and (trailing is None or MARK.match(trailing)):
            doc = said_by_name(code)
        if doc or trailing:
            self.say((doc or []) + ([trailing] if trailing else []))
        self.fresh = False

    def take_declaration(self):
        """The lines of a declaration with its body, and the comment at its end; of a scope the line that opens it."""
        code, comment = [], None
        depth = 0
        while self.at < len(self.lines):
            line, text = split_comment(self.lines[self.at])
            column = len(line)
            self.at += 1
            code.append(parameters(line))
            plain = without_text(line)
            if text is not None and (depth == 0 or comment is None):
                comment = escaped(text)
                indent = self.lines[self.at - 1].index(text) - 3 if text else column
                while self.at < len(self.lines) and self.continues(indent):
                    comment += " " + escaped(re.sub(r"^\s*(?://+<?|\*)?\s*|\s*\*/$", "", self.lines[self.at]))
                    self.at += 1
            if SCOPE.match(" ".join(part.strip() for part in code)) and depth == 0:
                break
            depth += len(re.findall(r"[({]", plain)) - len(re.findall(r"[)}]", plain))
            last = self.at < len(self.lines) and self.lines[self.at].strip().startswith("}")
            if depth <= 0 and (last or re.search(r"[;,}]$", plain.strip() or ";")):
                break
        return code, comment

    def continues(self, indent):
        """Whether the next line is more of a comment at a line's end."""
        line = self.lines[self.at]
        return bool(line.strip()) and len(line) - len(line.lstrip()) >= max(indent - 4, 12)


def parameters(line):
    """What stands beside a parameter, in Doxygen's words: /*in: bytes*/."""
    def words(found):
        way, _, rest = found[1].partition(":")
        way, _, more = way.partition(", ")
        return f"/**< [{way}] {escaped((more + ' ' + rest).strip()) or '.'} */"

    return re.sub(r"/\*((?:in|out)\b[^*]*)\*/", words, line)


def with_items(text):
    """The opening comment of vlwav.h: each topic that has a word of its own ("Frames.") as an item."""
    return [re.sub(r"^  (?=\[)", "  - ", re.sub(r"^([A-Z][\w+]+)(?=\. | is UTF-8)", r"- **\1**", line)) for line in text]


def said_by_name(code):
    for pattern, text in SAID_BY_NAME:
        if found := re.search(r"(?<!\w)" + pattern + r"(?!\w)", code):
            return [found.expand(text)]
    return None


print(HeaderFilter(pathlib.Path(sys.argv[1])).run())
