"""A file being written."""

from collections.abc import Mapping, MutableMapping
from typing import Any

import numpy as np

from ._arguments import count, text_kind, width
from ._file import _File
from ._library import lib, module, new
from ._places import create_target
from ._samples import PIECE, SCRATCH, check_data, pointer, to_steps
from ._tags import TagMap, new_tags


class Writer(_File):
    """A file being written; made by `open` with "w" or "x". It appears under its name in `close`; a `with` block that ends
    with an exception, and a Writer that is forgotten, drop it."""

    def __init__(
        self,
        file: Any,
        mode: str,
        rate: Any,
        channels: Any,
        *,
        subtype: Any = None,
        file_rate: Any = None,
        file_channels: Any = None,
        bits: Any = 16,
        tags: Mapping[str, str | int] | None = None,
        text: str = "auto",
        lossy: bool = False,
    ) -> None:
        super().__init__(file, mode, new("writer", module()), lib.vlw_writer_error)
        self.rate, self.channels = count(rate, "samplerate"), count(channels, "channels")
        self._tags = TagMap(new_tags(tags))
        self._check(lib.vlw_writer_input(self._handle, self.rate, self.channels))
        self._check(
            lib.vlw_writer_output(self._handle, count(file_rate, "rate"), count(file_channels, "file_channels"), width(bits, subtype))
        )
        self._check(lib.vlw_writer_text(self._handle, text_kind(text)))
        flags = (lib.VLW_OVERWRITE if mode == "w" else 0) | (lib.VLW_LOSSY if lossy else 0)
        code, self._stream = create_target(self._handle, file, flags)
        self._check(code)
        self.closed = False

    @property
    def tags(self) -> MutableMapping[str, str]:
        """May be changed until close, or assigned as a whole."""
        return self._tags

    @tags.setter
    def tags(self, values: Mapping[str, str | int]) -> None:
        self._tags = TagMap(new_tags(values))

    @property
    def frames(self) -> int:
        """Given so far."""
        return lib.vlw_writer_tell(self._handle)

    def tell(self) -> int:
        """The frames given so far."""
        return self.frames

    def write(self, data: Any) -> None:
        """Takes all frames or fails; after a failure the file can only be dropped."""
        samples = check_data(data, self.channels)
        with self._guard:
            self._open()
            native = samples.dtype.isnative and samples.dtype != np.float64 and samples.flags.c_contiguous
            piece = max(1, (PIECE if native else SCRATCH) // self.channels)
            for start in range(0, len(samples), piece):
                self._take(samples[start : start + piece])

    def _take(self, part: np.ndarray) -> None:
        if part.dtype == np.float64:
            part = to_steps(part)
        part = np.ascontiguousarray(part, part.dtype.newbyteorder("="))
        write = lib.vlw_writer_write_int16 if part.dtype == np.int16 else lib.vlw_writer_write_float
        self._check(write(self._handle, pointer(part), len(part)))

    def drop(self) -> None:
        """Closes without a file."""
        with self._guard:
            self.closed = True
            lib.vlw_writer_drop(self._handle)

    def close(self) -> None:
        """Completes the file; failures are raised here, not lost. A second call does nothing. After TagError the file is
        still open: set other tags, or drop it."""
        with self._guard:
            if self.closed:
                return
            self._check(lib.vlw_writer_tags(self._handle, self._tags._tags))
            code = lib.vlw_writer_finish(self._handle)
            self.closed = code != lib.VLW_WOULD_LOSE
            self._check(code)

    def __enter__(self) -> "Writer":
        self._open()
        return self

    def __exit__(self, kind: type[BaseException] | None, *_: object) -> None:
        if kind is not None:
            self.drop()
            return
        try:
            self.close()
        finally:
            self.drop()
