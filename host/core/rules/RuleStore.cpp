#include "core/rules/RuleStore.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/Trash.h"

#include <QoKernel/Collection.h>

#include <algorithm>
#include <cerrno>

namespace qo::host
{
namespace
{
constexpr std::size_t longestFileName = 255;

struct BuiltIn
{
    const char16_t* id;
    const char* word;
};
constexpr BuiltIn builtIns[] = {
    {CReorganizeUtils::ArtistTrackRuleID, "artist-track"},
    {CReorganizeUtils::VelmoraArtistTrackRuleID, "velmora-artist-track"}};

bool isSame(const CString& a, const CString& b)
{
    return a.CompareNoCase(b) == 0;
}

/// The rules that go by that name.
std::vector<CString> named(const std::vector<CString>& ids, const CString& name)
{
    std::vector<CString> found;
    for (const CString& id : ids)
    {
        if (isSame(fromUtf8(RuleStore::nameOf(id)), name))
            found.push_back(id);
    }
    return found;
}

/// The kernel only says that a file was not written; a second one in the same folder tells why.
std::string whyNotWritten(const CString& path)
{
    const CString probe = freeName(path + u".part");
    const int error = fileSystem().replaceFile(probe, "", 0);
    if (error != 0)
        return errorWords(error);
    fileSystem().removeFile(probe);
    return "a rule of that size could not be read again";
}

[[noreturn]] void failToWrite(const CString& path)
{
    throw HostError(ExitCode::failed,
                    "the rule file " + shownPath(path) +
                        " cannot be written: " + whyNotWritten(path));
}

void needValid(const CReorganizeRule& rule)
{
    if (!rule.isValid())
        throw HostError(ExitCode::failed,
                        "the rule " + toUtf8(rule.m_name) + " is not whole, so it is not kept");
}
} // namespace

RuleStore::RuleStore()
{
    CReorganizeUtils::init();
}

RuleStore::~RuleStore()
{
    CReorganizeUtils::destroy();
}

std::vector<CString> RuleStore::ids() const
{
    std::vector<CString> list;
    for (POSITION position = CReorganizeUtils::getFirstRulePos(); position;)
    {
        CString id;
        if (CReorganizeUtils::getNextRule(position, id))
            list.push_back(id);
    }
    std::sort(list.begin(),
              list.end(),
              [](const CString& a, const CString& b)
              {
                  const int order = CReorganizeUtils::compareRules(a, b);
                  return order != 0 ? order < 0 : a.Compare(b) < 0;
              });
    return list;
}

CString RuleStore::holderOf(const CString& name) const
{
    if (CReorganizeUtils::getRule(name))
        return name;
    const std::vector<CString> found = named(ids(), name);
    if (found.size() < 2)
        return found.empty() ? CString() : found.front();
    std::string text;
    for (const CString& id : found)
        text += (text.empty() ? "" : ", ") + toUtf8(id);
    throw HostError(ExitCode::usage,
                    "several rules are called \"" + toUtf8(name) + "\": name one by its id, of " +
                        text);
}

CString RuleStore::find(const std::string& typed) const
{
    CString id = holderOf(fromUtf8(typed));
    if (id.IsEmpty())
        throw HostError(ExitCode::notFound,
                        "there is no rule \"" + typed + "\"; \"qo rule ls\" lists them");
    return id;
}

CString RuleStore::onlyOwn() const
{
    CString own;
    for (const CString& id : ids())
    {
        if (isBuiltIn(id))
            continue;
        if (!own.IsEmpty())
            return {};
        own = id;
    }
    return own;
}

std::string RuleStore::listText() const
{
    std::string text;
    for (const CString& id : ids())
    {
        text += (text.empty() ? "" : ", ") + nameOf(id);
        if (!isBuiltIn(id) && nameOf(id) != toUtf8(id))
            text += " (" + toUtf8(id) + ")";
    }
    return text;
}

const CReorganizeRule& RuleStore::rule(const CString& id)
{
    return *CReorganizeUtils::getRule(id);
}

std::string RuleStore::nameOf(const CString& id)
{
    for (const BuiltIn& each : builtIns)
    {
        if (id == each.id)
            return each.word;
    }
    return toUtf8(CReorganizeUtils::getRuleDisplayName(id));
}

std::vector<CString> RuleStore::badFiles()
{
    const CString folder = CQoPaths::getQoDataDir();
    std::vector<DirEntry> entries;
    if (const int error = fileSystem().list(folder, entries))
        throw HostError(ExitCode::failed,
                        "the folder " + shownPath(folder) +
                            " cannot be read: " + errorWords(error));
    std::vector<CString> bad;
    for (const DirEntry& entry : entries)
    {
        const CString path = addBackslash(folder) + entry.name;
        if (entry.info.kind != FileKind::directory && isSame(fileExtOf(path), u"xml") &&
            !CReorganizeUtils::getRule(CReorganizeUtils::getReorgRuleID(path)))
            bad.push_back(path);
    }
    return bad;
}

CString RuleStore::newFile(const CString& name)
{
    if (name.IsEmpty())
        throw HostError(ExitCode::usage, "a rule needs a name");
    CString path = CReorganizeUtils::getNewReorgRulePath(name, true);
    if (path.IsEmpty())
        throw HostError(ExitCode::usage,
                        "no file can be called after the rule \"" + toUtf8(name) + "\"");
    if (toUtf8(fileNameOf(path)).size() > longestFileName)
        throw HostError(ExitCode::usage, "the name of the rule is too long for its file");
    return path;
}

CString RuleStore::add(const CReorganizeRule& rule)
{
    needValid(rule);
    const CString path = newFile(rule.m_name);
    CString id;
    if (!CReorganizeUtils::saveReorganizeRule(CString(), &rule, rule.m_name, id))
        failToWrite(path);
    // The store gives a new rule its own priority; the file has the right one.
    CReorganizeUtils::loadRules();
    return id;
}

void RuleStore::replace(const CString& id, const CReorganizeRule& rule)
{
    needOwn(id);
    needValid(rule);
    // Not by the name, which may be that of another rule's file.
    const CString path = fileOf(id);
    if (!CReorganizeRuleXmlParser::saveReorganizeRule(&rule, path))
        failToWrite(path);
    CReorganizeUtils::loadRules();
}

std::string RuleStore::remove(const CString& id, const Trash& trash)
{
    needOwn(id);
    const Trash::Item item = trash.put(toSystemPath(fileOf(id)));
    CReorganizeUtils::loadRules();
    return item.file;
}

void RuleStore::needOwn(const CString& id)
{
    if (isBuiltIn(id))
        throw HostError(ExitCode::refused,
                        "the rule " + nameOf(id) +
                            " is built in and cannot be changed; \"qo rule copy\" makes one that "
                            "can");
}
} // namespace qo::host
