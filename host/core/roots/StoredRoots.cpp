#include "core/roots/StoredRoots.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

namespace qo::host
{
namespace
{
/// The sentence after those before it.
void addSentence(std::string& text, const std::string& sentence)
{
    if (!text.empty())
        text += sentenceBreak;
    text += sentence;
}
} // namespace

bool isCollection(const CString& database)
{
    // Opening would create an absent database, and would change the side files of an empty one.
    FileInfo info;
    if (fileSystem().info(database, Spelling::exact, info) != 0 || info.kind != FileKind::regular ||
        info.size == 0)
        return false;
    CString version;
    return CQoCollDb::readVersion(database, version) && version == CQoCollDb::currentVersion();
}

CollInfoDbItem storedInfo(const CString& database)
{
    CQoCollDb db(database);
    CollInfoDbItem info;
    db.getCollInfo(u"", info);
    return info;
}

std::vector<StoredRoot> storedRoots(const CString& database)
{
    return isCollection(database) ? knownStoredRoots(database) : std::vector<StoredRoot>();
}

std::vector<StoredRoot> knownStoredRoots(const CString& database)
{
    std::vector<StoredRoot> roots;
    const CollInfoDbItem info = storedInfo(database);
    for (int i = 0; i < info.rootDirs.GetSize(); ++i)
    {
        const int kind = i < info.rootDirTypes.GetSize() ? info.rootDirTypes[i] : 0;
        roots.push_back({info.rootDirs[i], CQoPathInfo::toType(kind)});
    }
    return roots;
}

std::vector<StoredRoot> unlistedRoots(std::vector<StoredRoot> stored, const RootFolders& roots)
{
    std::erase_if(stored,
                  [&roots](const StoredRoot& root) {
                      return !CQoCollPath(root.folder).isValid() ||
                             !roots.holder(root.folder).IsEmpty();
                  });
    return stored;
}

void refuseUnnamedRoots(const std::vector<StoredRoot>& unlisted, const RootFolders& roots)
{
    std::string text;
    for (const StoredRoot& root : unlisted)
    {
        if (roots.wasRemoved(root.folder))
            continue;
        const std::string shown = shownPath(root.folder);
        std::string sentence = "the root folder ";
        sentence.append(shown)
            .append(" is no longer in the settings, so nothing was changed: \"qo roots add ")
            .append(shown)
            .append("\" puts it back, \"qo roots rm ")
            .append(shown)
            .append("\" takes it out of the collection");
        addSentence(text, sentence);
    }
    if (!text.empty())
        throw HostError(ExitCode::away, text);
}

std::string restoreRoots(const std::vector<StoredRoot>& unlisted, RootFolders& roots)
{
    std::string text;
    for (const StoredRoot& root : unlisted)
    {
        if (!roots.wasRemoved(root.folder) && roots.add(root.folder, root.kind))
            addSentence(text,
                        "the settings have lost the root folder " + shownPath(root.folder) +
                            "; it is taken from the database");
    }
    return text;
}
} // namespace qo::host
