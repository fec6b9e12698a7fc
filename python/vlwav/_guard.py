"""One thread at a time for an object."""

import threading


class Guard:
    """Lets one thread in at a time. A second one is told at once, instead of waiting or breaking the audio."""

    __slots__ = ("_lock",)

    def __init__(self) -> None:
        self._lock = threading.Lock()

    def __enter__(self) -> None:
        if not self._lock.acquire(blocking=False):
            raise RuntimeError("this object is in use: it is for one thread at a time, and not for its own callbacks")

    def __exit__(self, *_: object) -> None:
        self._lock.release()
