#include "cli/rules/RuleDraft.h"

#include "cli/shown/Text.h"
#include "core/base/HostError.h"

#include <algorithm>
#include <memory>

namespace qo::cli
{
namespace
{
using host::ExitCode;
using host::HostError;
using OutputNode = CReorganizeRule::CSeperateRuleOutputNode;

std::string attributeNames()
{
    std::string text;
    for (const CReorganizeUtils::AttribInfo& attribute : CReorganizeUtils::m_attribsInfo)
        text += (text.empty() ? "" : ", ") + toUtf8(CString(attribute.name));
    return text;
}

bool isAttribute(const CString& text)
{
    return std::any_of(std::begin(CReorganizeUtils::m_attribsInfo),
                       std::end(CReorganizeUtils::m_attribsInfo),
                       [&text](const CReorganizeUtils::AttribInfo& attribute)
                       { return text.CompareNoCase(attribute.name) == 0; });
}

/// What looks like an attribute and is none would end up in the names of files.
void checkAttributes(const CString& pattern)
{
    int start = pattern.Find(u'{');
    while (start >= 0)
    {
        const int end = pattern.Find(u'}', start);
        if (end < 0)
            return;
        const CString text = pattern.Mid(start, end + 1 - start);
        const std::u16string_view inside = text.view().substr(1, text.view().size() - 2);
        const bool looksLikeOne =
            !inside.empty() &&
            inside.find_first_not_of(u"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ.-") ==
                std::u16string_view::npos;
        if (looksLikeOne && !isAttribute(text))
            throw HostError(ExitCode::usage,
                            toUtf8(text) + " is no attribute; there are " + attributeNames());
        start = pattern.Find(u'{', start + 1);
    }
}

class Builder
{
public:
    Builder(const RuleDraft& draft, CReorganizeRule& rule, std::vector<std::string>& notes)
        : m_draft(draft), m_rule(rule), m_notes(notes)
    {
    }

    void addTree()
    {
        CSeperateRule* const separator = makeSeparator();
        if (!separator)
            return addFolder(m_draft.folder, nullptr);
        const auto* const node = m_rule.addSeperateRule(separator, nullptr);
        for (OutputNode* output : node->m_outputs)
        {
            const bool isFirst = output == node->m_outputs.GetAt(0);
            addFolder(isFirst ? m_draft.folder : m_draft.lessFolder, output);
        }
    }

    void addDefault(const std::string& typed)
    {
        const std::size_t equals = typed.find('=');
        if (equals == std::string::npos)
            throw HostError(ExitCode::usage, "\"" + typed + "\" is not of the form attribute=text");
        CString name = checkedText(typed.substr(0, equals), "the attribute").MakeLower();
        if (name.Find(u'{') != 0)
            name = u"{" + name + u"}";
        const CNSAtom::EType type = CReorganizeUtils::getAttributeType(name);
        if (type == CNSAtom::FixedString)
            throw HostError(ExitCode::usage,
                            toUtf8(name) + " is no attribute; there are " + attributeNames());
        m_rule.setUnknownAttribDefValue(
            type, checkedText(typed.substr(equals + 1), "the text for " + toUtf8(name)));
    }

private:
    CSeperateRule* makeSeparator() const
    {
        if (m_draft.artistLimit)
            return new CArtistTracksSeperateRule(*m_draft.artistLimit);
        if (m_draft.albumLimit)
            return new CAlbumTracksSeperateRule(*m_draft.albumLimit);
        return nullptr;
    }

    void addFolder(const std::optional<std::string>& typed, OutputNode* parent)
    {
        auto folder = std::make_unique<CSubdirRule>();
        folder->keepOriginal = !typed;
        if (typed)
            parse(folderPattern(*typed), folder->m_pattern);
        const CSubdirRule* const added = folder.get();
        m_rule.addSubdirRule(folder.release(), parent);
        addName(CRenameRule::Music, m_draft.music, added);
        addName(CRenameRule::Lyrics, m_draft.lyrics, added);
        addName(CRenameRule::Picture, m_draft.picture, added);
    }

    void addName(CRenameRule::EType kind,
                 const std::optional<std::string>& typed,
                 const CSubdirRule* folder)
    {
        auto name = std::make_unique<CRenameRule>(kind);
        name->keepOriginal = !typed;
        name->keepOriginalIfAttribEmpty = typed && m_draft.keepIfEmpty;
        if (typed)
            parse(namePattern(*typed), name->m_pattern);
        m_rule.addRenameRule(name.release(), folder);
    }

    CString folderPattern(const std::string& typed)
    {
        CString text = checkedText(typed, "the pattern");
        text.Replace(u'/', u'\\');
        CString proper = CReorganizeUtils::makeProperSubdirRuleAttribString(text);
        // The closing backslash is a matter of form.
        if (proper != text && proper != text + u"\\")
            noteChange(typed, proper);
        return proper;
    }

    CString namePattern(const std::string& typed)
    {
        CString proper =
            CReorganizeUtils::makeProperRenameRuleAttribString(checkedText(typed, "the pattern"));
        if (proper.IsEmpty())
            throw HostError(ExitCode::usage,
                            "no file can have a name by the pattern \"" + typed + "\"");
        if (proper != fromUtf8(typed))
            noteChange(typed, proper);
        return proper;
    }

    void noteChange(const std::string& typed, const CString& proper)
    {
        const std::string sentence = "the pattern \"" + typed + "\" became \"" + toUtf8(proper) +
                                     "\", as a file name cannot hold the rest";
        if (std::find(m_notes.begin(), m_notes.end(), sentence) == m_notes.end())
            m_notes.push_back(sentence);
    }

    static void parse(const CString& text, CNSNamePattern& pattern)
    {
        checkAttributes(text);
        CReorganizeUtils::parseAttributesString(text, &pattern);
    }

    const RuleDraft& m_draft;
    CReorganizeRule& m_rule;
    std::vector<std::string>& m_notes;
};
} // namespace

CString checkedText(const std::string& typed, const std::string& what)
{
    if (!isUtf8(typed))
        throw HostError(ExitCode::usage, what + " is not UTF-8");
    const bool hasControls = std::any_of(
        typed.begin(), typed.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; });
    if (hasControls)
        throw HostError(ExitCode::usage, what + " has control characters in it");
    return fromUtf8(typed);
}

void RuleDraft::build(CReorganizeRule& rule, std::vector<std::string>& notes) const
{
    if (lessFolder && !artistLimit && !albumLimit)
        throw HostError(ExitCode::usage,
                        "--less-folder needs --artist-limit or --album-limit beside it");
    Builder builder(*this, rule, notes);
    builder.addTree();
    for (const std::string& typed : defaults)
        builder.addDefault(typed);
}
} // namespace qo::cli
