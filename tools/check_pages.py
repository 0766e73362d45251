#!/usr/bin/env python3
"""Compares the page of each folder of the host with its sources: the table of README.md has something of every source,
by the name of the file or of what is in it, and nothing that is not there.

usage: check_pages.py [REPOSITORY]
Prints "page: message" for each offence and exits with 1 if there is one.
"""
import os
import re
import sys


def check_folder(folder):
    page = os.path.join(folder, "README.md")
    if not os.path.isfile(page):
        yield f"{page}: missing"
        return
    with open(page, encoding="utf-8") as text:
        rows = re.findall(r"^\| (`.*?) \|", text.read(), re.MULTILINE)
    listed = {name for row in rows for name in re.findall(r"`(\w+)`", row)}
    known = set()
    for name in sorted(os.listdir(folder)):
        stem, end = os.path.splitext(name)
        if end not in (".h", ".cpp"):
            continue
        with open(os.path.join(folder, name), encoding="utf-8") as text:
            content = text.read()
        own = {stem} | set(re.findall(r"^\s*(?:class|struct|enum class) (\w+)(?=[^;]*$)", content, re.MULTILINE))
        known |= own | set(re.findall(r"\w+", content))
        is_second = end == ".cpp" and os.path.exists(os.path.join(folder, stem + ".h"))
        if not is_second and not listed & own:
            yield f"{page}: nothing of {name} is in the table"
    for name in sorted(listed - known):
        yield f"{page}: there is no {name} in this folder"


def main():
    os.chdir(sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
    offences = []
    for part in ("host/core", "host/cli"):
        for folder in sorted(os.scandir(part), key=lambda entry: entry.name):
            if folder.is_dir():
                offences += check_folder(folder.path)
    print("\n".join(offences), end="\n" if offences else "")
    return 1 if offences else 0


sys.exit(main())
