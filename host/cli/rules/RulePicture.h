#pragma once

#include "cli/files/FileRecord.h"

#include <QoKernel/Rules.h>

#include <string>
#include <vector>

namespace qo::cli
{
/// The tree of a rule as lines with branches for a person: separators with their outputs, folders
/// with the names of each kind of file.
std::vector<std::string> rulePicture(const CReorganizeRule& rule);

/// The same tree as a list of nested objects.
Json ruleNodesJson(const CReorganizeRule& rule);
/// The texts for what a file lacks, by the names of the attributes.
Json ruleDefaultsJson(const CReorganizeRule& rule);

/// "sorter", "importer" and "music importer": what the rule can be used for.
std::vector<std::string> ruleUses(const CReorganizeRule& rule);
} // namespace qo::cli
