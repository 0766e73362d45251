#include "core/store/HostStore.h"
#include "core/store/StoreSchema.h"

#include <QoKernel/Inside.h>

// What the store knows of files beside their records.

namespace qo::host
{
namespace
{
void readTagNotes(CSQLiteDB& db, std::unordered_map<LastingId, FileNotes>& notes)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT TN_ID, TN_ALBUM_ARTIST, TN_DISC, TN_COMMENT, TN_RATING, "
                            u"TN_PLAYS FROM TAG_NOTE_T");
    // Files that were read one after the other are mostly of one album.
    CString albumArtist;
    for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
    {
        FileNotes& file = notes[LastingId(row.textView(0))];
        if (row.textView(1) != albumArtist.view())
            albumArtist = CString(row.textView(1));
        file.albumArtist = albumArtist;
        file.disc = CString(row.textView(2));
        file.comment = CString(row.textView(3));
        file.rating = row.GetIntField(4);
        file.plays = row.GetInt64Field(5);
    }
}

void readOwnNotes(CSQLiteDB& db, std::unordered_map<LastingId, FileNotes>& notes)
{
    CSQLiteStatement statement =
        db.CompileStatement(u"SELECT ON_ID, ON_RATING, ON_PLAYS, ON_LAST_PLAYED, ON_ADDED_BY FROM "
                            u"OWN_NOTE_T");
    for (CSQLiteQueryResult row = statement.ExecuteQuery(); !row.Eof(); row.NextRow())
    {
        FileNotes& file = notes[LastingId(row.textView(0))];
        if (const int rating = row.GetIntField(1); rating != FileNotes::ofTag)
            file.rating = rating;
        file.plays += row.GetInt64Field(2);
        file.lastPlayed = fromTicks(row.GetInt64Field(3));
        file.addedBy = CString(row.textView(4));
    }
}

bool hasNotes(CSQLiteDB& db)
{
    return storeSchema::has(db, storeSchema::notes);
}

/// The statement has the id as ?1; bind sets the others.
template <class Bind>
void forEachId(CSQLiteDB& db, const char16_t* text, const std::vector<LastingId>& ids, Bind bind)
{
    CSQLiteStatement statement = db.CompileStatement(text);
    for (const LastingId& id : ids)
    {
        statement.BindText(1, id.text());
        bind(statement);
        statement.ExecuteDML();
    }
}
} // namespace

std::unordered_map<LastingId, FileNotes> HostStore::fileNotes() const
{
    std::unordered_map<LastingId, FileNotes> notes;
    read(
        [&notes](CSQLiteDB& db)
        {
            if (!hasNotes(db))
                return;
            readTagNotes(db, notes);
            readOwnNotes(db, notes);
        });
    return notes;
}

void HostStore::setTagNotes(const std::vector<TagNotes>& notes)
{
    write(
        [&notes](CSQLiteDB& db)
        {
            CSQLiteStatement remove =
                db.CompileStatement(u"DELETE FROM TAG_NOTE_T WHERE TN_ID = ?1");
            CSQLiteStatement insert = db.CompileStatement(
                u"INSERT OR REPLACE INTO TAG_NOTE_T (TN_ID, TN_ALBUM_ARTIST, TN_DISC, TN_COMMENT, "
                u"TN_RATING, TN_PLAYS) VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
            for (const TagNotes& file : notes)
            {
                CSQLiteStatement& statement = file.isEmpty() ? remove : insert;
                statement.BindText(1, file.id.text());
                if (!file.isEmpty())
                {
                    statement.BindText(2, file.albumArtist);
                    statement.BindText(3, file.disc);
                    statement.BindText(4, file.comment);
                    statement.BindInt(5, file.rating);
                    statement.BindInt(6, file.plays);
                }
                statement.ExecuteDML();
            }
        });
}

void HostStore::setAddedBy(const std::vector<LastingId>& ids, const CString& user)
{
    write(
        [&](CSQLiteDB& db)
        {
            forEachId(db,
                      u"INSERT INTO OWN_NOTE_T (ON_ID, ON_ADDED_BY) VALUES (?1, ?2) ON CONFLICT "
                      u"(ON_ID) DO UPDATE SET ON_ADDED_BY = ?2",
                      ids,
                      [&user](CSQLiteStatement& statement) { statement.BindText(2, user); });
        });
}

void HostStore::setRating(const std::vector<LastingId>& ids, int halfStars)
{
    write(
        [&](CSQLiteDB& db)
        {
            forEachId(db,
                      u"INSERT INTO OWN_NOTE_T (ON_ID, ON_RATING) VALUES (?1, ?2) ON CONFLICT "
                      u"(ON_ID) DO UPDATE SET ON_RATING = ?2",
                      ids,
                      [halfStars](CSQLiteStatement& statement)
                      { statement.BindInt(2, halfStars); });
        });
}

void HostStore::addPlays(const std::vector<LastingId>& ids, int plays, std::int64_t when)
{
    write(
        [&](CSQLiteDB& db)
        {
            forEachId(db,
                      u"INSERT INTO OWN_NOTE_T (ON_ID, ON_PLAYS, ON_LAST_PLAYED) VALUES (?1, ?2, "
                      u"?3) ON CONFLICT (ON_ID) DO UPDATE SET ON_PLAYS = ON_PLAYS + ?2, "
                      u"ON_LAST_PLAYED = max(ON_LAST_PLAYED, ?3)",
                      ids,
                      [&](CSQLiteStatement& statement)
                      {
                          statement.BindInt(2, plays);
                          statement.BindInt64(3, when);
                      });
        });
}
} // namespace qo::host
