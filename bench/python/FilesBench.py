"""Reads and writes the same files by this package and by `soundfile` in turn, and prints medians of processor time.

    PYTHONPATH=build/release/python python3 bench/python/FilesBench.py [TURNS]

Both sides give the same samples, which is held against each other first; the files lie in the system's cache."""

import os
import statistics
import sys
import tempfile
import time

import numpy as np
import soundfile

import vlwav

SHORT, SHORT_FRAMES, LONG_FRAMES = 1000, 4410, 600 * 44100


def spent(work) -> float:
    start = time.process_time()
    for _ in work():  # what comes is dropped at once, so that neither side finds the memory that the other left
        pass
    return time.process_time() - start


def main(turns: int) -> None:
    random = np.random.default_rng(1)
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        short = random.integers(-20000, 20000, (SHORT_FRAMES, 2), np.int16)
        names = [f"{number}.wav" for number in range(SHORT)]
        for name in names:
            soundfile.write(name, short, 44100)
        soundfile.write("long.wav", random.integers(-20000, 20000, (LONG_FRAMES, 2), np.int16), 44100)
        jobs = []
        for dtype in ("int16", "float32", "float64"):
            np.testing.assert_array_equal(vlwav.read("long.wav", dtype=dtype).data / (32768 if dtype == "int16" else 1),
                                          soundfile.read("long.wav", dtype=dtype)[0] / (32768 if dtype == "int16" else 1))  # fmt: skip
            jobs += [
                (f"{SHORT} short files as {dtype}", lambda m, d=dtype: (m.read(name, dtype=d) for name in names)),
                (f"ten minutes as {dtype}", lambda m, d=dtype: (m.read(name, dtype=d) for name in ["long.wav"])),
                (f"ten minutes in blocks of 4096 as {dtype}", lambda m, d=dtype: m.blocks("long.wav", 4096, dtype=d)),
            ]
        jobs.append((f"{SHORT} short files, info", lambda m: (m.info(name) for name in names)))
        print(f"{'work':<44}{'vlwav':>10}{'soundfile':>12}{'ratio':>8}")
        for name, job in jobs:
            ours, theirs = [], []
            for turn in range(2 * turns):
                for side, times in ((vlwav, ours), (soundfile, theirs))[:: 1 if turn % 2 else -1]:
                    times.append(spent(lambda: job(side)))
            one, other = statistics.median(ours), statistics.median(theirs)
            print(f"{name:<44}{one * 1e3:>8.1f}ms{other * 1e3:>10.1f}ms{other / one:>8.2f}")


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 7)
