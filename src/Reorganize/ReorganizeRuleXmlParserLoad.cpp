#include "Analyze/MakeOwned.h"
#include "Reorganize/AlbumTracksSeperateRule.h"
#include "Reorganize/ArtistTracksSeperateRule.h"
#include "Reorganize/JingleSeperateRule.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeRuleXmlParser.h"
#include "Reorganize/ReorganizeUtils.h"
#include "Reorganize/RuleFileCheck.h"
#include "Reorganize/RuleFileNames.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <tinyxml.h>

#include <string>

// Reading a rule file: readFile() loads its bytes, isReadableRuleFile() checks them before the XML
// parser sees them, and add...() build the tree of the rule from the tree of elements.

namespace
{
namespace names = qo::ruleFile;

/// Reads a file; false if it cannot be read or is too large.
bool readFile(const CString& path, std::string& bytes)
{
    int error = 0;
    const auto file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    if (!file)
        return false;
    // One byte more than allowed: a file that fills this is too large.
    bytes.resize(qo::largestRuleFile + 1);
    std::size_t size = 0;
    while (size < bytes.size())
    {
        const std::int64_t got = file->read(bytes.data() + size, bytes.size() - size);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    bytes.resize(size);
    return size <= qo::largestRuleFile;
}

/// Calls the function with each child element of that name.
template <class FUNCTION>
void forEachChild(const TiXmlElement* element, const char* name, FUNCTION function)
{
    const TiXmlElement* child = element->FirstChildElement(name);
    for (; child; child = child->NextSiblingElement(name))
        function(child);
}

/// A new rule, which the caller gives to the tree.
template <class RULE, class... Args>
RULE* makeRule(Args... args)
{
    return qo::makeOwned<RULE>(QO_HERE(u".\\Reorganize\\ReorganizeRuleXmlParser"), args...)
        .release();
}
} // namespace

CReorganizeRule* CReorganizeRuleXmlParser::loadReorganizeRule(const CString& path)
{
    std::string bytes;
    if (!readFile(path, bytes) || !qo::isReadableRuleFile(bytes))
        return nullptr;
    TiXmlDocument document;
    document.SetTabSize(0); // positions in the text are not needed, and tracking them costs time
    document.Parse(bytes.c_str(), nullptr, TIXML_ENCODING_UTF8);
    const TiXmlElement* const root = document.RootElement();
    if (document.Error() || !root || !elemHasName(root, names::root))
        return nullptr;
    auto rule = qo::makeOwned<CReorganizeRule>(QO_HERE(u".\\Reorganize\\ReorganizeRuleXmlParser"));
    return createReorganizeRule(root, rule.get()) ? rule.release() : nullptr;
}

bool CReorganizeRuleXmlParser::createReorganizeRule(const TiXmlElement* element,
                                                    CReorganizeRule* rule)
{
    if (!getAttribValue(element, names::name, rule->m_name))
        return false;
    if (!getAttribIntValue(element, names::prio, rule->m_prio))
        rule->m_prio = CReorganizeRule::defaultPrio;
    forEachChild(element,
                 names::unknownAttrib,
                 [rule](const TiXmlElement* child)
                 {
                     CString name;
                     CString value;
                     if (!getAttribValue(child, names::name, name) ||
                         !getAttribValue(child, names::defValue, value))
                         return;
                     const CNSAtom::EType type = CReorganizeUtils::getAttributeType(name);
                     if (type != CNSAtom::FixedString)
                         rule->setUnknownAttribDefValue(type, value);
                 });
    // The elements below the root are the top level: no output and no folder above them.
    addSubRules(element, rule, nullptr, -1, nullptr);
    return rule->isValid();
}

void CReorganizeRuleXmlParser::addSubRules(const TiXmlElement* element,
                                           CReorganizeRule* rule,
                                           const CSeperateRule* parentRule,
                                           int outputType,
                                           const CSubdirRule* parentSubdirRule)
{
    const auto add = [=](const TiXmlElement* child)
    {
        CString type;
        if (!getAttribValue(child, names::type, type))
            return;
        if (type == names::artistTracks)
            addArtistTracksSeperateRule(child, rule, parentRule, outputType);
        else if (type == names::albumTracks)
            addAlbumTracksSeperateRule(child, rule, parentRule, outputType);
        else if (type == names::jingle)
            addJingleSeperateRule(child, rule, parentRule, outputType);
        else if (type == names::subdir)
            addSubdirRule(child, rule, parentRule, outputType);
        else if (type == names::rename)
            addRenameRule(child, rule, parentSubdirRule);
    };
    forEachChild(element, names::rule, add);
}

void CReorganizeRuleXmlParser::addSeperateRule(CSeperateRule* newRule,
                                               const TiXmlElement* element,
                                               CReorganizeRule* rule,
                                               const CSeperateRule* parentRule,
                                               int outputType)
{
    // The node comes first: its outputs are the parents of what follows. An output with an unknown
    // name has the type -1, which no node has, so its rules go to the top level.
    rule->addSeperateRule(newRule, parentRule, outputType);
    forEachChild(element,
                 names::output,
                 [=](const TiXmlElement* child)
                 {
                     CString name;
                     if (getAttribValue(child, names::type, name))
                         addSubRules(child, rule, newRule, newRule->getOutputType(name), nullptr);
                 });
}

void CReorganizeRuleXmlParser::addArtistTracksSeperateRule(const TiXmlElement* element,
                                                           CReorganizeRule* rule,
                                                           const CSeperateRule* parentRule,
                                                           int outputType)
{
    int limit = 0;
    if (getAttribIntValue(element, names::trackLimit, limit))
        addSeperateRule(
            makeRule<CArtistTracksSeperateRule>(limit), element, rule, parentRule, outputType);
}

void CReorganizeRuleXmlParser::addAlbumTracksSeperateRule(const TiXmlElement* element,
                                                          CReorganizeRule* rule,
                                                          const CSeperateRule* parentRule,
                                                          int outputType)
{
    int limit = 0;
    if (getAttribIntValue(element, names::trackLimit, limit))
        addSeperateRule(
            makeRule<CAlbumTracksSeperateRule>(limit), element, rule, parentRule, outputType);
}

void CReorganizeRuleXmlParser::addJingleSeperateRule(const TiXmlElement* element,
                                                     CReorganizeRule* rule,
                                                     const CSeperateRule* parentRule,
                                                     int outputType)
{
    addSeperateRule(makeRule<CJingleSeperateRule>(), element, rule, parentRule, outputType);
}

void CReorganizeRuleXmlParser::addSubdirRule(const TiXmlElement* element,
                                             CReorganizeRule* rule,
                                             const CSeperateRule* parentRule,
                                             int outputType)
{
    auto* const newRule = makeRule<CSubdirRule>();
    rule->addSubdirRule(newRule, parentRule, outputType);
    CString definition;
    if (!getAttribBoolValue(element, names::keepOriginal, newRule->keepOriginal) ||
        !getAttribValue(element, names::definition, definition))
        return;
    CReorganizeUtils::parseAttributesString(definition, &newRule->m_pattern);
    addSubRules(element, rule, parentRule, outputType, newRule);
}

void CReorganizeRuleXmlParser::addRenameRule(const TiXmlElement* element,
                                             CReorganizeRule* rule,
                                             const CSubdirRule* parentSubdirRule)
{
    CString typeName;
    if (!getAttribValue(element, names::renameRuleType, typeName))
        return;
    const CRenameRule::EType type = CRenameRule::getType(typeName);
    if (type == CRenameRule::InvalidType)
        return;
    auto* const newRule = makeRule<CRenameRule>(type);
    rule->addRenameRule(newRule, parentSubdirRule);
    CString definition;
    if (getAttribBoolValue(element, names::keepOriginal, newRule->keepOriginal) &&
        getAttribBoolValue(
            element, names::keepOriginalIfAttribEmpty, newRule->keepOriginalIfAttribEmpty) &&
        getAttribValue(element, names::definition, definition))
        CReorganizeUtils::parseAttributesString(definition, &newRule->m_pattern);
}
