"""What the tests of the module share: the languages of the examples and small ones, built in a scratch folder."""

import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAMS = pathlib.Path(os.environ["LEXON_PROGRAMS"])


class Language:
    """Dictionary, rules, co-occurrence dictionary (or None) and graphs, as paths."""

    def __init__(self, source, graphs, folder):
        self.source, self.graphs, self.rules = source, graphs, source / "rules.txt"
        self.dictionary = folder / "words.dic"
        self.cooccurrence = folder / "cr.dic" if (source / "cr.txt").exists() else None
        build(source / "entries.txt", self.dictionary)
        if self.cooccurrence:
            build(source / "cr.txt", self.cooccurrence)

    def run(self, folder, *switches):
        """What the program `lexon` writes."""
        rules = folder / "rules.txt"
        rules.write_bytes(self.rules.read_bytes())
        cooccurrence = [f"-C{self.cooccurrence}"] if self.cooccurrence else []
        subprocess.run([PROGRAMS / "lexon", self.dictionary, rules, self.graphs, folder / "out.txt", "-N0", "--quiet",
                        *cooccurrence, *switches], capture_output=True, check=False)
        return (folder / "out.txt").read_bytes().decode(errors="surrogateescape")


def build(entries, dictionary):
    subprocess.run([PROGRAMS / "lexon-dict", "build", entries, dictionary], check=True, capture_output=True)


@pytest.fixture(scope="session")
def languages(tmp_path_factory):
    examples, golden = ROOT / "examples", ROOT / "tests" / "golden"
    found = {"english": (examples / "english", examples / "english" / "input.txt"),
             "stories-english": (examples / "stories" / "english", examples / "stories" / "input.txt"),
             "stories-german": (examples / "stories" / "german", examples / "stories" / "input.txt")}
    found |= {case: (golden / case, golden / case / "input.txt")
              for case in ("reading-errors", "reading-lines", "search-forced", "search-failed-scope")}
    return {name: Language(*where, tmp_path_factory.mktemp(name)) for name, where in found.items()}


@pytest.fixture(scope="session")
def words(tmp_path_factory):
    """A dictionary of two words, and of ten for each of nine concepts, none of which can end a sentence."""
    folder = tmp_path_factory.mktemp("words")
    lines = ['[dog]{} "dog" (OK);', '[cat]{} "cat" (OK);', '[\u00e9t\u00e9]{} "summer" (OK);']
    lines += [f'[{c}{n}]{{}} "{c}" (N);' for c in "abcdefghi" for n in range(10)]
    (folder / "words.txt").write_text("\n".join(lines) + "\n")
    build(folder / "words.txt", folder / "words.dic")
    return folder / "words.dic"
