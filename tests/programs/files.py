#!/usr/bin/env python3
"""What becomes of files around a run: outputs that are inputs, compiled rules that are linked, broken, stale or not to be
written, and pipes that give no data.

    files.py FOLDER_OF_PROGRAMS

Each row makes a folder with a dictionary, three rules and three sentences, does what it says and starts `lexon`. Prints
"N passed, M failed".
"""
import ctypes, fcntl, os, resource, shutil, signal, subprocess, sys, tempfile, termios, time

LEXON, LEXON_DICT = (os.path.join(os.path.abspath(sys.argv[1]), name) for name in ("lexon", "lexon-dict"))
RULES = "R{SHEAD:::}{:::}P1;\nR{N,^X:::}{STAIL:::}P1;\nR([a],b){^A:[x],+C:agn:<pat}{C:::}P7;\n"
MANY_BAD = "R{:::\n" * 4000
OLD = 1450000000
WORDS = ["words.dic", "rules.txt", "input.txt", "out.txt", "-L0", "-N0", "-Q"]
PRIVILEGES = 1, 2  # to write and to read whatever the modes of a file say


def write(name, text, date=None):
    with open(name, "wb") as file:
        file.write(text if isinstance(text, bytes) else text.encode())
    if date is not None: os.utime(name, (date, date))


def read(name):
    with open(name, "rb") as file: return file.read()


def flip(name, place):
    data = bytearray(read(name))
    data[place] ^= 1
    write(name, bytes(data))


def in_order():
    """The compiled files as new as each other and newer than the text."""
    for name in ("rules.rul", "rules.mtx"): os.utime(name, (OLD + 10, OLD + 10))


class Run:
    def __init__(self, *changes, words=WORDS, **options):
        words = [dict(changes).get(word, word) for word in words]
        words += [more for word, more in changes if word == "+"]
        done = subprocess.run([LEXON, *words], stdin=subprocess.DEVNULL, capture_output=True, timeout=60, **options)
        self.status, self.error = done.returncode, done.stderr.decode()
        self.sentences = [line for line in read("out.txt").decode().splitlines() if line and line[0] not in ";["]

    def good(self, *notes):
        return self.status == 0 and self.sentences == ["dog", "cat", "dog"] and \
            all(note in self.error for note in notes) and bool(notes) == bool(self.error)


# ---- an output that is an input

def refused(output, names, make=lambda: None, more=()):
    make()
    kept = {name: read(name) for name in os.listdir(".") if os.path.isfile(name)}
    run = subprocess.run([LEXON, *(output if word == "out.txt" else word for word in WORDS), *more], capture_output=True)
    error = run.stderr.decode()
    same = kept == {name: read(name) for name in os.listdir(".") if os.path.isfile(name)}
    return same and run.returncode == 1 and all(name in error for name in names) and "same file" in error


def link(target, name):
    return lambda: os.symlink(target, name)


OUTPUTS = [
    ("the input", "input.txt", ["input.txt"], {}),
    ("the input by another path", "./temp/../input.txt", ["input.txt"], {}),
    ("the input by a link", "there", ["there", "input.txt"], {"make": link("input.txt", "there")}),
    ("the input by a hard link", "there", ["there", "input.txt"], {"make": lambda: os.link("input.txt", "there")}),
    ("the rules", "rules.txt", ["the rules"], {}),
    ("the compiled rules", "rules.rul", ["the compiled rules"], {}),
    ("compiled rules that are not there yet", "rules.rul", ["the compiled rules"], {"make": lambda: os.remove("rules.rul")}),
    ("the same by a link that leads nowhere", "there", ["the compiled rules"],
     {"make": lambda: (os.remove("rules.rul"), os.symlink("rules.rul", "there"))}),
    ("the matrix", "rules.mtx", ["matrix"], {}),
    ("the stamp", "rules.rul.stamp", ["stamp"], {}),
    ("the dictionary", "words.dic", ["the dictionary"], {}),
    ("its index", "words.idx", ["the index of the dictionary"], {}),
    ("the co-occurrence dictionary", "cr.dic", ["co-occurrence"], {"more": ["-Ccr.dic"]}),
    ("its index", "cr.idx", ["the index of the co-occurrence"], {"more": ["-Ccr.dic"]}),
]


def devices_are_no_conflict():
    return Run(("out.txt", "/dev/null"), ("input.txt", "/dev/null")).status == 0


# ---- compiled files that are written

def links_keep_their_target():
    for name in ("rules.rul", "rules.mtx"):
        os.remove(name)
        write("precious-" + name, "precious")
    os.symlink("precious-rules.rul", "rules.rul")
    os.link("precious-rules.mtx", "rules.mtx")
    run = Run(("+", "--rebuild"))
    return run.good() and all(read("precious-" + name) == b"precious" for name in ("rules.rul", "rules.mtx")) and \
        not os.path.islink("rules.rul") and len(read("rules.rul")) > 100


def a_failed_rule_step_empties_both():
    before = time.time() - 1
    write("rules.txt", RULES + "R{:::\n")
    Run()
    return all(read(name) == b"" and os.stat(name).st_mtime > before for name in ("rules.rul", "rules.mtx")) and \
        not os.path.exists("rules.rul.stamp")


def a_full_disk_leaves_them_whole():
    kept = read("rules.rul"), read("rules.mtx")
    run = subprocess.run(["prlimit", "--fsize=150", LEXON, *WORDS, "--rebuild"], capture_output=True)
    return run.returncode == 4 and (read("rules.rul"), read("rules.mtx")) == kept


def closed_folder():
    """Nobody may add a file here; returns how to run as somebody who has to keep to that."""
    for name in os.listdir("."): os.chmod(name, 0o777 if name in ("rules.rul", "rules.mtx", "out.txt") else 0o755)
    os.chmod(".", 0o555)
    return {"preexec_fn": without_privilege} if os.geteuid() == 0 else {}


def without_privilege():
    """The system's manager keeps to the modes of files, too. Another user might not reach this folder."""
    for privilege in PRIVILEGES: ctypes.CDLL(None).prctl(24, privilege, 0, 0, 0)


def written_in_place():
    places = [os.stat(name).st_ino for name in ("rules.rul", "rules.mtx")]
    os.utime("rules.txt")
    who = closed_folder()
    run = Run(**who)
    return run.status == 0 and run.sentences and os.stat("rules.rul").st_mtime >= os.stat("rules.txt").st_mtime and \
        places == [os.stat(name).st_ino for name in ("rules.rul", "rules.mtx")]


def in_place_on_a_full_disk():
    os.utime("rules.txt")
    run = subprocess.run(["prlimit", "--fsize=150", LEXON, *WORDS], capture_output=True, **closed_folder())
    return run.returncode == 4 and read("rules.rul") == b"" and b"rules.rul: could not be written" in run.stderr


def links_are_not_written_in_place():
    os.remove("rules.rul")
    write("precious", "precious")
    os.symlink("precious", "rules.rul")
    os.utime("rules.txt")
    os.utime("rules.rul", (OLD, OLD), follow_symlinks=True)
    os.chmod("precious", 0o666)
    run = Run(**closed_folder())
    return run.status == 1 and "Can't Open Generation Rule : " in run.error and "--in-memory" in run.error and \
        read("precious") == b"precious"


def rendered_in_memory():
    os.remove("rules.rul")
    return Run(("+", "--in-memory"), **closed_folder()).good() and not os.path.exists("rules.rul")


def in_memory_takes_the_compiled_rules_alone():
    os.remove("rules.mtx")
    return Run(("rules.txt", "rules.rul"), ("+", "--in-memory")).good() and not os.path.exists("rules.mtx")


def dates_stay_as_the_system_sets_them():
    before = time.time() - 1
    os.utime("rules.txt", (OLD, OLD))
    run = Run(("+", "--rebuild"))
    dates = [os.stat(name).st_mtime_ns for name in ("rules.rul", "rules.mtx")]
    return run.good() and before < dates[0] / 1e9 <= dates[1] / 1e9


# ---- compiled files that are stale or broken

def in_a_conversion(act):
    """The status of a run in whose rule step something happens: its messages wait for a reader of the output."""
    write("rules.txt", MANY_BAD + RULES, OLD)
    os.mkfifo("fifo")
    process = subprocess.Popen([LEXON, *("fifo" if word == "out.txt" else word for word in WORDS), "--rebuild"],
                               stderr=subprocess.DEVNULL)
    reader = os.open("fifo", os.O_RDONLY | os.O_NONBLOCK)  # a program that does not start is not waited for
    while process.poll() is None and waiting_bytes(reader) < 60000: time.sleep(0.01)
    os.set_blocking(reader, True)
    act(process)
    while os.read(reader, 65536): pass
    os.close(reader)
    return process.wait()


def cancelled_in_a_conversion():
    status = in_a_conversion(lambda process: process.send_signal(signal.SIGINT))
    return status == 130 and not [name for name in os.listdir(".") if name.startswith("rules.") and name != "rules.txt"]


def changed_while_converted():
    status = in_a_conversion(lambda process: write("rules.txt", MANY_BAD + RULES + "R{:::}{:::}P9;\n", OLD + 5))
    dated = status == 0 and os.stat("rules.rul").st_mtime == OLD
    Run()
    return dated and os.stat("rules.rul").st_mtime > OLD + 5 and read("rules.mtx")[16:20] == bytes([0, 0, 0, 4])


def waiting_bytes(reader):
    return int.from_bytes(fcntl.ioctl(reader, termios.FIONREAD, bytes(4)), sys.byteorder)


def older_text_is_noticed():
    write("rules.txt", RULES.replace("P7", "P8"), OLD)
    return Run().good("rules.txt", "--rebuild") and Run(("+", "--rebuild")).good() and Run().good()


def touched_or_copied_text_is_no_change():
    os.utime("rules.txt", (OLD - 5, OLD - 5))
    return Run().good()


def cut(name, size):
    def change():
        write(name, read(name)[:size])
        in_order()
    return change


BROKEN = [  # what is done, which note, what the run gives
    ("an empty matrix", cut("rules.mtx", 0), "rules.mtx: cannot be used"),
    ("a matrix without a header", cut("rules.mtx", 20), "rules.mtx: cannot be used"),
    ("a matrix that is cut", cut("rules.mtx", 50), "rules.mtx: cannot be used"),
    ("rules that are cut", cut("rules.rul", 60), "rules.rul: cannot be used"),
    ("rules that are cut between two", lambda: (write("rules.rul", read("rules.rul")[:first_record()]), in_order()),
     "rules.mtx: cannot be used"),
]


def first_record():
    data = read("rules.rul")
    return 2 + data[0] * 256 + data[1]


def made_anew(change, note):
    kept = read("rules.rul"), read("rules.mtx")
    change()
    run = Run()
    return run.good(note, "compiled anew") and b"cannot be used" not in read("out.txt") and \
        (read("rules.rul"), read("rules.mtx")) == kept and Run().good()


def a_flipped_bit(name, place):
    flip(name, place)
    in_order()
    return name + ": is not what was written" in Run().error


def without_a_text_it_stays_as_told():
    cut("rules.mtx", 20)()
    run = Run(("rules.txt", "rules.rul"))
    return run.status == 3 and read("out.txt").startswith(b";;the compiled rule matrix cannot be used: ") and \
        len(read("rules.mtx")) == 20


def without_a_stamp_nothing_is_said():
    flip("rules.mtx", 40)
    in_order()
    os.remove("rules.rul.stamp")
    return "not what was written" not in Run().error


# ---- side by side, and killed

def side_by_side():
    """Texts of one rule more or less take turns; no run may see a pair of both."""
    texts = [RULES, RULES + "R{:::}{:::}P9;\n"]
    faults = []
    for turn in range(10):
        time.sleep(0.02)  # dates are no finer than the system's clock
        write("rules.txt.new", texts[turn % 2])
        os.rename("rules.txt.new", "rules.txt")
        runs = [subprocess.Popen([LEXON, "words.dic", "rules.txt", "input.txt", "out%d.txt" % i, "-L0", "-N0", "-Q"],
                                 stderr=subprocess.PIPE) for i in range(8)]
        for i, run in enumerate(runs):
            error = run.communicate()[1]
            if run.returncode != 0 or error or read("out%d.txt" % i).count(b";;Done!") != 3: faults.append((turn, i, error))
        if read("rules.mtx")[16:20] != (3 + turn % 2).to_bytes(4, "big"): faults.append(turn)
    return not faults


def killed_on_the_way():
    """At moments spread over a whole run, however long one takes here. What was left is gone behind the next one."""
    write("rules.txt", RULES * 400)
    os.utime("rules.txt")
    start = time.monotonic()
    good = Run().status == 0
    lasts = time.monotonic() - start
    for moment in range(12):
        os.utime("rules.txt")
        process = subprocess.Popen([LEXON, *WORDS], env={**os.environ, "TMPDIR": os.path.abspath("temp")})
        time.sleep(lasts * moment / 12)
        process.kill()
        process.wait()
        good = good and len(read("rules.rul")) > 1000 and len(read("rules.mtx")) > 100
    return good and Run(("+", "--rebuild")).status == 0 and drafts() == [] and os.listdir("temp") == []


def drafts():
    return sorted(name for name in os.listdir(".") if name.startswith(".lexon"))


def left_drafts_go(command):
    """Nobody holds the first; a program that still lives holds the second; the others are none."""
    names = [".lexon-draft-%016x" % i for i in range(2)]
    for name in names + ["lexon-draft", ".lexon"]: write(name, "")
    with open(names[1]) as held:
        fcntl.flock(held, fcntl.LOCK_EX)
        done = subprocess.run(command, capture_output=True).returncode == 0
    return done and drafts() == [".lexon", names[1]] and os.path.exists("lexon-draft")


# ---- pipes

SENTENCE = "[S:dog]\n[W]\ndog.@entry\n[/W]\n[/S]\n"


def on_a_pipe(words, before="", signals=(), within=60):
    """The run, whose input is a FIFO with `before` in it and a writer that then keeps silent."""
    os.mkfifo("fifo")
    command = [LEXON, *("fifo" if word == "input.txt" else word for word in WORDS), *words]
    process = subprocess.Popen(command, stderr=subprocess.DEVNULL)
    writer = open(os.open("fifo", os.O_RDWR), "w") if before is not None else None
    if before:
        writer.write(before)
        writer.flush()
    if signals:
        while process.poll() is None and not (b";;Done!" in read("out.txt") if before else reads_fifo(process.pid)):
            time.sleep(0.01)
        for number in signals: process.send_signal(number)
    try:
        status = process.wait(within)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
        status = None
    return status, read("out.txt").decode()


def each_is_seen_before_the_next(*words):
    """Who writes the next sentence only when the one before has come out would else wait for ever."""
    os.mkfifo("fifo")
    process = subprocess.Popen([LEXON, *("fifo" if word == "input.txt" else word for word in WORDS), "-N0", *words], stderr=subprocess.DEVNULL)
    with open(os.open("fifo", os.O_RDWR), "w") as writer:
        deadline = time.monotonic() + 20
        for count in range(1, 9):
            writer.write(SENTENCE)
            writer.flush()
            while read("out.txt").count(b";;Done!") < count and time.monotonic() < deadline: time.sleep(0.005)
        seen = time.monotonic() < deadline
    return process.wait(20) == 0 and seen


def reads_fifo(pid):
    try:
        return any(os.readlink("/proc/%d/fd/%s" % (pid, fd)).endswith("fifo") for fd in os.listdir("/proc/%d/fd" % pid))
    except OSError:
        return False


def silent_writer_is_over_time():
    status, output = on_a_pipe(["-T1", "-N2"], SENTENCE)
    return status == 3 and output.count(";;Done!") == 1 and output.count(";;Time Over!") == 1


def silent_writer_is_cancelled(*signals):
    status, output = on_a_pipe([], SENTENCE * 2000, signals)
    return status == 130 and output.endswith(";;Cancelled!\n")


def no_reader_is_cancelled():
    """Nobody reads the FIFO that stands in the place of the output, so the program waits in opening it."""
    os.mkfifo("fifo")
    process = subprocess.Popen([LEXON, *("fifo" if word == "out.txt" else word for word in WORDS)], stderr=subprocess.DEVNULL)
    caught = 1 << (signal.SIGINT - 1)
    while process.poll() is None and not caught_signals(process.pid) & caught: time.sleep(0.01)
    process.send_signal(signal.SIGINT)
    try:
        return process.wait(60) == 130
    except subprocess.TimeoutExpired:
        process.kill()
        return process.wait() == 130


def caught_signals(pid):
    with open(f"/proc/{pid}/status") as status:
        return next((int(line.split()[1], 16) for line in status if line.startswith("SigCgt:")), 0)


def short_of_files():
    """With too few of them, what cannot be opened is told with its reason, and nothing is called damaged. The
    second dictionary is there since a sanitizer needs open files of its own where the first is opened."""
    limits = [lambda n=n: resource.setrlimit(resource.RLIMIT_NOFILE, (n, n)) for n in range(5, 11)]
    errors = [subprocess.run([LEXON, *WORDS, "-Ccr.dic", "--in-memory"], preexec_fn=limit, capture_output=True, text=True, timeout=60).stderr
              for limit in limits]
    return any(".stamp: cannot be opened: Too many open files" in error for error in errors) and not any("as a stamp" in error for error in errors)


def no_writer_is_cancelled():
    return on_a_pipe([], None, [signal.SIGINT])[0] == 130


def no_data_from(name, of):
    """A FIFO without a writer stands in the place of a file that is no text: it is not waited for."""
    os.remove(name)
    os.mkfifo(name)
    os.utime("rules.txt", (OLD, OLD))
    if of == "lexon": return Run().status == 1
    return subprocess.run([LEXON_DICT, *of.split(), "words.dic"], capture_output=True, timeout=60).returncode == 1


# ---- what happens to files between two sentences of a run

def between(act):
    """A run whose first sentence is done before `act`: its status, the third sentence, and what it tells. The second may
    have been begun before or not."""
    os.mkfifo("fifo")
    process = subprocess.Popen([LEXON, *("fifo" if word == "input.txt" else word for word in WORDS)], stderr=subprocess.PIPE)
    with open(os.open("fifo", os.O_RDWR), "w") as writer:
        writer.write(SENTENCE)
        writer.flush()
        while process.poll() is None and b";;Done!" not in read("out.txt"): time.sleep(0.01)
        act()
        writer.write(SENTENCE.replace("dog", "cat") + SENTENCE)
    error = process.communicate(timeout=60)[1].decode()
    last = read("out.txt").decode().split("[S:")[3].splitlines()[1:]
    return process.returncode, [line for line in last if ";;Time " not in line], error


def overwrite(name, content):
    with open(name, "r+b") as file:
        file.write(content)
        file.truncate()


def another_dictionary():
    write("others.txt", '[hound]{} "dog" (N);\n[puss]{} "cat" (N);\n')
    subprocess.run([LEXON_DICT, "build", "others.txt", "words.dic"], check=True, capture_output=True)


def other_bytes():
    """The same words in other letters, written into the file that is open."""
    os.mkdir("others")
    write("others/entries.txt", read("entries.txt").replace(b"[dog]", b"[god]").replace(b"[cat]", b"[act]"))
    subprocess.run([LEXON_DICT, "build", "others/entries.txt", "others/words.dic"], check=True, capture_output=True)
    for name in ("words.dic", "words.idx"): overwrite(name, read("others/" + name))


ALL = [name + end for name in ("words", "cr") for end in (".dic", ".idx", ".idx.stamp")] + \
    ["rules.txt", "rules.rul", "rules.mtx", "rules.rul.stamp"]
AS_EVER = 0, ["dog", ";;Done!"], ""
LOST = [";;return code -2", ";;Failed!"]
BETWEEN = [  # what happens to which files, and what becomes of the run
    ("all vanish", lambda: [os.remove(name) for name in ALL], AS_EVER),
    ("rules and compiled rules are emptied", lambda: [write(name, "") for name in ALL[6:]], AS_EVER),
    ("a build replaces the dictionary", another_dictionary, AS_EVER),
    ("the dictionary is overwritten", other_bytes, (0, ["god", ";;Done!"], "")),
    ("the dictionary is emptied", lambda: overwrite("words.dic", b""), (3, LOST, "words.dic: damaged at offset 8192")),
    ("the dictionary is cut short", lambda: overwrite("words.dic", read("words.dic")[:8192]),
     (3, LOST, "words.dic: damaged at offset 8192")),
    ("the index is emptied", lambda: overwrite("words.idx", b""), (3, [";;Failed!"], "words.idx: damaged at offset 1024")),
    ("the index is overwritten", lambda: overwrite("words.idx", bytes(2048)), (3, LOST, "words.idx: damaged at offset")),
]


def goes_on(act, expected):
    found = between(act)
    same = found[:2] == expected[:2] and expected[2] in found[2] and bool(expected[2]) == bool(found[2])
    if not same: print(found)
    return same


def a_pipe_is_read_to_its_end(via):
    command = [LEXON, *("/dev/stdin" if word == "input.txt" else word for word in WORDS)]
    run = subprocess.run(command, input=(SENTENCE * 3000).encode(), capture_output=True, timeout=60) if via == "stdin" else \
        subprocess.run(["sh", "-c", "printf x | sleep 0.2 | \"$@\"", "sh", *command], capture_output=True, timeout=60)
    return run.returncode == 0 and read("out.txt").count(b";;Done!") == (3000 if via == "stdin" else 0)


ROWS = [("an output that is " + what, lambda o=output, n=names, m=more: refused(o, n, **m)) for what, output, names, more in OUTPUTS]
ROWS += [("compiled anew: " + what, lambda c=change, n=note: made_anew(c, n)) for what, change, note in BROKEN]
ROWS += [("between two sentences: " + what, lambda a=act, e=expected: goes_on(a, e)) for what, act, expected in BETWEEN]
ROWS += [("a FIFO in the place of %s, %s" % (name, of), lambda n=name, o=of: no_data_from(n, o)) for name, of in
         [("words.dic", "lexon"), ("words.idx", "lexon"), ("rules.rul", "lexon"), ("rules.mtx", "lexon"),
          ("words.dic", "list"), ("words.idx", "find --cw dog"), ("words.idx.stamp", "check")]]
ROWS += [
    ("devices may be input and output", devices_are_no_conflict),
    ("links and hard links keep what they lead to", links_keep_their_target),
    ("both stand empty, and new, after a failed rule step", a_failed_rule_step_empties_both),
    ("a full disk leaves compiled rules whole", a_full_disk_leaves_them_whole),
    ("a folder that takes no new file: written in place", written_in_place),
    ("the same on a full disk: emptied", in_place_on_a_full_disk),
    ("a link there is not written through", links_are_not_written_in_place),
    ("a folder that takes no new file: --in-memory", rendered_in_memory),
    ("--in-memory with compiled rules", in_memory_takes_the_compiled_rules_alone),
    ("dates stay as the system sets them", dates_stay_as_the_system_sets_them),
    ("a cancelled conversion leaves neither", cancelled_in_a_conversion),
    ("rules that change while they are converted are converted again", changed_while_converted),
    ("a text replaced by an older one is noticed", older_text_is_noticed),
    ("a text with another date alone is not", touched_or_copied_text_is_no_change),
    ("a bit flipped in the rules is told", lambda: a_flipped_bit("rules.rul", -1)),
    ("a bit flipped in the matrix is told", lambda: a_flipped_bit("rules.mtx", -1)),
    ("no text: a broken matrix is refused as ever", without_a_text_it_stays_as_told),
    ("no stamp: nothing is said", without_a_stamp_nothing_is_said),
    ("runs side by side see one pair", side_by_side),
    ("killed on the way: nothing is lost or left", killed_on_the_way),
    ("drafts of killed programs go with the next conversion", lambda: left_drafts_go([LEXON, *WORDS, "--rebuild"])),
    ("drafts of killed programs go with the next build",
     lambda: left_drafts_go([LEXON_DICT, "build", "entries.txt", "words.dic"])),
    ("a pipe without data: the time limit works", silent_writer_is_over_time),
    ("a pipe without data: SIGINT works", lambda: silent_writer_is_cancelled(signal.SIGINT)),
    ("a pipe without data: SIGTERM works", lambda: silent_writer_is_cancelled(signal.SIGTERM)),
    ("a pipe without data: SIGTERM and SIGHUP at one stroke are one signal",
     lambda: silent_writer_is_cancelled(signal.SIGSTOP, signal.SIGTERM, signal.SIGHUP, signal.SIGCONT)),
    ("a pipe: each sentence is seen before the next", each_is_seen_before_the_next),
    ("a pipe: the same on two threads", lambda: each_is_seen_before_the_next("-j2")),
    ("a FIFO without a writer: SIGINT works", no_writer_is_cancelled),
    ("an output FIFO without a reader: SIGINT works", no_reader_is_cancelled),
    ("the run is short of open files", short_of_files),
    ("a pipe is read to its end", lambda: a_pipe_is_read_to_its_end("stdin")),
    ("a pipe that holds nothing ends", lambda: a_pipe_is_read_to_its_end("empty")),
]


def prepare():
    write("entries.txt", '[dog]{} "dog" (N);\n[cat]{} "cat" (N);\n')
    write("rules.txt", RULES, OLD)
    write("input.txt", "".join("[S:%s]\n[W]\n%s.@entry\n[/W]\n[/S]\n" % (word, word) for word in ("dog", "cat", "dog")))
    os.mkdir("temp")
    for name in ("words", "cr"):
        subprocess.run([LEXON_DICT, "build", "entries.txt", name + ".dic"], check=True, capture_output=True)
    if not Run().good(): raise RuntimeError("the plain run fails")
    os.rename("out.txt", "first.txt")


def passes(row):
    home = os.getcwd()
    folder = tempfile.mkdtemp(prefix="lexon-files-")
    os.chmod(folder, 0o755)
    os.chdir(folder)
    try:
        prepare()
        write("out.txt", "")
        return bool(row())
    except (OSError, subprocess.SubprocessError, RuntimeError) as error:
        print(error)
        return False
    finally:
        os.chmod(folder, 0o755)
        os.chdir(home)
        shutil.rmtree(folder)


def main(rows):
    failed = [name for name, row in rows if not passes(row)]
    for name in failed: print("failed:", name)
    print("%d passed, %d failed" % (len(rows) - len(failed), len(failed)))
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(ROWS))
