#include "core/rules/RuleWalk.h"

#include "core/rules/RuleFacts.h"
#include "core/rules/RulePattern.h"

#include <QoKernel/Physical.h>

#include <unordered_map>

namespace qo::host
{
namespace
{
using Node = CReorganizeRule::CNode;
using SeparatorNode = CReorganizeRule::CSeperateRuleNode;
using OutputNode = CReorganizeRule::CSeperateRuleOutputNode;
using FolderNode = CReorganizeRule::CSubdirRuleNode;
using NameNode = CReorganizeRule::CRenameRuleNode;

CRenameRule::EType kindOf(const CHDFile& file)
{
    switch (file.getFileType())
    {
    case CHDFile::FT_Music:
        return CRenameRule::Music;
    case CHDFile::FT_Picture:
        return CRenameRule::Picture;
    case CHDFile::FT_Text:
        return CRenameRule::Lyrics;
    default:
        return CRenameRule::InvalidType;
    }
}

const Node* topNode(const CReorganizeRule& rule)
{
    for (const Node* node : rule.m_nodes)
    {
        if (node && CReorganizeRule::isValidSeperateRuleChild(node))
            return node;
    }
    return nullptr;
}

const NameNode* nameNodeOf(const FolderNode& folder, CRenameRule::EType kind)
{
    for (const NameNode* node : folder.m_renameRules)
    {
        if (node && node->m_rule && node->m_rule->getType() == kind)
            return node;
    }
    return nullptr;
}

CString withExtensionOf(const CString& path, const CString& stem)
{
    const CString extension = fileExtOf(path);
    return extension.IsEmpty() ? stem : stem + u"." + extension;
}

/// The name is no path: what stands before a colon in it is no drive. Music has an extension.
CString stemOfTrack(const CString& name)
{
    return name.Left(name.ReverseFind(u'.'));
}

void addStep(std::string& way, const std::string& step)
{
    way += (way.empty() ? "" : " > ") + step;
}
} // namespace

CString folderBelow(const CString& root, const CString& path)
{
    const int start = addBackslash(root).GetLength();
    const int end = path.GetLength() - fileNameOf(path).GetLength() - 1;
    return end > start ? path.Mid(start, end - start) : CString();
}

class RuleWalk::State
{
public:
    explicit State(const CReorganizeRule& rule)
        : m_facts(rule)
        , m_top(topNode(rule))
        , m_values([this](CNSAtom::EType attribute) { return m_facts.valueOf(attribute); })
    {
    }

    Answer answerFor(const boost::shared_ptr<CHDFile>& file, const CString& root)
    {
        const CRenameRule::EType kind = kindOf(*file);
        if (kind == CRenameRule::InvalidType)
            return answerOfTrack(file, root);
        Answer answer;
        answer.kind = CRenameRule::getTypeName(kind);
        m_facts.moveTo(file);
        if (m_facts.answering() != file)
            answer.track = m_facts.answering()->getPath();
        const FolderNode* const folder = findFolder(answer);
        if (!folder)
            return answer;
        const NameNode* const name = nameNodeOf(*folder, kind);
        if (!name)
        {
            answer.reason = "the rule has no name for files of the kind " + toUtf8(answer.kind);
            return answer;
        }
        answer.isMeant = true;
        answer.hasPlace = setFolder(*folder->m_rule, file->getPath(), root, answer) &&
                          setName(*name->m_rule, file->getPath(), answer);
        return answer;
    }

private:
    /// For a file of no kind that a rule can name.
    Answer answerOfTrack(const boost::shared_ptr<CHDFile>& file, const CString& root)
    {
        m_facts.moveTo(file);
        const boost::shared_ptr<CHDFile> track = m_facts.answering();
        Answer answer;
        if (track == file)
        {
            answer.reason = "rules are about music, pictures and lyrics only";
            return answer;
        }
        answer = answerFor(track, root);
        answer.kind.Empty();
        answer.track = track->getPath();
        addStep(answer.decidedBy, "goes with its track");
        if (answer.hasPlace)
            answer.name = withExtensionOf(file->getPath(), stemOfTrack(answer.name));
        return answer;
    }

    /// Follows the separators; null, with the reason in the answer, where they end in nothing.
    const FolderNode* findFolder(Answer& answer)
    {
        const Node* node = m_top;
        while (node && node->m_type == Node::NT_SeperateRule)
        {
            const auto& separator = static_cast<const SeparatorNode&>(*node);
            if (!separator.m_rule)
                break;
            const int type = m_facts.outputOf(*separator.m_rule);
            const std::string output = toUtf8(separator.m_rule->getOutputName(type));
            addStep(answer.decidedBy, output);
            const OutputNode* const next = separator.getOutput(type);
            node = next ? next->m_link : nullptr;
            if (!node)
            {
                answer.reason = "the rule has nothing below " + output;
                return nullptr;
            }
        }
        if (!node || node->m_type != Node::NT_SubdirRule ||
            !static_cast<const FolderNode&>(*node).m_rule)
        {
            answer.reason = "the rule has no folder for it";
            return nullptr;
        }
        return static_cast<const FolderNode*>(node);
    }

    bool
    setFolder(const CSubdirRule& rule, const CString& path, const CString& root, Answer& answer)
    {
        if (rule.keepOriginal)
        {
            addStep(answer.decidedBy, "folder kept");
            answer.folder = folderBelow(root, path);
            return true;
        }
        const RulePattern& folder = pattern(rule.m_pattern, RulePattern::Form::path);
        addStep(answer.decidedBy, folder.text());
        return folder.fill(m_values, answer.folder, answer.reason);
    }

    bool setName(const CRenameRule& rule, const CString& path, Answer& answer)
    {
        const RulePattern& name = pattern(rule.m_pattern, RulePattern::Form::name);
        const bool isWanting = !rule.keepOriginal && rule.keepOriginalIfAttribEmpty &&
                               name.hasEmptyAttribute(m_values);
        std::string step = " " + name.text();
        if (rule.keepOriginal)
            step = " name kept";
        else if (isWanting)
            step = " name kept, a value of" + step + " is empty";
        addStep(answer.decidedBy, toUtf8(answer.kind) + step);
        answer.name = fileNameOf(path);
        if (rule.keepOriginal || isWanting)
            return true;
        if (!name.fill(m_values, answer.name, answer.reason))
            return false;
        answer.name = withExtensionOf(path, answer.name);
        return true;
    }

    const RulePattern& pattern(const CNSNamePattern& pattern, RulePattern::Form form)
    {
        return m_patterns.try_emplace(&pattern, pattern, form).first->second;
    }

    RuleFacts m_facts;
    const Node* m_top;
    RulePattern::Values m_values;
    std::unordered_map<const CNSNamePattern*, RulePattern> m_patterns;
};

RuleWalk::RuleWalk(const CReorganizeRule& rule) : m_state(std::make_unique<State>(rule)) {}

RuleWalk::~RuleWalk() = default;

RuleWalk::Answer RuleWalk::answerFor(const boost::shared_ptr<CHDFile>& file, const CString& root)
{
    return m_state->answerFor(file, root);
}
} // namespace qo::host
