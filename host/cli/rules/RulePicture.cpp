#include "cli/rules/RulePicture.h"

#include "cli/shown/Text.h"

#include <utility>

namespace qo::cli
{
namespace
{
using Node = CReorganizeRule::CNode;
using SeparatorNode = CReorganizeRule::CSeperateRuleNode;
using OutputNode = CReorganizeRule::CSeperateRuleOutputNode;
using FolderNode = CReorganizeRule::CSubdirRuleNode;
using NameNode = CReorganizeRule::CRenameRuleNode;

struct SeparatorName
{
    CSeperateRule::EType type;
    const char* label;
    const char* element; ///< as rule files have it
};
constexpr SeparatorName separatorNames[] = {
    {CSeperateRule::ArtistTracks, "artist-tracks rule", "ArtistTracksSeperateRule"},
    {CSeperateRule::AlbumTracks, "album-tracks rule", "AlbumTracksSeperateRule"},
    {CSeperateRule::Jingle, "jingle rule", "JingleSeperateRule"}};

const SeparatorName& wordsFor(const CSeperateRule& rule)
{
    const SeparatorName* found = separatorNames;
    for (const SeparatorName& each : separatorNames)
        found = each.type == rule.m_type ? &each : found;
    return *found;
}

/// -1 for a separator without one.
int trackLimitOf(const CSeperateRule& rule)
{
    if (const auto* artist = dynamic_cast<const CArtistTracksSeperateRule*>(&rule))
        return artist->m_trackLimit;
    const auto* album = dynamic_cast<const CAlbumTracksSeperateRule*>(&rule);
    return album ? album->m_trackLimit : -1;
}

std::string patternText(const CNSNamePattern& pattern)
{
    return toUtf8(CReorganizeUtils::getAttributesString(&pattern));
}

std::string kindOf(const CRenameRule& rule)
{
    return toUtf8(CRenameRule::getTypeName(rule.getType()));
}

std::string separatorText(const CSeperateRule& rule)
{
    const int limit = trackLimitOf(rule);
    return wordsFor(rule).label + (limit < 0 ? "" : ": " + countText(limit, "track"));
}

std::string folderText(const CSubdirRule& rule)
{
    if (rule.keepOriginal)
        return "folder kept";
    const std::string pattern = patternText(rule.m_pattern);
    return "folder " + pattern + (pattern == "\\" ? "  (none of its own)" : "");
}

std::string nameText(const CRenameRule& rule)
{
    constexpr std::size_t kindWidth = 9;
    std::string text = padded(kindOf(rule), kindWidth);
    if (rule.keepOriginal)
        return text + "keeps its name";
    text += patternText(rule.m_pattern);
    return text +
           (rule.keepOriginalIfAttribEmpty ? "  (keeps its name if an attribute is empty)" : "");
}

std::string textOf(const Node& node)
{
    switch (node.m_type)
    {
    case Node::NT_SeperateRule:
        return separatorText(*static_cast<const SeparatorNode&>(node).m_rule);
    case Node::NT_SeperateRuleOutput:
    {
        const auto& output = static_cast<const OutputNode&>(node);
        const auto& separator = static_cast<const SeparatorNode&>(*output.m_parent);
        return toUtf8(separator.m_rule->getOutputName(output.m_outputType));
    }
    case Node::NT_SubdirRule:
        return folderText(*static_cast<const FolderNode&>(node).m_rule);
    default:
        return nameText(*static_cast<const NameNode&>(node).m_rule);
    }
}

void drawBelow(const Node& node, const std::string& indent, std::vector<std::string>& lines)
{
    const Node* next = node.getNextSubNode(nullptr);
    while (const Node* const child = next)
    {
        next = node.getNextSubNode(child);
        lines.push_back(indent + (next ? "├─ " : "└─ ") + oneLine(fromUtf8(textOf(*child))));
        drawBelow(*child, indent + (next ? "│  " : "   "), lines);
    }
}

Json nodeJson(const Node* node);

Json separatorJson(const SeparatorNode& node)
{
    Json object;
    object["type"] = wordsFor(*node.m_rule).element;
    if (const int limit = trackLimitOf(*node.m_rule); limit >= 0)
        object["trackLimit"] = limit;
    object["outputs"] = Json::array();
    for (const OutputNode* output : node.m_outputs)
        object["outputs"].push_back(
            {{"type", toUtf8(node.m_rule->getOutputName(output->m_outputType))},
             {"rule", nodeJson(output->m_link)}});
    return object;
}

Json nameJson(const NameNode& node)
{
    const CRenameRule& rule = *node.m_rule;
    return {{"type", "RenameRule"},
            {"kind", kindOf(rule)},
            {"keepOriginal", rule.keepOriginal},
            {"keepOriginalIfAttribEmpty", rule.keepOriginalIfAttribEmpty},
            {"pattern", patternText(rule.m_pattern)}};
}

Json folderJson(const FolderNode& node)
{
    Json object;
    object["type"] = "SubdirRule";
    object["keepOriginal"] = node.m_rule->keepOriginal;
    object["pattern"] = patternText(node.m_rule->m_pattern);
    object["names"] = Json::array();
    for (const NameNode* name : node.m_renameRules)
        object["names"].push_back(nameJson(*name));
    return object;
}

Json nodeJson(const Node* node)
{
    if (!node)
        return {};
    if (node->m_type == Node::NT_SeperateRule)
        return separatorJson(static_cast<const SeparatorNode&>(*node));
    if (node->m_type == Node::NT_SubdirRule)
        return folderJson(static_cast<const FolderNode&>(*node));
    return nameJson(static_cast<const NameNode&>(*node));
}
} // namespace

std::vector<std::string> rulePicture(const CReorganizeRule& rule)
{
    std::vector<std::string> lines;
    for (const Node* node : rule.m_nodes)
    {
        if (!node)
            continue;
        lines.push_back(oneLine(fromUtf8(textOf(*node))));
        drawBelow(*node, "", lines);
    }
    return lines;
}

Json ruleNodesJson(const CReorganizeRule& rule)
{
    Json list = Json::array();
    for (const Node* node : rule.m_nodes)
        list.push_back(nodeJson(node));
    return list;
}

Json ruleDefaultsJson(const CReorganizeRule& rule)
{
    Json object = Json::object();
    for (const CReorganizeUtils::AttribInfo& attribute : CReorganizeUtils::m_attribsInfo)
    {
        CString value;
        if (rule.getUnknownAttribDefValue(attribute.type, value))
            object[toUtf8(CString(attribute.name))] = toUtf8(value);
    }
    return object;
}

std::vector<std::string> ruleUses(const CReorganizeRule& rule)
{
    constexpr std::pair<CReorganizeUtils::EReorganizeRuleSorterType, const char*> names[] = {
        {CReorganizeUtils::sorter, "sorter"},
        {CReorganizeUtils::importer, "importer"},
        {CReorganizeUtils::musicImporter, "music importer"}};
    std::vector<std::string> uses;
    for (const auto& [bit, name] : names)
    {
        if (CReorganizeUtils::isReorganizeRuleOfType(&rule, bit))
            uses.emplace_back(name);
    }
    return uses;
}
} // namespace qo::cli
