#pragma once

#include <QoKernel/Analysis.h>
#include <QoKernel/Collection.h>
#include <QoKernel/Kernel.h>

#include <cstdint>

namespace qo::host
{
/// The moment in the form that the attribute's name says, fit for a file name: "23-59", "11-59 PM",
/// "31.12.2026" and so on; "" for an attribute that is neither time nor date.
CString timeText(CNSAtom::EType attribute, const CalendarTime& moment);

/// What the attributes of a rule stand for in one file after another. Nothing is read from the
/// files: their tags and times are those that the collection has. Not for several threads at once.
class RuleAttributes
{
public:
    /// Without blanks around it and without separators of paths, "_" in their place; "" when the
    /// file has none. A track's number has two digits at least and stands without the total.
    CString valueOf(const boost::shared_ptr<CHDFile>& file, CNSAtom::EType attribute);

private:
    const QorganizerDef::VelmoraFileParams& paramsOf(const QoFileDbItemPtr& record);
    CString sourceName(const QoFileDbItemPtr& record);
    CString momentText(const QoFileDbItemPtr& record, CNSAtom::EType attribute);

    QoFileDbItemPtr m_record; ///< that m_params belong to
    QorganizerDef::VelmoraFileParams m_params;
};
} // namespace qo::host
