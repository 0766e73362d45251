#pragma once

#include <QoKernel/Rules.h>

#include <string>
#include <vector>

namespace qo::host
{
class Trash;

/// The rules of this process from the making of the store to its end: the built-in ones, which
/// nobody can change, and those whose files lie in the data folder. At most one store at a time.
/// For the kernel's thread.
class RuleStore
{
public:
    RuleStore();
    ~RuleStore();
    RuleStore(const RuleStore&) = delete;
    RuleStore& operator=(const RuleStore&) = delete;

    /// By falling priority, then by id.
    std::vector<CString> ids() const;
    /// The id of the rule that goes by that text: its id, the word for a built-in one, or its name
    /// without regard to case. "" for none. Throws HostError (usage) when several have the name.
    CString holderOf(const CString& name) const;
    /// The same for a rule that must be there. Throws HostError (notFound) as well.
    CString find(const std::string& typed) const;
    /// The only rule that is not built in; "" when there is none or more than one.
    CString onlyOwn() const;
    /// "By artist" (mix), artist-track: for a sentence that asks to name one.
    std::string listText() const;

    /// Of a rule that is there. Valid until one is replaced or removed.
    static const CReorganizeRule& rule(const CString& id);
    static bool isBuiltIn(const CString& id) { return CReorganizeUtils::isReadOnlyRule(id); }
    /// What a user calls it: its name, or the word for a built-in one.
    static std::string nameOf(const CString& id);
    /// "" for a built-in one.
    static CString fileOf(const CString& id) { return CReorganizeUtils::makeReorgRulePath(id); }
    /// The files of the data folder that should hold a rule and do not. Throws HostError.
    static std::vector<CString> badFiles();

    // What changes the rules throws HostError, with nothing done: refused for a built-in rule,
    // usage for a name that cannot be one, failed when the disk does not take it.

    /// Where the file of a new rule of that name will lie.
    static CString newFile(const CString& name);
    /// A rule whose name nobody has; its id from now on.
    CString add(const CReorganizeRule& rule);
    /// Puts it in the place of the rule with that id, which it keeps.
    void replace(const CString& id, const CReorganizeRule& rule);
    /// Throws the file of the rule away; where it lies now.
    std::string remove(const CString& id, const Trash& trash);

    /// Throws HostError (refused) for a built-in rule.
    static void needOwn(const CString& id);
};
} // namespace qo::host
