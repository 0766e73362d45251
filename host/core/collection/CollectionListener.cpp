#include "core/collection/CollectionListener.h"

#include <vector>

namespace qo::host
{
namespace
{
std::vector<CollectionListener*>& listeners()
{
    static std::vector<CollectionListener*> list;
    return list;
}
} // namespace

CollectionListener::CollectionListener()
{
    listeners().push_back(this);
}

CollectionListener::~CollectionListener()
{
    std::erase(listeners(), this);
}

void CollectionListener::tellAll()
{
    // One that hears of a change may leave.
    const std::vector<CollectionListener*> all = listeners();
    if (all.empty())
        return;
    Files removed;
    Files added;
    const bool isKnown = CQoCollSubset::takeChanges(removed, added);
    for (CollectionListener* const each : all)
    {
        if (isKnown)
            each->filesChanged(removed, added);
        else
            each->allChanged();
    }
}
} // namespace qo::host
