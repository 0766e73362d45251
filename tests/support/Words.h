#pragma once

#include <sstream>
#include <string>
#include <vector>

/// The words of a text between its blanks: a list of plain names.
inline std::vector<std::string> wordsOf(const std::string& text)
{
    std::vector<std::string> words;
    std::istringstream in(text);
    for (std::string word; in >> word;)
        words.push_back(word);
    return words;
}
