"""What is done in one go."""

import contextlib
import dataclasses
import os
import tempfile
from collections.abc import Callable, Iterator, Mapping
from typing import Any

from ._arguments import count, one_of, text_kind, width
from ._errors import fail, failure
from ._info import Audio, Conversion, Info, StockFormat, info_of, new_format
from ._library import UNKNOWN, ffi, lib, module, new, text as text_of
from ._places import copy_all, is_descriptor, is_memory, name_of, path_bytes
from ._reader import Reader
from ._samples import check_data
from ._tags import new_tags
from ._writer import Writer


def open(
    file: Any,
    mode: str = "r",
    samplerate: int | None = None,
    channels: int | None = None,
    subtype: str | None = None,
    *,
    rate: int | None = None,
    file_channels: int | None = None,
    bits: int = 16,
    tags: Mapping[str, str | int] | None = None,
    text: str = "auto",
    lossy: bool = False,
) -> Any:
    """Opens a file to read ("r"), to write ("w") or to write where none is ("x").

    Reading: rate (or samplerate) and channels convert. Writing: samplerate and channels are those of the data, rate,
    file_channels and bits those of the file, the data's own and 16 if not given."""
    if mode == "r":
        if (subtype, file_channels, bits, tags, text, lossy) != (None, None, 16, None, "auto", False):
            raise TypeError("subtype, file_channels, bits, tags, text and lossy are for writing")
        return Reader(file, one_of(samplerate, rate), channels)
    if mode not in ("w", "x"):
        raise ValueError(f'mode must be "r", "w" or "x", not {mode!r}')
    if samplerate is None or channels is None:
        raise TypeError("a file is written with a samplerate and channels")
    return Writer(
        file,
        mode,
        samplerate,
        channels,
        subtype=subtype,
        file_rate=rate,
        file_channels=file_channels,
        bits=bits,
        tags=tags,
        text=text,
        lossy=lossy,
    )


def info(file: Any, verbose: bool = False) -> Info:
    """What the file is; decodes nothing. verbose: str() of it has the tags, too."""
    with Reader(file, None, None, look=True) as reader:
        made = reader.info
        if not verbose:
            return made
        more = "".join(f"\n{keyword}: {value}" for keyword, value in reader.tags.items())
        return dataclasses.replace(made, _more=more)


def _user_language() -> str | None:
    """Of the user's locale, as a language tag; None for English."""
    name = next((os.environ[word] for word in ("LC_ALL", "LC_MESSAGES", "LANG") if os.environ.get(word)), "C")
    tag = name.split(".")[0].split("@")[0].replace("_", "-")
    return None if tag in ("C", "POSIX") else tag


def formats(language: str | None = None) -> list[StockFormat]:
    """The formats that can be written, with texts in a language ("ja", "pt-BR"); None: that of the user's locale."""
    codec = module()
    tag = language if language is not None else _user_language()
    made, what, place = [], new_format(), ffi.new("char **")
    for index in range(lib.vlw_module_format_count(codec)):
        for code in (
            lib.vlw_module_format(codec, index, what),
            lib.vlw_module_format_text(codec, index, ffi.NULL if tag is None else tag.encode(), place),
        ):
            if code < 0:
                raise failure(code, text_of(lib.vlw_error_text(code)))
        made.append(StockFormat(index, what.rate, what.channels, what.bits, text_of(place[0])))
        lib.vlw_free(place[0])
    return made


def available_formats() -> dict[str, str]:
    """What can be written, as soundfile tells it: {"WAV": …}."""
    return {"WAV": "WAV (PCM of 8 and 16 bits)"}


def read(
    file: Any,
    frames: int = -1,
    start: int = 0,
    stop: int | None = None,
    dtype: Any = "int16",
    always_2d: bool = False,
    fill_value: float | None = None,
    out: Any = None,
    samplerate: int | None = None,
    channels: int | None = None,
    *,
    rate: int | None = None,
) -> Audio:
    """Reads a file or a part of it into one array.

    frames, start, stop: in frames at the rate that is read; negative start and stop count from the end; stop excludes frames.
    rate, samplerate, channels: convert; None: the file's own. Channels become 1 (mean), 2 from 5.1, or any number from 1.
    out: C-contiguous array of int16, float32 or float64 to fill without a copy; the result is the filled part of it, and with
    fill_value all of it. Raises OSError, FormatError; warns CutWarning.
    """
    with Reader(file, one_of(samplerate, rate), channels) as reader:
        return Audio(reader._read_part(frames, start, stop, dtype, always_2d, fill_value, out), reader.rate)


def write(
    file: Any,
    data: Any,
    samplerate: int,
    subtype: str | None = None,
    *,
    rate: int | None = None,
    channels: int | None = None,
    bits: int = 16,
    tags: Mapping[str, str | int] | None = None,
    text: str = "auto",
    overwrite: bool = True,
    lossy: bool = False,
) -> None:
    """Writes an array as a WAV file: (frames,) or (frames, channels), int16, float32 or float64, any strides.

    samplerate: of the data. rate, channels, bits: of the file; the data's own and 16 if not given. FormatError names the nearest
    format where that one can't be written. Other integers raise TypeError instead of being scaled by guess.
    overwrite: False raises FileExistsError. The file appears complete or not at all; the old one stays until then.
    """
    samples = check_data(data, None)
    with Writer(
        file,
        "w" if overwrite else "x",
        samplerate,
        samples.shape[1],
        subtype=subtype,
        file_rate=rate,
        file_channels=channels,
        bits=bits,
        tags=tags,
        text=text,
        lossy=lossy,
    ) as writer:
        writer.write(samples)


def blocks(
    file: Any,
    blocksize: int | None = None,
    overlap: int = 0,
    frames: int = -1,
    start: int = 0,
    stop: int | None = None,
    dtype: Any = "int16",
    always_2d: bool = False,
    fill_value: float | None = None,
    out: Any = None,
    samplerate: int | None = None,
    channels: int | None = None,
    *,
    rate: int | None = None,
) -> Iterator[Any]:
    """Yields blocks of a file; see Reader.blocks. The file closes with the iterator."""
    with Reader(file, one_of(samplerate, rate), channels) as reader:
        start, wanted = reader._part(frames, start, stop)
        if wanted is None:
            raise ValueError("only reading tells where this file ends: start and stop can't count from there")
        if start:
            reader._skip(start)
        yield from reader.blocks(blocksize, overlap, wanted, dtype, always_2d, fill_value, out)


class _Progress:
    """The callback of a conversion. What it raises stops the conversion, and is kept."""

    def __init__(self, told: Callable[[int, int | None], object] | None) -> None:
        self.error: BaseException | None = None
        self._told = told
        self.callback = ffi.callback("int (void *, int64_t, int64_t)", self._call, onerror=self._failed)

    def _call(self, user: Any, done: int, total: int) -> int:
        # Without a program's own callback too, since Ctrl-C is heard where Python runs.
        if self._told is not None:
            self._told(done, None if total == UNKNOWN else total)
        return 0

    def _failed(self, kind: Any, value: BaseException, trace: Any) -> int:
        self.error = value
        return 1


def _place(file: Any, spool: Any, kept: list[Any]) -> Any:
    """Where a conversion reads or writes; kept: what must stay until it ends."""
    made = ffi.new("vlw_place *")
    made.size = ffi.sizeof("vlw_place")
    path = path_bytes(file)
    if path is not None:
        kept.append(ffi.new("char[]", path))
        made.path = kept[-1]
    elif spool is not None:
        made.fd = spool.fileno()
    elif is_descriptor(file):
        made.fd = file
    else:
        raise TypeError(f"a file is a path, a descriptor or a binary file object, not {type(file).__name__}")
    return made


def _is_object(file: Any, does: str) -> bool:
    return path_bytes(file) is None and not is_descriptor(file) and hasattr(file, does)


def _spool(source: Any, spool: Any) -> None:
    """What has no descriptor of its own goes into a file without a name, which the library reads."""
    if is_memory(source):
        spool.write(source)
    elif is_descriptor(source):
        with os.fdopen(os.dup(source), "rb") as file:
            copy_all(file, spool)
    else:
        copy_all(source, spool)
    spool.seek(0)  # writes out what is buffered, too


def _source_tags(source: Any) -> Any:
    """A vlw_tags of them."""
    with Reader(source.fileno() if hasattr(source, "fileno") else source, None, None, look=True) as reader:
        return reader._tags()


def convert(
    source: Any,
    target: Any,
    *,
    rate: int | None = None,
    channels: int | None = None,
    bits: int | None = None,
    tags: Mapping[str, str | int] | None = None,
    text: str = "auto",
    keep_tags: bool = True,
    keep_chunks: bool = True,
    overwrite: bool = False,
    partial: bool = False,
    lossy: bool = False,
    threads: int = 0,
    progress: Callable[[int, int | None], object] | None = None,
) -> Conversion:
    """Makes a WAV file of any file that can be read; what isn't given is as near to the source as can be.

    tags: set on top of the source's; "" takes one away. partial: a source that ends early is no FormatError. threads: 0 for all
    cores. progress: called with frames done and in total on the calling thread; an exception that it raises stops the
    conversion, leaves no file and comes out of this call.
    """
    wish = ffi.new("vlw_conversion *")
    wish.size = ffi.sizeof("vlw_conversion")
    wish.rate, wish.channels = count(rate, "rate"), count(channels, "channels")
    wish.bits = 0 if bits is None else width(bits)
    flags = ((overwrite, lib.VLW_OVERWRITE), (lossy, lib.VLW_LOSSY), (partial, lib.VLW_PARTIAL))
    unwanted = ((keep_tags, lib.VLW_NO_TAGS), (keep_chunks, lib.VLW_NO_CHUNKS))
    wish.flags = sum(flag for given, flag in flags if given) | sum(flag for kept, flag in unwanted if not kept)
    if threads:
        wish.threads = count(threads, "threads")
    wish.text = text_kind(text)
    told = _Progress(progress)
    wish.progress = told.callback
    removes = keep_tags and any(value == "" for value in (tags or {}).values())
    converter, kept = new("converter", module()), []
    with contextlib.ExitStack() as files:
        read_from = written_to = None
        if is_memory(source) or _is_object(source, "read") or removes and is_descriptor(source):
            read_from = files.enter_context(tempfile.TemporaryFile())
            _spool(source, read_from)
        changes = new_tags(tags, _source_tags(read_from or source) if removes else None) if tags else None
        if changes is not None:
            wish.tags = changes
        if removes:
            wish.flags |= lib.VLW_NO_TAGS  # `changes` has those that stay
        if _is_object(target, "write"):
            written_to = files.enter_context(tempfile.TemporaryFile())
        code = lib.vlw_converter_run_places(
            converter, _place(source, read_from, kept), _place(target, written_to, kept), wish
        )
        if told.error is not None:
            raise told.error
        if code < 0:
            fail(code, lib.vlw_converter_error, converter)
        if written_to is not None:
            written_to.seek(0)
            copy_all(written_to, target)
    what = new_format()
    lib.vlw_converter_format(converter, what)
    return Conversion(info_of(what, name_of(target)), text_of(lib.vlw_converter_notes(converter)).splitlines())
