#pragma once

#include "cli/CommandLine.h"

#include <string>
#include <vector>

namespace qo::cli
{
/// What may stand where the cursor is.
struct Candidates
{
    enum class Files
    {
        none,
        any,    ///< a file, where none of the words fits
        folders ///< likewise a folder
    };
    struct Word
    {
        std::string text;
        std::string meaning = {};
        bool goesOn = false; ///< a beginning, as "year=" or a folder
    };
    std::vector<Word> words;
    Files files = Files::none;
};

/// For the word that begins with `current`, after the words before it, which start after "qo".
/// Names are read from the collection's database; when that cannot be done there are none.
Candidates candidatesFor(const CommandLine& line,
                         const std::vector<std::string>& words,
                         const std::string& current);
} // namespace qo::cli
