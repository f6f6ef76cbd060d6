"""Inputs of any number and size, cut into chunks where their sentences end."""

from __future__ import annotations

import dataclasses
import glob
import gzip
import io
import os
from typing import Any, Iterator, List

from .. import _core

# Bytes of a chunk, about: a chunk of long sentences has fewer of them.
_CHUNK_BYTES = 16 << 20
_BLOCK = 1 << 20


class InputError(Exception):
    """An input cannot be read."""


@dataclasses.dataclass(frozen=True)
class Place:
    """A place of the inputs between two sentences: the number of a file, bytes and lines of it, unpacked."""

    file: int = 0
    offset: int = 0
    line: int = 0


@dataclasses.dataclass(frozen=True)
class Chunk:
    """Whole sentences, one behind the other; `is_first` of their file."""

    number: int
    begin: Place
    end: Place
    graphs: bytes
    is_first: bool


def find(words: List[str]) -> List[str]:
    """Files, the files of folders and those of patterns, each kind in the order of names."""
    files: List[str] = []
    for word in words:
        if os.path.isdir(word):
            found = [os.path.join(word, name) for name in sorted(os.listdir(word)) if not name.startswith(".")]
            found = [path for path in found if os.path.isfile(path) and not path.endswith(".offsets")]
        elif os.path.exists(word):
            found = [word]
        else:
            found = sorted(path for path in glob.glob(word, recursive=True) if os.path.isfile(path))
        if not found:
            raise InputError(f"{word}: there is no such input")
        files += found
    return files


def mark(path: str) -> List[Any]:
    """What tells that a file is another."""
    state = os.stat(path)
    return [os.path.abspath(path), state.st_size, state.st_mtime_ns]


def _open_zstd(path: str) -> Any:
    try:
        import zstandard
    except ImportError:
        raise InputError(f"{path}: zstd is read by the module zstandard (Debian: python3-zstandard)") from None
    return zstandard.ZstdDecompressor().stream_reader(open(path, "rb"), read_across_frames=True, closefd=True)


def _open(path: str) -> Any:
    with open(path, "rb") as file:
        begin = file.read(4)
    if begin.startswith(b"\x1f\x8b"):
        return gzip.open(path, "rb")
    if begin == b"\x28\xb5\x2f\xfd":
        return _open_zstd(path)
    return open(path, "rb", buffering=0)


def _skip(stream: Any, offset: int) -> None:
    if isinstance(stream, io.FileIO):
        stream.seek(offset)
        return
    while offset > 0:
        block = stream.read(min(offset, _BLOCK))
        if not block:
            raise InputError("ends before the place to go on from")
        offset -= len(block)


def _groups(stream: Any, sentences: int) -> Iterator[bytes]:
    """Groups of whole sentences; what is behind the last one of the text comes with the last group."""
    rest, wanted, every = b"", _BLOCK, sentences
    while True:
        block = stream.read(wanted)
        rest += block
        ends = _core.borders(rest, every)
        if block:
            ends = ends[:-1]  # more may follow there
        begin = 0
        for end in ends:
            yield rest[begin:end]
            begin = end
        rest = rest[begin:]
        if not block:
            return
        if ends:
            # So many of the sentences seen last fill a chunk.
            every = max(1, min(sentences, _CHUNK_BYTES * every // max(1, ends[-1] // len(ends))))
            wanted = _BLOCK
        elif len(rest) > 2 * _CHUNK_BYTES and every > 1:
            every = max(1, every // 4)
        else:
            wanted = min(2 * wanted, 64 * _BLOCK)


def chunks(files: List[str], sentences: int, begin: Place, number: int) -> Iterator[Chunk]:
    """All chunks from `begin` on, counted from `number`. Raises InputError with the name of the file."""
    for index in range(begin.file, len(files)):
        place = begin if index == begin.file else Place(index)
        try:
            with _open(files[index]) as stream:
                _skip(stream, place.offset)
                for graphs in _groups(stream, sentences):
                    end = Place(index, place.offset + len(graphs), place.line + graphs.count(b"\n"))
                    yield Chunk(number, place, end, graphs, place.offset == 0)
                    place, number = end, number + 1
        except (OSError, EOFError, InputError) as error:
            text = str(error) if isinstance(error, InputError) else f"cannot be read: {error}"
            raise InputError(text if text.startswith(files[index]) else f"{files[index]}: {text}") from None
