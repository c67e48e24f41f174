#!/usr/bin/env python3
"""Checks who includes whom: the rooms of docs/architecture.md, one line of the tables below for each.

A file may include its own room, the rooms that its line names, the standard library, and the third-party headers
that its top folder is allowed. Exit status 1 and one line for each include that breaks this.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TOP = ("engine", "vq", "qcore", "converters", "tools", "examples", "tests", "fuzz", "bench")

# Longest matching prefix counts. "*" stands for everything below the folder.
ROOMS = {
    "engine": ["engine"],
    "vq": ["engine", "vq"],  # vq/vq.h and vq/library.cpp name every room
    "vq/frame": ["engine", "vq/frame", "vq/values/vqstring.h"],  # the session's paths and names
    "vq/values": ["engine", "vq/frame", "vq/store"],
    "vq/store": ["engine", "vq/frame", "vq/values"],
    "vq/richtext": ["engine", "vq/frame", "vq/values", "vq/store", "vq/automation/vqformula.h"],  # hide formulas
    "vq/richobjects": ["engine", "vq/frame", "vq/values", "vq/store", "vq/richtext"],
    "vq/automation": ["engine", "vq/frame", "vq/values", "vq/store", "vq/richtext"],
    "vq/forms": ["engine", "vq/frame", "vq/values", "vq/store", "vq/richtext", "vq/richobjects", "vq/automation"],
    "qcore": ["engine", "qcore"],
    "converters": ["engine", "converters"],
    "converters/parts": ["engine"],
    "converters/html": ["engine", "converters/parts"],
    "converters/markdown": ["engine", "converters/parts", "converters/html"],
    "tools": ["vq/vq.h"],
    "examples": ["vq/vq.h"],
    "tests/client": ["vq/vq.h", "tests"],
    "tests": ["engine", "vq", "qcore", "tests", "tools"],
    "tests/converters": ["engine", "vq", "converters", "tests"],
    "fuzz": ["engine", "vq", "qcore", "converters", "tests"],
    "bench": ["engine", "vq", "qcore/index", "qcore/formula", "converters"],
}

# Lowest first. A room of the engine includes itself and those to its left; qcore/abi stands above all of them.
QCORE_ORDER = ["handles", "memory", "settings", "records", "text", "time", "store", "idtables", "slates", "formula", "forms", "folders", "fulltext", "index", "abi"]

# Headers in angle brackets that are not the standard library's.
THIRD_PARTY = {
    "engine": r"$^",
    "vq": r"(unistd|sys/single_threaded)\.h$",  # temporary files of import and export; locks left out
    "qcore": r"(sqlite3\.h|zstd\.h|unicode/.*|sys/.*|unistd\.h|fcntl\.h|dlfcn\.h|pwd\.h|signal\.h|dirent\.h)$",
    "converters": r"(sys/.*|unistd\.h|fcntl\.h|cmark\.h|libxml/.*)$",
    "examples": r"$^",
    "tools": r"(CLI/.*|sys/.*|unistd\.h)$",
}
STANDARD = re.compile(r"([a-z_0-9]+|(std(int|def|arg|io|lib|bool)|string|time|limits|errno|math)\.h)$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def room_of(path):
    """The longest key of ROOMS that the path lies in."""
    parts = path.split("/")
    for length in range(len(parts), 0, -1):
        key = "/".join(parts[:length])
        if key in ROOMS:
            return key
    return None


def inside(path, allowed):
    return path == allowed or path.startswith(allowed + "/")


def qcore_rank(path):
    room = path.split("/")[1] if path.count("/") > 1 else None
    return QCORE_ORDER.index(room) if room in QCORE_ORDER else None


def fault(path, bracket, target):
    """What is wrong with this include, or None."""
    top = path.split("/")[0]
    if bracket == "<":
        if STANDARD.match(target) or top not in THIRD_PARTY or re.match(THIRD_PARTY[top], target):
            return None
        return "is neither the standard library nor allowed here"
    if not (ROOT / target).is_file():
        return "is not a path from the root of the tree"
    folder = "/".join(path.split("/")[:-1])
    if inside(target, folder):
        return None
    room = room_of(path)
    if not any(inside(target, allowed) for allowed in ROOMS[room]):
        return f"is none of what {room}/ may include"
    if top == "qcore" and target.startswith("qcore/"):
        mine, theirs = qcore_rank(path), qcore_rank(target)
        if mine is not None and theirs is not None and theirs > mine:
            return "is a higher room of the engine"
    return None


def main():
    faults = 0
    for top in TOP:
        for file in sorted((ROOT / top).rglob("*")):
            if file.suffix not in (".h", ".cpp"):
                continue
            path = file.relative_to(ROOT).as_posix()
            for number, line in enumerate(file.read_text(encoding="utf-8").splitlines(), 1):
                match = INCLUDE.match(line)
                wrong = match and fault(path, match[1], match[2])
                if wrong:
                    print(f"{path}:{number}: {match[2]} {wrong}")
                    faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
