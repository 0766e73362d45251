#pragma once

// Usage statistics: counters and values that the kernel hands to the host's reporter.
#include "QoColl/Statistics/QoStatistics.h"
#include "QoColl/Statistics/UsageStatistics.h"
