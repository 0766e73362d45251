#include "Reorganize/ReorganizeUtils.h"

#include "Reorganize/FileNameCleaner.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/SeperateRule.h"

// The table of attributes, and what follows from the nodes of a rule: its uses.

const CReorganizeUtils::AttribInfo CReorganizeUtils::m_attribsInfo[attribsCount] = {
    {CNSAtom::Artist, u"{artist.name}", false},
    {CNSAtom::Album, u"{album.name}", false},
    {CNSAtom::Track, u"{track.name}", false},
    {CNSAtom::TrackNumber, u"{track.number}", false},
    {CNSAtom::Year, u"{track.year}", false},
    {CNSAtom::Genre, u"{track.genre}", false},
    {CNSAtom::Source, u"{source.name}", true},
    {CNSAtom::TimeStartHMEU, u"{time.eu}", true},
    {CNSAtom::TimeStartHMSEU, u"{time.sec-eu}", true},
    {CNSAtom::TimeStartHMUS, u"{time.us}", true},
    {CNSAtom::TimeStartHMSUS, u"{time.sec-us}", true},
    {CNSAtom::TimeEndHMEU, u"{time-end.eu}", true},
    {CNSAtom::TimeEndHMSEU, u"{time-end.sec-eu}", true},
    {CNSAtom::TimeEndHMUS, u"{time-end.us}", true},
    {CNSAtom::TimeEndHMSUS, u"{time-end.sec-us}", true},
    {CNSAtom::DateStartEU, u"{date.eu}", true},
    {CNSAtom::DateStartUS, u"{date.us}", true},
    {CNSAtom::DateStartINT, u"{date.int}", true},
    {CNSAtom::DateEndEU, u"{date-end.eu}", true},
    {CNSAtom::DateEndUS, u"{date-end.us}", true},
    {CNSAtom::DateEndINT, u"{date-end.int}", true},
};

namespace
{
using Utils = CReorganizeUtils;

const Utils::AttribInfo* findAttribute(CNSAtom::EType type)
{
    for (const Utils::AttribInfo& info : Utils::m_attribsInfo)
    {
        if (info.type == type)
            return &info;
    }
    return nullptr;
}

/// Adds what one node tells about the uses of its rule.
void addNodeTo(Utils::RuleTypeInfo& info, const CReorganizeRule::CNode& node)
{
    using Node = CReorganizeRule::CNode;
    if (node.m_type == Node::NT_SeperateRule)
    {
        const auto& rule = *static_cast<const CReorganizeRule::CSeperateRuleNode&>(node).m_rule;
        info.hasTrackCountSeparator |=
            rule.m_type == CSeperateRule::ArtistTracks || rule.m_type == CSeperateRule::AlbumTracks;
    }
    else if (node.m_type == Node::NT_SubdirRule)
    {
        const auto& rule = *static_cast<const CReorganizeRule::CSubdirRuleNode&>(node).m_rule;
        info.keepsOriginalDir |= rule.keepOriginal;
    }
    else if (node.m_type == Node::NT_RenameRule)
    {
        const auto& rule = *static_cast<const CReorganizeRule::CRenameRuleNode&>(node).m_rule;
        info.renamesWithVelmoraAtoms |=
            rule.m_type == CRenameRule::Music && Utils::patternHasVelmoraAtoms(rule.m_pattern);
    }
}
} // namespace

CNSAtom::EType CReorganizeUtils::getAttributeType(const CString& name)
{
    for (const AttribInfo& info : m_attribsInfo)
    {
        if (name == info.name)
            return info.type;
    }
    return CNSAtom::FixedString;
}

CString CReorganizeUtils::getAttributeName(CNSAtom::EType type)
{
    const AttribInfo* const info = findAttribute(type);
    return info ? info->name : u"{INVALID ATTRIB}";
}

CString CReorganizeUtils::getAttributeName(const CNSAtom* atom)
{
    return atom->m_type == CNSAtom::FixedString ? atom->m_value : getAttributeName(atom->m_type);
}

CString CReorganizeUtils::getAttributesString(const CNSNamePattern* pattern)
{
    CString text;
    for (const CNSAtom* atom : pattern->m_atoms)
        text += getAttributeName(atom);
    return text;
}

CString CReorganizeUtils::makeProperRuleAttribString(const CString& text, bool isSubdir)
{
    CString trimmed = text;
    trimmed.Trim();
    if (!isSubdir)
        return qo::cleanFileName(trimmed, qo::CleanMode::drop);
    const CString clean = qo::cleanFilePath(trimmed, qo::CleanMode::drop);
    int length = clean.GetLength();
    while (length > 0 && clean[length - 1] == u'\\')
        --length;
    return clean.Left(length) + u"\\";
}

CString CReorganizeUtils::makeProperSubdirRuleAttribString(const CString& text)
{
    return makeProperRuleAttribString(text, true);
}

CString CReorganizeUtils::makeProperRenameRuleAttribString(const CString& text)
{
    return makeProperRuleAttribString(text, false);
}

bool CReorganizeUtils::patternHasVelmoraAtoms(const CNSNamePattern& pattern)
{
    for (const CNSAtom* atom : pattern.m_atoms)
    {
        const AttribInfo* const info = findAttribute(atom->m_type);
        if (info && info->isVelmora)
            return true;
    }
    return false;
}

void CReorganizeUtils::getRuleTypeInfo(const CReorganizeRule* rule, RuleTypeInfo& info)
{
    info = {};
    const CReorganizeRule::CNode* node = rule->getFirstNode();
    for (; node; node = rule->getNextNode(node))
        addNodeTo(info, *node);
}

/// A rule that keeps folders cannot import, one that counts tracks cannot import music, and one
/// that names music by source, time or date can do nothing but import music.
int CReorganizeUtils::getReorganizeRuleSorterType(const CReorganizeRule* rule)
{
    RuleTypeInfo info;
    getRuleTypeInfo(rule, info);
    int type = info.renamesWithVelmoraAtoms ? musicImporter : musicImporter | importer | sorter;
    if (info.keepsOriginalDir)
        type &= ~(musicImporter | importer);
    if (info.hasTrackCountSeparator)
        type &= ~musicImporter;
    return type;
}

bool CReorganizeUtils::isReorganizeRuleOfType(const CReorganizeRule* rule,
                                              EReorganizeRuleSorterType type)
{
    return (getReorganizeRuleSorterType(rule) & type) == type;
}

bool CReorganizeUtils::isSorterReorganizeRule(const CReorganizeRule* rule)
{
    return isReorganizeRuleOfType(rule, sorter);
}

bool CReorganizeUtils::isImporterReorganizeRule(const CReorganizeRule* rule)
{
    return isReorganizeRuleOfType(rule, importer);
}

bool CReorganizeUtils::isMusicImporterReorganizeRule(const CReorganizeRule* rule)
{
    return isReorganizeRuleOfType(rule, musicImporter);
}
