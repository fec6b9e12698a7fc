"""Arrays of samples: their kinds, shapes and memory."""

from typing import Any

import numpy as np

from ._library import ffi

# In the machine's byte order, with their words in C.
KINDS = {np.dtype("int16"): "int16_t[]", np.dtype("float32"): "float[]", np.dtype("float64"): "double[]"}
_NAMES = ", ".join(kind.name for kind in KINDS)
STEP = 1.0 / 32768.0  # of a sample of 16 bits, where full scale is 1
PIECE = 1 << 20  # samples that one call of the library takes: in between Ctrl-C is heard
SCRATCH = 1 << 16  # samples that are changed from one kind to another at a time


def kind_of(dtype: Any) -> np.dtype:
    made = np.dtype(dtype)
    if made not in KINDS:
        raise ValueError(f"dtype must be one of {_NAMES}, not {dtype!r}")
    return made


def empty(frames: int, channels: int, kind: np.dtype, always_2d: bool) -> np.ndarray:
    return np.empty((frames, channels) if always_2d or channels > 1 else (frames,), kind)


def check_out(out: Any, channels: int) -> np.ndarray:
    """That an array can be filled as it lies."""
    if not isinstance(out, np.ndarray):
        raise TypeError(f"out must be an array, not {type(out).__name__}")
    if out.dtype not in KINDS:
        raise TypeError(f"out must hold {_NAMES}, not {out.dtype!r}")
    if not (out.ndim == 2 and out.shape[1] == channels or out.ndim == 1 and channels == 1):
        raise ValueError(f"out has the shape {out.shape}, and {channels} channels are read")
    if not out.flags.c_contiguous or not out.flags.writeable:
        raise ValueError("out must be writable, and its samples must lie one after the other")
    return out


def check_data(data: Any, channels: int | None) -> np.ndarray:
    """Samples that a caller gives, as an array of (frames, channels); channels None: its own."""
    made = np.asarray(data)
    if made.dtype.newbyteorder("=") not in KINDS:
        raise TypeError(f"samples are {_NAMES}, not {made.dtype.name}")
    if made.ndim == 1:
        made = made.reshape(-1, 1)
    if made.ndim != 2 or made.shape[1] == 0 or channels is not None and made.shape[1] != channels:
        wanted = "channels" if channels is None else f"{channels}"
        raise ValueError(f"samples have the shape (frames,) or (frames, {wanted}), not {np.shape(data)}")
    return made


def pointer(array: np.ndarray) -> Any:
    """To the samples of an array of int16 or float32 that lie one after the other; keeps the array."""
    return ffi.from_buffer(KINDS[array.dtype], array)


def to_steps(samples: np.ndarray) -> np.ndarray:
    """Samples of float64 in steps of 16 bits: the nearest, ties to even, limited, 0 for NaN."""
    steps = samples * 32768.0
    np.rint(steps, out=steps)
    np.nan_to_num(steps, copy=False, nan=0.0, posinf=32767.0, neginf=-32768.0)
    return np.clip(steps, -32768.0, 32767.0, out=steps).astype(np.int16)
