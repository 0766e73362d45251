#pragma once

#include <QoKernel/Analysis.h>

#include <functional>
#include <string>
#include <vector>

namespace qo::host
{
/// The pattern of a rule, made ready for many files: one name, or those of a path's folders.
class RulePattern
{
public:
    /// Gives an attribute's value, "" for an empty one.
    using Values = std::function<CString(CNSAtom::EType)>;

    enum class Form
    {
        name, ///< a backslash in it is a forbidden character like others
        path  ///< backslashes part it, the ones at its start and end stand for nothing
    };

    RulePattern(const CNSNamePattern& pattern, Form form);

    /// The pattern with the values in it, in which what a file name must not hold became "_", and
    /// so did a point that would hide a name. False when one of its names would be empty, but for
    /// punctuation around empty attributes; reason then is a clause.
    bool fill(const Values& values, CString& text, std::string& reason) const;
    /// With the names of the attributes in it.
    const std::string& text() const { return m_text; }
    /// Whether an attribute in it has no value.
    bool hasEmptyAttribute(const Values& values) const;

private:
    struct Piece
    {
        CNSAtom::EType attribute;
        CString text; ///< of a fixed text
    };
    using Name = std::vector<Piece>;

    void addFixedText(const CString& text, Form form);
    static CString join(const Name& name, const Values& values);
    static std::string shown(const Name& name);

    std::string m_text;
    std::vector<Name> m_names;
    const char* m_what; ///< that a name is of
};
} // namespace qo::host
