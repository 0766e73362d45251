#pragma once

#include "Database/src/DbFacade/SQLiteWrapper.h"
#include "common/SimpleLogger.h"
#include "support/Print.h"
#include "support/TempDir.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// What the action threw, or null.
template <class Action>
std::unique_ptr<CSQLiteException> thrownBy(Action&& action)
{
    try
    {
        action();
    }
    catch (CSQLiteException* raw)
    {
        return std::unique_ptr<CSQLiteException>(raw);
    }
    return nullptr;
}

/// Its message in UTF-8, "" for none.
template <class Action>
std::string messageOf(Action&& action)
{
    const auto exception = thrownBy(action);
    return exception ? qo::toUtf8(exception->message()) : std::string();
}

/// The first field of a query's first row as text.
inline CString queryText(CSQLiteDB& db, const CString& sql)
{
    CSQLiteStatement statement = db.CompileStatement(sql);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    return result.Eof() ? CString() : CString(result.GetTextField(0));
}

/// Whatever opens a database here does so with a silent database log.
class DbFixture : public ::testing::Test
{
protected:
    DbFixture() { InitSimpleLogger(0, u""); }

    TempDir m_dir;
};

/// A fixture with one open database, "test.db".
class OpenDbFixture : public DbFixture
{
protected:
    OpenDbFixture() { m_db.Open(); }

    CSQLiteDB m_db{m_dir.collPath("test.db")};
};
