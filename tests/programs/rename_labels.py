#!/usr/bin/env python3
"""tools/rename-labels: labels are renamed where a label stands, and nowhere else."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "rename-labels"
TABLE = "# two change places\nabc\txyz\none\ttwo\ntwo\tone\n"

GRAPHS = [  # inside a sentence, before and after
    ("abc(abc(>abc).@abc, two)", "xyz(abc(>abc).@abc, two)"),
    ("\tone :0A (two:01, :0A) =1", "\ttwo :0A (two:01, :0A) =1"),
    ("abcd(abc, one)", "abcd(abc, one)"),
    ("[W]\nabc(>one)\n [/W]\none(a\n[/W]\none(a,b)", "[W]\nabc(>one)\n [/W]\none(a\n[/W]\ntwo(a,b)"),
    ("{text:en}\nabc(a,b)\n[/S]\n{/text}\nabc(a,b)", "{text:en}\nabc(a,b)\n[/S]\n{/text}\nxyz(a,b)"),
    ("; abc(a,b)\n[/S]\nabc(a,b)", "; abc(a,b)\n[/S]\nabc(a,b)"),
    ("abc(Größe,\xff)", "xyz(Größe,\xff)"),
]
RULES = [
    (':"N,abc::abc"{V,>abc:->abc,+<one,one:two:>abc}P9;', ':"N,abc::xyz"{V,>xyz:->xyz,+<two,one:one:>abc}P9;'),
    ('R(^<abc,[>abc])*{[a:>abc"b],>one}{[[>abc]],<two:[>one]}(>two)*P1; >abc',
     'R(^<xyz,[>abc])*{[a:>abc"b],>two}{[[>abc]],<one:[>one]}(>one)*P1; >abc'),
    (':{::abcdef, one}"[<abc]"P1;', ':{::xyzdef, two}"[<abc]"P1;'),
    ('P<<"[[],>abc"{>abcd,a(>abc,>one)}P1;', 'P<<"[[],>xyz"{>abcd,a(>abc,>two)}P1;'),
    (">{>abc:", ">{>xyz:"),
    ("R(>abc,[[>abc", "R(>xyz,[[>abc"),
]
REFUSED = [  # a table, a graph, what is said
    ("abc\tone\n", "abc(a,b)\none(a,b)", "already in use: one"),
    ("abc\tx\none\tx\n", "abc(a,b)\none(a,b)", "already in use: x"),
    ("abc xyz\n", "", "table:1: each line is"),
    ("abc\ttoolong\n", "", "table:1: 'toolong' is no label"),
]


class RenameLabels(unittest.TestCase):
    def rename(self, table, kind, text):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "table").write_text(table)
            file = pathlib.Path(folder) / "file"
            file.write_bytes(text.encode("latin-1"))
            done = subprocess.run([TOOL, "table", kind, "file"], cwd=folder, capture_output=True, text=True)
            return file.read_bytes().decode("latin-1"), done.stderr

    def test_labels_alone(self):
        for kind, head, rows in (("--graphs", "abc(a,b)\n[S:abc(1)]\n", GRAPHS), ("--rules", "; >abc\r\n", RULES)):
            for before, after in rows:
                with self.subTest(before):
                    self.assertEqual(self.rename(TABLE, kind, head + before + "\n"), (head + after + "\n", ""))

    def test_refused(self):
        for table, graph, message in REFUSED:
            with self.subTest(message):
                text, error = self.rename(table, "--graphs", "[S]\n" + graph)
                self.assertIn(message, error)
                self.assertEqual(text, "[S]\n" + graph)

    def test_a_row_of_its_own_allows_a_merge(self):
        self.assertEqual(self.rename("abc\tone\none\tone\n", "--graphs", "[S]\nabc(a,b)\none(a,b)"),
                         ("[S]\none(a,b)\none(a,b)", ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
