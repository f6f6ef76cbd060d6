"""The command line of `lexon-cluster`, and the client behind it."""

from __future__ import annotations

import argparse
import contextlib
import dataclasses
import logging
import multiprocessing
import multiprocessing.forkserver
import os
import queue
import shutil
import signal
import sys
import tempfile
import time
import warnings
from typing import Any, Dict, Iterator, List, Optional

import lexon

from . import worker as work
from .inputs import Chunk, InputError, chunks, find, mark
from .results import AnotherRun, Output

STATUS_OK, STATUS_NO_START, STATUS_WRONG, STATUS_LOST, STATUS_OUTPUT, STATUS_CANCELLED = 0, 1, 2, 3, 4, 130

# Times that a chunk may lose its workers before it is rendered apart, and then before it is set aside.
_TRIES_APART = 3


_GONE = "the scheduler is gone; the same command goes on from here"


class CannotGoOn(Exception):
    """Ends the run with a message; the same command goes on from there."""


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        prog="lexon-cluster", description="Renders many graphs on many processors or machines, with dask.distributed.",
        epilog="Exit status: 0 every sentence done, 1 the run could not start or go on, 2 wrong command line, 3 a sentence "
               "failed or ran out of time, 4 the output could not be written whole, 130 cancelled. A run that was cut "
               "short is taken up by the same command.")
    parser.add_argument("--version", action="version", version=f"lexon-cluster {lexon.__version__}")
    render = parser.add_subparsers(dest="command", required=True).add_parser("render", help="render graphs")
    add = render.add_argument
    add("dictionary", metavar="DICT")
    add("rules", metavar="RULES")
    add("inputs", metavar="INPUT", nargs="+", help="files, folders or patterns; gzip and zstd are unpacked")
    add("output", metavar="OUTPUT")
    add("-c", "--cooccurrence", metavar="DICT", help="co-occurrence dictionary")
    add("--scheduler", metavar="ADDRESS", help="of a running scheduler, such as tcp://10.0.0.1:8786; else processes here")
    add("-j", "--jobs", type=int, default=0, metavar="N", help="processes here; 0 (the default): one for each processor")
    add("-L", "--level", type=int, default=1, choices=range(5), help="trace level (1)")
    add("-T", "--time-limit", type=float, metavar="SECONDS", help="for each sentence")
    add("--no-post-edit", action="store_true", help="run no post-edit rules")
    add("--blocks", type=int, default=200, metavar="N", help="memory of rules and a sentence, in blocks of 64 KiB (200)")
    add("--encoding", default="utf-8", help="of dictionary, rules and graphs, for the records (utf-8)")
    add("--format", choices=("text", "jsonl", "parquet"), default="text",
        help="text as lexon writes it, or a record of each sentence")
    add("--chunk", type=int, default=5000, metavar="N", help="sentences that go to a worker at once (5000)")
    add("--dashboard", default=":0", metavar="ADDRESS", help="of the local cluster's dashboard (a free port)")
    add("--fresh", action="store_true", help="begin anew, whatever an unfinished run has left")
    add("-q", "--quiet", action="store_true", help="no progress and no summary")
    # For tests.
    add("--poison", default="", help=argparse.SUPPRESS)
    return parser


def _tell(text: str) -> None:
    print(f"lexon-cluster: {text}", file=sys.stderr, flush=True)


def _load(line: argparse.Namespace) -> lexon.Grammar:
    """The grammar, here: what is wrong with it is told once, whatever the number of workers."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore", lexon.GrammarWarning)
        grammar = lexon.Grammar(line.dictionary, line.rules, line.cooccurrence, encoding=line.encoding, blocks=line.blocks)
    for message in grammar.messages:
        _tell(str(message))
    return grammar


def _workers_prepare() -> None:
    """Begins to import what workers need, in a process that they are forked from, while this one does so for itself."""
    context = multiprocessing.get_context("forkserver")
    context.set_forkserver_preload(["distributed", "distributed.nanny", "distributed.http.worker", "lexon.cluster.worker"])
    multiprocessing.forkserver.ensure_running()


@contextlib.contextmanager
def _cluster(line: argparse.Namespace) -> Iterator[Any]:
    """A client of the scheduler, or of a cluster of processes here."""
    import dask
    import distributed

    # The client tells of a task that fails; what dies with a worker is tried by two more. Nobody wants to see the source of
    # the code that sends a chunk, which would be read and parsed for each of them.
    dask.config.set({"distributed.scheduler.allowed-failures": 2, "distributed.admin.large-graph-warning-threshold": "1GB",
                     "distributed.diagnostics.computations.ignore-modules": [".*"],
                     # Looks at the state of each process, which by themselves take a tenth of a processor.
                     "distributed.admin.tick.interval": "200ms", "distributed.worker.profile.interval": "200ms"})
    logging.getLogger("distributed").setLevel(logging.CRITICAL)
    if line.scheduler:
        try:
            client = distributed.Client(line.scheduler, timeout=30, set_as_default=False)
        except (OSError, ValueError) as error:
            raise CannotGoOn(f"{line.scheduler}: no scheduler answers: {error}") from None
        with client:
            yield client
        return
    dask.config.set({"distributed.worker.multiprocessing-method": "forkserver"})
    folder = tempfile.mkdtemp(prefix="lexon-cluster-")
    jobs = line.jobs or len(os.sched_getaffinity(0))
    try:
        with distributed.LocalCluster(n_workers=jobs, threads_per_worker=1, processes=True, host="127.0.0.1",
                                      dashboard_address=line.dashboard, local_directory=folder, memory_limit=0,
                                      silence_logs=logging.CRITICAL) as cluster:
            with distributed.Client(cluster, set_as_default=False) as client:
                yield client
    finally:
        shutil.rmtree(folder, ignore_errors=True)


@dataclasses.dataclass
class _Job:
    """A chunk on its way."""

    chunk: Chunk
    bit: bool
    future: Any = None
    attempt: int = 0
    is_apart: bool = False
    result: Optional[work.Result] = None


class _Run:
    """Keeps a window of chunks on their way, and commits them in order."""

    def __init__(self, line: argparse.Namespace, client: Any, files: work.GrammarFiles, inputs: List[str], output: Output):
        self.line, self.client, self.files, self.inputs, self.output = line, client, files, inputs, output
        self.settings = work.Settings(line.level, not line.no_post_edit, line.time_limit,
                                      "text" if line.format == "text" else "jsonl", bool(line.scheduler), line.poison)
        self.jobs: Dict[int, _Job] = {}
        self.finished: "queue.Queue[Any]" = queue.Queue()
        self.workers = self.threads = 0
        self.next_count = 0.0
        self.start = self.shown = time.monotonic()
        self.tried_before, self.bytes_before = output.progress.tried, self._bytes_passed()

    def run(self) -> None:
        self.client.register_worker_plugin(self.files, name=self.files.name)
        progress = self.output.progress
        source = chunks(self.inputs, self.line.chunk, progress.place, progress.chunk)
        is_more = True
        while is_more or self.jobs:
            while is_more and len(self.jobs) < self._window():
                chunk = next(source, None)
                is_more = chunk is not None
                if chunk is not None:
                    self._begin(_Job(chunk, progress.bit and not chunk.is_first))
            self._wait()
            self._commit()
            self._show()

    def _window(self) -> int:
        """Chunks on their way: some more than there are threads, which are counted anew now and then."""
        if time.monotonic() >= self.next_count:
            try:
                threads = self.client.nthreads()
            except (OSError, TimeoutError):
                raise CannotGoOn(_GONE) from None
            self.workers, self.threads = len(threads), sum(threads.values())
            self.next_count = time.monotonic() + 2
        return 2 * max(1, self.threads) + 2

    def _begin(self, job: _Job) -> None:
        """Sends the chunk to some worker, under a name of its own."""
        job.attempt += 1
        chunk = job.chunk
        key = f"{self.files.name[:14]}-{os.getpid()}-{id(self):x}-{chunk.number}-{job.attempt}"
        task = work.render_apart if job.is_apart else work.render
        with warnings.catch_warnings():
            warnings.simplefilter("ignore")  # a chunk is larger than what dask likes in a task
            job.future = self.client.submit(task, self.files.stamp, chunk.graphs, chunk.begin.line, job.bit, self.settings,
                                            key=key, pure=False, priority=-chunk.number)
        self.jobs[chunk.number] = job
        number, attempt = chunk.number, job.attempt
        job.future.add_done_callback(lambda _: self.finished.put((number, attempt)))

    def _wait(self) -> None:
        try:
            found = [self.finished.get(timeout=0.5)]
        except queue.Empty:
            found = []
            if self.client.status not in ("running", "connecting"):
                raise CannotGoOn(_GONE)
        with contextlib.suppress(queue.Empty):
            while True:
                found.append(self.finished.get_nowait())
        for number, attempt in found:
            job = self.jobs.get(number)
            if job is not None and job.attempt == attempt and job.result is None:
                self._take(job)

    def _take(self, job: _Job) -> None:
        import distributed

        future = job.future
        if future.status == "finished":
            try:
                job.result = future.result(timeout=60)
                job.future = None
                return
            except (OSError, TimeoutError, distributed.TimeoutError):
                return self._begin(job)  # its worker went with the result
        if future.status != "error":
            if self.client.status not in ("running", "connecting"):
                raise CannotGoOn(_GONE)
            return self._begin(job)
        error = future.exception(timeout=60)
        if not isinstance(error, distributed.scheduler.KilledWorker):
            raise CannotGoOn(f"{_place(self.inputs, job.chunk)}: a worker says: {error}")
        if job.is_apart and job.attempt > _TRIES_APART + 1:
            return self._set_aside(job)
        job.is_apart = True
        self._begin(job)

    def _set_aside(self, job: _Job) -> None:
        """Nothing is known of its sentences: they lie in a file beside the output and count as failed."""
        path = f"{self.output.path}.set-aside-{job.chunk.number}"
        with open(path, "wb") as file:
            file.write(job.chunk.graphs)
        _tell(f"{_place(self.inputs, job.chunk)}: these sentences ended {_TRIES_APART + 3} workers and are set aside in {path}")
        parts = lexon.split(job.chunk.graphs)
        text = b"".join(work._lost_output(b"", "set aside", self.settings.form) for _ in parts)
        job.result = work.Result(text, failed=len(parts), begins_with_target=job.bit)

    def _commit(self) -> None:
        progress = self.output.progress
        while (job := self.jobs.get(progress.chunk)) is not None and job.result is not None:
            bit = progress.bit and not job.chunk.is_first
            if job.result.begins_with_target != bit:
                job.bit, job.result, job.is_apart = bit, None, False
                self._begin(job)
                return
            for number, label, reason in job.result.lost:
                _tell(f"{_place(self.inputs, job.chunk)}: sentence {number + 1} of it, {label or 'without a label'}, {reason}")
            progress.lost += [[*_where(job.chunk), *lost] for lost in job.result.lost]
            self.output.add(job.result, job.chunk.end)
            del self.jobs[job.chunk.number]

    def _show(self) -> None:
        now = time.monotonic()
        is_terminal = sys.stderr.isatty()
        if self.line.quiet or now - self.shown < (0.5 if is_terminal else 5.0):
            return
        self.shown = now
        progress = self.output.progress
        rate = (progress.tried - self.tried_before) / (now - self.start)
        text = f"{progress.tried} sentences, {rate:.0f}/s"
        if (left := self._seconds_left(now)) is not None:
            text += f", {left:.0f} s left"
        lost = progress.failed + progress.over_time
        text += f", failed {lost}, {self.workers} workers"
        print(f"\r{text}\033[K" if is_terminal else text, end="" if is_terminal else "\n", file=sys.stderr, flush=True)

    def _seconds_left(self, now: float) -> Optional[float]:
        """By the bytes of the inputs; none where they are packed, or at the beginning."""
        passed = self._bytes_passed()
        if passed <= self.bytes_before or any(name.endswith((".gz", ".zst", ".zstd")) for name in self.inputs):
            return None
        whole = sum(os.path.getsize(name) for name in self.inputs)
        return (whole - passed) * (now - self.start) / (passed - self.bytes_before)

    def _bytes_passed(self) -> int:
        place = self.output.progress.place
        return sum(os.path.getsize(name) for name in self.inputs[:place.file]) + place.offset


def _where(chunk: Chunk) -> List[int]:
    return [chunk.begin.file, chunk.begin.line + 1]


def _place(inputs: List[str], chunk: Chunk) -> str:
    return f"{inputs[chunk.begin.file]}:{chunk.begin.line + 1}: chunk {chunk.number + 1}"


def _identity(line: argparse.Namespace, files: work.GrammarFiles, inputs: List[str]) -> Dict[str, Any]:
    settings = {name: getattr(line, name) for name in ("level", "no_post_edit", "time_limit", "format")}
    return {"lexon-cluster": 1, "grammar": files.stamp, "inputs": [mark(path) for path in inputs], "settings": settings}


def _summary(output: Output, start: float) -> str:
    progress = output.progress
    text = f"{progress.done} done"
    for count, what in ((progress.failed, "failed"), (progress.over_time, "over time"), (len(progress.lost), "lost")):
        text += f", {count} {what}" if count else ""
    if progress.messages:
        text += f"; {progress.messages} messages about lines"
    return f"{text}; {time.monotonic() - start:.1f} s"


def _render(line: argparse.Namespace) -> int:
    start = time.monotonic()
    if line.format == "parquet":
        import pyarrow.parquet  # noqa: F401
    if not line.scheduler:
        _workers_prepare()
    grammar = _load(line)
    inputs = find(line.inputs)
    own = {os.path.abspath(line.output) + end for end in ("", ".part", ".journal")}
    inputs = [path for path in inputs if os.path.abspath(path) not in own]
    files = work.GrammarFiles(grammar, line.rules, line.encoding, line.blocks)
    output = Output(line.output, _identity(line, files, inputs), line.fresh)
    try:
        if output.resumes:
            _tell(f"goes on behind sentence {output.progress.tried} of a run that was cut short")
        elif line.format == "text":
            output.write(grammar._renderer.printed())
        del grammar
        with _cluster(line) as client:
            if not line.quiet:
                _tell(f"scheduler {client.scheduler.address}, dashboard {client.dashboard_link}")
            _Run(line, client, files, inputs, output).run()
            output.finish(line.format)
    except BaseException:
        with contextlib.suppress(OSError, ValueError):
            output.sync()
        output.close()
        raise
    if not line.quiet:
        _tell(_summary(output, start))
    return STATUS_LOST if output.progress.failed or output.progress.over_time else STATUS_OK


def _cancel(*_: Any) -> None:
    raise KeyboardInterrupt


def main(words: Optional[List[str]] = None) -> int:
    """Runs the command; returns the exit status. A wrong command line raises SystemExit with 2, as argparse does."""
    line = _parser().parse_args(words)
    if line.chunk < 1 or line.jobs < 0 or not 1 <= line.blocks <= 65535 or (line.time_limit or 1) <= 0:
        _tell("--chunk is 1 or more, --jobs 0 or more, --blocks 1 to 65535, --time-limit more than 0")
        return STATUS_WRONG
    signal.signal(signal.SIGTERM, _cancel)
    try:
        return _render(line)
    except KeyboardInterrupt:
        _tell("cancelled; the same command goes on from here")
        return STATUS_CANCELLED
    except (lexon.GrammarError, InputError, CannotGoOn) as error:
        _tell(str(error))
        return STATUS_NO_START
    except AnotherRun:
        _tell(f"{line.output}.part is the unfinished output of another run: --fresh begins anew")
        return STATUS_NO_START
    except ImportError as error:
        _tell(f"{error} (Debian: python3-distributed; --format parquet needs pyarrow)")
        return STATUS_NO_START
    except OSError as error:
        _tell(f"the output could not be written whole: {error}")
        return STATUS_OUTPUT
