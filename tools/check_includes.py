#!/usr/bin/env python3
"""Holds the order of the layers: what each folder may include, and what may be named where.

usage: check_includes.py [REPOSITORY]
Prints "file:line: message" for each offence and exits with 1 if there is one.
"""
import os
import re
import sys

# The order of the folders below src/ and below host/. What stands in one set has one rank: a folder may
# include its own rank's folders and lower ones, and any folder's Forward.h.
SRC_ORDER = (
    {"types"},
    {"platform"},
    {"KVTagLib", "common"},
    {"Database"},
    {"QoColl/Db/Records"},
    {"QoColl/Tags"},
    {"Physical", "Logical"},  # files know their logical objects, and these their files
    {"Analyze"},
    {"QoColl/Db"},
    {"QoColl/Devices", "QoColl/Plugins"},  # a device's files come by download items, a plug-in's folders are a device's
    {"QoColl/Collection"},
    {"QoColl/Sharing", "QoColl/Statistics"},
    {"Reorganize", "UserView", "QoColl/Player"},
)
HOST_ORDER = (
    {"core/base"},
    {"core/roots"},
    {"core/session", "core/store"},
    {"core/collection"},
    {"core/query"},
    {"core/stats", "core/search"},
    {"core/rules"},
    {"core/plan"},
    {"core/playlist"},
    {"core/runs"},
    {"core/load"},
    {"core/moved"},
    {"core/watch"},
    {"core/view"},
    {"core/share"},
    {"core/doctor"},
    {"bus"},
    {"plugins/base", "far"},
    {"plugins/http"},
    {"plugins/folder", "plugins/webdav", "plugins/subsonic"},
    {"plugins/configured"},
    {"devices/base"},
    {"devices/known"},
    {"devices/usb", "devices/mtp"},
    {"share"},
    {"places"},
    {"far/module"},
    {"cli/shown"},
    {"cli"},
    {"cli/files"},
    {"cli/music"},
    {"cli/tags"},
    {"cli/rules", "cli/admin", "cli/sharing", "cli/playlist", "cli/places"},
)
# Folders that do not know each other, whatever their ranks.
STRANGERS = ({"KVTagLib", "common"}, {"KVTagLib", "Database"}, {"cli/rules", "cli/admin"})
# What points upward all the same: (who, what), files or whole folders, and why. Drop what is no longer needed.
EXCEPTIONS = {
    ("Logical/LTManagerCompare.cpp", "Analyze/NSUtils.h"): "tracks are ordered by the number that the analysis reads",
    ("QoColl/Db/QoCollDbUpdates.cpp", "QoColl/Collection/QoUtils.h"): "what kind of file an extension means is a question to CQoUtils",
    ("QoColl/Db/QoCollDbUpdates.cpp", "QoColl/Sharing/ShareInvitation.h"): "old shares get the links that invitations are made of",
    ("Physical/HDFile.cpp", "QoColl/Collection/QoUtils.h"): "kinds of files and the order of paths are questions to CQoUtils",
    ("cli/shown/Listing.h", "cli/CommandLine.h"): "a listing takes the form that the command line asks for",
    ("QoColl/Collection/QoCollectionBuild.cpp", "QoColl/Statistics/QoStatistics.h"): "a collection that was built logs its numbers",
    ("QoColl/Collection/QoCollectionScan.cpp", "QoColl/Sharing/QoDbExtract.h"): "a known file of a friend gets what his extract says",
    ("QoColl/Collection/QoCollectionFar.cpp", "QoColl/Sharing/QoShareManager.h"): "a friend's files are listed by his extract",
    ("core/rules", "core/plan"): "a rule's text is the name of a target",
    ("core/session", "core/load"): "a session makes its database ready",
}
# Third-party headers that one layer of src/ alone may know.
OWNED_HEADERS = {
    r"sqlite3\.h": ("Database/",),
    r"taglib/.*|tag\.h|fileref\.h|.*tag\.h|tpropertymap\.h": ("KVTagLib/",),
    r"tinyxml\.h": ("Reorganize/",),
    r"unicode/.*": ("types/", "platform/"),
}
# Headers that take more than a second to read, each named by one header of the host.
HEAVY_HEADERS = {"nlohmann/json.hpp": "core/base/Json.h", "CLI/CLI.hpp": "cli/CommandLine.h"}
# What includes <QoKernel/Inside.h> outside of host/core: main(), which sets up the process.
INSIDERS = {"cli/main.cpp"}
GENERATED = {"CharTables.inc"}
used_exceptions = set()

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


def rank_of(order, path):
    """The folder of the order that the path lies in, the longest that fits, and its rank; None for a stranger."""
    fitting = [(folder, rank) for rank, folders in enumerate(order) for folder in folders if path.startswith(folder + "/")]
    return max(fitting, key=lambda found: len(found[0]), default=(None, None))


def check_order(order, path, target):
    """Why the file may not include the target, both written from the root of the order."""
    folder, rank = rank_of(order, path)
    other, to = rank_of(order, target)
    if folder is None or other is None:
        stranger = path if folder is None else target
        return f"no order is known for the folder of {stranger}: add it to tools/check_includes.py"
    if os.path.basename(target) == "Forward.h" or folder == other:
        return None
    if to <= rank and {folder, other} not in STRANGERS:
        return None
    for excepted in ((path, target), (folder, other)):
        if excepted in EXCEPTIONS:
            used_exceptions.add(excepted)
            return None
    return f'{folder} may not include "{target}": includes point downward only'


def check_src_include(path, quoted, target, exists):
    if not quoted:
        if target.startswith("QoKernel/"):
            return "the library does not include its own public face"
        for pattern, owners in OWNED_HEADERS.items():
            if re.fullmatch(pattern, target) and not path.startswith(owners):
                return f"<{target}> belongs to {' and '.join(owners)} alone"
        return None
    if target in GENERATED:
        return None
    if not exists(os.path.join("src", target)):
        return f'"{target}" is not found from src/, the one include root'
    return check_order(SRC_ORDER, path, target)


def check_host_include(path, quoted, target, exists):
    if quoted:
        roots = ("", "host", os.path.dirname(os.path.join("host", path)))
        found = [os.path.normpath(os.path.join(root, target)) for root in roots if exists(os.path.join(root, target))]
        own = [name[len("host/"):] for name in found if name.startswith("host/")]
        if not own:
            return f'a host includes <QoKernel/...> and its own headers, not "{target}"'
        return check_order(HOST_ORDER, path, own[0])
    # Searching folds texts and takes regular expressions, and settings know languages: the library does neither.
    if target.startswith("unicode/") and path.startswith(("core/query/", "core/session/SettingValues")):
        return None
    if re.fullmatch(r"sqlite3\.h|taglib/.*|unicode/.*", target):
        return f"a host reaches <{target}> through the library"
    if target == "tinyxml.h" and not path.startswith("core/playlist/Xspf"):
        return "<tinyxml.h> belongs to the reader of XSPF alone"
    if target == "QoKernel/Inside.h" and not path.startswith("core/") and path not in INSIDERS:
        return "<QoKernel/Inside.h> is for host/core alone"
    if HEAVY_HEADERS.get(target, path) != path:
        return f'<{target}> is included through "{HEAVY_HEADERS[target]}"'
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
    offences += [f"tools/check_includes.py: the exception {who} -> {what} is no longer needed"
                 for who, what in sorted(EXCEPTIONS.keys() - used_exceptions)]
    print("\n".join(offences), end="\n" if offences else "")
    print(f"check_includes: {count} files, {len(offences)} offences", file=sys.stderr)
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
