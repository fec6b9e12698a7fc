"""What goes wrong, as exceptions, and the library's codes in their terms."""

import errno
import functools
import io
import os
from typing import Any, NoReturn

from ._library import ffi, lib, text


class Error(Exception):
    """Each failure of this package but for wrong arguments, which are TypeError and ValueError as everywhere.

    str() is a sentence that names the file and the reason."""

    code: int
    path: str | None

    def __init__(self, sentence: str, code: int = -1, path: str | None = None, system: int = 0) -> None:
        super().__init__(sentence)
        self.args = (sentence, code, path, system)  # so that it can be copied and sent to other processes
        self.code = code
        self.path = path
        if isinstance(self, OSError):
            self.errno = system or None
            self.strerror = os.strerror(system) if system else sentence
            self.filename = path

    def __str__(self) -> str:
        return str(self.args[0])

    def __reduce__(self) -> Any:
        return _again, (getattr(type(self), "_of", (type(self),)), self.args)


class FileError(Error, OSError):
    """The system refused: `errno`, `strerror` and `filename` are set. What is raised is also FileNotFoundError, PermissionError,
    FileExistsError or IsADirectoryError where that fits, so that `except FileNotFoundError` works."""


class FormatError(Error, ValueError):
    """Not an audio file, damaged, no decoder for it, or a rate, channel count or width that can't be had."""


class TagError(Error, ValueError):
    """A tag that the file can't keep as it is (`lossy=True` goes on), or a value that its keyword can't have."""


class UnknownTagError(TagError, KeyError):
    """No such keyword."""


class ModuleError(Error, OSError):
    """The codec module wasn't found or can't be loaded."""


class CutWarning(UserWarning):
    """The file ended before what its header promises; all that is there was read. `warnings` can make it an error."""


# The system's number where the library has none: what it refused by itself.
_FILE_CODES = {
    lib.VLW_SYSTEM: 0,
    lib.VLW_NOT_FOUND: errno.ENOENT,
    lib.VLW_NO_PERMISSION: errno.EACCES,
    lib.VLW_EXISTS: errno.EEXIST,
    lib.VLW_IN_USE: errno.EBUSY,
    lib.VLW_NO_SPACE: errno.ENOSPC,
    lib.VLW_NOT_SEEKABLE: errno.ESPIPE,
}
_CLASSES: dict[int, type[Error]] = {
    lib.VLW_NOT_AUDIO: FormatError,
    lib.VLW_DAMAGED: FormatError,
    lib.VLW_NO_DECODER: FormatError,
    lib.VLW_UNSUPPORTED: FormatError,
    lib.VLW_TOO_LARGE: FormatError,
    lib.VLW_UNKNOWN_KEYWORD: UnknownTagError,
    lib.VLW_BAD_VALUE: TagError,
    lib.VLW_WOULD_LOSE: TagError,
    lib.VLW_NO_MODULE: ModuleError,
}


@functools.cache
def _also(kind: type[Error], other: type[BaseException]) -> type[Error]:
    """The class of an error that is another one too: FileError and FileNotFoundError."""
    if issubclass(kind, other):
        return kind
    more = {"__doc__": kind.__doc__, "__module__": kind.__module__, "_of": (kind, other)}
    return type(kind.__name__, (kind, other), more)


def _again(kinds: tuple[type[Any], ...], arguments: tuple[Any, ...]) -> Error:
    kind = _also(*kinds) if len(kinds) == 2 else kinds[0]
    return kind(*arguments)


def failure(code: int, sentence: str, path: str | None = None, system: int = 0) -> Exception:
    """The exception for a code of the library."""
    if code == lib.VLW_NO_MEMORY:
        return _also(Error, MemoryError)(sentence, code, path)
    if code == lib.VLW_BAD_ARGUMENT:
        return ValueError(sentence)
    if code == lib.VLW_BAD_STATE:
        return RuntimeError(sentence)
    if code in _FILE_CODES:
        number = system or _FILE_CODES[code]
        other = io.UnsupportedOperation if code == lib.VLW_NOT_SEEKABLE else type(OSError(number, ""))
        return _also(FileError, other)(sentence, code, path, number)
    return _CLASSES.get(code, Error)(sentence, code, path, system)


def check(code: int, error_of: Any, handle: Any) -> int:
    """Raises what a negative code stands for, with the record that error_of(handle) lends; else gives the code back."""
    if code < 0:
        fail(code, error_of, handle)
    return code


def fail(code: int, error_of: Any, handle: Any) -> NoReturn:
    record = error_of(handle)
    if record == ffi.NULL or record.code == lib.VLW_OK:  # asked of a function that leaves none
        raise failure(code, text(lib.vlw_error_text(code)))
    path = text(record.path) or None
    raise failure(code, text(record.text), path, record.system)
