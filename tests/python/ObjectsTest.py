"""Objects: tags, writers, threads, forks and Ctrl-C."""

import gc
import inspect
import os
import re
import signal
import subprocess
import sys
import threading
import time
import unittest

import numpy as np
from support import InFolder

import vlwav


class Objects(InFolder):
    def test_tags_are_saved_at_the_end_of_the_block_and_nothing_else_changes(self) -> None:
        samples = self.make("a.wav")
        cover = subprocess.run(["convert", "-size", "8x8", "xc:red", "jpg:-"], stdout=subprocess.PIPE, check=True).stdout
        with vlwav.tags("a.wav") as tags:
            tags["Title"], tags["year"], tags["ARTIST"] = "Füchse", 1999, "Nobody"
        tags = vlwav.tags("a.wav")
        self.assertEqual(dict(tags), {"title": "Füchse", "artist": "Nobody", "year": "1999"})
        tags.pictures = [vlwav.Picture(3, "image/jpeg", cover)]
        self.assertEqual([tuple(picture) for picture in tags.pictures], [(3, "image/jpeg", cover)])
        self.assertRaises(vlwav.TagError, tags.save)  # the files have no place for it
        self.assertEqual((tags["PERFORMER"], "genre" in tags, len(tags)), ("Nobody", False, 3))
        with self.assertRaises(ZeroDivisionError), vlwav.tags("a.wav") as tags:
            del tags["title"]
            raise ZeroDivisionError
        os.chmod("a.wav", 0o444)
        before = os.stat("a.wav").st_mtime_ns
        vlwav.tags("a.wav").save()
        self.assertEqual((vlwav.tags("a.wav")["title"], os.stat("a.wav").st_mtime_ns), ("Füchse", before))
        os.chmod("a.wav", 0o644)
        mine, theirs = vlwav.tags("a.wav"), vlwav.tags("a.wav")
        theirs["title"] = "Theirs"
        theirs.save()
        mine["title"] = "Mine"
        self.assertRaises(vlwav.TagError, mine.save)
        self.assertEqual(vlwav.tags("a.wav")["title"], "Theirs")
        np.testing.assert_array_equal(vlwav.read("a.wav").data, samples)

    def test_a_writer_gives_a_whole_file_or_none(self) -> None:
        with vlwav.open("a.wav", "x", 44100, 2, rate=22050, tags={"title": "A"}) as file:
            file.write(np.zeros((1000, 2)))
            file.tags["artist"] = "B"
            self.assertEqual((file.frames, file.tell(), os.listdir()), (1000, 1000, []))
        self.assertEqual(vlwav.info("a.wav").rate, 22050)
        self.assertEqual(dict(vlwav.tags("a.wav")), {"title": "A", "artist": "B"})
        with self.assertRaises(ZeroDivisionError), vlwav.open("b.wav", "w", 44100, 1) as file:
            file.write(np.zeros(1000))
            raise ZeroDivisionError
        forgotten = vlwav.open("b.wav", "w", 44100, 1)
        forgotten.write(np.zeros(10))
        del forgotten
        gc.collect()
        self.assertEqual(os.listdir(), ["a.wav"])
        file = vlwav.open("b.wav", "w", 44100, 1, tags={"title": "日本"}, text="cp1252")
        self.assertRaises(vlwav.TagError, file.close)
        file.tags = {"title": "Japan"}
        file.close()
        self.assertEqual(vlwav.tags("b.wav")["title"], "Japan")
        self.assertRaises(ValueError, file.write, np.zeros(1))

    def test_threads_work_beside_each_other_and_never_on_one_object(self) -> None:
        class Slow:
            """Holds its reader inside of a call."""

            def __init__(self, name: str) -> None:
                self.file, self.inside, self.go = open(name, "rb"), threading.Event(), threading.Event()

            def read(self, count: int) -> bytes:
                if self.inside.is_set():
                    self.go.wait()
                return self.file.read(count)

        self.make("a.wav", 500000)
        slow = Slow("a.wav")
        with vlwav.open(slow) as reader:
            slow.inside.set()
            first = threading.Thread(target=reader.read)
            first.start()
            deadline = time.monotonic() + 30
            while time.monotonic() < deadline:
                try:
                    reader.tell()
                except RuntimeError:
                    break
            else:
                self.fail("a second thread was let in")
            slow.go.set()
            first.join()
            self.assertEqual(reader.tell(), 500000)
        slow.file.close()

    def test_a_child_of_a_fork_reads_on_its_own(self) -> None:
        self.make("a.wav")
        vlwav.read("a.wav")
        child = os.fork()
        if child == 0:
            os._exit(0 if len(vlwav.read("a.wav", rate=48000).data) else 1)
        self.assertEqual(os.waitpid(child, 0)[1], 0)

    def test_ctrl_c_stops_and_leaves_no_half_file(self) -> None:
        program = """
import sys, vlwav
print("begins", flush=True)
try:
    while True:
        vlwav.convert("a.wav", "b.wav", rate=48000, overwrite=True, progress=lambda done, total: None)
except KeyboardInterrupt:
    sys.exit(7)
"""
        self.make("a.wav", 3000000)
        # The folder holds the whole file of an earlier round, or nothing, whenever the signal comes.
        process = subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE)
        process.stdout.readline()
        time.sleep(0.15)
        process.send_signal(signal.SIGINT)
        self.assertEqual(process.wait(30), 7)
        process.stdout.close()
        self.assertLessEqual(set(os.listdir()), {"a.wav", "b.wav"})
        if os.path.exists("b.wav"):
            self.assertEqual(vlwav.info("b.wav").promised, vlwav.info("b.wav").frames)

    def test_the_stub_tells_of_what_there_is(self) -> None:
        with open(os.path.join(os.path.dirname(vlwav.__file__), "__init__.pyi"), encoding="utf-8") as file:
            stub = file.read()
        names = set(re.findall(r"^(?:def|class) ([A-Za-z]\w*)", stub, re.M)) | {"SoundFile"}
        self.assertEqual(names, set(vlwav.__all__))
        for name in ("read", "write", "blocks", "convert", "info"):
            told = re.search(rf"^def {name}\((.*?)\) ->", stub, re.M | re.S).group(1)
            arguments = [word for word in re.findall(r"(\w+): ", told)]
            self.assertEqual(arguments, list(inspect.signature(getattr(vlwav, name)).parameters), name)


if __name__ == "__main__":
    unittest.main()
