#include "Database/DbFixture.h"

#include <utility>

namespace
{
using SQLiteStatement = OpenDbFixture;
using SQLiteQueryResult = OpenDbFixture;

constexpr const char* wrapperPrefix = "CSQLiteException: [SQLITE_WRAPPER_ERROR][code 1000]";

TEST_F(SQLiteStatement, TextsAreCopiedAndHaveTheirStoredLengthAndUnboundParametersAreNull)
{
    CSQLiteStatement statement =
        m_db.CompileStatement(u"SELECT ?1, ?2, ?3, ?4, ?5, 12.5, '', x'61006200'");
    statement.BindText(1, CString(u"x'; DROP TABLE T; -- ") + u"\u00E9\U0001F3B5");
    statement.BindInt(2, -7);
    statement.BindBool(3, true);
    statement.BindInt64(4, 0x7FFFFFFFFFFFFFFF);
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    ASSERT_FALSE(result.Eof());
    EXPECT_EQ(CString(result.GetTextField(0)), u"x'; DROP TABLE T; -- \u00E9\U0001F3B5");
    EXPECT_EQ(CString(result.textView(0)), u"x'; DROP TABLE T; -- \u00E9\U0001F3B5");
    EXPECT_EQ(result.GetIntField(1), -7);
    EXPECT_TRUE(result.GetBoolField(2));
    EXPECT_EQ(result.GetInt64Field(3), 0x7FFFFFFFFFFFFFFF);
    EXPECT_EQ(result.GetIntField(4, 42), 42);
    EXPECT_EQ(result.GetInt64Field(4, -42), -42);
    EXPECT_TRUE(result.GetBoolField(4, true));
    EXPECT_EQ(CString(result.GetTextField(4, u"none")), u"none");
    EXPECT_TRUE(result.textView(4).empty());
    EXPECT_EQ(CString(result.textView(5)), u"12.5");
    EXPECT_TRUE(result.textView(6).empty());
    EXPECT_EQ(CString(result.textView(7)), u"ab");
}

TEST_F(SQLiteStatement, BindingOutsideTheParametersIsARangeError)
{
    CSQLiteStatement statement = m_db.CompileStatement(u"SELECT ?1");
    const std::pair<const char*, std::string> cases[] = {
        {"text", messageOf([&] { statement.BindText(0, u""); })},
        {"int", messageOf([&] { statement.BindInt(2, 0); })},
        {"bool", messageOf([&] { statement.BindBool(2, false); })},
        {"int64", messageOf([&] { statement.BindInt64(-1, 0); })}};
    for (const auto& [type, message] : cases)
        EXPECT_EQ(message,
                  "CSQLiteException: [SQLITE_RANGE][code 25][Error binding [" + std::string(type) +
                      "] param]");
}

TEST_F(SQLiteStatement, DmlCountsRowsAndRefusesThem)
{
    m_db.Execute(u"CREATE TABLE T (A INTEGER UNIQUE)");
    CSQLiteStatement insert = m_db.CompileStatement(u"INSERT INTO T VALUES (?1), (?1 + 1)");
    insert.BindInt(1, 1);
    EXPECT_EQ(insert.ExecuteDML(), 2);
    const auto exception = thrownBy([&] { insert.ExecuteDML(); });
    ASSERT_TRUE(exception) << "the second run breaks the constraint";
    EXPECT_TRUE(exception->sql().IsEmpty());
    EXPECT_TRUE(m_db.CompileStatement(u"SELECT A FROM T WHERE A > 2").ExecuteQuery().Eof());
    insert.BindInt(1, 10);
    EXPECT_EQ(insert.ExecuteDML(), 2) << "the statement survives its failure";
    EXPECT_TRUE(thrownBy([&] { m_db.CompileStatement(u"SELECT 1").ExecuteDML(); }));
    EXPECT_EQ(messageOf([&] { m_db.CompileStatement(u"").ExecuteDML(); }),
              std::string(wrapperPrefix) + "[Null statement pointer!]");
}

TEST_F(SQLiteQueryResult, NamesAreExactAndUnknownOnesGiveTheDefault)
{
    CSQLiteStatement statement =
        m_db.CompileStatement(u"SELECT 5 AS Alpha, 6 AS alpha, 7 AS Alpha");
    const CSQLiteQueryResult result = statement.ExecuteQuery();
    EXPECT_EQ(result.FieldCount(), 3);
    EXPECT_EQ(result.GetIntField(u"alpha"), 6);
    EXPECT_EQ(result.FieldIndex(u"Alpha"), 0) << "the first of two";
    EXPECT_EQ(result.FieldIndex(u"ALPHA"), -1);
    EXPECT_EQ(result.GetIntField(u"ALPHA", 7), 7);
    EXPECT_EQ(CString(result.GetTextField(u"", u"none")), u"none");
    for (const int index : {-1, 3, 99})
        EXPECT_EQ(messageOf([&] { result.GetIntField(index, 7); }),
                  std::string(wrapperPrefix) + "[Invalid field index requested!]");
}

TEST_F(SQLiteQueryResult, FailedStepFinalizesTheStatementOnce)
{
    // The absolute value of the smallest number overflows: the second row fails.
    m_db.Execute(u"CREATE TABLE T (A)");
    m_db.Execute(u"INSERT INTO T VALUES (1), (-9223372036854775808)");
    CSQLiteStatement statement = m_db.CompileStatement(u"SELECT abs(A) FROM T");
    CSQLiteQueryResult result = statement.ExecuteQuery();
    EXPECT_EQ(result.GetIntField(0), 1);
    EXPECT_EQ(messageOf([&] { result.NextRow(); }),
              "CSQLiteException: [SQLITE_ERROR][code 1][integer overflow]");
    EXPECT_EQ(messageOf([&] { result.NextRow(); }),
              std::string(wrapperPrefix) + "[Null statement pointer]");
    EXPECT_EQ(messageOf([&] { result.GetIntField(0); }),
              std::string(wrapperPrefix) + "[Null statement pointer]");
    EXPECT_EQ(messageOf([&] { statement.ExecuteDML(); }),
              std::string(wrapperPrefix) + "[Null statement pointer!]");
    m_db.Close(); // nothing is left that could hold the connection
}

} // namespace
