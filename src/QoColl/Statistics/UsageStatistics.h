#pragma once

#include "types/Export.h"

/// Takes the counters and values that the kernel reports; given by the host, which decides what
/// becomes of them. Called on the thread of the event. Keys and texts live for the call.
class QO_API IUsageStatistics
{
public:
    virtual ~IUsageStatistics();
    virtual void reportText(const char16_t* key, const char16_t* value) = 0;
    /// The value takes the place of the former one.
    virtual void reportNumber(const char16_t* key, int value) = 0;
    virtual void increment(const char16_t* key, int amount) = 0;
};
