#include "plugins/base/FinishedOperation.h"

#include "plugins/base/PluginFailure.h"

#include <boost/make_shared.hpp>

namespace qo::host
{
PluginOperationPtr FinishedOperation::withResults(PluginResultArray results)
{
    auto operation = boost::make_shared<FinishedOperation>();
    operation->m_results = std::move(results);
    return operation;
}

PluginOperationPtr FinishedOperation::withResult(const PluginResultPtr& result)
{
    PluginResultArray results;
    results.Add(result);
    return withResults(std::move(results));
}

PluginOperationPtr FinishedOperation::failed(const CString& cause)
{
    auto operation = boost::make_shared<FinishedOperation>();
    operation->m_error = cause.IsEmpty() ? CString(u"the request failed") : cause;
    setPluginFailure(operation->m_error);
    return operation;
}
} // namespace qo::host
