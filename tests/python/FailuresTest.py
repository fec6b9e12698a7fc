"""What goes wrong is told in the terms of Python, and nothing half is left."""

import copy
import io
import os
import pickle
import unittest
import warnings

import numpy as np
from support import InFolder

import vlwav


class Failures(InFolder):
    def test_each_is_what_people_catch(self) -> None:
        self.make("a.wav")
        with open("text", "w") as file:
            file.write("no audio at all\n")
        os.mkdir("folder")
        cases = [
            (lambda: vlwav.read("nothing.wav"), vlwav.FileError, FileNotFoundError),
            (lambda: vlwav.read("folder"), vlwav.FileError, IsADirectoryError),
            (lambda: vlwav.read("text"), vlwav.FormatError, ValueError),
            (lambda: vlwav.write("a.wav", np.zeros(5), 44100, overwrite=False), vlwav.FileError, FileExistsError),
            (lambda: vlwav.open("a.wav", "x", 44100, 1), vlwav.FileError, FileExistsError),
            (lambda: vlwav.convert("a.wav", "a.wav"), ValueError, ValueError),
            (lambda: vlwav.write("b.wav", np.zeros(5), 12345), vlwav.FormatError, ValueError),
            (lambda: vlwav.write("b.wav", np.zeros(5), 44100, tags={"title": "a\0b"}), vlwav.TagError, ValueError),
            (lambda: vlwav.write("b.wav", np.zeros(5), 44100, tags={"year": "then"}), vlwav.TagError, ValueError),
            (lambda: vlwav.write("b.wav", np.zeros(5), 44100, tags={"no such": "x"}), vlwav.UnknownTagError, KeyError),
            (lambda: vlwav.tags("a.wav")["no such"], vlwav.UnknownTagError, vlwav.TagError),
            (lambda: vlwav.tags("a.wav")["title"], KeyError, KeyError),
            (lambda: vlwav.write("b.wav", [1, 2, 3], 44100), TypeError, TypeError),
            (lambda: vlwav.write("b.wav", np.zeros((2, 2, 2)), 44100), ValueError, ValueError),
            (lambda: vlwav.read("a.wav", dtype="int32"), ValueError, ValueError),
            (lambda: vlwav.read("a.wav", rate=1, samplerate=2), ValueError, ValueError),
            (lambda: vlwav.read("a.wav", frames=1, stop=2), TypeError, TypeError),
            (lambda: vlwav.read(True), TypeError, TypeError),
            (lambda: vlwav.open("a.wav").seek(5001), ValueError, ValueError),
            (lambda: vlwav.open("a.wav").seek(-1), ValueError, ValueError),
            (lambda: vlwav.open("a.wav", "r+"), ValueError, ValueError),
            (lambda: vlwav.open("a.wav", lossy=True), TypeError, TypeError),
            (lambda: vlwav.blocks("a.wav", 10, overlap=10).__next__(), ValueError, ValueError),
        ]
        for number, (call, kind, other) in enumerate(cases):
            with self.subTest(number):
                with self.assertRaises(kind) as caught:
                    call()
                self.assertIsInstance(caught.exception, other)
                self.assertTrue(str(caught.exception))
        self.assertEqual(sorted(os.listdir()), ["a.wav", "folder", "text"])

    def test_an_error_names_its_file_and_survives_a_copy(self) -> None:
        with self.assertRaises(FileNotFoundError) as caught:
            vlwav.read("nothing.wav")
        for error in (caught.exception, pickle.loads(pickle.dumps(caught.exception)), copy.copy(caught.exception)):
            self.assertIsInstance(error, FileNotFoundError)
            self.assertIsInstance(error, vlwav.FileError)
            self.assertEqual((error.errno, error.filename, error.path), (2, "nothing.wav", "nothing.wav"))
            self.assertIn("nothing.wav", str(error))

    def test_a_cut_file_is_read_with_a_warning_and_not_converted(self) -> None:
        samples = self.make("a.wav")
        with open("a.wav", "rb") as file:
            content = file.read()
        with open("cut.wav", "wb") as file:
            file.write(content[:10000])
        for source in ("cut.wav", io.BytesIO(content[:10000])):
            with self.assertWarns(vlwav.CutWarning) as caught:
                data, _ = vlwav.read(source)
            self.assertEqual(caught.filename, __file__)
            np.testing.assert_array_equal(data, samples[: len(data)])
            self.assertEqual(len(data), (10000 - 44) // 4)
        for more in ({"frames": 4000}, {"stop": 4000}, {"frames": 4000, "fill_value": 0}, {"out": np.empty((4000, 2), np.int16)}):
            self.assertWarns(vlwav.CutWarning, vlwav.read, "cut.wav", **more)
        info = vlwav.info("cut.wav")
        self.assertEqual((info.frames, info.promised), (len(data), 5000))
        self.assertRaises(vlwav.FormatError, vlwav.convert, "cut.wav", "b.wav")
        self.assertFalse(os.path.exists("b.wav"))
        self.assertEqual(vlwav.convert("cut.wav", "b.wav", partial=True).info.frames, len(data))
        with warnings.catch_warnings():
            warnings.simplefilter("error")
            self.assertRaises(vlwav.CutWarning, vlwav.read, "cut.wav")

    def test_what_a_callers_object_raises_comes_out(self) -> None:
        class Broken(io.BytesIO):
            def readinto(self, buffer: object) -> int:
                raise LookupError("of the caller")

            def write(self, data: object) -> int:
                raise LookupError("of the caller")

        for call in (
            lambda: vlwav.read(Broken()),
            lambda: vlwav.write(Broken(), np.zeros(9), 44100),
            lambda: vlwav.read(io.StringIO("text")),
            lambda: vlwav.convert(self._source(), "b.wav", progress=lambda done, total: {}["of the caller"]),
        ):
            self.assertRaises((LookupError, TypeError), call)
        self.assertFalse(os.path.exists("b.wav"))

    def _source(self) -> str:
        self.make("a.wav")
        return "a.wav"


if __name__ == "__main__":
    unittest.main()
