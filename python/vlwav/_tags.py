"""The tags of a file."""

from collections.abc import Iterator, Mapping, MutableMapping, Sequence
from typing import Any

from ._arguments import text_kind
from ._errors import TagError, check, failure
from ._guard import Guard
from ._info import Picture, pictures_of
from ._library import ffi, lib, module, new, text
from ._places import name_of, path_bytes


def keywords() -> dict[str, bool]:
    """The words for tags in the order in which they are shown, and whether a WAV file keeps them."""
    made, index = {}, 0
    while (word := lib.vlw_keyword(index)) != ffi.NULL:
        made[text(word)] = bool(lib.vlw_keyword_flags(index) & lib.VLW_KEYWORD_KEPT)
        index += 1
    return made


def _word(keyword: Any) -> bytes:
    if not isinstance(keyword, str):
        raise TypeError(f"a keyword is a str, not {type(keyword).__name__}")
    made = keyword.encode("utf-8", "backslashreplace")
    if b"\0" in made:
        raise failure(lib.VLW_UNKNOWN_KEYWORD, f"{keyword!r} is no keyword")
    return made


def _value(keyword: str, value: Any) -> bytes:
    if isinstance(value, bool) or not isinstance(value, (str, int)):
        raise TypeError(f"the value of {keyword!r} is a str or an int, not {type(value).__name__}")
    try:
        made = str(value).encode("utf-8")
    except UnicodeEncodeError:
        made = b"\0"
    if b"\0" in made:
        raise failure(lib.VLW_BAD_VALUE, f"{value!r} can't be the value of {keyword!r}: it is no text")
    return made


def set_tag(tags: Any, keyword: Any, value: Any) -> None:
    """In a vlw_tags."""
    check(lib.vlw_tags_set(tags, _word(keyword), _value(keyword, value)), lib.vlw_tags_error, tags)


def new_tags(values: Mapping[str, str | int] | None, onto: Any = None) -> Any:
    """A vlw_tags of them, set on top of another; "" takes one away."""
    made = new("tags")
    if onto is not None:
        check(lib.vlw_tags_copy(made, onto), lib.vlw_tags_error, made)
    for keyword, value in (values or {}).items():
        set_tag(made, keyword, value)
    return made


class TagView(Mapping[str, str]):
    """Tags to be looked at; keywords in any case."""

    def __init__(self, tags: Any) -> None:
        self._tags = tags

    def __getitem__(self, keyword: str, /) -> str:
        word = _word(keyword)
        value = lib.vlw_tags_get(self._tags, word)
        if value != ffi.NULL:
            return text(value)
        # Absent, or no keyword at all, which a set of tags of its own says without changing this one.
        unused = new("tags")
        check(lib.vlw_tags_set(unused, word, ffi.NULL), lib.vlw_tags_error, unused)
        raise KeyError(keyword)

    def __contains__(self, keyword: object) -> bool:
        return isinstance(keyword, str) and lib.vlw_tags_get(self._tags, _word(keyword)) != ffi.NULL

    def __iter__(self) -> Iterator[str]:
        word = ffi.new("const char **")
        words = []
        for index in range(len(self)):
            lib.vlw_tags_at(self._tags, index, word, ffi.NULL)
            words.append(text(word[0]))
        return iter(words)

    def __len__(self) -> int:
        return lib.vlw_tags_count(self._tags)

    def __repr__(self) -> str:
        return repr(dict(self))


class TagMap(TagView, MutableMapping[str, str]):
    """Tags to be changed."""

    def __setitem__(self, keyword: str, value: str | int, /) -> None:
        set_tag(self._tags, keyword, value)

    def __delitem__(self, keyword: str, /) -> None:
        self[keyword]
        check(lib.vlw_tags_set(self._tags, _word(keyword), ffi.NULL), lib.vlw_tags_error, self._tags)


class Tags(TagMap):
    """The tags of one file: keywords in any case, text values; numbers may be given as int, and come as text.

    `tags["title"]` is KeyError without a title, `UnknownTagError` for what is no keyword. Nothing is written before `save`, which
    a `with` block calls at its end, unless an exception ends it. No byte of audio moves."""

    def __init__(self, file: Any, kind: str) -> None:
        path = path_bytes(file)
        if path is None:
            raise TypeError(f"tags are those of a path, not of {type(file).__name__}")
        self._guard = Guard()
        self._path, self._name, self._kind = path, name_of(file), text_kind(kind)
        self._closed = False
        super().__init__(self._read())
        self._before = _content(self._tags)

    def _read(self) -> Any:
        reader, made = new("reader", module()), new("tags")
        lib.vlw_reader_decode_late(reader, 1)
        for code in (
            lib.vlw_reader_text(reader, self._kind),
            lib.vlw_reader_open(reader, self._path),
            lib.vlw_reader_tags(reader, made),
        ):
            check(code, lib.vlw_reader_error, reader)
        return made

    @property
    def pictures(self) -> Sequence[Picture]:
        """By ascending number. To change them, assign all that the file is to have."""
        return tuple(pictures_of(self._tags))

    @pictures.setter
    def pictures(self, pictures: Sequence[Picture]) -> None:
        made = new("tags")
        check(lib.vlw_tags_copy(made, self._tags), lib.vlw_tags_error, made)
        for picture in pictures_of(made):
            lib.vlw_tags_set_picture(made, picture.number, ffi.NULL, 0)
        for number, _, data in pictures:
            check(lib.vlw_tags_set_picture(made, number, bytes(data), len(data)), lib.vlw_tags_error, made)
        self._tags = made

    def save(self, *, lossy: bool = False) -> None:
        """TagError where any tag would come back in another form; the file is then as it was. Without changes: nothing."""
        with self._guard:
            if self._closed:
                raise ValueError("the tags are closed")
            if _content(self._tags) == self._before:
                return
            editor = new("editor", module())
            for code in (lib.vlw_editor_text(editor, self._kind), lib.vlw_editor_open(editor, self._path)):
                check(code, lib.vlw_editor_error, editor)
            target = lib.vlw_editor_tags(editor)
            if _content(target) != self._before:
                raise TagError(f"{self._name}: another program changed its tags", lib.VLW_FAILED, self._name)
            self._change(target)
            check(lib.vlw_editor_save(editor, lib.VLW_LOSSY if lossy else 0), lib.vlw_editor_error, editor)
            # As the file has them now, which may be in another form: "05" is "5" there.
            self._tags = self._read()
            self._before = _content(self._tags)

    def _change(self, target: Any) -> None:
        """Only what differs, so that nothing is added that nobody named."""
        before, now = TagView(target), dict(self)
        for keyword in list(before):
            if keyword not in now:
                check(lib.vlw_tags_set(target, keyword.encode(), ffi.NULL), lib.vlw_tags_error, target)
        for keyword, value in now.items():
            if before.get(keyword) != value:
                set_tag(target, keyword, value)
        old, new_ones = pictures_of(target), pictures_of(self._tags)
        for picture in old:
            if picture not in new_ones:
                lib.vlw_tags_set_picture(target, picture.number, ffi.NULL, 0)
        for picture in new_ones:
            if picture not in old:
                check(lib.vlw_tags_set_picture(target, picture.number, picture.data, len(picture.data)), lib.vlw_tags_error, target)

    def close(self) -> None:
        """Lets the file go, without saving."""
        self._closed = True

    def __enter__(self) -> "Tags":
        return self

    def __exit__(self, kind: type[BaseException] | None, *_: object) -> None:
        try:
            if kind is None and not self._closed:
                self.save()
        finally:
            self.close()


def _content(tags: Any) -> tuple[dict[str, str], list[Picture]]:
    return dict(TagView(tags)), pictures_of(tags)


def tags(file: Any, *, text: str = "auto") -> Tags:
    """Reads at once and opens for writing only when it saves, so that read-only files can be shown. TagError where another
    program changed the file in between."""
    return Tags(file, text)
