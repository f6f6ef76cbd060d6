#!/usr/bin/env python3
"""lexon-gui on a real desktop: an X server that draws nowhere, a window manager, and what a screen reader sees.

desktop.py BIN_FOLDER      starts itself again on a bus of its own
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

BIN = pathlib.Path(sys.argv[1]).resolve()
PATIENCE = 60  # seconds
# Ten words for each place of a long chain, none of which may end a sentence: the search does not end.
ENTRIES = "".join(f'[{name}{word}]{{}} "{name}" (N);\n' for name in "abcdefghi" for word in range(10))
RULES = ':{N:::}"N::nxt:"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n'
GRAPH = "[S:1]\nnxt(a.@entry,b)\n" + "".join(f"nxt({a},{b})\n" for a, b in zip("bcdefgh", "cdefghi")) + "[/S]\n"


def wait_for(what):
    for _ in range(PATIENCE * 10):
        if (got := what()) is not None:
            return got
        time.sleep(0.1)
    raise AssertionError("nothing came")


def is_hidden(title):
    """Whether the window manager has the window minimised; None as long as it has no such window."""
    shown = subprocess.run(["xprop", "-name", title, "WM_STATE", "_NET_WM_STATE"], capture_output=True, text=True).stdout
    state = re.search(r"window state: (\w+)", shown)
    return None if state is None else ("_NET_WM_STATE_HIDDEN" in shown and state[1] == "Iconic")


class Desktop(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory(prefix="lexon-desktop-")
        cls.addClassCleanup(cls.scratch.cleanup)
        folder = pathlib.Path(cls.scratch.name)
        for name, text in {"entries.txt": ENTRIES, "rules.txt": RULES, "input.txt": GRAPH}.items():
            (folder / name).write_text(text)
        os.environ |= {"XDG_CONFIG_HOME": str(folder), "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        subprocess.run([BIN / "lexon-dict", "build", folder / "entries.txt", folder / "words.dic"], check=True,
                       capture_output=True)
        cls.files = [folder / name for name in ("words.dic", "rules.txt", "input.txt", "output.txt")]
        display, told = os.pipe()
        cls.start("Xvfb", "-displayfd", str(told), "-screen", "0", "1024x768x24", pass_fds=[told])
        os.environ["DISPLAY"] = ":" + os.read(display, 16).decode().strip()
        cls.start("openbox")
        wait_for(lambda: "window id" in subprocess.run(["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"], capture_output=True,
                                                       text=True).stdout or None)

    @classmethod
    def start(cls, *words, **more):
        process = subprocess.Popen(list(words), stderr=subprocess.DEVNULL, **more)
        cls.addClassCleanup(process.wait)
        cls.addClassCleanup(process.kill)
        return process

    def test_go_comes_up_minimised(self):
        for switches, windows in {("-G",): {"Lexon": True, "Rendering": True},
                                  ("-G", "-W"): {"Lexon": True, "Rendering": False},
                                  (): {"Lexon": False}}.items():
            program = self.start(BIN / "lexon-gui", *self.files, *switches)
            for title, hidden in windows.items():
                wait_for(lambda: is_hidden(title) == hidden or None)
                time.sleep(0.5)  # and stays so
                self.assertEqual(is_hidden(title), hidden, (switches, title))
            program.kill()
            wait_for(lambda: is_hidden("Lexon") is None or None)

    def test_a_screen_reader_has_a_name_for_everything(self):
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi

        def children(node):
            return [child for i in range(node.get_child_count()) if (child := node.get_child_at_index(i)) is not None]

        def all_below(node):
            return [each for child in children(node) for each in [child, *all_below(child)]]

        def window(title):
            return next((each for program in children(Atspi.get_desktop(0)) for each in children(program)
                         if each.get_name() == title), None)

        program = self.start(BIN / "lexon-gui")
        self.addCleanup(program.kill)
        main = wait_for(lambda: window("Lexon"))
        button = next(each for each in all_below(main) if each.get_name() == "Setting")
        Atspi.Action.do_action(button, 0)
        setting = wait_for(lambda: window("Setting"))
        seen = [(each.get_role_name(), each.get_name()) for each in all_below(main) + all_below(setting)]
        worked = [name for role, name in seen if role in ("push button", "text", "spin button", "combo box", "check box")]
        self.assertIn("Browse for W Dictionary", worked)
        self.assertIn("Max Time per Sentence", worked)
        self.assertNotIn("", worked, seen)


if __name__ == "__main__":
    if "LEXON_ON_BUS" not in os.environ:
        os.environ["LEXON_ON_BUS"] = "1"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", sys.executable, *sys.argv])
    unittest.main(argv=sys.argv[:1], verbosity=2)
