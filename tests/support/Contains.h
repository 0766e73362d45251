#pragma once

#include <gtest/gtest.h>

#include <string>

/// Whether the part stands in the text; a failure shows both.
inline testing::AssertionResult contains(const std::string& text, const std::string& part)
{
    if (text.find(part) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << part << "\" is not in\n" << text;
}
