#pragma once

#include "core/base/HostError.h"

#include <QoKernel/Collection.h>

#include <string>

namespace qo::host
{
/// A message as the database layer builds it, with whatever stands before it, in SQLite's own
/// words: one line without codes and without the statement. Any other text keeps its first line.
std::string databaseWords(const CString& message);

/// What is said of a damaged database, with the ways on.
std::string damagedSentence(const CString& database, const std::string& words);

/// The failure as one sentence with the database's path; busy when another one holds it.
HostError databaseError(const CSQLiteException& exception, const CString& database);
} // namespace qo::host
