#include "Reorganize/AlbumTracksSeperateRule.h"
#include "Reorganize/ArtistTracksSeperateRule.h"
#include "Reorganize/ReorganizeRuleNodes.h"
#include "Reorganize/ReorganizeRuleXmlParser.h"
#include "Reorganize/ReorganizeUtils.h"
#include "Reorganize/RuleFileCheck.h"
#include "Reorganize/RuleFileNames.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <tinyxml.h>

namespace
{
namespace names = qo::ruleFile;
using Node = CReorganizeRule::CNode;

/// Appends a child element, which then belongs to the document.
TiXmlElement* addChild(TiXmlElement* parent, const char* name)
{
    return parent->LinkEndChild(new TiXmlElement(name))->ToElement();
}
} // namespace

bool CReorganizeRuleXmlParser::saveReorganizeRule(const CReorganizeRule* rule, const CString& path)
{
    TiXmlDocument document;
    TiXmlElement* const root = document.LinkEndChild(new TiXmlElement(names::root))->ToElement();
    saveReorganizeRule(rule, root);
    TiXmlPrinter printer;
    document.Accept(&printer);
    const std::string& bytes = printer.Str();
    return qo::isReadableRuleFile(bytes) &&
           qo::fileSystem().replaceFile(path, bytes.data(), bytes.size()) == 0;
}

void CReorganizeRuleXmlParser::saveReorganizeRule(const CReorganizeRule* rule,
                                                  TiXmlElement* element)
{
    setAttribValue(element, names::name, rule->m_name);
    setAttribIntValue(element, names::prio, rule->m_prio);
    for (int i = 0; i < CNSAtom::getAtomTypesCount(); ++i)
    {
        const CNSAtom::EType type = CNSAtom::getAtomType(i);
        CString value;
        if (!rule->getUnknownAttribDefValue(type, value))
            continue;
        TiXmlElement* const child = addChild(element, names::unknownAttrib);
        setAttribValue(child, names::name, CReorganizeUtils::getAttributeName(type));
        setAttribValue(child, names::defValue, value);
    }
    for (const Node* node : rule->m_nodes)
        saveSubRule(node, element);
}

void CReorganizeRuleXmlParser::saveSubRule(const Node* node, TiXmlElement* parent)
{
    if (!node)
        return;
    switch (node->m_type)
    {
    case Node::NT_SeperateRule:
        return saveNode(*static_cast<const CReorganizeRule::CSeperateRuleNode*>(node), parent);
    case Node::NT_SeperateRuleOutput:
        return saveNode(*static_cast<const CReorganizeRule::CSeperateRuleOutputNode*>(node),
                        parent);
    case Node::NT_SubdirRule:
        return saveNode(*static_cast<const CReorganizeRule::CSubdirRuleNode*>(node), parent);
    case Node::NT_RenameRule:
        return saveNode(*static_cast<const CReorganizeRule::CRenameRuleNode*>(node), parent);
    }
}

TiXmlElement* CReorganizeRuleXmlParser::addRule(TiXmlElement* parent, const CString& type)
{
    TiXmlElement* const element = addChild(parent, names::rule);
    setAttribValue(element, names::type, type);
    return element;
}

void CReorganizeRuleXmlParser::saveNode(const CReorganizeRule::CSeperateRuleNode& node,
                                        TiXmlElement* parent)
{
    TiXmlElement* element = nullptr;
    switch (node.m_rule->m_type)
    {
    case CSeperateRule::ArtistTracks:
        element = addRule(parent, names::artistTracks);
        setAttribIntValue(element,
                          names::trackLimit,
                          static_cast<CArtistTracksSeperateRule*>(node.m_rule)->m_trackLimit);
        break;
    case CSeperateRule::AlbumTracks:
        element = addRule(parent, names::albumTracks);
        setAttribIntValue(element,
                          names::trackLimit,
                          static_cast<CAlbumTracksSeperateRule*>(node.m_rule)->m_trackLimit);
        break;
    case CSeperateRule::Jingle:
        element = addRule(parent, names::jingle);
        break;
    default:
        return;
    }
    for (const Node* output : node.m_outputs)
        saveSubRule(output, element);
}

void CReorganizeRuleXmlParser::saveNode(const CReorganizeRule::CSeperateRuleOutputNode& node,
                                        TiXmlElement* parent)
{
    const auto* const owner = static_cast<const CReorganizeRule::CSeperateRuleNode*>(node.m_parent);
    TiXmlElement* const element = addChild(parent, names::output);
    setAttribValue(element, names::type, owner->m_rule->getOutputName(node.m_outputType));
    saveSubRule(node.m_link, element);
}

void CReorganizeRuleXmlParser::saveNode(const CReorganizeRule::CSubdirRuleNode& node,
                                        TiXmlElement* parent)
{
    const CSubdirRule& rule = *node.m_rule;
    TiXmlElement* const element = addRule(parent, names::subdir);
    setAttribBoolValue(element, names::keepOriginal, rule.keepOriginal);
    setAttribValue(
        element, names::definition, CReorganizeUtils::getAttributesString(&rule.m_pattern));
    for (const Node* renameRule : node.m_renameRules)
        saveSubRule(renameRule, element);
}

void CReorganizeRuleXmlParser::saveNode(const CReorganizeRule::CRenameRuleNode& node,
                                        TiXmlElement* parent)
{
    const CRenameRule& rule = *node.m_rule;
    TiXmlElement* const element = addRule(parent, names::rename);
    setAttribValue(element, names::renameRuleType, CRenameRule::getTypeName(rule.m_type));
    setAttribBoolValue(element, names::keepOriginal, rule.keepOriginal);
    setAttribBoolValue(element, names::keepOriginalIfAttribEmpty, rule.keepOriginalIfAttribEmpty);
    setAttribValue(
        element, names::definition, CReorganizeUtils::getAttributesString(&rule.m_pattern));
}
