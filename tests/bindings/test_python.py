"""The Python module against the command line, against its own stub, and where arrays and threads could go wrong.

Usage, from the root of the tree with the module on PYTHONPATH: test_python.py QZANNO
"""

import ast
import copy
import doctest
import pathlib
import pickle
import subprocess
import sys
import tempfile
import threading
import time
import unittest

import numpy
import qzanno

EXAMPLES = pathlib.Path("examples")
WIDTH, HEIGHT = 320, 180
SCRIPT = """[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour
Style: Default, DejaVu Sans, 30, &HFFFFFF
Style: Sign, DejaVu Sans, 30, &HFF
[Events]
Format: Start, End, Style, Text
Dialogue: 0:00:01.00, 0:00:02.00, Sign, NO {\\c&HFF00&}ENTRY
Dialogue: 0:00:03.00, 0:00:04.00, Default, Two
"""


class PythonModule(unittest.TestCase):
    def setUp(self):
        self.palette = qzanno.Palette.load(EXAMPLES / "broadcast.plist")
        self.renderer = qzanno.Renderer(self.palette, frame=(WIDTH, HEIGHT))
        self.title = qzanno.Title("Good evening", annotations=["Lower Third"])

    def test_documentation_holds(self):
        result = doctest.testmod(qzanno)
        self.assertEqual((result.failed, result.attempted > 10), (0, True))

    def test_stub_names_what_there_is(self):
        def members(names):
            return {name for name in names if not name.startswith("_")}

        stub = ast.parse((pathlib.Path(qzanno.__file__).parent / "__init__.pyi").read_text(encoding="utf-8"))
        classes = {node.name: node for node in stub.body if isinstance(node, ast.ClassDef)}
        self.assertEqual(classes.keys() | {"Cue", "Pixels", "Place", "Problem", "ReportItem", "Span"}, set(qzanno.__all__))
        for name, node in classes.items():
            if issubclass(getattr(qzanno, name), Exception):
                continue
            declared = members(item.name for item in node.body if isinstance(item, ast.FunctionDef))
            self.assertEqual(declared, members(vars(getattr(qzanno, name))), name)

    def test_pixels_are_those_of_the_tool(self):
        script = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory())) / "script.ass"
        script.write_text(SCRIPT)
        drawn = {}
        for file, looks in ((EXAMPLES / "captions.srt", "both"), (script, "both"), (script, "house"), (script, "file")):
            command = [TOOL, "render", file, "-p", "examples/broadcast.plist", "--data", f"{WIDTH}x{HEIGHT}", "--looks", looks, "-o", "-"]
            drawn[looks] = numpy.frombuffer(subprocess.run(command, check=True, capture_output=True).stdout, numpy.uint8)
            captions = qzanno.Captions.load(file, self.palette, looks=looks)
            pictures = [self.renderer.render(cue.title) for cue in captions]
            self.assertGreater(len(pictures), 1)
            self.assertTrue(numpy.array_equal(drawn[looks].reshape(-1, HEIGHT, WIDTH, 4), numpy.stack(pictures)), (file, looks))
        self.assertEqual(len({picture.tobytes() for picture in drawn.values()}), 3)
        self.assertEqual([span.annotation for span in captions[0].title.spans], ["Sign", "#00ff00"])

    def test_part_of_an_array_is_drawn_into_and_nothing_else(self):
        canvas = numpy.full((HEIGHT + 20, WIDTH + 30, 4), 7, numpy.uint8)
        part = canvas[10 : HEIGHT + 10, 10 : WIDTH + 10]
        self.assertIs(self.renderer.render(self.title, out=part), part)
        self.assertTrue(numpy.array_equal(part, self.renderer.render(self.title)))
        part[:] = 7
        self.assertTrue((canvas == 7).all())

    def test_arrays_of_another_form_are_refused(self):
        good = numpy.zeros((HEIGHT, WIDTH, 4), numpy.uint8)
        read_only = good.copy()
        read_only.flags.writeable = False
        cases = {
            "of floats": (good.astype(float), TypeError),
            "of three channels": (good[:, :, :3], TypeError),
            "read-only": (read_only, ValueError),
            "from the bottom": (good[::-1], ValueError),
            "mirrored": (good[:, ::-1], ValueError),
            "with channels reversed": (good[:, :, ::-1], ValueError),
            "turned": (numpy.zeros((WIDTH, HEIGHT, 4), numpy.uint8).transpose(1, 0, 2), ValueError),
            "too small": (good[1:], ValueError),
            "of planes": (numpy.zeros((4, HEIGHT, WIDTH), numpy.uint8).transpose(1, 2, 0), ValueError),
        }
        for name, (array, error) in cases.items():
            with self.subTest(name), self.assertRaises(error):
                self.renderer.render(self.title, out=array)
        self.assertFalse(good.any())

    def test_positions_are_characters(self):
        title = qzanno.Title("Zoë 😀 字幕")
        title.annotate("Emphasis", 4, 5)
        title.annotate("Role", 6)
        self.assertEqual(title.spans, [("Emphasis", 4, 5), ("Role", 6, 8)])
        lacking = qzanno.Title("Zoë 😀 \U0010fffd")
        items = self.renderer.report(lacking)
        self.assertIn(("glyph missing", 6, 7), [item[:3] for item in items])

    def test_errors_have_their_kind_and_name_what_was_passed(self):
        captions = qzanno.Captions.load(EXAMPLES / "captions.srt", self.palette)
        cases = [
            (qzanno.FormatError, "", lambda: qzanno.Palette.from_bytes(b"<plist>")),
            (OSError, "no/such/folder", lambda: qzanno.Fonts(["no/such/folder"])),
            (qzanno.AnnotationError, "Nobody", lambda: self.renderer.render(qzanno.Title("x", annotations=["Nobody"]))),
            (ValueError, "text has a null", lambda: qzanno.Title("a\0b")),
            (ValueError, "language", lambda: qzanno.Renderer(self.palette, language="?")),
            (ValueError, "screen", lambda: qzanno.Renderer(self.palette, screen=(float("nan"), 1))),
            (ValueError, "alpha", lambda: self.renderer.render(self.title, alpha="none")),
            (ValueError, "frame is of 2 x 3 pixels, the picture of 320 x 180",
             lambda: self.renderer.composite(self.title, numpy.zeros((3, 2, 4), numpy.uint8))),
            (IndexError, "there are 4 cues", lambda: captions[4]),
            (TypeError, "indices must be integers or slices, not str", lambda: captions["1"]),
            (TypeError, "'text' must be str, not int", lambda: qzanno.Title(5)),
            (TypeError, "'text' must be str that", lambda: qzanno.Title("\ud800")),
            (TypeError, "'annotations' must be an iterable of str, not str", lambda: qzanno.Title("x", "Role")),
            (TypeError, "'annotations' must be an iterable of str alone", lambda: qzanno.Title("x", [1])),
            (TypeError, "'start' must be int, not str", lambda: self.title.annotate("Role", "1")),
            (TypeError, "'palette' must be qzanno.Palette, not NoneType", lambda: qzanno.Renderer(None)),
            (TypeError, "'data' must be bytes, not str", lambda: qzanno.Palette.from_bytes("x")),
        ]
        for error, message, call in cases:
            with self.subTest(message), self.assertRaisesRegex(error, message):
                call()
        program = "import sys; sys.modules['numpy'] = None; import qzanno"
        without = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True)
        self.assertRegex(without.stderr, r"\nImportError: qzanno .* NumPy, .*\n$")
        self.assertEqual(without.stderr.count("Error"), 2, "the line, and its own place in the module")

    def test_titles_compare_copy_and_pickle_and_captions_slice(self):
        captions = qzanno.Captions.load(EXAMPLES / "captions.srt", self.palette)
        self.assertEqual(captions[-2:], [captions[2], captions[3]])
        self.assertEqual(captions[::2][1].start, captions[2].start)
        title = qzanno.Title("Zoë 😀 字幕", annotations=(name for name in ["Lower Third"]))
        title.annotate("Role", 4, 5)
        other = qzanno.Title(title.text)
        other.annotate("Role", 4, 5)
        self.assertNotEqual(title, other)
        other.annotate("Lower Third")
        for same in (other, copy.copy(title), copy.deepcopy(title), pickle.loads(pickle.dumps(title))):
            self.assertEqual(same, title)
            same.annotate("Role", 0, 1)
            self.assertNotEqual(same, title)
        self.assertNotEqual(title, title.text)

    def test_interpreter_is_let_go_while_rendering(self):
        ticks = [0]
        ends = threading.Event()

        def tick():
            while not ends.is_set():
                ticks[0] += 1
                time.sleep(0)

        large = qzanno.Renderer(self.palette, frame=(8000, 4500))
        former = sys.getswitchinterval()
        ticker = threading.Thread(target=tick)
        ticker.start()
        try:
            # No thread is preempted, so the other one runs only while the interpreter lock is released.
            sys.setswitchinterval(60)
            before = ticks[0]
            large.render(self.title)
            self.assertGreater(ticks[0], before)
        finally:
            sys.setswitchinterval(former)
            ends.set()
            ticker.join()

    def test_threads_may_be_the_first_to_render(self):
        program = """
import concurrent.futures, qzanno
palette = qzanno.Palette.load("examples/broadcast.plist")
def render(_):
    return qzanno.Renderer(palette, frame=(32, 18)).render(qzanno.Title("x"))
with concurrent.futures.ThreadPoolExecutor(8) as pool:
    print(len(list(pool.map(render, range(8)))))
"""
        ran = subprocess.run([sys.executable, "-c", program], check=True, capture_output=True, text=True, timeout=60)
        self.assertEqual(ran.stdout, "8\n")

    def test_threads_may_share_a_renderer_and_a_title(self):
        expected = self.renderer.render(self.title)
        differing = []

        def work():
            for _ in range(20):
                self.title.annotate("Lower Third")
                if not numpy.array_equal(self.renderer.render(self.title), expected):
                    differing.append(1)

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(differing, [])


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
