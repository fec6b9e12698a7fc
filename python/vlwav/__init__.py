"""Reads, converts, writes and tags WAV files as numpy arrays.

    import vlwav

    data, rate = vlwav.read("in.wav")                       # int16, (frames,) or (frames, channels)
    data, rate = vlwav.read("in.wav", rate=16000, channels=1, dtype="float32")
    vlwav.write("out.wav", data, rate, tags={"title": "North Wind"})
    vlwav.convert("in.aif", "out.wav", rate=48000)

    with vlwav.open("long.wav", rate=48000) as file:
        for block in file.blocks(4096):
            ...
    with vlwav.tags("song.wav") as tags:                     # saved at the end of the block
        tags["artist"] = "Nobody"

Whoever comes from `soundfile` changes the import: `read`, `write`, `blocks`, `info` and `SoundFile` take the same arguments in the
same order and give the same samples. What differs: `dtype` is "int16" unless given; `rate` and `channels` convert instead of
naming what the file must have (`samplerate` is another word for `rate`); floats are rounded to the nearest step and limited;
a file that is written appears under its name only when it is complete.

Files are paths (str, bytes, os.PathLike), descriptors (int, not closed), a file's content as bytearray or memoryview, or binary
file objects with `read` or `write`; one without `seek` is read in order. Samples have 16 bits: a float is an int16 / 32768.

Every function releases the interpreter lock while it reads, converts or writes. An object is for one thread at a time: a second
one gets RuntimeError instead of broken audio. Ctrl-C stops `read`, `write` and `convert`, and leaves no half file.
"""

from ._errors import CutWarning, Error, FileError, FormatError, ModuleError, TagError, UnknownTagError
from ._functions import available_formats, blocks, convert, formats, info, open, read, write
from ._info import Audio, Conversion, Info, Picture, StockFormat
from ._place import VERSION as __version__
from ._reader import Reader
from ._tags import Tags, keywords, tags
from ._writer import Writer

SoundFile = open

__all__ = [
    "Audio",
    "Conversion",
    "CutWarning",
    "Error",
    "FileError",
    "FormatError",
    "Info",
    "ModuleError",
    "Picture",
    "Reader",
    "SoundFile",
    "StockFormat",
    "TagError",
    "Tags",
    "UnknownTagError",
    "Writer",
    "available_formats",
    "blocks",
    "convert",
    "formats",
    "info",
    "keywords",
    "open",
    "read",
    "tags",
    "write",
]
for _name in __all__:
    _public = globals()[_name]
    if getattr(_public, "__module__", "").startswith("vlwav."):
        _public.__module__ = "vlwav"  # where people find it, also in what they pickle
del _name, _public
