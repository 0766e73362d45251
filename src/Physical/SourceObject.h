#pragma once

#include "Physical/QoCheckObject.h"
#include "QoColl/Db/Records/ItemSource.h"

/// One of the ways by which files enter the collection (recorded, downloaded and so on), as a view
/// shows it.
class QO_API CSourceObject final : public CQoCheckObject
{
public:
    CSourceObject(const CString& name, IPostProcessingQueue::eItemSource source);

    /// The name.
    CString toString(bool full) const override;
    IPostProcessingQueue::eItemSource getSource() const noexcept { return m_source; }

private:
    IPostProcessingQueue::eItemSource m_source;
    CString m_name;
};
