"""Where bytes come from and go to: paths, descriptors, memory and file objects."""

import errno
import io
import os
from typing import Any

from ._library import ffi, lib


def path_bytes(path: Any) -> bytes | None:
    """A path as the system has it; None for what is none."""
    if not isinstance(path, (str, bytes, os.PathLike)):
        return None
    made = os.fsencode(path)
    if b"\0" in made:
        raise ValueError("a path can't hold a zero")
    return made


def name_of(file: Any) -> str:
    """The name that a person would know it by; "" where it has none."""
    if isinstance(file, (str, bytes, os.PathLike)):
        return os.fsdecode(file)
    name = getattr(file, "name", "")
    return os.fsdecode(name) if isinstance(name, (str, bytes)) else ""


def is_descriptor(file: Any) -> bool:
    return isinstance(file, int) and not isinstance(file, bool)


def is_memory(file: Any) -> bool:
    return isinstance(file, (bytearray, memoryview))


def write_some(file: Any, data: Any) -> int:
    """Writes what a file object takes at once; returns how many bytes. None from it is all of them, but for raw files, where it
    is none of them."""
    taken = file.write(data)
    if taken is None and isinstance(file, io.RawIOBase):
        raise BlockingIOError(errno.EAGAIN, os.strerror(errno.EAGAIN))
    return len(data) if taken is None else int(taken)


def copy_all(source: Any, target: Any) -> None:
    """From one binary file object into another, all of it also where they give or take less than they are asked to."""
    while data := source.read(1 << 20):
        while data:
            data = data[write_some(target, data) :]
    if data is None:
        raise BlockingIOError(errno.EAGAIN, os.strerror(errno.EAGAIN))


_alive: set["Stream"] = set()  # until the library has called `close`


class Stream:
    """A binary file object as the library calls it. What the object raises is kept, and raised in place of the library's
    own failure."""

    def __init__(self, file: Any, writing: bool = False) -> None:
        self.error: BaseException | None = None
        self._file = file
        self._handle = ffi.new_handle(self)
        self.record = ffi.new("vlw_stream *")
        self.record.size = ffi.sizeof("vlw_stream")
        self.record.user = self._handle
        if writing:
            self.record.write = _write
        else:
            self.record.read = _read
            seekable = getattr(file, "seekable", None)
            if hasattr(file, "seek") and (seekable is None or seekable()):
                self.record.seek = _seek
        self.record.close = _close
        _alive.add(self)

    def read(self, buffer: Any) -> int:
        if hasattr(self._file, "readinto"):
            got = self._file.readinto(buffer)
            return -errno.EAGAIN if got is None else int(got)
        data = self._file.read(len(buffer))
        if data is None:
            return -errno.EAGAIN
        if not isinstance(data, (bytes, bytearray, memoryview)):
            raise TypeError(f"read() of a binary file gives bytes, not {type(data).__name__}")
        if len(data) > len(buffer):
            raise ValueError("read() gave more than it was asked for")
        buffer[: len(data)] = bytes(data)
        return len(data)

    def write(self, data: bytes) -> int:
        return write_some(self._file, data)

    def seek(self, offset: int, whence: int) -> int:
        place = self._file.seek(offset, whence)
        return int(self._file.tell() if place is None else place)


def _failed(exception: Any, value: Any, trace: Any) -> int:
    """What a callback raised: kept with its stream, which is the `self` of the frame that raised it."""
    frame = trace.tb_frame
    ffi.from_handle(frame.f_locals["user"]).error = value
    return -errno.EIO


@ffi.callback("int64_t (void *, void *, size_t)", onerror=_failed)
def _read(user: Any, buffer: Any, count: int) -> int:
    return ffi.from_handle(user).read(ffi.buffer(buffer, count))


@ffi.callback("int64_t (void *, const void *, size_t)", onerror=_failed)
def _write(user: Any, data: Any, count: int) -> int:
    return ffi.from_handle(user).write(bytes(ffi.buffer(data, count)))


@ffi.callback("int64_t (void *, int64_t, int)", onerror=_failed)
def _seek(user: Any, offset: int, whence: int) -> int:
    return ffi.from_handle(user).seek(offset, whence)


@ffi.callback("void (void *)")
def _close(user: Any) -> None:
    _alive.discard(ffi.from_handle(user))


def open_source(reader: Any, file: Any) -> tuple[int, Any, Any]:
    """Opens a vlw_reader on any source: the library's code, the stream if it is one, and what must stay while it is open."""
    path = path_bytes(file)
    if path is not None:
        return lib.vlw_reader_open(reader, path), None, None
    if is_descriptor(file):
        return lib.vlw_reader_open_fd(reader, file), None, None
    if is_memory(file):
        content = ffi.from_buffer(file)
        return lib.vlw_reader_open_memory(reader, content, len(content)), None, content
    if hasattr(file, "read"):
        stream = Stream(file)
        return lib.vlw_reader_open_stream(reader, stream.record), stream, None
    raise TypeError(f"a file is a path, a descriptor, a bytearray, a memoryview or a binary file object, not {type(file).__name__}")


def create_target(writer: Any, file: Any, flags: int) -> tuple[int, Any]:
    """Begins a file of a vlw_writer on any target: the library's code, and the stream if it is one."""
    path = path_bytes(file)
    if path is not None:
        return lib.vlw_writer_create(writer, path, flags), None
    if is_descriptor(file):
        return lib.vlw_writer_create_fd(writer, file, flags), None
    if hasattr(file, "write"):
        stream = Stream(file, writing=True)
        return lib.vlw_writer_create_stream(writer, stream.record, flags), stream
    raise TypeError(f"a target is a path, a descriptor or a binary file object, not {type(file).__name__}")
