#!/usr/bin/env python3
"""Runs clang-tidy over the sources of src, include and host that have changed, each compiled alone.

usage: check_tidy.py [--all] [--seconds N] [FILE...]
Changed is what differs from the merge base with the upstream branch; where there is none, or it is at
HEAD, what the last commit brought. Files with the most changed lines come first; after N seconds (300)
no further one is begun, and the last line tells how many were left. Exits with 1 if there is a finding.
"""
import argparse
import concurrent.futures
import json
import os
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
    """Paths and how many of their lines have changed."""
    head = git("rev-parse", "HEAD")
    base = git("merge-base", "HEAD", "@{upstream}")
    if base is None or base == head:
        base = git("rev-parse", "--verify", "HEAD~1")
    # A lone commit, or the last one of a shallow clone, has brought all files.
    words = ("diff", "--numstat", "--no-renames", base) if base else ("show", "--numstat", "--no-renames", "--format=", "--root", "HEAD")
    for line in (git(*words) or "").splitlines():
        added, removed, path = line.split("\t")
        if added != "-":
            yield path, int(added) + int(removed)


def all_files():
    return [(path, 0) for path in (git("ls-files", *FOLDERS) or "").splitlines()]


def units(files):
    """What is to be compiled: sources, and headers that have no source of their name."""
    found = []
    for path, lines in sorted(files, key=lambda each: -each[1]):
        if not path.startswith(FOLDERS) or not path.endswith((".h", ".cpp")) or not os.path.isfile(os.path.join(TOP, path)):
            continue
        source = path[:-2] + ".cpp" if path.endswith(".h") else path
        unit = source if os.path.isfile(os.path.join(TOP, source)) else path
        if unit not in found:
            found.append(unit)
    return found


def check(unit, names, deadline):
    if time.monotonic() > deadline:
        return unit, None, ""
    # Findings count in the files that changed, not in every header that these include.
    only = json.dumps([{"name": name} for name in names])
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
    files = [(path, 0) for path in options.files] or (all_files() if options.all else list(changed_lines()))
    names = [path for path, lines in files]
    todo = units(files)
    deadline = time.monotonic() + options.seconds
    failed = left = 0
    with concurrent.futures.ThreadPoolExecutor(2) as pool:
        for unit, code, words in pool.map(lambda unit: check(unit, names, deadline), todo):
            left += code is None
            if code:
                failed += 1
                print(f"== {unit}\n{words}")
    rest = f", {left} left when the time was over" if left else ""
    print(f"check_tidy: {len(todo) - left} units, {failed} with findings{rest}", file=sys.stderr)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
