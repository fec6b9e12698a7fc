"""Samples go in and come out as `soundfile` has them, and convert as the command does."""

import io
import os
import subprocess
import unittest

import numpy as np
import soundfile
from support import InFolder, noise

import vlwav

KINDS = [
    ("WAV", "PCM_16"), ("WAV", "PCM_24"), ("WAV", "PCM_U8"), ("WAV", "FLOAT"), ("WAV", "ULAW"), ("WAV", "ALAW"),
    ("AIFF", "PCM_16"), ("AIFF", "PCM_24"), ("AIFF", "PCM_S8"), ("WAVEX", "PCM_16"),
]  # fmt: skip
PARTS = [
    {}, {"frames": 10}, {"start": 100, "stop": -5}, {"start": -10}, {"start": 10**9}, {"stop": 0}, {"start": 9, "stop": 3},
    {"start": -10, "frames": 20, "fill_value": 0}, {"always_2d": True, "frames": 3},
]  # fmt: skip
BLOCKS = [
    {"blocksize": 1000}, {"blocksize": 1000, "overlap": 300}, {"blocksize": 1000, "overlap": 300, "fill_value": 0},
    {"blocksize": 1000, "frames": 2500, "start": 7}, {"blocksize": 1250, "overlap": 10, "stop": -1}, {"blocksize": 9999}, {"blocksize": 700, "frames": 4000, "overlap": 9, "fill_value": 0},
]  # fmt: skip


class Arrays(InFolder):
    def test_files_read_as_soundfile_reads_them(self) -> None:
        for channels in (1, 2):
            for container, subtype in KINDS:
                name = f"{container}-{subtype}-{channels}"
                # Samples of 16 bits, so that no reader has to round.
                samples = noise(3000, channels) >> (8 if subtype.endswith("8") else 0)
                soundfile.write(name, samples / np.float64(128 if subtype.endswith("8") else 32768), 22050, subtype, format=container)
                info = vlwav.info(name)
                self.assertEqual((info.rate, info.channels, info.frames, info.subtype), (22050, channels, 3000, subtype), name)
                for dtype in ("float32", "float64"):
                    for part in PARTS:
                        with self.subTest(name, part=part, dtype=dtype):
                            theirs, rate = soundfile.read(name, dtype=dtype, **part)
                            ours = vlwav.read(name, dtype=dtype, **part)
                            np.testing.assert_array_equal(ours.data, theirs)
                            self.assertEqual((ours.data.shape, ours.data.dtype, ours.rate), (theirs.shape, theirs.dtype, rate))
                for part in BLOCKS:
                    with self.subTest(name, part=part):
                        ours, theirs = list(vlwav.blocks(name, dtype="float64", **part)), list(soundfile.blocks(name, **part))
                        self.assertEqual([block.shape for block in ours], [block.shape for block in theirs])
                        for one, other in zip(ours, theirs):
                            np.testing.assert_array_equal(one, other)

    def test_what_is_written_is_read_back_from_any_place(self) -> None:
        samples = noise(4000, 2)
        strided = np.repeat(samples, 2, axis=0)[::2]
        for given in (samples, strided, samples.astype(">i2"), samples / np.float32(32768), samples / 32768, np.asfortranarray(samples)):
            with self.subTest(given.dtype, strides=given.strides):
                vlwav.write("a.wav", given, 44100)
                np.testing.assert_array_equal(vlwav.read("a.wav").data, samples)
        with open("a.wav", "rb") as file:
            content = file.read()
        memory = io.BytesIO()
        vlwav.write(memory, samples, 44100)
        self.assertEqual(memory.getvalue(), content)
        reading, writing = os.pipe()
        os.write(writing, content)
        os.close(writing)
        with open("a.wav", "rb") as file, open("a.wav", "rb") as other, open(reading, "rb") as pipe:
            for source in (memoryview(content), bytearray(content), io.BytesIO(content), file, other.fileno(), pipe, b"a.wav"):
                with self.subTest(type(source)):
                    np.testing.assert_array_equal(vlwav.read(source).data, samples)

    def test_floats_round_to_the_nearest_step_and_are_limited(self) -> None:
        # The last but one is above a half in float64 alone.
        given = np.array([0.5, 1.5, -2.5, 40000, -40000, np.nan, np.inf, 0.5 + 2e-12, 0.25]) / 32768
        vlwav.write("a.wav", given, 44100)
        self.assertEqual(vlwav.read("a.wav").data.tolist(), [0, 2, -2, 32767, -32768, 0, 32767, 1, 0])

    def test_arrays_of_the_caller_are_filled_in_place(self) -> None:
        samples = self.make("a.wav", 1000)
        for dtype in ("int16", "float32", "float64"):
            out = np.full((1200, 2), 7, dtype)
            self.assertEqual(len(vlwav.read("a.wav", out=out).data), 1000)
            self.assertTrue((out[1000:] == 7).all())
            self.assertIs(vlwav.read("a.wav", out=out, fill_value=3).data, out)
            np.testing.assert_array_equal(out[:1000] * (1 if dtype == "int16" else 32768), samples)
            self.assertTrue((out[1000:] == 3).all())
        buffer = bytearray(4 * 600)
        with vlwav.open("a.wav") as file:
            self.assertEqual([file.readinto(buffer), file.readinto(buffer), file.readinto(buffer)], [600, 400, 0])
        for bad in (np.empty((9, 2), np.int32), np.empty((9, 3), np.int16), np.empty((9, 4), np.int16)[:, ::2], [0]):
            self.assertRaises((TypeError, ValueError), vlwav.read, "a.wav", out=bad)

    def test_converts_as_the_command_does(self) -> None:
        samples = self.make("a.wav", 30000)
        vlwav.convert("a.wav", "ours.wav", rate=22050, channels=1)
        subprocess.run([os.environ["VLWAV"], "convert", "a.wav", "-o", "theirs.wav", "--rate", "22050", "--channels", "1", "--quiet"], check=True)
        with open("ours.wav", "rb") as ours, open("theirs.wav", "rb") as theirs, open("a.wav", "rb") as source:
            content, made = ours.read(), io.BytesIO()
            self.assertEqual(content, theirs.read())
            vlwav.convert(source, made, rate=22050, channels=1)
            self.assertEqual(made.getvalue(), content)
        with vlwav.tags("a.wav") as tags:
            tags["title"], tags["artist"] = "A", "B"
        with open("a.wav", "rb") as file:
            for source in ("a.wav", file.fileno(), io.BytesIO(file.read())):
                os.lseek(file.fileno(), 0, os.SEEK_SET)
                vlwav.convert(source, "c.wav", tags={"title": "", "year": 1999}, overwrite=True)
                self.assertEqual(dict(vlwav.tags("c.wav")), {"artist": "B", "year": "1999"})
        whole = vlwav.read("a.wav", rate=48000, channels=1).data
        with vlwav.open("a.wav", rate=48000, channels=1) as file:
            self.assertEqual(len(file), len(whole))
            file.seek(-1234, os.SEEK_END)
            np.testing.assert_array_equal(file.read(), whole[-1234:])
        np.testing.assert_array_equal(np.concatenate(list(vlwav.blocks("a.wav", 777, rate=48000, channels=1))), whole)
        self.assertEqual(len(samples), vlwav.info("a.wav").frames)


if __name__ == "__main__":
    unittest.main()
