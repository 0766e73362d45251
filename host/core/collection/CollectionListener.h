#pragma once

#include <QoKernel/Collection.h>

namespace qo::host
{
/// Somebody who shows the loaded collection and follows its changes from the first to the last
/// moment of this object. For the kernel's thread.
class CollectionListener
{
public:
    CollectionListener(const CollectionListener&) = delete;
    CollectionListener& operator=(const CollectionListener&) = delete;

    using Files = CQoUtils::Files;

    /// These files left what the filter shows and these joined it; of one that was read again the
    /// old object left and a new one joined. Files that left still know what they belonged to.
    virtual void filesChanged(const Files& removed, const Files& added) = 0;
    /// More has changed than single files.
    virtual void allChanged() = 0;

    /// To be called after each change, before what left is released, and once more afterwards.
    static void tellAll();

protected:
    CollectionListener();
    virtual ~CollectionListener();
};
} // namespace qo::host
