#!/usr/bin/env python3
"""Runs clang-tidy over the sources of src, include and host that have changed, each compiled alone.

usage: check_tidy.py [--all] [--seconds N] [FILE...]
Changed is what differs from the merge base with the upstream branch; where there is none, or it is at
HEAD, what the last commit brought. Findings count in the lines that changed, so that nobody has to
mend a file for a word in it; with --all or a FILE they count everywhere. Files with the most changed
lines come first; after N seconds (300) no further one is begun, and the last line tells how many were
left. Exits with 1 if there is a finding.
"""
import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import time

TOP = os.path.abspath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
BUILD = os.path.join(TOP, "build", "plain")
FOLDERS = ("src/", "include/", "host/")
TIDY = ["clang-tidy-14", "-p", BUILD, "--quiet", "--warnings-as-errors=*", "--extra-arg=-Wno-unknown-warning-option"]


def git(*words):
    done = subprocess.run(["git", "-C", TOP, *words], capture_output=True, text=True)
    return done.stdout.strip() if done.returncode == 0 else None


def changed_lines():
    """For each path the ranges of lines that have changed."""
    head = git("rev-parse", "HEAD")
    base = git("merge-base", "HEAD", "@{upstream}")
    if base is None or base == head:
        base = git("rev-parse", "--verify", "HEAD~1")
    # A lone commit, or the last one of a shallow clone, has brought all files.
    how = ("-U0", "--no-renames", "--no-color", "--diff-filter=d")
    words = ("diff", *how, base) if base else ("show", "--format=", *how, "HEAD")
    files, path = {}, None
    for line in (git(*words, "--", *FOLDERS) or "").splitlines():
        hunk = re.match(r"@@ -\S+ \+(\d+)(?:,(\d+))? @@", line)
        if line.startswith("+++ b/"):
            path = line[len("+++ b/"):]
            files[path] = []
        elif hunk and hunk.group(2) != "0":
            first = int(hunk.group(1))
            files[path].append([first, first + int(hunk.group(2) or 1) - 1])
    return {path: lines for path, lines in files.items() if lines}


def units(files):
    """What is to be compiled: sources, and headers that have no source of their name."""
    found = []
    for path in sorted(files, key=lambda path: -sum(last - first + 1 for first, last in files[path])):
        if not path.endswith((".h", ".cpp")):
            continue
        source = path[:-2] + ".cpp" if path.endswith(".h") else path
        unit = source if os.path.isfile(os.path.join(TOP, source)) else path
        if unit not in found:
            found.append(unit)
    return found


def check(unit, files, deadline):
    if time.monotonic() > deadline:
        return unit, None, ""
    only = json.dumps([{"name": path, "lines": lines} if lines else {"name": path} for path, lines in files.items()])
    done = subprocess.run([*TIDY, f"--line-filter={only}", os.path.join(TOP, unit)], capture_output=True, text=True)
    return unit, done.returncode, done.stdout + (done.stderr if done.returncode != 0 else "")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--all", action="store_true", help="every file, not only what has changed")
    parser.add_argument("--seconds", type=float, default=300)
    parser.add_argument("files", nargs="*", metavar="FILE")
    options = parser.parse_args()
    for command in (["cmake", "--preset", "plain"], ["cmake", "--build", BUILD, "--target", "qo_char_tables"]):
        subprocess.run(command, cwd=TOP, check=True, stdout=subprocess.DEVNULL)
    if options.all:
        options.files = (git("ls-files", *FOLDERS) or "").splitlines()
    files = {path: [] for path in options.files} or changed_lines()
    todo = units(files)
    deadline = time.monotonic() + options.seconds
    failed = left = 0
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for unit, code, words in pool.map(lambda unit: check(unit, files, deadline), todo):
            left += code is None
            if code:
                failed += 1
                print(f"== {unit}\n{words}")
    rest = f", {left} left when the time was over" if left else ""
    print(f"check_tidy: {len(todo) - left} units, {failed} with findings{rest}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
