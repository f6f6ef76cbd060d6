#!/usr/bin/env python3
"""Are the limits where docs/limits.md says, and is what comes one above as told there? Every row is run at its limit and
one above it; the page has to show both the number and the message.

limits_hold.py FOLDER_OF_THE_PROGRAMS
"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

PROGRAMS = pathlib.Path(sys.argv.pop(1)).resolve()
PAGE = (pathlib.Path(__file__).resolve().parents[2] / "docs" / "limits.md").read_text()
# Bring in what an agt leads to, and walk to the end.
RULES = ':{>agt:->agt}"::agt"P9;\nR{}{}P1;\n; end\n'


def graph(*lines):
    return "\n".join(("[S:1]", *lines, "[/S]", ""))


# What has the limit: its number, an input with n of it, and the message for one more.
GRAPHS = {
    "words": (512, lambda n: graph("[W]", *(f"w{i}" for i in range(n)), "[/W]"), "the graph has more than 512 words"),
    "relations": (128, lambda n: graph("agt(w.@entry,x)", *["mod(w,x)"] * (n - 1)),
                  "the graph has more than 128 relations"),
    "a word": (259, lambda n: graph(f"agt({'w' * n}.@entry,x)"), "the graph has a word of more than 259 characters"),
    "a label": (5, lambda n: graph("agt(w.@entry,x)", f"{'a' * n}(w,x)"), "Rel is too long"),
    "attributes": (1024, lambda n: graph("[W]", "w.@" + "a" * 499, "w.@" + "b" * (n - 502), "[/W]"),
                   "the graph has a word with more than 1024 characters of attributes"),
}
ENTRIES = {
    "line": (8191, lambda n: ";" + "x" * (n - 1) if n <= 8191 else "[" + "x" * (n - 1), "the line has more than 8191 characters"),
    "surface form": (1003, lambda n: f'[{"x" * n}]{{}} "x" (y);', "and a key of the index at most 1003"),
    "concept word": (1003, lambda n: f'[x]{{}} "{"x" * n}" (y);', "and a key of the index at most 1003"),
    "attributes": (1024, lambda n: f'[x]{{}} "x" ({"y" * n});', "the attribute list is missing, not closed or too long"),
    "record": (4091, lambda n: f'[x]{{}}{"g" * (n - 25)} "x" (y);', "bytes, and a block holds 4091"),
}


class Limits(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.write("words.txt", '[w]{} "w" (N);\n')
        self.write("rules.txt", RULES)
        self.run_program("lexon-dict", "build", "words.txt", "words.dic")

    def write(self, name, text):
        (self.folder / name).write_text(text)

    def run_program(self, name, *words):
        return subprocess.run([PROGRAMS / name, *words], cwd=self.folder, capture_output=True, text=True)

    def render(self, text):
        self.write("input.txt", text)
        self.run_program("lexon", "words.dic", "rules.txt", "input.txt", "out.txt", "-L0", "-T5", "--quiet")
        return (self.folder / "out.txt").read_text()

    def build(self, line):
        self.write("entries.txt", line + "\n")
        return self.run_program("lexon-dict", "build", "entries.txt", "made.dic").stderr

    def check(self, rows, run):
        for name, (limit, text, message) in rows.items():
            with self.subTest(name):
                self.assertIn(str(limit), PAGE)
                self.assertNotIn(message, run(text(limit)))
                self.assertIn(message, run(text(limit + 1)))

    def test_of_graphs(self):
        self.check(GRAPHS, self.render)

    def test_of_sentences(self):
        for length, is_written in ((1023, True), (1024, False)):
            self.write("words.txt", f'[{"w" * 512}]{{}} "w" (N);\n[{"x" * (length - 512)}]{{}} "x" (N);\n')
            self.run_program("lexon-dict", "build", "words.txt", "words.dic")
            output = self.render(graph("agt(w.@entry,x)"))
            self.assertEqual("w" * 512 + "x" * (length - 512) + "\n" in output, is_written, output)
            self.assertEqual("the sentence is longer than 1023 characters" in output, not is_written, output)

    def test_of_entries(self):
        self.check(ENTRIES, self.build)

    def test_of_paths(self):
        for length, is_named in ((260, True), (261, False)):
            path = "/tmp/" + "x/" * 200
            path = path[: length - 1] + "y"
            told = self.run_program("lexon", path, "rules.txt", "input.txt", "out.txt").stderr
            self.assertEqual(path in told, is_named, told)


if __name__ == "__main__":
    unittest.main(verbosity=1)
