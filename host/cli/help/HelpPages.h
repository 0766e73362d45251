#pragma once

#include "cli/CommandLine.h"
#include "cli/help/CommandTexts.h"
#include "cli/help/Document.h"
#include "cli/shown/Window.h"

#include <memory>
#include <string>

namespace qo::cli
{
/// Every command by its group, for a window; where the sentences do not fit into it, the names
/// alone.
std::string overviewPage(const CLI::App& program, const WindowSize& window);
/// One command, with its examples.
std::string commandPage(const CLI::App& command, std::size_t columns);
std::string topicPage(const Topic& topic, std::size_t columns);

/// The commands with a sentence each, under the headings of their groups.
Document commandList(const CLI::App& parent);
/// What a command does.
Document commandText(const CLI::App& command);
/// Its arguments, its own options and its sub-commands, each under a heading.
Document commandOptions(const CLI::App& command);
Document optionDocument(const std::vector<const CLI::Option*>& options);

/// How many columns a page of text may use: on a wide terminal lines stay short enough to read.
std::size_t textColumns(const WindowSize& window);

/// "qo 1.2.3, database version 4".
std::string versionText();

/// What the parser shows for "--help".
std::shared_ptr<CLI::FormatterBase> helpFormatter();
} // namespace qo::cli
