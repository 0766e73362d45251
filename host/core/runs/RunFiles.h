#pragma once

#include <string>
#include <vector>

/// The files of plans and runs, in the folder "reorganize" beside the database: "<id>.plan",
/// "<id>.running" while a run can go on, "<id>.journal" for one that has come to its end, and
/// "<id>.forgotten" for one that was set aside. Failures throw HostError.
namespace qo::host::runfiles
{
inline constexpr const char* planEnd = ".plan";
inline constexpr const char* runningEnd = ".running";
inline constexpr const char* finishedEnd = ".journal";
inline constexpr const char* forgottenEnd = ".forgotten";

std::string pathOf(const std::string& id, const char* end);
bool exists(const std::string& path);
/// Whether the text can be an id; ids become file names.
bool isId(const std::string& text);
/// By the second, then by the number after it.
bool isOlder(const std::string& a, const std::string& b);
/// The ids of the files with that end, the oldest first.
std::vector<std::string> idsOf(const std::string& end);
/// The journal of a run, in whichever state it is; "" when there is none.
std::string journalOf(const std::string& id);
/// Makes the folder.
void makeFolder();
/// "20261121-201500", after every id that there is, even where the clock was put back.
std::string newId();
/// Drops all but the youngest plans that nobody carried out: they can be made again.
void dropOldPlans();
/// A run has come to its end.
void close(const std::string& id);
/// Sets a journal aside.
void forget(const std::string& id);
/// "2026-11-21 20:15:00" from an id.
std::string timeOf(const std::string& id);
} // namespace qo::host::runfiles
