#pragma once

#include <QoKernel/Kernel.h>

#include <string>
#include <vector>

namespace qo::host
{
/// Finds the name that somebody may have meant: one that holds what was typed, or else one that a
/// few letters make of it.
class ClosestName
{
public:
    explicit ClosestName(const CString& typed);

    void look(const CString& name);
    /// "" when no name came near.
    const CString& best() const { return m_best; }

private:
    CString m_typed;
    CString m_best;
    std::size_t m_bestCost;
};

/// "a, b, c".
std::string listOf(const std::vector<std::string>& names);
/// "a, b and 3 more" for the first names of five.
std::string firstOf(const std::vector<std::string>& names, std::size_t total);

/// "; did you mean \"albums\"?" for "album", from the names that there are; "" if none is near.
std::string suggestionFor(const std::string& typed, const std::vector<std::string>& names);
/// The same, or "; there are a, b, c" if none is near.
std::string suggestionOrList(const std::string& typed, const std::vector<std::string>& names);
} // namespace qo::host
