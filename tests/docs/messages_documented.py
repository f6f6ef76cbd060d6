#!/usr/bin/env python3
"""Does docs/messages.md show every message that the programs can print?

A message is a string literal of the sources that has ";;" in it, or two words. It stands in the page in code, with a
word in capitals, a number or an example where the program puts a value. Pieces of a message that is put together are
looked for one by one. The texts of --help and --steps, and those of the dialogs, have pages of their own. So have the findings of
`lexon-lab check`: docs/check.md has a row for the code of each.

messages_documented.py [SOURCE FOLDER]      with --list the messages are shown instead
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/|R"\((?P<raw>.*?)\)"|"(?P<text>(?:\\.|[^"\\\n])*)"|\'(?:\\.|[^\'\\\n])+\'|[;{}]|\s+|.', re.S)
CONVERSION = re.compile(r"%[-+ 0-9.*]*(?:ll|l|z|h)?[a-zA-Z]")
ESCAPES = {"n": "\n", "t": "\t", '"': '"', "\\": "\\", "0": "\0", "r": "\r"}
# The statements whose texts are help, not messages.
HELP = re.compile(r"[uU]sage|kSwitches|kAbout|add_option|add_flag|add_subcommand|add_command|add_with_dictionary|CLI::App app|static_assert|group|starts_with|xml (?:\+)?=")
PREPROCESSOR = re.compile(r"^[ \t]*#[^\n]*", re.M)


def unescape(text):
    return re.sub(r"\\(.)", lambda m: ESCAPES.get(m[1], m[0]), text)


def literals(source):
    """The string literals of a C++ source, neighbours joined, each with the statement in front of it."""
    statement, joined, start = "", None, 0
    for token in TOKEN.finditer(PREPROCESSOR.sub("", source)):
        text = token["text"] if token["text"] is not None else token["raw"]
        if text is not None:
            joined = (joined or "") + (text if token["raw"] is not None else unescape(text))
        elif not token[0].isspace() and not token[0].startswith(("//", "/*")):
            if joined is not None:
                yield statement, joined
                joined = None
            statement = "" if token[0] in ";{}" else statement + token[0]
        elif token[0].isspace():
            statement += " "


def is_message(text):
    bare = CONVERSION.sub(" VALUE ", text)
    return ";;" in text or re.search(r"[A-Za-z]{2,}[,:]? +[A-Za-z]{2,}", bare) is not None


def messages(folder):
    for path in sorted(folder.rglob("*.[ch]pp")):
        name = path.relative_to(folder).as_posix()
        if name.startswith("front/gui/") and name != "front/gui/gui_main.cpp":
            continue
        if name == "import/steps.cpp":  # the texts of --steps
            continue
        if name.startswith("lab/check") and name != "lab/check_command.cpp":
            continue
        for statement, text in literals(path.read_text()):
            # What the workbench shows is its output; what ends a command, or goes to standard error, is a message.
            is_shown = name.startswith("lab/") and not re.search(r"Fault|tell", statement)
            if is_message(text) and not HELP.search(statement) and not is_shown:
                yield name, text


def lines_of(text):
    """The lines of a message: the fixed pieces of each, to look for in this order, and as it may be shown."""
    for line in text.split("\n"):
        line = line.strip()
        if re.search(r"[A-Za-z;=]{2,}", CONVERSION.sub("", line)):
            yield line, [" ".join(piece.split()) for piece in CONVERSION.split(line)]


def has_pieces(shown, pieces):
    at = 0
    for piece in pieces:
        at = shown.find(piece, at)
        if at < 0:
            return False
        at += len(piece)
    return True


def code_of(page):
    blocks = re.findall(r"^```[^\n]*\n(.*?)^```", page, re.M | re.S)
    inline = re.findall(r"(`+)(.+?)\1", re.sub(r"^```.*?^```", "", page, flags=re.M | re.S))
    lines = "\n".join(blocks + [code.replace("\\|", "|") for _, code in inline]).split("\n")
    return [" ".join(line.split()) for line in lines]


def codes_missing(folder):
    """Codes of findings that the table of codes does not have, or the page about them."""
    sources = {path.name: path.read_text() for path in (folder / "lab").glob("check*.cpp")}
    known = set(re.findall(r'^    \{"([a-z-]+)", "', sources["check.cpp"], re.M))
    used = {code for text in sources.values() for code in re.findall(r'"([a-z]+(?:-[a-z]+)+)"', text)}
    told = set(re.findall(r"^\| `([a-z]+(?:-[a-z]+)*)` \|", (ROOT / "docs" / "check.md").read_text(), re.M))
    return sorted((used | known) ^ told) + sorted(used - known)


def main():
    shows = "--list" in sys.argv
    names = [word for word in sys.argv[1:] if word != "--list"]
    folder = pathlib.Path(names[0]) if names else ROOT / "src"
    code = code_of((ROOT / "docs" / "messages.md").read_text())
    found, missing = 0, 0
    for name, text in messages(folder):
        for line, pieces in lines_of(text):
            found += 1
            if shows:
                print(f"{name}: {line}")
            elif not any(has_pieces(shown, pieces) for shown in code):
                missing += 1
                print(f"{name}: not in docs/messages.md: {line}")
    if found < 150:
        sys.exit(f"only {found} messages found in {folder}: are these the sources?")
    for code in codes_missing(ROOT / "src"):
        missing += 1
        print(f"a code of findings that is not in its table and in docs/check.md: {code}")
    if not shows:
        print(f"{found} lines of messages, {missing} not documented")
    sys.exit(missing != 0)


main()
