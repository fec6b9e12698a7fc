"""What a file is."""

from dataclasses import dataclass, field
from typing import Any, NamedTuple

from ._library import UNKNOWN, ffi, lib, text

# The words of `soundfile`, by the library's word for the codec and the width of a sample; 0: any.
_SUBTYPES = {
    ("PCM", 8): "PCM_U8",
    ("PCM", 16): "PCM_16",
    ("PCM", 24): "PCM_24",
    ("PCM", 32): "PCM_32",
    ("IEEE float", 32): "FLOAT",
    ("IEEE float", 64): "DOUBLE",
    ("mu-law", 0): "ULAW",
    ("A-law", 0): "ALAW",
    ("IMA ADPCM", 0): "IMA_ADPCM",
    ("MS ADPCM", 0): "MS_ADPCM",
    ("GSM 6.10", 0): "GSM610",
    ("G.721", 0): "G721_32",
    ("MP3", 0): "MPEG_LAYER_III",
}


@dataclass(frozen=True)
class Info:
    """str() is a few lines for people."""

    name: str  # the path, "" without one
    rate: int
    channels: int
    bits: int | None
    container: str  # "WAV", "AIFF", …
    codec: str  # "PCM", "IMA ADPCM", …
    frames: int | None  # that are there; None: only decoding tells
    promised: int | None  # frames that the header promises
    duration: float | None  # seconds
    channel_mask: int  # bit n: speaker n of the WAV format; 0: not told
    _more: str = field(default="", repr=False, compare=False)  # lines that were asked for with `verbose`

    @property
    def samplerate(self) -> int:
        return self.rate

    @property
    def format(self) -> str:
        return self.container

    @property
    def subtype(self) -> str:
        """ "PCM_16", "PCM_U8", "FLOAT", "ULAW", …: soundfile's words; the codec's name where it has none."""
        if self.codec == "PCM" and self.bits == 8 and self.container == "AIFF":
            return "PCM_S8"
        return _SUBTYPES.get((self.codec, self.bits or 0)) or _SUBTYPES.get((self.codec, 0)) or self.codec

    def __str__(self) -> str:
        width = f", {self.bits} bits" if self.bits else ""
        lines = [
            self.name or "(no name)",
            f"{self.container}, {self.codec}{width}",
            f"{self.rate} Hz, {self.channels} channel{'' if self.channels == 1 else 's'}",
            "length not known" if self.frames is None else f"{self.frames} frames, {self.duration:.3f} s",
        ]
        if self.frames is not None and self.promised is not None and self.promised > self.frames:
            lines[-1] += f" of {self.promised} frames that are promised"
        return "\n".join(lines) + self._more


@dataclass(frozen=True)
class StockFormat:
    """A format that can be written."""

    index: int
    rate: int
    channels: int
    bits: int
    text: str  # for people


class Audio(NamedTuple):
    """What `read` returns: unpacks into data and rate."""

    data: Any
    rate: int


class Picture(NamedTuple):
    """A picture of a file's tags."""

    number: int  # 3: front cover
    mime: str  # "image/jpeg", …
    data: bytes


class Conversion(NamedTuple):
    """What `convert` made."""

    info: Info  # of the file made
    notes: list[str]  # what was given up, a line each


def new_format() -> Any:
    made = ffi.new("vlw_format *")
    made.size = ffi.sizeof("vlw_format")
    return made


def info_of(what: Any, name: str, more: str = "") -> Info:
    """From a vlw_format that the library filled."""
    frames = None if what.frames == UNKNOWN else what.frames
    return Info(
        name=name,
        rate=what.rate,
        channels=what.channels,
        bits=what.bits or None,
        container=text(what.container),
        codec=text(what.codec),
        frames=frames,
        promised=None if what.frames_promised == UNKNOWN else what.frames_promised,
        duration=None if frames is None or not what.rate else frames / what.rate,
        channel_mask=what.channel_mask,
        _more=more,
    )


_MIMES = ((b"\xff\xd8", "image/jpeg"), (b"\x89PNG", "image/png"), (b"GIF8", "image/gif"), (b"BM", "image/bmp"))


def mime_of(data: bytes) -> str:
    return next((mime for start, mime in _MIMES if data.startswith(start)), "application/octet-stream")


def pictures_of(tags: Any) -> list[Picture]:
    """Those of a vlw_tags, by ascending number."""
    number, data, size = ffi.new("int32_t *"), ffi.new("const void **"), ffi.new("size_t *")
    made = []
    for index in range(lib.vlw_tags_picture_count(tags)):
        lib.vlw_tags_picture_at(tags, index, number, data, size)
        content = bytes(ffi.buffer(data[0], size[0]))
        made.append(Picture(number[0], mime_of(content), content))
    return made
