#pragma once

#include "cli/KernelCommand.h"
#include "cli/files/FileRecord.h"
#include "core/rules/RuleStore.h"

#include <memory>
#include <string>

namespace qo::cli
{
/// The rule that a user named: one of the store, or one of a file.
struct NamedRule
{
    CString id;   ///< "" for that of a file
    CString file; ///< "" for a built-in one
    const CReorganizeRule* rule = nullptr;
    std::shared_ptr<CReorganizeRule> own; ///< of a file

    std::string name() const;
};

/// A path or a name that ends in ".xml" means a file. Throws HostError.
bool isRuleFileName(const std::string& typed);
NamedRule findRule(const host::RuleStore& store, const std::string& typed);
/// What it is, and its tree as a picture; or one object.
void showRule(CommandLine& line, const NamedRule& named);
Json ruleJson(const NamedRule& named);

/// Runs the function with a started kernel and the rules, on the kernel's thread.
template <class Function>
ExitCode withRules(CommandLine& line, KernelUse use, Function function)
{
    const auto session = openKernel(line, use);
    return session->kernel().run(
        [&]() -> ExitCode
        {
            host::RuleStore store;
            return function(store);
        });
}

/// The commands that change the rules.
void addRuleEditCommands(CommandLine& line, CLI::App& group);
} // namespace qo::cli
