#pragma once

#include "cli/CommandLine.h"

#include <string>

namespace qo::cli
{
/// What was wrong with the command line, in a sentence, and where it is explained, in another.
std::string parseFailure(const CLI::App& program, const CLI::ParseError& error);
} // namespace qo::cli
