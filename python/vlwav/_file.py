"""What files have in common, open for reading or for writing."""

from typing import Any

from ._errors import fail
from ._guard import Guard
from ._places import name_of


class _File:
    mode: str

    def __init__(self, file: Any, mode: str, handle: Any, error_of: Any) -> None:
        """handle: of the library; error_of: its function that lends the record of what failed."""
        self._guard = Guard()
        self._handle, self._error_of = handle, error_of
        self._stream: Any = None
        self.name, self.mode, self.closed = name_of(file), mode, True
        self.rate = self.channels = 0

    @property
    def samplerate(self) -> int:
        return self.rate

    def _check(self, code: int) -> int:
        """Raises what a code stands for, or what the caller's own file object raised."""
        if code >= 0:
            return code
        stream = self._stream
        if stream is not None and stream.error is not None:
            error, stream.error = stream.error, None
            raise error
        fail(code, self._error_of, self._handle)

    def _open(self) -> None:
        if self.closed:
            raise ValueError("the file is closed")

    def __repr__(self) -> str:
        closed = ", closed" if self.closed else ""
        return f"<vlwav.{type(self).__name__} {self.name!r}, {self.rate} Hz, {self.channels} channels{closed}>"
