#!/usr/bin/env python3
"""Holds the order of the layers: what each folder may include, and what may be named where.

usage: check_includes.py [REPOSITORY]
Prints "file:line: message" for each offence and exits with 1 if there is one.
"""
import os
import re
import sys

BELOW_MODEL = {"types", "platform", "common", "Database", "KVTagLib"}
MODEL = {"Physical", "Logical", "Analyze", "QoColl"}
# What a layer may include beside itself.
LAYERS = {
    "types": set(),
    "platform": {"types"},
    "KVTagLib": {"types", "platform"},
    "common": {"types", "platform"},
    "Database": {"types", "platform", "common"},
    **{layer: BELOW_MODEL | MODEL for layer in MODEL},
    "Reorganize": BELOW_MODEL | MODEL | {"UserView"},
    "UserView": BELOW_MODEL | MODEL | {"Reorganize"},
}
# Third-party headers that one layer alone may know.
OWNED_HEADERS = {
    r"sqlite3\.h": ("Database",),
    r"taglib/.*|tag\.h|fileref\.h|.*tag\.h|tpropertymap\.h": ("KVTagLib",),
    r"tinyxml\.h": ("Reorganize",),
    r"unicode/.*": ("types", "platform"),
}
GENERATED = {"CharTables.inc"}

INCLUDE = re.compile(r'\s*#\s*include\s*(["<])([^">]+)[">]')
SYSTEM_IF = re.compile(r"\s*#\s*(el)?if.*\b(_WIN32|WIN32|_WIN64|_MSC_VER|__linux__|__linux|__APPLE__|__unix__)\b")
WIDE = re.compile(r"\bwchar_t\b")
SQLITE = re.compile(r"\bsqlite3_\w+\s*\(")


def sources(top):
    for folder, folders, files in os.walk(top):
        folders.sort()
        for name in sorted(files):
            if name.endswith((".h", ".cpp")):
                yield os.path.join(folder, name)


def layer_of(path):
    """The layer of a path below src/, the longest name that fits; None for a stranger."""
    fitting = [layer for layer in LAYERS if path.startswith(layer + "/")]
    return max(fitting, key=len, default=None)


def check_src_include(path, quoted, target, exists):
    layer = layer_of(path)
    if layer is None:
        return "no layer is known for this folder: add it to tools/check_includes.py"
    if not quoted:
        if target.startswith("QoKernel/"):
            return "the library does not include its own public face"
        for pattern, owners in OWNED_HEADERS.items():
            if re.fullmatch(pattern, target) and layer not in owners:
                return f"<{target}> belongs to {' and '.join(owners)} alone"
        return None
    if target in GENERATED:
        return None
    if not exists(os.path.join("src", target)):
        return f'"{target}" is not found from src/, the one include root'
    to = layer_of(target)
    if to != layer and to not in LAYERS[layer]:
        return f'{layer} may not include "{target}": includes point downward only'
    return None


def check_host_include(path, quoted, target, exists):
    if quoted:
        roots = ("", "host", os.path.dirname(os.path.join("host", path)))
        hits = [os.path.normpath(os.path.join(root, target)) for root in roots if exists(os.path.join(root, target))]
        if not any(hit.startswith("host" + os.sep) for hit in hits):
            return f'a host includes <QoKernel/...> and its own headers, not "{target}"'
        if path.startswith("core/") and any(hit.startswith(os.path.join("host", "cli")) for hit in hits):
            return "host/core may not include host/cli"
    elif re.fullmatch(r"sqlite3\.h|taglib/.*|unicode/.*", target):
        return f"a host reaches <{target}> through the library"
    return None


def without_comment(line):
    return re.sub(r"//.*", "", line)


def check_words(path, line):
    code = without_comment(line)
    if WIDE.search(code):
        return "wchar_t has 32 bits here: use char16_t"
    if SYSTEM_IF.match(code) and not path.startswith("src/platform/"):
        return "systems are told apart below src/platform/ alone"
    if SQLITE.search(code) and path.startswith(("src/", "host/", "include/")) and not path.startswith("src/Database/"):
        return "sqlite3_* is called by the facade in src/Database alone"
    return None


def check_file(top, path):
    exists = lambda relative: os.path.isfile(os.path.join(top, relative))
    with open(os.path.join(top, path), encoding="utf-8", errors="replace") as text:
        for number, line in enumerate(text, 1):
            found = [check_words(path, line)]
            include = INCLUDE.match(line)
            if include:
                quoted, target = include.group(1) == '"', include.group(2)
                if path.startswith("src/"):
                    found.append(check_src_include(path[len("src/"):], quoted, target, exists))
                elif path.startswith("host/"):
                    found.append(check_host_include(path[len("host/"):], quoted, target, exists))
            for message in filter(None, found):
                yield f"{path}:{number}: {message}"


def main():
    top = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
    offences = []
    count = 0
    for folder in ("src", "include", "host", "tests", "bench", "fuzz", "tools"):
        for path in sources(os.path.join(top, folder)):
            count += 1
            offences += check_file(top, os.path.relpath(path, top))
    print("\n".join(offences), end="\n" if offences else "")
    print(f"check_includes: {count} files, {len(offences)} offences", file=sys.stderr)
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
