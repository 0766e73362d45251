#include "support/DocExample.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

std::string docExample(const std::string& file, const std::string& tag)
{
    std::ifstream in(std::string(QO_SOURCE_DIR "/docs/") + file);
    EXPECT_TRUE(in.good()) << "docs/" << file << " cannot be read";
    std::string text;
    bool inside = false;
    for (std::string line; std::getline(in, line);)
    {
        if (inside && line == "```")
            return text;
        if (inside)
            text += line + "\n";
        else
            inside = line == "```" + tag;
    }
    ADD_FAILURE() << "docs/" << file << " has no closed block ```" << tag;
    return {};
}

std::vector<std::string> docExampleLines(const std::string& file, const std::string& tag)
{
    std::vector<std::string> lines;
    std::istringstream text(docExample(file, tag));
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    return lines;
}
