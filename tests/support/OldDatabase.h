#pragma once

#include <QoKernel/Kernel.h>

#include <map>
#include <string>
#include <vector>

/// Makes a database as an earlier version, or a later one, left it: in every table rows with values
/// in all columns, with ids that are not the first ones. It has no column or table of the last
/// list, for which the version was too early.
void makeOldDatabase(const CString& path,
                     const CString& version,
                     const std::vector<CString>& without = {});

/// The values of each column, "FILE_T.FT_PATH" and so on, in the order of the row ids; the tables
/// are those of the collection that are there.
std::map<std::string, std::string> columnsOf(const CString& database);

/// The columns of the first that the second one has with other values, or has not.
std::vector<std::string> changedColumns(const std::map<std::string, std::string>& before,
                                        const std::map<std::string, std::string>& after);
