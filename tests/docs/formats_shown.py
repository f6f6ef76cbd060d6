#!/usr/bin/env python3
"""Are the files shown in docs/formats.md those that the programs write? The blocks of the page are named by their
files: w.txt and g.txt are texts, the others dumps of what becomes of them.

formats_shown.py FOLDER_OF_THE_PROGRAMS
"""
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
SHOWN = {"w.dic", "w.idx", "g.rul", "g.mtx"}


def main():
    programs = pathlib.Path(sys.argv[1]).resolve()
    page = (ROOT / "docs" / "formats.md").read_text()
    blocks = dict(re.findall(r"^```(\w+\.\w+)\n(.*?)^```", page, re.M | re.S))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        (folder / "w.txt").write_text(blocks["w.txt"])
        (folder / "g.txt").write_text(blocks["g.txt"])
        (folder / "none").write_text("")
        for command in (["lexon-dict", "build", "w.txt", "w.dic"],
                        ["lexon", "w.dic", "g.txt", "none", "out", "-R", "--quiet"]):
            subprocess.run([programs / command[0], *command[1:]], cwd=folder, check=True)
        wrong = 0
        for file in sorted(SHOWN):
            dump = subprocess.run(["od", "-A", "x", "-t", "x1z", folder / file], capture_output=True, text=True).stdout
            if dump != blocks[file]:
                wrong += 1
                print(f"{file} is not as docs/formats.md shows it:\n{dump}")
    sys.exit(wrong != 0)


main()
