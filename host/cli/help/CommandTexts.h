#pragma once

#include <string_view>
#include <vector>

namespace qo::cli
{
/// A call that the help of a command shows. A test runs each of them in a small library.
struct Example
{
    const char* line;    ///< as a person types it in a shell
    const char* meaning; ///< without a point at the end
    int code = 0;        ///< the exit code in that library
};

/// What the help says of a command beside its sentence, its arguments and its options.
struct CommandText
{
    std::string_view command; ///< without "qo": "tag set"
    std::vector<Example> examples;
    const char* explanation = ""; ///< in the form of parseDocument()
};

/// The row of the command; an empty one for a command that has none.
const CommandText& textOf(std::string_view command);

/// What a new user needs first: calls and what they do, each within 80 columns.
const std::vector<Example>& firstSteps();

/// An idea that several commands share: "qo help NAME" shows it, and a man page qo-NAME.
struct Topic
{
    const char* name;
    const char* title;
    const char* text;      ///< in the form of parseDocument()
    const char* more = ""; ///< what the man page has beside it

    /// Of the man page: 5 for one that describes a file, else 7.
    const char* section() const { return *more ? "5" : "7"; }
};

const std::vector<Topic>& topics();
const Topic* findTopic(std::string_view name);

/// What a setting does that the command goes by.
struct SettingText
{
    std::string_view key;
    const char* meaning;
};
const std::vector<SettingText>& settingTexts();

// For the man pages and the help, in the form of parseDocument().
extern const char* const exitCodesText;
extern const char* const environmentText;
extern const char* const filesText;
extern const char* const settingsFileText;
} // namespace qo::cli
