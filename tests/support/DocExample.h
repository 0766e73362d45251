#pragma once

#include <string>
#include <vector>

/// The text of the first fenced block of docs/FILE whose info string is TAG ("```TAG"), so that
/// what a document shows is what the system does. A missing block fails the test and gives "".
std::string docExample(const std::string& file, const std::string& tag);

/// Its lines without the line ends.
std::vector<std::string> docExampleLines(const std::string& file, const std::string& tag);
