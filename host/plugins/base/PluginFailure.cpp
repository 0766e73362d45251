#include "plugins/base/PluginFailure.h"

#include <mutex>
#include <utility>

namespace qo::host
{
namespace
{
struct LatestFailure
{
    std::mutex lock;
    CString cause;
};

LatestFailure& latestFailure()
{
    static LatestFailure failure;
    return failure;
}
} // namespace

void setPluginFailure(const CString& cause)
{
    log(level::error, u"plug-in : %s", cause);
    LatestFailure& failure = latestFailure();
    const std::lock_guard guard(failure.lock);
    failure.cause = cause;
}

CString failureAt(const CString& path, int error)
{
    return path + u": " + errorText(error);
}

CString takePluginFailure()
{
    LatestFailure& failure = latestFailure();
    const std::lock_guard guard(failure.lock);
    return std::exchange(failure.cause, CString());
}
} // namespace qo::host
