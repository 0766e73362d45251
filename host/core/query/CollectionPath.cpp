#include "core/query/CollectionPath.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/query/QueryField.h"

#include <QoKernel/Physical.h>

#include <fnmatch.h>

#include <algorithm>
#include <sstream>
#include <string_view>

namespace qo::host
{
namespace
{
/// Whether one of the words can only be a text or a regular expression of a query, in which signs
/// of a pattern are nothing special: "title::^a.*", "::a*b" or a quoted "M*A*S*H".
bool hasTextOfQuery(const std::string& typed)
{
    std::istringstream words(typed);
    for (std::string word; words >> word;)
    {
        if (word.starts_with('^'))
            word.erase(0, 1);
        if (word.starts_with('"') || word.starts_with("::") || beginsWithField(word))
            return true;
    }
    return false;
}

bool looksLikePattern(const std::string& typed)
{
    const bool hasSign = typed.find_first_of("*?[") != std::string::npos;
    return hasSign &&
           (typed.find('*') != std::string::npos || typed.find('/') != std::string::npos) &&
           !hasTextOfQuery(typed);
}

/// Text that a pattern takes as it is, whatever signs it has.
std::string literal(const std::string& text)
{
    std::string pattern;
    for (const char c : text)
    {
        if (std::string_view("*?[\\").find(c) != std::string_view::npos)
            pattern += '\\';
        pattern += c;
    }
    return pattern;
}

/// The current folder stands for itself: in "/m/[live]" the pattern "*.mp3" is
/// "/m/\[live]/*.mp3", which "/m/l/1.mp3" does not fit.
std::string absolutePattern(const std::string& typed)
{
    return absolutePath(typed.starts_with('/') ? typed : literal(absolutePath(".")) + "/" + typed);
}

/// The device, service or friend whose files are loaded; an invalid path for the user's own.
CQoCollPath loadedPlace()
{
    const auto& roots = ownCollection().getRootDirs();
    const CQoCollPath root = roots.IsEmpty() ? CQoCollPath() : roots[0]->getPath();
    return root.needsEscape() ? CQoCollPath(root.getType(), root.getDevice()) : CQoCollPath();
}

/// "NAS", or "/mnt/stick" for a disk that is connected.
std::string shownRoot(const CQoCollPath& place)
{
    std::string shown = shownPath(place.toString());
    if (shown.ends_with('/'))
        shown.pop_back();
    return shown;
}

/// As what a path that was typed with a place in mind may be shown. shown is the root of the place.
/// Example: "Stick/a.mp3" on the stick at /mnt is itself, "/mnt/a.mp3" or "/mnt/Stick/a.mp3".
std::vector<std::string>
textsInPlace(const CQoCollPath& place, const std::string& shown, const std::string& typed)
{
    const std::string below = absolutePath("/" + typed);
    std::vector<std::string> texts{typed.starts_with('/') ? below : below.substr(1)};
    const std::size_t end = below.find('/', 1);
    const std::string first = below.substr(1, end == below.npos ? end : end - 1);
    const std::string rest = end == below.npos ? std::string() : below.substr(end);
    if (fromUtf8(first).CompareNoCase(fromUtf8(placeNameOf(place))) == 0)
        texts.push_back(shown + rest);
    texts.push_back(below == "/" ? shown : shown + below);
    return texts;
}

/// The file or folder that is shown so. The tree is walked from its roots: shown names cannot be
/// taken apart, since a name on a service may hold slashes, and the first drive of a friend is left
/// out of them.
std::optional<CString> pathShownAs(const std::string& text)
{
    const auto& roots = ownCollection().getRootDirs();
    std::vector<boost::shared_ptr<CHDDirectory>> waiting(roots.begin(), roots.end());
    while (!waiting.empty())
    {
        const auto dir = waiting.back();
        waiting.pop_back();
        const CString path = dir->getPath().toString();
        const std::string shown = shownPath(path);
        if (shown == text)
            return path;
        if (!text.starts_with(shown + "/"))
            continue;
        for (const auto& file : dir->getFiles())
        {
            if (shownPath(file->getDbItem()->path) == text)
                return file->getDbItem()->path;
        }
        waiting.insert(waiting.end(), dir->getSubDirs().begin(), dir->getSubDirs().end());
    }
    return {};
}

std::optional<CString> pathInPlace(const std::string& typed)
{
    const CQoCollPath place = loadedPlace();
    if (!place.isValid())
        return {};
    const std::string shown = shownRoot(place);
    for (const std::string& text : textsInPlace(place, shown, typed))
    {
        if (text == shown)
            return place.toString();
        if (const auto path = pathShownAs(text))
            return path;
    }
    return {};
}
} // namespace

std::optional<CString> pathInCollection(const std::string& typed)
{
    if (typed.empty() || typed.find('\0') != std::string::npos)
        return {};
    for (const CString& form : spellings(typed))
    {
        const auto dir = ownCollection().getDir(form);
        const QoFileDbItemPtr record = CollectionChanges::recordOf(form);
        if ((record && record->path == form) || (dir && dir->getPath().toString() == form))
            return form;
    }
    return pathInPlace(typed);
}

bool looksLikePath(const std::string& typed)
{
    return typed.starts_with('/') || typed.starts_with("./") || typed.starts_with("../") ||
           typed == "." || typed == "..";
}

std::optional<PathSelection> PathSelection::of(const std::string& typed)
{
    PathSelection selection;
    selection.m_typed = typed;
    if (const auto path = pathInCollection(typed))
    {
        selection.m_path = *path;
        selection.m_below = addBackslash(*path);
        return selection;
    }
    selection.m_isPattern = looksLikePattern(typed);
    if (selection.m_isPattern)
    {
        selection.m_patterns.push_back(absolutePattern(typed));
        if (const CQoCollPath place = loadedPlace(); place.isValid())
        {
            const std::string shown = literal(shownRoot(place));
            for (std::string& text : textsInPlace(place, shown, typed))
                selection.m_patterns.push_back(std::move(text));
        }
        return selection;
    }
    if (looksLikePath(typed))
        throw HostError(ExitCode::notFound,
                        typed + (nameExists(spellings(typed).front()) ? " is not in the collection"
                                                                      : " is not there"));
    return {};
}

bool PathSelection::holds(const CString& path) const
{
    if (!m_isPattern)
        return path == m_path || path.view().starts_with(m_below.view());
    const std::string shown = shownPath(path);
    return std::ranges::any_of(
        m_patterns,
        [&shown](const std::string& pattern)
        { return ::fnmatch(pattern.c_str(), shown.c_str(), FNM_PATHNAME | FNM_LEADING_DIR) == 0; });
}
} // namespace qo::host
