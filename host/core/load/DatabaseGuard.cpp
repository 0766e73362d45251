#include "core/load/DatabaseGuard.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/load/Snapshots.h"
#include "core/session/KernelThread.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <cerrno>
#include <memory>
#include <set>

namespace qo::host
{
namespace
{
/// A writer is done within this time, or something holds the database for itself.
constexpr int patience = 3000; ///< milliseconds

CString quotedName(CString name)
{
    name.Replace(u"\"", u"\"\"");
    return u"\"" + name + u"\"";
}

/// The files that were set aside beside the database so far.
std::set<std::u16string> filesSetAside(const CString& database)
{
    std::set<std::u16string> names;
    std::vector<DirEntry> entries;
    const CQoCollPath path(database);
    if (fileSystem().list(path.getParent().toString(), entries) != 0)
        return names;
    const CString start = path.getLast() + u".unreadable-";
    for (const DirEntry& entry : entries)
    {
        const std::u16string_view name = entry.name.view();
        const bool isSideFile =
            name.ends_with(u"-wal") || name.ends_with(u"-shm") || name.ends_with(u"-journal");
        if (name.starts_with(start.view()) && !isSideFile)
            names.emplace(name);
    }
    return names;
}

/// What stands before the first page in the two kinds of side file.
constexpr std::size_t logHeader = 32;
constexpr std::size_t journalHeader = 20;

std::string firstBytes(const CString& path, std::size_t count)
{
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(path, OpenMode::read, error);
    std::string bytes(count, 0);
    const std::int64_t got = file ? file->read(bytes.data(), count) : 0;
    bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return bytes;
}

/// The last number of the header counts the pages that the database had; it had none when its first
/// tables were being made.
bool isJournalFull(const std::string& header)
{
    return header.size() == journalHeader &&
           header.find_first_not_of('\0', journalHeader - 4) != std::string::npos;
}

std::string lostRows(const DatabaseGuard::TableCounts& before,
                     const DatabaseGuard::TableCounts& after)
{
    std::string text;
    for (const auto& [table, rows] : before)
    {
        const auto found = after.find(table);
        const std::int64_t left = found == after.end() ? 0 : found->second;
        if (left < rows)
            text += (text.empty() ? "" : ", ") + table + " " + std::to_string(rows) + " -> " +
                    std::to_string(left);
    }
    return text;
}
} // namespace

DatabaseGuard::TableCounts DatabaseGuard::countRows(const CString& database)
{
    TableCounts counts;
    CSQLiteDB db(database);
    db.Open();
    CStringArray tables;
    {
        CSQLiteStatement statement = db.CompileStatement(
            u"SELECT name FROM sqlite_master WHERE type = 'table' AND substr(name, 1, 7) <> "
            u"'sqlite_'");
        CSQLiteQueryResult result = statement.ExecuteQuery();
        for (; !result.Eof(); result.NextRow())
            tables.Add(result.GetTextField(0));
    }
    for (const CString& table : tables)
    {
        CSQLiteStatement statement =
            db.CompileStatement(u"SELECT COUNT(*) FROM " + quotedName(table));
        const CSQLiteQueryResult result = statement.ExecuteQuery();
        counts[toUtf8(table)] = result.GetInt64Field(0);
    }
    return counts;
}

DatabaseGuard::State DatabaseGuard::look() const
{
    FileInfo info;
    const int error = fileSystem().info(m_database, Spelling::exact, info);
    if (error == ENOENT)
        return absent();
    const std::string name = "the database " + shownPath(m_database);
    if (error != 0)
        throw HostError(ExitCode::failed, name + " cannot be reached: " + errorWords(error));
    if (info.kind == FileKind::directory)
        throw HostError(ExitCode::failed, name + " is a folder; it was left alone");
    if (info.kind != FileKind::regular)
        throw HostError(ExitCode::failed, name + " is no regular file; it was left alone");
    return info.size == 0 ? absent() : open();
}

DatabaseGuard::State DatabaseGuard::absent() const
{
    const CString log = m_database + u"-wal";
    const CString journal = m_database + u"-journal";
    const bool isLogFull = firstBytes(log, logHeader + 1).size() > logHeader;
    if (!isLogFull && !isJournalFull(firstBytes(journal, journalHeader)))
        return State::absent;
    const std::string side = shownPath(isLogFull ? log : journal);
    throw HostError(ExitCode::failed,
                    "the database " + shownPath(m_database) + " is gone or empty, but " + side +
                        " still holds a part of it; nothing was changed: put the database back, or "
                        "move that file away to begin anew");
}

DatabaseGuard::State DatabaseGuard::open() const
{
    try
    {
        CSQLiteDB db(m_database);
        db.SetBusyTimeout(patience);
        db.Open();
        db.Execute(u"BEGIN IMMEDIATE;");
        db.Execute(u"ROLLBACK;");
        // Only this reads the schema; without a sound one every later statement would fail.
        CSQLiteStatement statement = db.CompileStatement(u"SELECT count(*) FROM sqlite_master");
        static_cast<void>(statement.ExecuteQuery());
        return State::sound;
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (exception->isUnreadableDatabase())
            return State::unreadable;
        throw exception.release();
    }
}

bool DatabaseGuard::hasVersion(CString& version) const
{
    return CQoCollDb::readVersion(m_database, version);
}

void DatabaseGuard::refuseOtherVersion() const
{
    CString version;
    if (!hasVersion(version) || version == CQoCollDb::currentVersion())
        return;
    throw HostError(ExitCode::failed,
                    "the database " + shownPath(m_database) + " has version [" + toUtf8(version) +
                        "], this program reads version [" +
                        toUtf8(CString(CQoCollDb::currentVersion())) + "]; it was left alone");
}

std::vector<std::string> DatabaseGuard::prepare()
{
    try
    {
        return prepareGuarded();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_database);
    }
}

std::vector<std::string> DatabaseGuard::prepareGuarded()
{
    std::vector<std::string> notes;
    const State state = look();
    if (state == State::sound)
        refuseOtherVersion();
    CString version;
    const bool isRebuilt = state == State::sound && !hasVersion(version);
    TableCounts before;
    CString snapshot;
    if (isRebuilt)
    {
        before = countRows(m_database);
        if (!before.empty())
            snapshot = Snapshots(m_database).take();
    }
    const std::set<std::u16string> asideBefore = filesSetAside(m_database);
    CQoCollDb::CreateDatabaseIfNotValid(m_database, CQoCollDb::ConfigInfo());
    for (const std::u16string& name : filesSetAside(m_database))
    {
        if (!asideBefore.contains(name))
            notes.push_back(
                shownPath(m_database) + " was no sound database: it was set aside as " +
                shownPath(CQoCollPath(m_database).getParent().child(CString(name)).toString()) +
                ", and an empty one takes its place");
    }
    if (!snapshot.IsEmpty())
    {
        const std::string lost = lostRows(before, countRows(m_database));
        notes.push_back(shownPath(m_database) + " had no collection in it and was made anew" +
                        (lost.empty() ? "" : " (rows: " + lost + ")") + "; what it held is in " +
                        shownPath(snapshot));
    }
    return notes;
}
} // namespace qo::host
