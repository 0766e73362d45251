#include "core/rules/RulePattern.h"

#include "core/plan/TargetName.h"

#include <QoKernel/Rules.h>

#include <algorithm>

namespace qo::host
{
namespace
{
bool hasLetters(const CString& text)
{
    const std::u16string_view units = text.view();
    return std::any_of(
        units.begin(), units.end(), [](char16_t unit) { return !CNSUtils::isExtraChar(unit); });
}
} // namespace

RulePattern::RulePattern(const CNSNamePattern& pattern, Form form)
    : m_text(toUtf8(CReorganizeUtils::getAttributesString(&pattern)))
    , m_names(1)
    , m_what(form == Form::path ? "its folder" : "it")
{
    for (const CNSAtom* atom : pattern.m_atoms)
    {
        if (atom->m_type == CNSAtom::FixedString)
            addFixedText(plainText(atom->m_value), form);
        else
            m_names.back().push_back({atom->m_type, {}});
    }
    if (form == Form::name)
        return;
    if (m_names.back().empty())
        m_names.pop_back();
    if (!m_names.empty() && m_names.front().empty())
        m_names.erase(m_names.begin());
}

void RulePattern::addFixedText(const CString& text, Form form)
{
    CString rest = text;
    if (form == Form::path)
        rest.Replace(u"\\\\", u"\\");
    for (;;)
    {
        const int end = form == Form::path ? rest.Find(u'\\') : -1;
        const CString part = end < 0 ? rest : rest.Left(end);
        if (!part.IsEmpty())
            m_names.back().push_back({CNSAtom::FixedString, part});
        if (end < 0)
            return;
        m_names.emplace_back();
        rest = rest.Mid(end + 1);
    }
}

bool RulePattern::fill(const Values& values, CString& text, std::string& reason) const
{
    text.Empty();
    for (const Name& name : m_names)
    {
        CString filled = cleanFileName(join(name, values), CleanMode::replace);
        if (filled.IsEmpty())
        {
            reason = "the file has no value for " + shown(name) + ", which is to name " + m_what;
            return false;
        }
        // A name with a point at its start is hidden; nobody would find the file again.
        if (filled[0] == u'.')
            filled.SetAt(0, u'_');
        if (!text.IsEmpty())
            text += u'\\';
        text += filled;
    }
    return true;
}

/// "" also where nothing has a value and what stands between is mere punctuation.
CString RulePattern::join(const Name& name, const Values& values)
{
    CString joined;
    bool hasAttributes = false;
    bool saysSomething = false;
    for (const Piece& piece : name)
    {
        const bool isFixed = piece.attribute == CNSAtom::FixedString;
        const CString text = isFixed ? piece.text : values(piece.attribute);
        hasAttributes |= !isFixed;
        saysSomething |= isFixed ? hasLetters(text) : !text.IsEmpty();
        joined += text;
    }
    joined.Trim();
    return saysSomething || !hasAttributes ? joined : CString();
}

bool RulePattern::hasEmptyAttribute(const Values& values) const
{
    const auto isEmpty = [&values](const Piece& piece)
    { return piece.attribute != CNSAtom::FixedString && values(piece.attribute).IsEmpty(); };
    return std::any_of(m_names.begin(),
                       m_names.end(),
                       [&isEmpty](const Name& name)
                       { return std::any_of(name.begin(), name.end(), isEmpty); });
}

std::string RulePattern::shown(const Name& name)
{
    CString text;
    for (const Piece& piece : name)
        text += piece.attribute == CNSAtom::FixedString
                    ? piece.text
                    : CReorganizeUtils::getAttributeName(piece.attribute);
    return text.IsEmpty() ? "a pattern without text" : toUtf8(text);
}
} // namespace qo::host
