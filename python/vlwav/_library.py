"""The C library, loaded once, and the codec module that all objects share."""

import os
import threading
from typing import Any

from . import _place
from ._binding import ffi

UNKNOWN = -1  # VLW_UNKNOWN, a length that can't be told beforehand


def _load() -> Any:
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), _place.LIBRARY)
    path = os.environ.get("VLWAV_LIBRARY") or (beside if os.path.exists(beside) else "libvlwav.so.1")
    try:
        return ffi.dlopen(path)
    except OSError as error:
        raise ImportError(f"the library of this package can't be loaded: {error}") from error


lib = _load()


class _Module:
    """The codec module, loaded when it is first asked for. A child of a fork loads its own: what the parent holds there
    may only be freed."""

    def __init__(self) -> None:
        self._handle: Any = None
        self._lock = threading.Lock()
        os.register_at_fork(after_in_child=self.__init__)  # type: ignore[misc]

    def __call__(self) -> Any:
        if self._handle is None:
            with self._lock:
                if self._handle is None:
                    self._handle = self._loaded()
        return self._handle

    @staticmethod
    def _loaded() -> Any:
        from ._errors import check

        module = new("module")
        check(lib.vlw_module_load(module, ffi.NULL), lib.vlw_module_error, module)
        return module


def new(kind: str, *first: Any) -> Any:
    """A new handle of a kind ("reader", "tags", …), which is freed when nothing holds it any more."""
    place = ffi.new(f"vlw_{kind} **")
    if getattr(lib, f"vlw_{kind}_new")(*first, place) != lib.VLW_OK:
        raise MemoryError
    return ffi.gc(place[0], getattr(lib, f"vlw_{kind}_free"))


def text(pointer: Any) -> str:
    """What the library says, which is UTF-8; a path in it may be anything."""
    return ffi.string(pointer).decode("utf-8", "surrogateescape")


module = _Module()
