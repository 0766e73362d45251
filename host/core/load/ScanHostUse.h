#pragma once

#include <QoKernel/Collection.h>

namespace qo::host
{
/// Gives a collection that has no scan host one for as long as this lives. The collection and the
/// host outlive it.
class ScanHostUse
{
public:
    ScanHostUse(CQoCollection& collection, IQoScanHost& host) : m_collection(collection)
    {
        m_collection.setScanHost(&host);
    }
    ~ScanHostUse() { m_collection.setScanHost(nullptr); }
    ScanHostUse(const ScanHostUse&) = delete;
    ScanHostUse& operator=(const ScanHostUse&) = delete;

private:
    CQoCollection& m_collection;
};
} // namespace qo::host
