#pragma once

#include <QoKernel/Kernel.h>

namespace qo::cli
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
} // namespace qo::cli
