#pragma once

#include "Database/DbFixture.h"
#include "QoColl/Db/QoCollDb.h"
#include "support/Records.h"

#include <boost/make_shared.hpp>

/// Looks behind the operations of a database: at its connection, and at what they are made of.
class QoCollDbInspector
{
public:
    static CSQLiteDB& connection(CQoCollDb& db) { return db.m_db; }
    static void createBackup(CQoCollDb& db) { db.createBackup(); }
    static bool checkVersion(CQoCollDb& db, bool& exists) { return db.checkVersion(exists); }
};

/// A fixture with a path "coll.db" and what makes records.
class CollDbFixture : public DbFixture
{
protected:
    void create() { CQoCollDb::CreateDatabaseIfNotValid(m_path, CQoCollDb::ConfigInfo()); }

    /// The fields of a query's first row with that text behind each, by a connection of its own.
    CString row(const CString& sql, const char16_t* behind = u"|") const
    {
        CSQLiteDB db(m_path);
        db.Open();
        CSQLiteStatement statement = db.CompileStatement(sql);
        const CSQLiteQueryResult result = statement.ExecuteQuery();
        CString text;
        for (int i = 0; i < result.FieldCount(); ++i)
            text += CString(result.textView(i)) + behind;
        return text;
    }
    /// The only field.
    CString query(const CString& sql) const { return row(sql, u""); }

    static QoFileDbItemPtr file(const char16_t* path) { return recordOf(path); }

    const CString m_path = m_dir.collPath("coll.db");
};

/// The same with the database made and open.
class OpenCollDbFixture : public CollDbFixture
{
protected:
    OpenCollDbFixture()
    {
        create();
        m_db = std::make_unique<CQoCollDb>(m_path);
    }

    QoFileDbItemPtr insert(const char16_t* path, const char16_t* collId = u"")
    {
        QoFileDbItemPtr item = file(path);
        m_db->insertFile(item, collId);
        return item;
    }

    std::unique_ptr<CQoCollDb> m_db;
};
