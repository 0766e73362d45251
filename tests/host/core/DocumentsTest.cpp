#include "core/collection/FileFields.h"
#include "core/session/KeyValueConfig.h"
#include "support/DocExample.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace qo::host;

namespace
{
/// "\x5C" and "\u00E9" of a document as what they stand for.
std::string bytesOf(const std::string& text)
{
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isCode = text.compare(i, 2, "\\x") == 0;
        bytes +=
            isCode ? static_cast<char>(std::stoi(text.substr(i + 2, 2), nullptr, 16)) : text[i];
        i += isCode ? 3 : 0;
    }
    return bytes;
}

CString unitsOf(const std::string& text)
{
    CString units;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isCode = text.compare(i, 2, "\\u") == 0 && text.size() >= i + 6 &&
                            std::isxdigit(text[i + 2]) != 0;
        units += isCode ? static_cast<char16_t>(std::stoi(text.substr(i + 2, 4), nullptr, 16))
                        : static_cast<char16_t>(text[i]);
        i += isCode ? 5 : 0;
    }
    return units;
}
} // namespace

TEST(Documents, NameTableHolds)
{
    const auto lines = docExampleLines("platform.md", "names");
    EXPECT_EQ(lines.size(), 7U);
    for (const std::string& line : lines)
    {
        std::istringstream words(line);
        std::string system;
        std::string collection;
        words >> system >> collection;
        EXPECT_EQ(qo::fromSystemPath(bytesOf(system)), unitsOf(collection)) << line;
        EXPECT_EQ(qo::toSystemPath(unitsOf(collection)), bytesOf(system)) << line;
    }
}

TEST(Documents, SettingsFileReadsAndIsWrittenAlike)
{
    const TempDir dir;
    const std::string example = docExample("architecture.md", "settings");
    dir.write("settings", example);
    KeyValueConfig config(dir.collPath("settings"));
    EXPECT_EQ(config.complaint(), "");
    EXPECT_EQ(config.entries().at(3).value, u"C:\\home\\ann\\Music");
    auto* const language = config.addKey(config.addSection(1, u"Common"), u"Language", u"");
    config.setValue(language, u"de");
    config.setValue(language, u"en");
    config.save();
    EXPECT_EQ(dir.read("settings"), example);
}

TEST(Documents, FieldsAreThoseOfTheTable)
{
    const auto sourceName = [](FieldSource source)
    {
        return source == FieldSource::tag      ? "tag"
               : source == FieldSource::record ? "record"
               : source == FieldSource::note   ? "note"
                                               : "tree";
    };
    std::vector<std::string> expected;
    for (const FileField& field : fileFields())
        expected.push_back(std::string("| `") + field.name + "` | " + field.heading + " | " +
                           sourceName(field.source) + " | " + (field.attribute ? "yes" : "no") +
                           " |");
    std::vector<std::string> documented;
    std::ifstream document(QO_SOURCE_DIR "/docs/fields.md");
    for (std::string line; std::getline(document, line);)
    {
        if (line.starts_with("| `"))
            documented.push_back(line.substr(0, line.rfind(" | ") + 2));
    }
    EXPECT_EQ(documented, expected);
}
