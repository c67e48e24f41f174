#!/usr/bin/env python3
"""Writes a C++ file that stands between the class library and the engine.

Every operation of engine/*.h that gives a status is defined anew: it counts the call, answers with a failure where
the test asked for one, and goes on to the real operation otherwise. Operations that release something do so even
when they report a failure, as an engine does.

Usage: make_seam.py ENGINE_DIRECTORY OUTPUT
"""

import pathlib
import re
import sys

DECLARATION = re.compile(r"ENG_API\s+ENGSTATUS\s+(Eng\w+)\s*\(([^;]*)\)\s*;")
RELEASES = re.compile(r"(Close|Free|Destroy|Unlock|Term|Release|Stop|Rollback)$|^EngOsFreeLibrary$")

HEAD = """// Written by scripts/make_seam.py.
#include <dlfcn.h>

#include "engine/engine.h"
#include "tests/seam/seam.h"

namespace {

template <class Function>
Function* Real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace
"""

BODY = """
extern "C" ENGSTATUS {name}({arguments}) {{
  static auto* const real = Real<ENGSTATUS({arguments})>("{name}");
{calls}
}}
"""


def without_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    return re.sub(r"//[^\n]*", " ", text)


def argument_names(arguments):
    if arguments in ("", "void"):
        return []
    return [re.search(r"(\w+)\s*(\[\w*\])?$", part.strip()).group(1) for part in arguments.split(",")]


def wrapper(name, arguments):
    passed = ", ".join(argument_names(arguments))
    if RELEASES.search(name):
        calls = [f"  const ENGSTATUS status = real({passed});",
                 f'  return seam::Fails("{name}") ? seam::kFailure : status;']
    else:
        calls = [f'  return seam::Fails("{name}") ? seam::kFailure : real({passed});']
    return BODY.format(name=name, arguments=arguments, calls="\n".join(calls))


def main(engine, output):
    parts = [HEAD]
    for header in sorted(pathlib.Path(engine).glob("*.h")):
        for name, arguments in DECLARATION.findall(without_comments(header.read_text())):
            parts.append(wrapper(name, " ".join(arguments.split())))
    if len(parts) == 1:
        sys.exit(f"no operation found in {engine}")
    pathlib.Path(output).write_text("".join(parts))


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
