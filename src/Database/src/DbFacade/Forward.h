#pragma once

class CSQLiteDB;
class CSQLiteDbTransaction;
class CSQLiteException;
class CSQLiteQueryResult;
class CSQLiteStatement;
class CSQLiteTimeLog;

// Handles of the SQLite library, which only the sources of this folder use.
struct sqlite3;
struct sqlite3_stmt;

enum class eSQLiteTransactionType : int
{
    deferred = 0,
    immediate = 1,
    exclusive = 2
};

enum class eSQLiteEndTransaction : int
{
    commit = 0,
    rollback = 1
};
