#!/usr/bin/env python3
"""Files that fail: system calls refused in turn, disks that are full at every length, compiled files of other rules.

    failing_files.py FOLDER_OF_PROGRAMS

Rows as in programs/files.py, and in folders as there; these start the programs some thousand times.
"""
import os, pathlib, re, shutil, subprocess, sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "programs"))
import files
from files import LEXON, LEXON_DICT, OLD, read, write

SHORT = b"lexon: the output could not be written whole\n"
CALLS = [  # as strace names them, what becomes of one of them, of which file ("": all), and whether the rules are converted
    ("read", "error=EIO", "input.txt", False), ("read", "error=EIO", "rules.txt", True),
    ("read", "error=EIO", "rules.rul", False), ("read", "error=EIO", "rules.mtx", False),
    ("pread64", "error=EIO", "words.dic", False), ("pread64", "error=EIO", "words.idx", False),
    ("pread64", "retval=0", "words.dic", False), ("pread64", "error=EINTR", "words.dic", False),
    ("read", "retval=0", "rules.rul", False), ("read", "retval=0", "rules.mtx", False),
    ("write", "error=ENOSPC", "out.txt", True), ("read", "error=EIO", "", True), ("write", "error=ENOSPC", "", True),
    ("openat", "error=EMFILE", "", True), ("linkat,rename,unlink", "error=EACCES", "", True),
    ("fsync,flock", "error=EIO", "", True),
]


def lexon(*under, rules="rules.txt", output="out.txt"):
    """A run, started by what is in front of it."""
    words = [os.path.abspath(name) for name in ("words.dic", rules, "input.txt", output)]
    command = [*under, LEXON, *words, "--quiet", "-L0", "-N0", "-C" + os.path.abspath("cr.dic")]
    # A program that is traced cannot look for leaks.
    environment = {**os.environ, "TMPDIR": os.path.abspath("temp"), "ASAN_OPTIONS": "detect_leaks=0"}
    return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=60, env=environment)


def output():
    return re.sub(rb";;Time .*", b"", read("out.txt"))


def convert_anew():
    for name in ("rules.rul", "rules.mtx"): pathlib.Path(name).unlink(missing_ok=True)


def bears(run, expected, hits_all=False):
    """A run that has been disturbed says so, if it has not done all its work all the same; and what it leaves does not
    disturb the next one. `hits_all`: messages and tidying up may have been hit as well."""
    good = {0: output() == expected, 1: hits_all or run.stderr, 4: hits_all or run.stderr, 3: b";;" in output(),
            127: b"loading shared libraries" in run.stderr}.get(run.returncode, False)
    tidy = hits_all or run.returncode == 127 or os.listdir("temp") == []
    shutil.rmtree("temp")
    os.mkdir("temp")
    told = run.returncode, run.stderr, output()
    good = good and tidy and lexon().returncode == 0 and output() == expected
    if not good: print(*told)
    return good


def each_call_fails(calls, fault, file, converts):
    lexon()
    expected = output()
    only = ["-P", os.path.abspath(file)] if file else []
    number = 0
    while True:
        number += 1
        if converts: convert_anew()
        run = lexon("strace", "-f", "-qq", "-o", "trace", "-e", "trace=" + calls, "-e",
                    "inject=%s:%s:when=%d" % (calls, fault, number), *only)
        hit = b"(INJECTED)" in read("trace")
        if not bears(run, expected, not file): return False
        if not hit: return number > 1


def every_length_of_a_full_disk():
    """A file may grow to a limit and no further; every limit up to the size that the run needs."""
    lexon()
    expected = output()
    needed = max(len(read(name)) for name in ("out.txt", "rules.rul", "rules.mtx"))
    for limit in [*range(1, 8), *range(8, needed + 24, 23)]:
        convert_anew()
        if not bears(lexon("prlimit", "--fsize=%d" % limit), expected): return False
    return True


def an_output_that_is_cut_short():
    """Standard error is no file here: only the output meets its limit."""
    cut, full = lexon("prlimit", "--fsize=40"), lexon(output="/dev/full")
    return (cut.returncode, cut.stderr, full.returncode, full.stderr) == (4, SHORT, 4, SHORT)


def the_dictionary_tool_on_a_full_disk():
    write("many.txt", "".join('[word%d]{} "c" (N);\n' % i for i in range(400)))
    build = [LEXON_DICT, "build", "many.txt", "words.dic"]
    subprocess.run(build, check=True, capture_output=True)
    before = read("words.dic"), read("words.idx")
    for limit in (0, 1, 1023, 4095, 4096, 8192, 12288):
        status = subprocess.run(["prlimit", "--fsize=%d" % limit, *build], capture_output=True).returncode
        if (status, read("words.dic"), read("words.idx")) != (1, *before): return False
    with open("list.txt", "wb") as short:
        listed = subprocess.run(["prlimit", "--fsize=200", LEXON_DICT, "list", "words.dic"], stdout=short, stderr=subprocess.PIPE)
    return (listed.returncode, listed.stderr) == (4, SHORT.replace(b"lexon", b"lexon-dict")) and files.drafts() == []


def compiled_files_of_other_rules(name, named):
    """Without a text, one compiled file is replaced; the file `named` is refused by its name."""
    write("other.txt", "R{SHEAD:::}{:::}P1;\n")
    if lexon(rules="other.txt").returncode != 3: return False  # one rule is not enough
    write(name, read(name.replace("rules", "other")))
    for made, date in (("rules.rul", OLD), ("rules.mtx", OLD + 1)): os.utime(made, (date, date))
    run = lexon(rules="rules.rul")
    text = read("out.txt").decode()
    return run.returncode == 3 and text.startswith(";;the compiled rule ") and "\n;;in %s\n" % os.path.abspath(named) in text


ROWS = [("%s of %s: %s" % (calls, file or "all", fault), lambda row=(calls, fault, file, converts): each_call_fails(*row))
        for calls, fault, file, converts in CALLS]
ROWS += [
    ("a disk that is full at every length", every_length_of_a_full_disk),
    ("an output that is cut short", an_output_that_is_cut_short),
    ("the dictionary tool on a full disk", the_dictionary_tool_on_a_full_disk),
    ("the matrix of other rules", lambda: compiled_files_of_other_rules("rules.mtx", "rules.mtx")),
    ("the rules of another matrix", lambda: compiled_files_of_other_rules("rules.rul", "rules.mtx")),
]

if __name__ == "__main__":
    sys.exit(files.main(ROWS))
