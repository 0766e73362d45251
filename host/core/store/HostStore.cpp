#include "core/store/HostStore.h"

#include "core/base/DatabaseError.h"
#include "core/base/DatabaseQuery.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/Salvage.h"
#include "core/session/KernelThread.h"
#include "core/store/OldFiles.h"
#include "core/store/StoreSchema.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Inside.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

namespace qo::host
{
namespace
{
constexpr int patience = 10000; ///< milliseconds; every transaction here is a short one
constexpr std::int64_t noSave = -1;

/// The tables whose rows have no reader of their own here, with the versions that brought them.
constexpr std::pair<int, const char16_t*> countedTables[] = {
    {1, u"HEAD_T"},
    {storeSchema::facts, u"FACT_T"},
    {storeSchema::marks, u"CHECKED_T"},
    {storeSchema::playlists, u"PLAYLIST_ENTRY_T"},
    {storeSchema::playlists, u"PLAYLIST_CHANGE_T"},
    {storeSchema::playlists, u"LIVING_LIST_T"},
    {storeSchema::notes, u"TAG_NOTE_T"},
    {storeSchema::notes, u"OWN_NOTE_T"},
    {storeSchema::offers, u"OFFER_T"}};

/// Damage as SQLite finds it, or tables that are not as this program made them.
bool isDamage(const CSQLiteException& exception)
{
    return exception.isUnreadableDatabase() || exception.isStatementError();
}

/// SQLite takes less than its smallest page for an empty database.
bool isCutShort(const CString& file)
{
    constexpr std::int64_t smallestPage = 512;
    FileInfo info;
    return fileSystem().info(file, Spelling::exact, info) == 0 && info.kind == FileKind::regular &&
           info.size > 0 && info.size < smallestPage;
}

[[noreturn]] void refuseDamaged(const CString& file, const std::string& words)
{
    throw HostError(ExitCode::failed,
                    "the database " + shownPath(file) + " is damaged (" + words +
                        "): the next command that changes something keeps what can be read of it");
}

void open(CSQLiteDB& db)
{
    db.SetBusyTimeout(patience);
    db.Open();
}

void inTransaction(CSQLiteDB& db, const std::function<void(CSQLiteDB&)>& work)
{
    CSQLiteDbTransaction transaction(
        &db, eSQLiteTransactionType::immediate, eSQLiteEndTransaction::rollback);
    work(db);
    transaction.SetCommit();
}

void readEdits(CSQLiteDB& db, std::vector<EditedFile>& files)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT ET_ID, ET_PATH, ET_SIZE, ET_MODIF_TIME, ET_FIELD, ET_VALUE "
                            u"FROM EDIT_T ORDER BY ET_ID, ET_PATH");
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
    {
        const CString id(row.textView(0));
        const CString path(row.textView(1));
        const bool isNext =
            files.empty() || files.back().id != id || (id.IsEmpty() && files.back().path != path);
        if (isNext)
            files.push_back({id, path, row.GetInt64Field(2), row.GetInt64Field(3), {}});
        files.back().fields[toUtf8(CString(row.textView(4)))] = toUtf8(CString(row.textView(5)));
    }
}

void deleteEdits(CSQLiteDB& db, const EditedFile& file)
{
    // Each condition names the one of its index, or else SQLite reads the whole table.
    const bool hasId = !file.id.IsEmpty();
    CSQLiteStatement statement =
        db.CompileStatement(hasId ? u"DELETE FROM EDIT_T WHERE ET_ID = ?1 AND ET_ID <> ''"
                                  : u"DELETE FROM EDIT_T WHERE ET_PATH = ?1 AND ET_ID = ''");
    statement.BindText(1, hasId ? file.id : file.path);
    statement.ExecuteDML();
}

void insertEdits(CSQLiteDB& db, const EditedFile& file, const char16_t* onConflict)
{
    CSQLiteStatement statement =
        db.CompileStatement(CString(u"INSERT OR ") + onConflict +
                            u" INTO EDIT_T (ET_ID, ET_PATH, ET_SIZE, ET_MODIF_TIME, ET_FIELD, "
                            u"ET_VALUE) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    statement.BindText(1, file.id);
    statement.BindText(2, lastingPath(file.path));
    statement.BindInt64(3, file.size);
    statement.BindInt64(4, file.modified);
    for (const auto& [field, value] : file.fields)
    {
        statement.BindText(5, fromUtf8(field));
        statement.BindText(6, fromUtf8(value));
        statement.ExecuteDML();
    }
}

void readHeads(CSQLiteDB& db, std::vector<StoredHead>& heads)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT HT_ID, HT_SIZE, HT_MODIF_TIME, HT_DIGEST FROM HEAD_T");
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
        heads.push_back({toUtf8(CString(row.textView(0))),
                         row.GetInt64Field(1),
                         row.GetInt64Field(2),
                         static_cast<std::uint64_t>(row.GetInt64Field(3))});
}

void insertHeads(CSQLiteDB& db, const std::vector<StoredHead>& heads)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"INSERT OR REPLACE INTO HEAD_T (HT_ID, HT_SIZE, HT_MODIF_TIME, "
                            u"HT_DIGEST) VALUES (?1, ?2, ?3, ?4)");
    for (const StoredHead& head : heads)
    {
        statement.BindText(1, fromUtf8(head.id));
        statement.BindInt64(2, head.size);
        statement.BindInt64(3, head.modified);
        statement.BindInt64(4, static_cast<std::int64_t>(head.digest));
        statement.ExecuteDML();
    }
}

void readPlaces(CSQLiteDB& db, const char16_t* query, CStringArray& places, ScanMark& mark)
{
    CSQLiteStatement statement = db.CompileStatement(query);
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
    {
        places.Add(CString(row.textView(0)));
        if (const std::int64_t lastSave = row.GetInt64Field(1, noSave); lastSave != noSave)
            mark.lastSave = lastSave;
    }
}

void readMark(CSQLiteDB& db, ScanMark& mark)
{
    readPlaces(db, u"SELECT MT_ROOT, MT_LAST_SAVE FROM MARK_T ORDER BY rowid", mark.roots, mark);
    readPlaces(db, u"SELECT RT_PATH, RT_LAST_SAVE FROM READ_T ORDER BY rowid", mark.files, mark);
}

void insertPlaces(CSQLiteDB& db,
                  const char16_t* statementText,
                  const CStringArray& places,
                  const std::optional<std::int64_t>& lastSave)
{
    CSQLiteStatement statement = db.CompileStatement(statementText);
    if (lastSave)
        statement.BindInt64(2, *lastSave);
    for (const CString& place : places)
    {
        statement.BindText(1, lastingPath(place));
        statement.ExecuteDML();
    }
}

void insertReadFiles(CSQLiteDB& db, const CStringArray& files, std::int64_t lastSave)
{
    insertPlaces(db,
                 u"INSERT OR IGNORE INTO READ_T (RT_PATH, RT_LAST_SAVE) VALUES (?1, ?2)",
                 files,
                 lastSave);
}

void replaceMark(CSQLiteDB& db, const ScanMark& mark)
{
    const std::int64_t lastSave = mark.lastSave.value_or(noSave);
    db.Execute(u"DELETE FROM MARK_T");
    db.Execute(u"DELETE FROM READ_T");
    insertPlaces(db,
                 u"INSERT OR IGNORE INTO MARK_T (MT_ROOT, MT_LAST_SAVE) VALUES (?1, ?2)",
                 mark.roots,
                 lastSave);
    insertReadFiles(db, mark.files, lastSave);
}

// What FO_KIND may be.
constexpr int mountKind = 0;
constexpr int linkKind = 1;

void readFolders(CSQLiteDB& db, std::vector<FarFolder>& folders)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT FO_PATH, FO_DEVICE, FO_KIND FROM FOLDER_T ORDER BY rowid");
    CSQLiteQueryResult row = statement.ExecuteQuery();
    for (; !row.Eof(); row.NextRow())
        folders.push_back({CString(row.textView(0)),
                           static_cast<std::uint64_t>(row.GetInt64Field(1)),
                           row.GetIntField(2) == linkKind});
}

void replaceFolders(CSQLiteDB& db, const std::vector<FarFolder>& folders)
{
    db.Execute(u"DELETE FROM FOLDER_T");
    CSQLiteStatement statement = db.CompileStatement(
        u"INSERT OR REPLACE INTO FOLDER_T (FO_PATH, FO_DEVICE, FO_KIND) VALUES (?1, ?2, ?3)");
    for (const FarFolder& folder : folders)
    {
        statement.BindText(1, lastingPath(folder.path));
        statement.BindInt64(2, static_cast<std::int64_t>(folder.device));
        statement.BindInt(3, folder.isLink ? linkKind : mountKind);
        statement.ExecuteDML();
    }
}

/// The state in which an old file was taken over; "" for one that was not.
CString takenState(CSQLiteDB& db, const char16_t* name)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT OF_STATE FROM OLD_FILE_T WHERE OF_NAME = ?1");
    statement.BindText(1, name);
    const CSQLiteQueryResult row = statement.ExecuteQuery();
    return row.Eof() ? CString() : CString(row.textView(0));
}

void noteTaken(CSQLiteDB& db, const char16_t* name, const CString& state)
{
    CSQLiteStatement statement = db.CompileStatement(
        u"INSERT OR REPLACE INTO OLD_FILE_T (OF_NAME, OF_STATE) VALUES (?1, ?2)");
    statement.BindText(1, name);
    statement.BindText(2, state);
    statement.ExecuteDML();
}

void removeOld(const CString& file)
{
    const int error = fileSystem().removeFile(file);
    if (error != 0 && error != ENOENT)
        throw HostError(ExitCode::failed,
                        "the file " + shownPath(file) + " cannot be removed: " + errorWords(error));
}
} // namespace

HostStore::HostStore(const CString& folder) : m_folder(folder), m_file(folder + u"\\host.db") {}

void HostStore::read(const Work& work) const
{
    // Opening would make an absent file.
    if (!fileSystem().exists(m_file))
        return;
    if (isCutShort(m_file))
        refuseDamaged(m_file, "it was cut short");
    try
    {
        CSQLiteDB db(m_file);
        open(db);
        if (storeSchema::isMade(db))
            work(db);
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        if (!isDamage(*exception))
            throw databaseError(*exception, m_file);
        refuseDamaged(m_file, databaseWords(exception->message()));
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_file);
    }
}

CString HostStore::read(const Work& work, const char16_t* oldName) const
{
    CString taken;
    read(
        [&](CSQLiteDB& db)
        {
            work(db);
            taken = takenState(db, oldName);
        });
    const CString old = oldFile(oldName);
    const CString state = oldFiles::stateOf(old);
    return state.IsEmpty() || state == taken ? CString() : old;
}

void HostStore::write(const Work& work)
{
    try
    {
        try
        {
            writeOnce(work);
        }
        catch (CSQLiteException* raw)
        {
            std::unique_ptr<CSQLiteException> exception(raw);
            if (!isDamage(*exception))
                throw exception.release();
            repair();
            writeOnce(work);
        }
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_file);
    }
}

void HostStore::writeOnce(const Work& work)
{
    CSQLiteDB db(m_file);
    open(db);
    storeSchema::make(db);
    takeOver(db);
    inTransaction(db, work);
}

void HostStore::repair()
{
    const CString fresh = m_file + u".repaired";
    const CString aside = freeName(m_file + u".unreadable-" + timeStampOfNow());
    removeOld(fresh);
    removeOld(fresh + u"-journal");
    std::vector<EditedFile> edits;
    Salvage(m_file).copyTo(fresh,
                           [](const CString& path)
                           {
                               CSQLiteDB db(path);
                               open(db);
                               storeSchema::make(db);
                           });
    {
        CSQLiteDB db(fresh);
        open(db);
        readEdits(db, edits);
    }
    // The damaged store stays in its place until the new one takes it in one step.
    int error = fileSystem().copyFile(m_file, aside);
    if (error == 0)
    {
        removeOld(m_file + u"-journal");
        error = fileSystem().moveFile(fresh, m_file);
    }
    if (error != 0)
        throw HostError(ExitCode::failed,
                        shownPath(m_file) + " is damaged and cannot be set aside as " +
                            shownPath(aside) + ": " + errorWords(error));
    m_notes.push_back(shownPath(m_file) + " was damaged: it was set aside as " + shownPath(aside) +
                      " and made anew; pending edits of " + std::to_string(edits.size()) +
                      (edits.size() == 1 ? " file" : " files") + " could be read and are kept");
    log(level::warning, u"HostStore : %s", fromUtf8(m_notes.back()));
}

CString HostStore::oldFile(const char16_t* name) const
{
    return m_folder + u"\\" + name;
}

void HostStore::takeOverFile(CSQLiteDB& db, const char16_t* name, const Work& insertRows)
{
    const CString file = oldFile(name);
    const CString state = oldFiles::stateOf(file);
    if (state.IsEmpty())
        return;
    // An earlier take-over may have ended before it removed the file; what changed since stays.
    if (takenState(db, name) != state)
        inTransaction(db,
                      [&](CSQLiteDB&)
                      {
                          insertRows(db);
                          noteTaken(db, name, state);
                      });
    removeOld(file);
}

void HostStore::takeOver(CSQLiteDB& db)
{
    takeOverFile(db,
                 oldFiles::edits,
                 [this](CSQLiteDB& to)
                 {
                     for (const EditedFile& file : oldEdits())
                         insertEdits(to, file, u"IGNORE");
                 });
    takeOverFile(db,
                 oldFiles::heads,
                 [this](CSQLiteDB& to)
                 { insertHeads(to, oldFiles::readHeads(oldFile(oldFiles::heads))); });
    takeOverFile(db,
                 oldFiles::mark,
                 [this](CSQLiteDB& to)
                 { replaceMark(to, oldFiles::readMark(oldFile(oldFiles::mark))); });
}

/// For the holder of the lock: a file that is no list of edits is copied aside, with a note.
std::vector<EditedFile> HostStore::oldEdits()
{
    const CString file = oldFile(oldFiles::edits);
    std::vector<EditedFile> edits;
    if (oldFiles::readEdits(file, edits))
        return edits;
    const CString aside = freeName(file + u".unreadable-" + timeStampOfNow());
    if (const int error = fileSystem().copyFile(file, aside))
        throw HostError(ExitCode::failed,
                        shownPath(file) + " is no list of pending edits and cannot be copied to " +
                            shownPath(aside) + ": " + errorWords(error));
    m_notes.push_back(shownPath(file) + " was no list of pending edits and is now " +
                      shownPath(aside));
    return {};
}

bool HostStore::isSound() const
{
    if (!fileSystem().exists(m_file))
        return true;
    if (isCutShort(m_file))
        return false;
    try
    {
        CSQLiteDB db(m_file);
        open(db);
        std::vector<EditedFile> edits;
        ScanMark mark;
        std::vector<FarFolder> folders;
        if (storeSchema::isMade(db))
        {
            readEdits(db, edits);
            readMark(db, mark);
            readFolders(db, folders);
            for (const auto& [version, table] : countedTables)
            {
                if (storeSchema::has(db, version))
                    (void)numberOf(db, u"SELECT count(*) FROM " + CString(table) + u" NOT INDEXED");
            }
        }
        return true;
    }
    catch (CSQLiteException* raw)
    {
        std::unique_ptr<CSQLiteException> exception(raw);
        if (!isDamage(*exception))
            throw exception.release();
        return false;
    }
}

std::vector<std::string> HostStore::prepare()
{
    try
    {
        if (!isSound())
            repair();
    }
    catch (...)
    {
        KernelThread::rethrowAsHostError(m_file);
    }
    const auto names = {oldFiles::edits, oldFiles::heads, oldFiles::mark};
    if (std::any_of(names.begin(),
                    names.end(),
                    [this](const char16_t* name)
                    { return !oldFiles::stateOf(oldFile(name)).IsEmpty(); }))
        write([](CSQLiteDB&) {});
    return std::exchange(m_notes, {});
}

std::vector<EditedFile> HostStore::edits() const
{
    std::vector<EditedFile> files;
    const CString old = read([&files](CSQLiteDB& db) { readEdits(db, files); }, oldFiles::edits);
    if (!old.IsEmpty())
        oldFiles::readEdits(old, files);
    return files;
}

void HostStore::replaceEdits(const std::vector<EditedFile>& before,
                             const std::vector<EditedFile>& after)
{
    write(
        [&](CSQLiteDB& db)
        {
            for (const EditedFile& file : before)
                deleteEdits(db, file);
            for (const EditedFile& file : after)
                insertEdits(db, file, u"REPLACE");
        });
}

std::vector<StoredHead> HostStore::heads() const
{
    std::vector<StoredHead> heads;
    const CString old = read([&heads](CSQLiteDB& db) { readHeads(db, heads); }, oldFiles::heads);
    return old.IsEmpty() ? heads : oldFiles::readHeads(old);
}

void HostStore::changeHeads(const std::vector<std::string>& goneIds,
                            const std::vector<StoredHead>& changed)
{
    write(
        [&](CSQLiteDB& db)
        {
            CSQLiteStatement statement =
                db.CompileStatement(u"DELETE FROM HEAD_T WHERE HT_ID = ?1");
            for (const std::string& id : goneIds)
            {
                statement.BindText(1, fromUtf8(id));
                statement.ExecuteDML();
            }
            insertHeads(db, changed);
        });
}

ScanMark HostStore::mark() const
{
    ScanMark mark;
    const CString old = read([&mark](CSQLiteDB& db) { readMark(db, mark); }, oldFiles::mark);
    return old.IsEmpty() ? mark : oldFiles::readMark(old);
}

void HostStore::setMark(const ScanMark& mark)
{
    write([&mark](CSQLiteDB& db) { replaceMark(db, mark); });
}

void HostStore::addReadFiles(const CStringArray& files)
{
    write([&files](CSQLiteDB& db) { insertReadFiles(db, files, noSave); });
}

std::vector<FarFolder> HostStore::folders() const
{
    std::vector<FarFolder> folders;
    read([&folders](CSQLiteDB& db) { readFolders(db, folders); });
    return folders;
}

void HostStore::setFolders(const std::vector<FarFolder>& folders)
{
    write([&folders](CSQLiteDB& db) { replaceFolders(db, folders); });
}
} // namespace qo::host
