"""What the tests share: a folder of their own, and audio in it."""

import os
import tempfile
import unittest

import numpy as np

import vlwav


def noise(frames: int, channels: int = 2, seed: int = 1) -> np.ndarray:
    return np.random.default_rng(seed).integers(-32768, 32768, (frames, channels), np.int16)


class InFolder(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def make(self, name: str, frames: int = 5000, channels: int = 2) -> np.ndarray:
        samples = noise(frames, channels)
        vlwav.write(name, samples if channels > 1 else samples[:, 0], 44100)
        return samples
