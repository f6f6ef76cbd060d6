"""lexon-cluster: order, resumption, workers that die, and sentences that kill them; on processes of this machine."""

import gzip
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time
import types

import pytest

pytest.importorskip("distributed")

from lexon.cluster import inputs, results  # noqa: E402
from test_lexon import CAT, DOG, ENDLESS, RULES, masked  # noqa: E402

def command(*words):
    return [sys.executable, "-m", "lexon.cluster", "render", *map(str, words)]


def cluster(*words):
    return subprocess.run(command(*words), capture_output=True, text=True, timeout=500, check=False)


@pytest.fixture(scope="module")
def english(languages, tmp_path_factory):
    """Many sentences, and what one run of `lexon` writes of them, rules first."""
    language, folder = languages["english"], tmp_path_factory.mktemp("cluster")
    graphs = folder / "graphs.txt"
    graphs.write_text(language.graphs.read_text() * 60)
    language.graphs, kept = graphs, language.graphs
    written = language.run(folder, "-L0", "-j2")
    language.graphs = kept
    words = [language.dictionary, language.rules, graphs]
    return words, ["-c", language.cooccurrence, "-L0", "--chunk", 100], masked(written)


@pytest.fixture(scope="module")
def scheduler(tmp_path_factory):
    """The address of one, with two workers that come back when they are killed."""
    folder = tmp_path_factory.mktemp("scheduler")
    environment = {**os.environ, "DASK_DISTRIBUTED__SCHEDULER__ALLOWED_FAILURES": "2"}
    file = folder / "scheduler.json"
    start = [sys.executable, "-m"]
    running = [subprocess.Popen([*start, "distributed.cli.dask_scheduler", "--host", "127.0.0.1", "--port", "0",
                                 "--no-dashboard", "--scheduler-file", file], env=environment, cwd=folder,
                                stderr=subprocess.DEVNULL)]
    while not file.exists() or not file.read_text().endswith("}"):
        time.sleep(0.1)
    running.append(subprocess.Popen([*start, "distributed.cli.dask_worker", "--scheduler-file", file, "--nworkers", "2",
                                     "--nthreads", "1", "--no-dashboard", "--local-directory", folder], env=environment,
                                    cwd=folder, stderr=subprocess.DEVNULL))
    yield json.loads(file.read_text())["address"]
    for process in reversed(running):
        process.terminate()
        process.wait()


def kill_a_worker(address):
    import distributed

    with distributed.Client(address, set_as_default=False) as client:
        # One that was killed may still be listed, and answers no more.
        living = []
        while not living:
            living = list(client.run(os.getpid, on_error="ignore").values())
        os.kill(living[0], signal.SIGKILL)


def wait_for_size(path, size, process):
    while process.poll() is None and (not path.exists() or path.stat().st_size < size):
        time.sleep(0.01)


TEXTS = [DOG * 5, DOG * 3 + CAT, DOG * 2 + ";;\n" + CAT[:-1], "{note}\n" + DOG * 4, DOG.replace("\n", "\r\n") * 3, "", "\n \n",
         "x" * 3000 + "\n" + DOG * 2 + ";" * 1023 + "[/S]\n" + DOG]


@pytest.mark.parametrize("sentences", (1, 2, 100))
def test_chunks_hold_whole_sentences_and_lose_nothing(tmp_path, monkeypatch, sentences):
    monkeypatch.setattr(inputs, "_BLOCK", 64)
    files = []
    for number, text in enumerate(TEXTS):
        files.append(tmp_path / f"{number}.txt")
        files[-1].write_bytes(text.encode())
    packed = tmp_path / "packed.gz"
    packed.write_bytes(gzip.compress(TEXTS[0].encode()))
    files = [str(path) for path in [*files, packed]]
    found = list(inputs.chunks(files, sentences, inputs.Place(), 0))
    whole = ["".join(c.graphs.decode() for c in found if c.begin.file == n).rstrip() for n in range(len(files))]
    assert whole == [text.rstrip() for text in [*TEXTS, TEXTS[0]]]
    assert [c.number for c in found] == list(range(len(found)))
    for chunk in found:
        again = list(inputs.chunks(files, sentences, chunk.begin, chunk.number))
        assert again[0].graphs == chunk.graphs and again[-1].end == found[-1].end


def test_inputs_are_files_folders_and_patterns(tmp_path):
    for name in ("b.txt", "a.txt", "a.txt.offsets", ".hidden"):
        (tmp_path / name).write_text("")
    assert [pathlib.Path(p).name for p in inputs.find([str(tmp_path), str(tmp_path / "b*")])] == ["a.txt", "b.txt", "b.txt"]
    with pytest.raises(inputs.InputError, match="no such"):
        inputs.find([str(tmp_path / "c*")])


def test_the_output_is_that_of_one_run(english, scheduler, tmp_path):
    words, switches, wanted = english
    done = cluster(*words, tmp_path / "out.txt", *switches, "--scheduler", scheduler)
    assert (done.returncode, masked((tmp_path / "out.txt").read_text()) == wanted) == (0, True), done.stderr
    assert "3840 done" in done.stderr and sorted(p.name for p in tmp_path.iterdir()) == ["out.txt"]


def test_what_sentences_leave_goes_from_chunk_to_chunk(languages, scheduler, tmp_path):
    language = languages["search-forced"]
    graphs = tmp_path / "graphs.txt"
    graphs.write_text(language.graphs.read_text() * 20)
    language.graphs, kept = graphs, language.graphs
    wanted = language.run(tmp_path, "-L3")
    language.graphs = kept
    done = cluster(language.dictionary, language.rules, graphs, tmp_path / "cluster.txt", "-L3", "--chunk", 7, "--scheduler",
                   scheduler)
    assert masked((tmp_path / "cluster.txt").read_text()) == masked(wanted), done.stderr


def test_lost_workers_lose_nothing(english, scheduler, tmp_path):
    words, switches, wanted = english
    call = command(*words, tmp_path / "out.txt", *switches, "--scheduler", scheduler)
    process = subprocess.Popen(call, stderr=subprocess.PIPE, text=True)
    for kills in (1, 2, 3):
        wait_for_size(tmp_path / "out.txt.part", len(wanted) * kills // 5, process)
        kill_a_worker(scheduler)
    told = process.communicate()[1]
    assert (process.returncode, masked((tmp_path / "out.txt").read_text()) == wanted) == (0, True), told


def test_a_killed_client_goes_on(english, scheduler, tmp_path):
    words, switches, wanted = english
    call = command(*words, tmp_path / "out.txt", *switches, "--scheduler", scheduler)
    process = subprocess.Popen(call, stderr=subprocess.PIPE, text=True)
    wait_for_size(tmp_path / "out.txt.part", len(wanted) // 4, process)
    process.kill()
    process.communicate()
    other = cluster(*words, tmp_path / "out.txt", *switches, "-L1", "--scheduler", scheduler)
    assert (other.returncode, "--fresh" in other.stderr) == (1, True)
    done = subprocess.run(call, capture_output=True, text=True, check=False)
    assert (done.returncode, masked((tmp_path / "out.txt").read_text()) == wanted) == (0, True), done.stderr


def test_a_sentence_that_kills_is_named(words, scheduler, tmp_path):
    (tmp_path / "rules.txt").write_text(RULES)
    (tmp_path / "graphs.txt").write_text(DOG * 150 + CAT.replace("[S:2]", "[S:bad]") + DOG * 150)
    done = cluster(words, tmp_path / "rules.txt", tmp_path / "graphs.txt", tmp_path / "out.txt", "-L0", "--chunk", 100,
                   "--poison", "[S:bad]", "--scheduler", scheduler)
    output = (tmp_path / "out.txt").read_text()
    assert (done.returncode, output.count("\ndog\n"), output.count(";;Done!"), output.count("[S:bad]\n;;Failed!")) == (3, 300, 300, 1)
    assert re.search(r"graphs.txt:501: chunk 2: sentence 51 of it, \[S:bad\], ended its process: signal 9", done.stderr), done.stderr


class Arrow(types.ModuleType):
    """Stands in for pyarrow, which Debian lacks: what is called of it, and with what. A type is its name."""

    written = []

    def __getattr__(self, name):
        if name.startswith("__"):
            raise AttributeError(name)
        return lambda *of: (name, *of)

    class Table:
        @staticmethod
        def from_pylist(rows, schema):
            kinds = {"string": str, "int32": int, "int64": int, "float64": float, "list_": list}
            for row in rows:
                assert {n: type(v) for n, v in row.items()} == {n: kinds[kind[0]] for n, kind in schema[1]}
            return rows

    class ParquetWriter:
        def __init__(self, path, schema):
            pathlib.Path(path).write_text("a table")

        def __enter__(self):
            return self

        def __exit__(self, *_):
            pass

        def write_table(self, rows):
            Arrow.written.append([row["label"] for row in rows])


def test_records_and_statuses(words, scheduler, tmp_path, monkeypatch):
    (tmp_path / "rules.txt").write_text(RULES)
    (tmp_path / "graphs.txt").write_text(DOG + ENDLESS + "[S:4]\nagn(dog\natt(dog.@entry,dog)\n[/S]\n")
    done = cluster(words, tmp_path / "rules.txt", tmp_path / "graphs.txt", tmp_path / "out.jsonl", "-T0.3", "--format", "jsonl",
                   "--scheduler", scheduler)
    found = [json.loads(line) for line in (tmp_path / "out.jsonl").read_text().splitlines()]
    assert [(r["label"], r["status"], r["text"] != "") for r in found] == [
        ("[S:1]", "done", True), ("[S:3]", "over time", False), ("[S:4]", "done", True)]
    line = DOG.count("\n") + ENDLESS.count("\n") + 2
    assert done.returncode == 3 and found[2]["messages"][0].startswith(f"{line}:")
    # As a table each record has the columns of the schema, with values of their types.
    for name in ("pyarrow.parquet", "pyarrow"):
        monkeypatch.setitem(sys.modules, name, Arrow(name))
    sys.modules["pyarrow"].parquet = sys.modules["pyarrow.parquet"]
    results.to_parquet(str(tmp_path / "out.jsonl"), str(tmp_path / "out.parquet"))
    assert Arrow.written == [["[S:1]", "[S:3]", "[S:4]"]]


# What does not start: words of the command line instead of the usual ones, status, and a word of the message.
WRONG = [({2: "missing"}, 1, "no such input"), ({1: "missing"}, 1, "cannot be opened"), ({3: "no/folder/out"}, 4, "written")]


@pytest.mark.parametrize("words_instead, status, word", WRONG)
def test_what_is_wrong_is_told(words, tmp_path, words_instead, status, word):
    (tmp_path / "rules.txt").write_text(RULES)
    (tmp_path / "graphs.txt").write_text(DOG)
    usual = [words, tmp_path / "rules.txt", tmp_path / "graphs.txt", tmp_path / "out.txt"]
    done = cluster(*[words_instead.get(n, w) for n, w in enumerate(usual)])
    assert (done.returncode, word in done.stderr) == (status, True), done.stderr


def test_without_a_scheduler_it_starts_one(words, tmp_path):
    (tmp_path / "rules.txt").write_text(RULES)
    (tmp_path / "graphs.txt").write_text(DOG * 5)
    done = cluster(words, tmp_path / "rules.txt", tmp_path / "graphs.txt", tmp_path / "out.txt", "-j1")
    assert (done.returncode, (tmp_path / "out.txt").read_text().count(";;Done!")) == (0, 5), done.stderr
