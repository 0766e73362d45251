#include "core/query/CollectionPath.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionChanges.h"
#include "core/collection/CollectionFiles.h"
#include "core/collection/FileChecks.h"
#include "core/query/QueryField.h"

#include <QoKernel/Physical.h>

#include <fnmatch.h>

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

/// The current folder stands for itself in a pattern, whatever signs its name has: in "/m/[live]"
/// the pattern "*.mp3" is "/m/\[live]/*.mp3", which "/m/l/1.mp3" does not fit.
std::string absolutePattern(const std::string& typed)
{
    if (typed.starts_with('/'))
        return absolutePath(typed);
    std::string pattern;
    for (const char c : absolutePath("."))
    {
        if (std::string_view("*?[\\").find(c) != std::string_view::npos)
            pattern += '\\';
        pattern += c;
    }
    return absolutePath(pattern + "/" + typed);
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
    return {};
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
        selection.m_pattern = absolutePattern(typed);
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
    return ::fnmatch(
               m_pattern.c_str(), toSystemPath(path).c_str(), FNM_PATHNAME | FNM_LEADING_DIR) == 0;
}
} // namespace qo::host
