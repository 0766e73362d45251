#include "core/roots/RootGuard.h"

#include "core/base/DatabaseQuery.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <cerrno>

namespace qo::host
{
namespace
{
bool isMountPoint(const CString& folder, const FileInfo& info)
{
    const CQoCollPath path(folder);
    FileInfo above;
    return !path.isEmpty() &&
           fileSystem().info(path.getParent().toString(), Spelling::exact, above) == 0 &&
           above.device != info.device;
}

/// "" when the folder can be trusted.
std::string findCause(const CString& folder, const CString& database)
{
    FileInfo info;
    if (const int error = fileSystem().info(folder, Spelling::exact, info))
        return errorWords(error);
    if (info.kind != FileKind::directory)
        return errorWords(ENOTDIR);
    std::vector<DirEntry> entries;
    if (const int error = fileSystem().list(folder, entries))
        return errorWords(error);
    if (!entries.empty())
        return {};
    if (isMountPoint(folder, info))
        return "it is a mount point with nothing in it";
    const std::int64_t known = countFilesBelow(database, folder);
    return known == 0 ? std::string()
                      : "it is empty, but the collection has " + std::to_string(known) +
                            (known == 1 ? " file" : " files") + " in it";
}
} // namespace

std::vector<RootProblem> checkRoots(const CStringArray& folders, const CString& database)
{
    std::vector<RootProblem> problems;
    for (const CString& folder : folders)
    {
        const std::string cause = findCause(folder, database);
        if (!cause.empty())
            problems.push_back({folder, cause});
    }
    return problems;
}

bool isSystemFolder(const std::string& folder)
{
    const std::string base = folder == "/" ? std::string() : folder;
    const auto isSystem = [&base](const char* name)
    {
        struct statfs found;
        return ::statfs((base + name).c_str(), &found) == 0 &&
               (found.f_type == PROC_SUPER_MAGIC || found.f_type == SYSFS_MAGIC);
    };
    constexpr const char* places[] = {"", "/proc", "/sys"};
    return base.empty() || base == "/dev" ||
           std::any_of(std::begin(places), std::end(places), isSystem);
}

std::string rootSentences(const std::vector<RootProblem>& problems, const std::string& went)
{
    std::string text;
    for (const RootProblem& problem : problems)
        text += "the root folder " + shownPath(problem.folder) + " " + went + ": " + problem.cause +
                sentenceBreak;
    return text;
}

std::int64_t countFiles(const CString& database, const CString& collection)
{
    if (!fileSystem().exists(database))
        return 0;
    CSQLiteDB db(database);
    db.Open();
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT COUNT(*) FROM FILE_T WHERE FT_COLL_ID = ?1");
    statement.BindText(1, collection);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() ? 0 : result.GetInt64Field(0);
}

std::int64_t countFilesBelow(const CString& database, const CString& folder)
{
    if (!fileSystem().exists(database))
        return 0;
    const CString prefix = addBackslash(folder);
    CSQLiteDB db(database);
    db.Open();
    CSQLiteStatement statement = db.CompileStatement(
        u"SELECT COUNT(*) FROM FILE_T WHERE FT_COLL_ID = '' AND substr(FT_PATH, 1, ?1) = ?2");
    // SQLite counts characters, not UTF-16 units.
    int characters = 0;
    for (const char16_t unit : prefix.view())
        characters += unit >= 0xDC00 && unit <= 0xDFFF ? 0 : 1;
    statement.BindInt(1, characters);
    statement.BindText(2, prefix);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() ? 0 : result.GetInt64Field(0);
}
} // namespace qo::host
