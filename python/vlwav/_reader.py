"""A file open for reading."""

import operator
import os
import sys
import warnings
from collections.abc import Iterator, Mapping
from typing import Any

import numpy as np

from ._arguments import count
from ._errors import CutWarning, FileError, failure
from ._file import _File
from ._info import Info, Picture, info_of, new_format, pictures_of
from ._library import UNKNOWN, ffi, lib, module, new
from ._places import open_source
from ._samples import PIECE, SCRATCH, STEP, check_out, empty, kind_of, pointer
from ._tags import TagView

BLOCK = 16384  # frames

# Handles that wait for another file: opening one again is faster than making it. A child of a fork has none of the parent's.
_idle: list[Any] = []
_MOST_IDLE = 8
os.register_at_fork(after_in_child=_idle.clear)


def _levels_to_caller() -> int:
    """From the function that asks: to the first that isn't of this package, whom a warning is for."""
    level, frame = 1, sys._getframe(1)
    while frame.f_back is not None and frame.f_globals.get("__package__") == __package__:
        level, frame = level + 1, frame.f_back
    return level


class Reader(_File):
    """A file open for reading; made by `open`. len() is its frames; iterating gives blocks of 16384 frames."""

    def __init__(self, file: Any, rate: Any, channels: Any, *, look: bool = False) -> None:
        """look: the file is only to be looked at, and no decoder is asked for."""
        try:
            handle = _idle.pop()
        except IndexError:
            handle = new("reader", module())
        super().__init__(file, "r", handle, lib.vlw_reader_error)
        self._cut = self._warned = False
        self._check(lib.vlw_reader_output(self._handle, count(rate, "rate"), count(channels, "channels")))
        lib.vlw_reader_decode_late(self._handle, look)
        code, self._stream, self._memory = open_source(self._handle, file)
        self._check(code)
        self.closed = False
        self.rate = lib.vlw_reader_rate(self._handle)
        self.channels = lib.vlw_reader_channels(self._handle)
        self._done = ffi.new("size_t *")

    @property
    def frames(self) -> int | None:
        """At `rate`; None: only reading tells."""
        with self._guard:
            self._open()
            return self._frames()

    def _frames(self) -> int | None:
        frames = lib.vlw_reader_frames(self._handle)
        return None if frames == UNKNOWN else frames

    @property
    def info(self) -> Info:
        """The file's own format."""
        with self._guard:
            self._open()
            what = new_format()
            self._check(lib.vlw_reader_format(self._handle, what))
            return info_of(what, self.name)

    def _tags(self) -> Any:
        with self._guard:
            self._open()
            made = new("tags")
            self._check(lib.vlw_reader_tags(self._handle, made))
            return made

    @property
    def tags(self) -> Mapping[str, str]:
        """The file's tags, as they were when it was opened."""
        return TagView(self._tags())

    @property
    def pictures(self) -> list[Picture]:
        """The pictures of its tags, by ascending number."""
        return pictures_of(self._tags())

    @property
    def cut(self) -> bool:
        """Whether the end was met before what the header promises."""
        return self._cut

    def read(
        self, frames: int = -1, dtype: Any = "int16", always_2d: bool = False, fill_value: Any = None, out: Any = None
    ) -> Any:
        """The next frames, fewer only at the end; all that are left for -1."""
        with self._guard:
            self._open()
            return self._read(operator.index(frames), dtype, always_2d, fill_value, out)

    def _read(self, frames: int, dtype: Any, always_2d: bool, fill_value: Any, out: Any) -> Any:
        if out is None:
            kind = kind_of(dtype)
            if frames < 0 or fill_value is None and self._ends_within(frames):
                return self._read_on(frames, kind, always_2d)
            out = empty(frames, self.channels, kind, always_2d)
            wanted = len(out)
        else:
            check_out(out, self.channels)
            wanted = len(out) if frames < 0 else min(frames, len(out))
        got = self._fill(out[:wanted])
        self._tell_cut()
        if got == len(out):
            return out
        if fill_value is None:
            return out[:got]
        out[got:] = fill_value
        return out

    def _ends_within(self, frames: int) -> bool:
        """Whether fewer are left, as far as is known."""
        length = self._frames()
        return length is None or length - lib.vlw_reader_tell(self._handle) < frames

    def _read_on(self, frames: int, kind: np.dtype, always_2d: bool) -> Any:
        """As many frames as there are, or the number that is wanted, where the length isn't known or may be wrong."""
        left = self._frames()
        size = BLOCK if left is None else max(0, left - lib.vlw_reader_tell(self._handle))
        parts, total, wanted = [], 0, None if frames < 0 else frames
        while wanted is None or total < wanted:
            # One frame more than the file tells of, so that its end is met.
            part = empty(size if wanted is None else min(size, wanted - total), self.channels, kind, always_2d)
            got = self._fill(part)
            if got or not parts:
                parts.append(part[:got])
                total += got
            if got < len(part):
                break
            size = min(max(1, total), 1 << 24) if left is None else 1 if len(parts) == 1 else BLOCK
        self._tell_cut()
        return (
            parts[0] if len(parts) == 1 else np.concatenate(parts) if parts else empty(0, self.channels, kind, always_2d)
        )

    def _fill(self, out: np.ndarray) -> int:
        """Fills an array whose samples lie one after the other; returns the frames that came."""
        if out.dtype == np.float64:
            return self._fill_double(out)
        size = len(out)
        if not size:
            return 0
        buffer = pointer(out)
        read = lib.vlw_reader_read_int16 if out.dtype == np.int16 else lib.vlw_reader_read_float
        handle, done, channels, total = self._handle, self._done, self.channels, 0
        piece = max(1, PIECE // channels)
        while total < size:
            code = read(handle, buffer + total * channels, min(piece, size - total), done)
            total += done[0]
            if code:
                self._ended(code)
                break
        return total

    def _fill_double(self, out: np.ndarray) -> int:
        scratch = empty(min(max(1, SCRATCH // self.channels), max(1, len(out))), self.channels, np.dtype(np.int16), out.ndim == 2)
        total = 0
        while total < len(out):
            part = scratch[: len(out) - total]
            got = self._fill(part)
            np.multiply(part[:got], STEP, out=out[total : total + got])
            total += got
            if got < len(part):
                break
        return total

    def _ended(self, code: int) -> None:
        self._check(code)
        self._cut = self._cut or code == lib.VLW_CUT

    def _tell_cut(self) -> None:
        if self._cut and not self._warned:
            self._warned = True
            here = lib.vlw_reader_tell(self._handle)
            sentence = f"{self.name or 'the file'} ends after {here} frames, before what its header promises"
            warnings.warn(sentence, CutWarning, stacklevel=_levels_to_caller())

    def readinto(self, out: Any) -> int:
        """Fills an array, or a writable buffer with int16; returns the frames read, 0 at the end. Allocates nothing."""
        if not isinstance(out, np.ndarray):
            out = np.frombuffer(out, np.int16)
            if len(out) % self.channels:
                raise ValueError(f"the buffer must hold whole frames of {self.channels} channels")
            out = out.reshape(-1, self.channels)
        with self._guard:
            self._open()
            got = self._fill(check_out(out, self.channels))
            self._tell_cut()
            return got

    def blocks(
        self,
        blocksize: int | None = None,
        overlap: int = 0,
        frames: int = -1,
        dtype: Any = "int16",
        always_2d: bool = False,
        fill_value: Any = None,
        out: Any = None,
    ) -> Iterator[Any]:
        """Blocks of blocksize frames (16384 if neither it nor out is given), each beginning with the last `overlap` frames of
        the one before; the last is shorter unless fill_value fills it. Each block is an array of its own unless out is given."""
        self._open()
        if out is not None and blocksize is not None:
            raise TypeError("only one of blocksize and out may be given")
        size = len(check_out(out, self.channels)) if out is not None else BLOCK if blocksize is None else count(blocksize, "blocksize")
        overlap, frames, kind = operator.index(overlap), operator.index(frames), kind_of(dtype)
        if not 0 <= overlap < size:
            raise ValueError(f"overlap must be from 0 and less than {size}, not {overlap}")
        return self._blocks(size, overlap, frames, kind, always_2d, fill_value, out)

    def _blocks(
        self, size: int, overlap: int, left: int, kind: np.dtype, always_2d: bool, fill_value: Any, out: Any
    ) -> Iterator[Any]:
        kept, memory = 0, None
        while left:
            block = empty(size, self.channels, kind, always_2d) if out is None else out
            if kept:
                block[:kept] = memory
            wanted = size - kept if left < 0 else min(size - kept, left)
            with self._guard:
                self._open()
                got = self._fill(block[kept : kept + wanted])
                self._tell_cut()
            ended = got < wanted and (fill_value is None or left < 0)
            if ended and not got:
                return
            left = left - wanted if left > 0 else left
            if fill_value is None:
                block = block[: kept + got]
            else:
                block[kept + got :] = fill_value
            if overlap:
                memory = block[-overlap:].copy()
                kept = len(memory)
            yield block
            if ended:
                return

    def seek(self, frames: int, whence: int = os.SEEK_SET) -> int:
        """To a frame, exactly, also while converting; returns the new position. Beyond the ends is ValueError."""
        with self._guard:
            self._open()
            here, length = lib.vlw_reader_tell(self._handle), self._frames()
            if whence not in (os.SEEK_SET, os.SEEK_CUR, os.SEEK_END):
                raise ValueError(f"whence must be 0, 1 or 2, not {whence!r}")
            if whence == os.SEEK_END and length is None:
                raise failure(lib.VLW_NOT_SEEKABLE, f"{self.name or 'the file'}: only reading tells where it ends", self.name or None)
            place = operator.index(frames) + (0, here, length)[whence]
            if place < 0 or length is not None and place > length:
                raise ValueError(f"there is no frame {place}" + ("" if length is None else f" in {length}"))
            if place >= 1 << 63:
                raise ValueError(f"there is no frame {place}")
            code = self._check(lib.vlw_reader_seek(self._handle, place))
            if code == lib.VLW_END and lib.vlw_reader_tell(self._handle) != place:
                end = lib.vlw_reader_tell(self._handle)
                self._check(lib.vlw_reader_seek(self._handle, here))
                raise ValueError(f"there is no frame {place} in {end}")
            return place

    def _skip(self, frames: int) -> None:
        """Moves on from the start, or to the end where that comes first."""
        try:
            self._check(lib.vlw_reader_seek(self._handle, frames))
        except FileError:
            if self.seekable():
                raise
            for _ in self._blocks(BLOCK, 0, frames, np.dtype(np.int16), False, None, None):
                pass

    def _read_part(
        self, frames: int, start: int, stop: int | None, dtype: Any, always_2d: bool, fill_value: Any, out: Any
    ) -> Any:
        """As `read`, of a part that is given as for a slice."""
        frames_wanted = operator.index(frames)
        start, frames = self._part(frames_wanted, start, stop)
        if frames is not None:
            if start:
                self._skip(start)
            return self.read(frames, dtype, always_2d, fill_value, out)
        # Counted from an end that only reading finds.
        whole = self.read(-1, dtype if out is None else check_out(out, self.channels).dtype, always_2d)
        part = whole[start:stop] if frames_wanted < 0 else whole[start:][:frames_wanted]
        if out is None:
            if fill_value is None or frames_wanted < 0:
                return part
            out = empty(frames_wanted, self.channels, part.dtype, always_2d)
        part = part[: len(out)]
        out[: len(part)] = part
        if fill_value is None:
            return out[: len(part)]
        out[len(part) :] = fill_value
        return out

    def _part(self, frames: int, start: int, stop: int | None) -> tuple[int, int | None]:
        """The first frame of a part and the number of its frames, -1 for all; None where it depends on an end that isn't known."""
        frames, start = operator.index(frames), operator.index(start)
        if stop is not None:
            stop = operator.index(stop)
            if frames >= 0:
                raise TypeError("only one of frames and stop may be given")
        length = self.frames
        if length is not None:
            start, end, _ = slice(start, stop).indices(length)
            # Up to the end is all that there is, so that the end is met, and what it tells.
            return start, frames if stop is None else -1 if end == length else max(0, end - start)
        if start < 0 or stop is not None and stop < 0:
            return start, None
        return start, frames if stop is None else max(0, stop - start)

    def tell(self) -> int:
        """The next frame's position."""
        with self._guard:
            self._open()
            return lib.vlw_reader_tell(self._handle)

    def seekable(self) -> bool:
        """Whether `seek` works."""
        self._open()
        return bool(lib.vlw_reader_seekable(self._handle))

    def close(self) -> None:
        """Lets the file go; a second call does nothing."""
        with self._guard:
            if not self.closed:
                self.closed = True
                lib.vlw_reader_close(self._handle)
                self._memory = None
                if len(_idle) < _MOST_IDLE:
                    _idle.append(self._handle)
                self._handle = ffi.NULL

    def __enter__(self) -> "Reader":
        self._open()
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __iter__(self) -> Iterator[Any]:
        return self.blocks(BLOCK)

    def __len__(self) -> int:
        frames = self.frames
        if frames is None:
            raise TypeError("only reading tells the length of this file")
        return frames

    def __bool__(self) -> bool:
        return True
