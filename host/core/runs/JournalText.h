#pragma once

#include "core/runs/MoveProgress.h"

#include <cstddef>
#include <string>
#include <vector>

/// The lines of a journal: one about the run, one for each file and step, one that ends the
/// beginning, and one for each thing that happens.
namespace qo::host::journaltext
{
std::string start(const MoveProgress::Start& start);
/// What a whole journal says. Throws HostError that names the path when it is none.
MoveProgress read(const std::string& path, const std::string& content);

std::string step(const MoveStep& step, const std::vector<MovedFile>& files);
std::string begin(std::size_t step, const MoveStep& begun, bool isFree);
std::string copied(std::size_t step, const FileMark& copy);
std::string done(std::size_t step);
std::string skipped(std::size_t step);
std::string failed(std::size_t step, const std::string& why);
std::string lost(std::size_t step);
std::string known(std::size_t file, const FileMark& mark);
std::string note(const std::string& sentence);
std::string tried();
std::string applied(std::size_t count);
std::string finished();
} // namespace qo::host::journaltext
