#include "Analyze/MakeOwned.h"
#include "Reorganize/FileNameCleaner.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeRuleXmlParser.h"
#include "Reorganize/ReorganizeUtils.h"
#include "common/CollPath.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/LogLevel.h"
#include "common/Paths.h"
#include "common/QoException.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <cerrno>

// The store of rules: m_rules maps ids to rules, m_goneRules keeps those that were replaced or
// deleted, since the host may still use them.

CNSNamePattern CReorganizeUtils::m_defaultRenameRulePattern;
CReorganizeRule CReorganizeUtils::m_artistTrackRule;
CReorganizeRule CReorganizeUtils::m_velmoraArtistTrackRule;
CCriticalSection CReorganizeUtils::m_csRules;
CMapStringToPtr CReorganizeUtils::m_rules;
CAutoListT<CReorganizeRule> CReorganizeUtils::m_goneRules;

namespace
{
constexpr const char16_t* ruleFileExtension = u"xml";

void addAtom(CNSNamePattern& pattern, CNSAtom::EType type, const CString& value)
{
    pattern.addAtom(
        qo::makeOwned<CNSAtom>(QO_HERE(u".\\Reorganize\\ReorganizeUtils"), type, value).release());
}

bool isOfPoints(const CString& text)
{
    return text.view().find_first_not_of(u'.') == std::u16string_view::npos;
}

/// Whether two paths in the folder of rules mean the same file: on most disks names that differ in
/// case are two names.
bool isSameFile(const CString& a, const CString& b)
{
    qo::FileInfo first;
    qo::FileInfo second;
    return a.CompareNoCase(b) == 0 && qo::fileSystem().info(a, qo::Spelling::exact, first) == 0 &&
           qo::fileSystem().info(b, qo::Spelling::exact, second) == 0 &&
           first.device == second.device && first.inode == second.inode;
}

void removeOldFile(const CString& path)
{
    const int error = qo::fileSystem().removeFile(path);
    if (error != 0 && error != ENOENT)
        qo::log(qo::level::error,
                u"CReorganizeUtils::saveReorganizeRule : cannot delete %s : %s",
                path,
                qo::errorText(error));
}
} // namespace

void CReorganizeUtils::init()
{
    try
    {
        m_defaultRenameRulePattern.clear();
        addAtom(m_defaultRenameRulePattern, CNSAtom::Artist, u"");
        addAtom(m_defaultRenameRulePattern, CNSAtom::FixedString, u" - ");
        addAtom(m_defaultRenameRulePattern, CNSAtom::Track, u"");
        buildBuiltInRule(m_velmoraArtistTrackRule, u"velmora\\");
        buildBuiltInRule(m_artistTrackRule, u"\\");
        loadRules();
    }
    catch (CQoException* caught)
    {
        const std::unique_ptr<CQoException> exception(caught);
    }
}

void CReorganizeUtils::buildBuiltInRule(CReorganizeRule& rule, const CString& folder)
{
    rule.clear();
    const CSubdirRule* const subdirRule = addSubDirRule(rule, folder);
    addDefaultRenameRules(rule, subdirRule);
    rule.m_prio = 0;
}

CSubdirRule* CReorganizeUtils::addSubDirRule(CReorganizeRule& rule, const CString& text)
{
    auto* const subdirRule =
        qo::makeOwned<CSubdirRule>(QO_HERE(u".\\Reorganize\\ReorganizeUtils")).release();
    rule.addSubdirRule(subdirRule, nullptr);
    subdirRule->keepOriginal = false;
    addAtom(subdirRule->m_pattern, CNSAtom::FixedString, text);
    return subdirRule;
}

void CReorganizeUtils::addDefaultRenameRules(CReorganizeRule& rule, const CSubdirRule* subdirRule)
{
    for (const auto type : {CRenameRule::Music, CRenameRule::Lyrics, CRenameRule::Picture})
    {
        auto renameRule =
            qo::makeOwned<CRenameRule>(QO_HERE(u".\\Reorganize\\ReorganizeUtils"), type);
        if (type == CRenameRule::Music)
        {
            renameRule->keepOriginal = false;
            renameRule->keepOriginalIfAttribEmpty = true;
            renameRule->m_pattern.copyFrom(m_defaultRenameRulePattern);
        }
        rule.addRenameRule(renameRule.release(), subdirRule);
    }
}

void CReorganizeUtils::destroy()
{
    const qo::Guard guard(m_csRules);
    clearRules();
    m_goneRules.clear();
    m_velmoraArtistTrackRule.clear();
    m_artistTrackRule.clear();
}

CString CReorganizeUtils::makeReorgRulePath(const CString& id)
{
    // These would leave the folder, or be taken for a built-in rule.
    if (isOfPoints(id) || id.FindOneOf(u"/\\") != -1 || id[0] == u':')
        return {};
    return qo::combinePath(CQoPaths::getQoDataDir(), id, ruleFileExtension);
}

CString CReorganizeUtils::getReorgRuleID(const CString& path)
{
    return CQoCollPath(path).getFileTitle();
}

CString CReorganizeUtils::getReorgRulePattern()
{
    return makeReorgRulePath(u"*");
}

CString CReorganizeUtils::getNewReorgRulePath(CString name, bool unique)
{
    name = qo::cleanFileName(name, qo::CleanMode::replace);
    CString path = makeReorgRulePath(name);
    for (int n = 1; unique && !path.IsEmpty() && qo::fileSystem().exists(path); ++n)
    {
        CString numbered;
        numbered.Format(u"%s%d", name, n);
        path = makeReorgRulePath(numbered);
    }
    return path;
}

bool CReorganizeUtils::isReadOnlyRule(const CString& id)
{
    return id == ArtistTrackRuleID || id == VelmoraArtistTrackRuleID;
}

bool CReorganizeUtils::isBuiltIn(const CReorganizeRule* rule)
{
    return rule == &m_artistTrackRule || rule == &m_velmoraArtistTrackRule;
}

/// The built-in rules are entered first. A file counts only if its path is the one that its id
/// gives.
void CReorganizeUtils::loadRules()
{
    const qo::Guard guard(m_csRules);
    clearRules();
    m_rules.SetAt(ArtistTrackRuleID, &m_artistTrackRule);
    m_rules.SetAt(VelmoraArtistTrackRuleID, &m_velmoraArtistTrackRule);
    const CString folder = CQoPaths::getQoDataDir();
    std::vector<qo::DirEntry> entries;
    (void)qo::fileSystem().list(folder, entries); // a folder that cannot be read has no rules
    for (const qo::DirEntry& entry : entries)
    {
        const CString path = qo::combinePath(folder, entry.name);
        const CString id = getReorgRuleID(path);
        if (entry.info.kind != qo::FileKind::regular || makeReorgRulePath(id) != path)
            continue;
        std::unique_ptr<CReorganizeRule> rule(CReorganizeRuleXmlParser::loadReorganizeRule(path));
        if (!rule)
            continue;
        m_rules.SetAt(id, rule.get());
        rule.release();
    }
}

/// The built-in rules are members and are not deleted.
void CReorganizeUtils::clearRules()
{
    const qo::Guard guard(m_csRules);
    POSITION position = getFirstRulePos();
    while (position)
    {
        CString id;
        const CReorganizeRule* const rule = getNextRule(position, id);
        if (!isBuiltIn(rule))
            delete rule;
    }
    m_rules.RemoveAll();
}

bool CReorganizeUtils::saveReorganizeRule(const CString& id,
                                          const CReorganizeRule* rule,
                                          const CString& name,
                                          CString& newId)
{
    const qo::Guard guard(m_csRules);
    const CString oldId = id; // id and newId may be the same object
    try
    {
        const CString path = getNewReorgRulePath(name, oldId.IsEmpty());
        if (path.IsEmpty())
            return false;
        newId = getReorgRuleID(path);
        if (!CReorganizeRuleXmlParser::saveReorganizeRule(rule, path))
            return false;
        const bool isRenamed = !oldId.IsEmpty() && oldId != newId;
        putStored(isRenamed ? oldId : newId, newId, *rule);
        const CString oldPath = makeReorgRulePath(oldId);
        if (isRenamed && !oldPath.IsEmpty() && !isSameFile(oldPath, path))
            removeOldFile(oldPath);
        return true;
    }
    catch (CQoException* caught)
    {
        const std::unique_ptr<CQoException> exception(caught);
        return false;
    }
}

/// Gives the stored rule its new id and makes it a copy of the given one.
void CReorganizeUtils::putStored(const CString& oldId,
                                 const CString& newId,
                                 const CReorganizeRule& rule)
{
    CReorganizeRule* stored = getRule(oldId);
    std::unique_ptr<CReorganizeRule> fresh;
    if (!stored || isBuiltIn(stored))
    {
        fresh = qo::makeOwned<CReorganizeRule>(QO_HERE(u".\\Reorganize\\ReorganizeUtils"));
        stored = fresh.get();
    }
    stored->copyFrom(&rule);
    m_rules.RemoveKey(oldId);
    if (CReorganizeRule* const replaced = getRule(newId))
        m_goneRules.add(replaced);
    m_rules.SetAt(newId, stored);
    fresh.release();
}

bool CReorganizeUtils::deleteRule(const CString& id)
{
    const qo::Guard guard(m_csRules);
    const CString path = makeReorgRulePath(id);
    if (path.IsEmpty() || qo::fileSystem().removeFile(path) != 0)
        return false;
    if (CReorganizeRule* const rule = getRule(id))
        m_goneRules.add(rule);
    m_rules.RemoveKey(id);
    return true;
}

POSITION CReorganizeUtils::getFirstRulePos()
{
    return m_rules.GetStartPosition();
}

CReorganizeRule* CReorganizeUtils::getNextRule(POSITION& position, CString& id)
{
    void* rule = nullptr;
    m_rules.GetNextAssoc(position, id, rule);
    return static_cast<CReorganizeRule*>(rule);
}

CReorganizeRule* CReorganizeUtils::getRule(const CString& id)
{
    void* rule = nullptr;
    m_rules.Lookup(id, rule);
    return static_cast<CReorganizeRule*>(rule);
}

CString CReorganizeUtils::getRuleDisplayName(const CString& id)
{
    const CReorganizeRule* const rule = getRule(id);
    return rule ? rule->m_name : CString();
}

int CReorganizeUtils::compareRules(const CString& a, const CString& b)
{
    const CReorganizeRule* const first = getRule(a);
    const CReorganizeRule* const second = getRule(b);
    if (!first || !second || first->m_prio == second->m_prio)
        return 0;
    return second->m_prio < first->m_prio ? -1 : 1;
}
