"""Arguments that several functions take, checked in one way."""

import operator
from typing import Any

from ._library import lib

TEXTS = {"auto": lib.VLW_TEXT_AUTO, "cp1252": lib.VLW_TEXT_1252, "utf-8": lib.VLW_TEXT_UTF8}
BITS = {"PCM_16": 16, "PCM_U8": 8}


def count(value: Any, name: str) -> int:
    """A whole number from 1 that fits what the library takes; 0 for None, which is "as it is" to the library."""
    if value is None:
        return 0
    number = operator.index(value)
    if not 0 < number < 1 << 32:
        raise ValueError(f"{name} must be from 1 to 4294967295, not {number}")
    return number


def one_of(samplerate: Any, rate: Any) -> Any:
    """Of two words for one thing."""
    if samplerate is not None and rate is not None and samplerate != rate:
        raise ValueError(f"rate and samplerate are the same, and can't be {rate} and {samplerate}")
    return samplerate if rate is None else rate


def text_kind(text: Any) -> int:
    if text not in TEXTS:
        raise ValueError(f"text must be one of {', '.join(TEXTS)}, not {text!r}")
    return TEXTS[text]


def width(bits: Any, subtype: Any = None) -> int:
    """Of a stored sample, from either of the words for it."""
    if subtype is not None:
        if subtype not in BITS:
            raise ValueError(f"subtype must be one of {', '.join(BITS)}, not {subtype!r}")
        return BITS[subtype]
    if bits not in BITS.values():
        raise ValueError(f"bits must be 8 or 16, not {bits!r}")
    return operator.index(bits)
