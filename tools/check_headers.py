#!/usr/bin/env python3
"""Compiles every header alone, so that each brings what it needs.

What is the first include of a header that compiles has been compiled alone with that, so it is left out.

usage: check_headers.py [REPOSITORY]     the compiler is $CXX or c++, two run at a time
Prints the compiler's words for each header that fails and exits with 1 if there is one.
"""
import concurrent.futures
import os
import re
import shlex
import subprocess
import sys

INCLUDE = re.compile(r'\s*#\s*include\s*["<]([^">]+)')
ROOTS = ("src", "include", "host", "tests", "")
FOLDERS = ("src", "include", "host", "tests/support")
PACKAGES = ("taglib", "sqlite3", "icu-uc", "tinyxml")


def headers(top):
    for start in FOLDERS:
        for folder, folders, files in os.walk(os.path.join(top, start)):
            folders.sort()
            yield from (os.path.relpath(os.path.join(folder, name), top) for name in sorted(files) if name.endswith(".h"))


def first_include(top, header):
    """The header of ours that the first include names, or None."""
    with open(os.path.join(top, header), encoding="utf-8") as text:
        named = next((found.group(1) for found in map(INCLUDE.match, text) if found), "")
    places = (os.path.join(root, named) for root in (os.path.dirname(header), *ROOTS))
    return next((place for place in places if named and os.path.isfile(os.path.join(top, place))), None)


def package_flags():
    flags = []
    for package in PACKAGES:
        found = subprocess.run(["pkg-config", "--cflags", package], capture_output=True, text=True)
        flags += shlex.split(found.stdout)
    return flags


def compile_alone(command, top, header):
    text = f'#include "{os.path.join(top, header)}"\n'
    done = subprocess.run(command, input=text, capture_output=True, text=True)
    return header, done.returncode, done.stderr


def main():
    top = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    includes = ["-I" + os.path.join(top, folder) for folder in ROOTS]
    # The build of the tests says where the repository is.
    includes.append('-DQO_SOURCE_DIR=""')
    command = [*shlex.split(os.environ.get("CXX", "c++")), "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
               *includes, *package_flags(), "-x", "c++", "-"]
    found = list(headers(top))
    met = {first_include(top, header) for header in found}
    leading = [header for header in found if header not in met]
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for header, code, words in pool.map(lambda h: compile_alone(command, top, h), leading):
            if code != 0:
                failed += 1
                print(f"{header} does not compile alone:\n{words}")
    print(f"check_headers: {len(found)} headers, {len(leading)} compiled, {failed} fail", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
