#!/usr/bin/env python3
"""Holds the limits of size. Past the first limit a file or function needs a reason below; the
second is a wall. A reason that is no longer needed is an offence too.

usage: check_sizes.py [REPOSITORY]
"""
import os
import re
import sys

HEADER, SOURCE, FILE_WALL = 300, 600, 800
FUNCTION, FUNCTION_WALL = 60, 100

# "path": reason, or "path:function": reason.
REASONS = {
    "src/platform/AheadPool.h": "a template, whose code stands in its header",
    "src/QoColl/Collection/QoCollection.h": "one class; its steps are documented here and split over sources by theme",
}

HEAD = re.compile(r"^ {0,4}(?!(namespace|class|struct|enum|union|extern|template|else|do|try)\b)[A-Za-z~].*\(")
NAME = re.compile(r"([\w:~]+|operator\W+)\s*\(")


def sources(top):
    for start in ("src", "include", "host", "tests", "bench", "fuzz", "tools"):
        for folder, folders, files in os.walk(os.path.join(top, start)):
            folders.sort()
            yield from (os.path.relpath(os.path.join(folder, name), top) for name in sorted(files) if name.endswith((".h", ".cpp")))


def functions(lines):
    """Name, first line and number of lines of each function body; braces stand on their own lines."""
    name = start = indent = None
    for number, line in enumerate(lines):
        if start is not None:
            if line.startswith(indent + "}"):
                yield name, start + 1, number - start - 1
                name = start = None
            continue
        if HEAD.match(line) and not line.rstrip().endswith(";"):
            found = NAME.search(line)
            name = found.group(1) if found else "?"
        brace = re.match(r"^( {0,4})\{$", line)
        if brace and name:
            start, indent = number, brace.group(1)
        if brace or line.rstrip().endswith((";", "}")):
            name = name if start is not None else None


def main():
    top = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
    offences, used = [], set()

    def judge(where, key, size, limit, wall):
        if size > wall:
            offences.append(f"{where}: {size} lines, the wall is {wall}")
        elif size > limit and key not in REASONS:
            offences.append(f"{where}: {size} lines, more than {limit} need a reason in tools/check_sizes.py")
        if size > limit:
            used.add(key)

    count = 0
    for path in sources(top):
        count += 1
        with open(os.path.join(top, path), encoding="utf-8", errors="replace") as text:
            lines = text.read().splitlines()
        judge(path, path, len(lines), HEADER if path.endswith(".h") else SOURCE, FILE_WALL)
        for name, line, size in functions(lines):
            judge(f"{path}:{line}: {name}", f"{path}:{name}", size, FUNCTION, FUNCTION_WALL)
    offences += [f"tools/check_sizes.py: the reason for {key} is no longer needed" for key in sorted(set(REASONS) - used)]
    print("\n".join(offences), end="\n" if offences else "")
    print(f"check_sizes: {count} files, {len(offences)} offences", file=sys.stderr)
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
