"""The Python module, and through it the library: results, messages, order, windows and stops."""

import itertools
import pickle
import re
import subprocess
import sys
import threading
import time
import warnings

import lexon
import pytest

DOG, CAT = "[S:1]\n[W]\ndog.@entry\n[/W]\n[/S]\n", "[S:2]\n[W]\ncat.@entry\n[/W]\n[/S]\n"
# The search tries all of 10 ** 9 choices: it comes to no end.
ENDLESS = "[S:3]\n" + "".join(f"nxt({a}{'.@entry' * (a == 'a')},{b})\n" for a, b in zip("abcdefgh", "bcdefghi")) + "[/S]\n"
RULES = ':{N:::}"N::nxt:"P9;\nR{:::}{^STAIL:::}P5;\nR{OK:::}{STAIL:::}P1;\n'


def masked(output):
    return re.sub(r"^;;Time .*", ";;Time", output, flags=re.M)


def load(language, **more):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", lexon.GrammarWarning)
        return lexon.Grammar(language.dictionary, language.rules, language.cooccurrence, **more)


def graphs_of(language):
    return language.graphs.read_bytes().decode(errors="surrogateescape")


@pytest.fixture(scope="session")
def grammar(words):
    return lexon.Grammar.from_text(RULES, words)


@pytest.mark.parametrize("level", (0, 1, 4))
@pytest.mark.parametrize("name", ("english", "stories-english", "stories-german", "reading-errors", "reading-lines",
                                  "search-forced", "search-failed-scope"))
def test_results_are_those_of_the_program(languages, tmp_path, name, level):
    language = languages[name]
    sentences = load(language).render_text(graphs_of(language), level=level)
    written = language.run(tmp_path, f"-L{level}")
    printed_by_rules = written[:written.index("[S")] if "[S" in written else ""  # the parser's messages stand in front
    assert masked("".join(s.trace for s in sentences)) == masked(written[len(printed_by_rules):])
    plain = load(language).render_text(graphs_of(language))
    # What relations add to a sentence at a level may make it too long.
    assert [s.text for s in sentences] == [p.text if s.status == "done" else "" for s, p in zip(sentences, plain)]


def test_compiled_rules_give_the_same(languages, tmp_path):
    language = languages["english"]
    language.run(tmp_path, "-L0")
    compiled = lexon.Grammar(language.dictionary, tmp_path / "rules.rul", language.cooccurrence)
    graphs = graphs_of(language)
    assert [s.text for s in compiled.render_text(graphs)] == [s.text for s in load(language).render_text(graphs)]


def test_a_grammar_touches_no_file(languages, tmp_path):
    (tmp_path / "rules.txt").write_bytes(languages["english"].rules.read_bytes())
    tmp_path.chmod(0o500)
    grammar = lexon.Grammar(languages["english"].dictionary, tmp_path / "rules.txt")
    assert grammar.rule_count > 0 and [path.name for path in tmp_path.iterdir()] == ["rules.txt"]


# Texts that are hard to cut, with the number of parts.
TEXTS = {
    "nothing": ("", 0),
    "blanks": (" \r\n\n", 0),
    "two, and something behind": (DOG + CAT + "; the end\n", 3),
    "CR LF": (DOG.replace("\n", "\r\n") + CAT.replace("\n", "\r\n"), 2),
    "CR CR LF": (DOG.replace("\n", "\r\r\n") + CAT, 2),
    "an end in a block of words": ("[S:1]\n[W]\n[/S]\ndog\n[/W]\n[/S]\n" + CAT, 2),
    "an end behind blanks": (DOG.replace("[/S]", "  [/S]") + CAT, 2),
    "an end behind a tab": ("[S:1]\n\t[/S]\n" + CAT, 1),
    "an end in a skipped block": ("[S:1]\n[R]\n[/S]\n[/R]\n" + DOG + CAT, 2),
    "an end in a tag": ("{note:en}\n[/S]\n{/note}\n" + DOG + CAT, 2),
    "a tag that is replaced": ("{a}\n{b}\n[/S]\n{/a}\n{/b}\n{//b}\n" + DOG + CAT, 2),
    "a tag that is not closed": (DOG + "{note}\n" + CAT, 2),
    "a long line with an end in its second piece": (";" * 1023 + "[/S]\n" + DOG, 2),
    "no line end": (DOG + CAT[:-1], 2),
    "a zero": ("[S:1]\n;\0[/S]\n" + DOG, 1),
}


@pytest.mark.parametrize("name", TEXTS)
def test_a_text_is_cut_where_the_reader_ends_sentences(grammar, name):
    text, count = TEXTS[name]
    parts = lexon.split(text)
    assert len(parts) == count
    assert "".join(parts) == (text if count else "")
    apart = [masked(s.trace) for part in parts for s in grammar.render_text(part)]
    assert apart == [masked(s.trace) for s in grammar.render_text(text)]


# What is wrong with a grammar: rules, the messages, and whether it can be used.
FAULTY_RULES = {
    "a refused rule": ("; two\nR{a}{b}P9;\n  Q{a}{b}P9;\n;\n", [("error", 3)], True),
    "a rule without priority": ("R{a}{b};\n;\n", [("warning", 1)], True),
    "a refused last line": ("R{a}{b}P9;\nR{a", [("error", 2), ("error", 0)], False),
    "nothing": ("; nothing\n", [("error", 0)], False),
}


@pytest.mark.parametrize("name", FAULTY_RULES)
def test_faults_of_rules_have_their_lines(words, tmp_path, name):
    text, wanted, is_usable = FAULTY_RULES[name]
    (tmp_path / "r.txt").write_text(text)
    if is_usable:
        with pytest.warns(lexon.GrammarWarning, match=f"r.txt:{wanted[0][1]}:"):
            messages = lexon.Grammar(words, tmp_path / "r.txt").messages
    else:
        with pytest.raises(lexon.GrammarError) as caught:
            lexon.Grammar(words, tmp_path / "r.txt")
        messages = caught.value.messages
        assert (caught.value.file, caught.value.line) == (str(tmp_path / "r.txt"), wanted[0][1])
        assert str(pickle.loads(pickle.dumps(caught.value))) == str(caught.value)
    assert [(m.kind, m.line) for m in messages] == wanted


# A file that cannot be used: which one, what it is, and a word of the message.
FILES = {
    "no dictionary": (0, None, "No such file"),
    "a dictionary that is a folder": (0, ".", "cannot be opened"),
    "a text for a dictionary": (0, "text", "not a dictionary"),
    "no rules": (1, None, "No such file"),
    "an index of rules": (1, "x.mtx", "rule text"),
    "damaged compiled rules": (1, "x.rul", "damaged"),
    "no co-occurrence dictionary": (2, None, "No such file"),
}


@pytest.mark.parametrize("name", FILES)
def test_a_file_that_cannot_be_used_is_named(languages, tmp_path, name):
    which, file, told = FILES[name]
    language = languages["english"]
    files = [language.dictionary, language.rules, language.cooccurrence]
    files[which] = tmp_path / (file or "missing")
    if file not in (None, "."):
        files[which].write_bytes(b"R{a}{b}P9;\n" * 20)
    with pytest.raises(lexon.GrammarError, match=told) as caught:
        lexon.Grammar(*files)
    assert caught.value.file == str(files[which])


# Graphs that fail or are faulty: status, code, and the line and a word of the last message.
GRAPHS = {
    "an empty one": ("\n[S:1]\n[/S]\n", "failed", -1, 3, "Empty"),
    "one that ends at once": ("[S:1]\n", "failed", -10, 0, "ends within"),
    "a bad line": ("[S:1]\nagn(dog\natt(dog.@entry,dog)\n[/S]\n", "done", 0, 2, "relation"),
    "a bad line behind a long one": (";" * 3000 + "\n[S:1]\nagn(dog\natt(dog.@entry,dog)\n[/S]\n", "done", 0, 3, "relation"),
    "too many words": ("[S]\n[W]\n" + "".join(f"w{n}\n" for n in range(600)) + "[/W]\n[/S]\n", "failed", -1, 0, "512"),
    "no way on": ("[S:1]\n[W]\na.@entry\n[/W]\n[/S]\n", "failed", -2, 0, "tried"),
}


@pytest.mark.parametrize("name", GRAPHS)
def test_a_graph_that_fails_says_why(grammar, name):
    graph, status, code, line, word = GRAPHS[name]
    sentence = grammar.render(graph)
    assert (sentence.status, sentence.code) == (status, code)
    assert (sentence.text == "") == (status != "done")
    assert (sentence.fallback == "a") == (name == "no way on")
    assert sentence.messages[-1].line == line and word in sentence.messages[-1].text, sentence.messages


def test_lines_of_messages_count_from_the_start_of_the_text(grammar):
    second = grammar.render_text(DOG + "[S:2]\nagn(dog\natt(dog.@entry,dog)\n[/S]\n")[1]
    assert [m.line for m in second.messages] == [7]


def test_text_keeps_its_encoding(grammar):
    graph = DOG.replace("dog", "summer")
    assert grammar.render(graph).text == "\u00e9t\u00e9"
    assert grammar.render("[S:\udcff]" + graph[5:]).label == "[S:\udcff]"
    assert isinstance(lexon.split(graph.encode())[0], bytes)


@pytest.mark.parametrize("graph", ("", "x", DOG + CAT))
def test_render_wants_one_sentence(grammar, graph):
    with pytest.raises(ValueError, match="holds"):
        grammar.render(graph)
    with pytest.raises(ValueError, match="holds"):
        list(grammar.render_all([DOG, graph]))


@pytest.mark.parametrize("jobs", (0, 1, 3))
def test_many_graphs_come_in_order_out_of_a_window(grammar, jobs):
    taken = itertools.count()
    graphs = (DOG if next(taken) % 3 else CAT for _ in range(300))
    found = []
    for sentence in grammar.render_all(graphs, jobs):
        found.append(sentence.text)
        # The counter shows the next number: how many have been taken so far.
        assert int(repr(taken)[6:-1]) - len(found) <= 16 * (jobs or 64)
    assert found == ["cat" if n % 3 == 0 else "dog" for n in range(300)]


def test_the_time_limit_is_that_of_a_sentence(grammar):
    statuses = [s.status for s in grammar.render_text(DOG + ENDLESS + CAT, time_limit=1)]
    assert statuses == ["done", "over time", "done"]


def test_closing_the_generator_ends_what_is_under_way(grammar):
    sentences = grammar.render_all([DOG, *[ENDLESS] * 40], 2)
    assert next(sentences).text == "dog"
    sentences.close()
    assert threading.active_count() == 1


def test_other_threads_run_while_a_sentence_is_rendered(grammar):
    rendering = threading.Thread(target=grammar.render, args=(ENDLESS,), kwargs={"time_limit": 1})
    rendering.start()
    rounds = 0
    while rendering.is_alive():
        assert grammar.render(DOG).text == "dog"
        rounds += 1
    assert rounds > 1


INTERRUPTED = """
import lexon, sys
grammar = lexon.Grammar.from_text(sys.argv[1], sys.argv[2])
try:
    print("ready", flush=True)
    grammar.render(sys.argv[3])
except KeyboardInterrupt:
    print(grammar.render(sys.argv[4]).text)
"""


def test_an_interrupt_ends_a_sentence(words):
    process = subprocess.Popen([sys.executable, "-c", INTERRUPTED, RULES, words, ENDLESS, DOG], stdout=subprocess.PIPE,
                               text=True)
    assert process.stdout.readline() == "ready\n"
    time.sleep(0.2)
    process.send_signal(2)
    assert process.communicate()[0] == "dog\n"


FORKED = """
import lexon, os, sys
grammar = lexon.Grammar.from_text(sys.argv[1], sys.argv[2])
grammar.render(sys.argv[3])
child = os.fork()
# One write a process: print may write the line and its end apart, and the other process between them.
os.write(1, grammar.render(sys.argv[3]).text.encode() + b"\\n")
if child:
    os.waitpid(child, 0)
"""


def test_blocks_are_the_memory_of_rules_and_sentences(words):
    rules = RULES + "".join(f"R{{N,^m{i}:+m{i}}}{{OK,n{i}}}P2;\n" for i in range(20000))
    with pytest.raises(lexon.GrammarError, match="blocks"):
        lexon.Grammar.from_text(rules, words, blocks=20)
    grammar = lexon.Grammar.from_text(rules, words, blocks=600)
    assert pickle.loads(pickle.dumps(grammar)).rule_count == 20003
    for blocks in (0, 65536):
        with pytest.raises(ValueError, match="blocks"):
            lexon.Grammar.from_text(RULES, words, blocks=blocks)


def test_a_grammar_goes_to_other_processes(grammar, words):
    assert pickle.loads(pickle.dumps(grammar)).render(DOG).text == "dog"
    done = subprocess.run([sys.executable, "-c", FORKED, RULES, words, DOG], capture_output=True, text=True, timeout=60)
    assert (done.stdout, done.stderr) == ("dog\ndog\n", "")


@pytest.mark.parametrize("wrong", ({"level": 5}, {"time_limit": 0}, {"time_limit": -1}))
def test_settings_that_make_no_sense_are_refused(grammar, wrong):
    with pytest.raises(ValueError, match=next(iter(wrong))):
        grammar.render(DOG, **wrong)
