#pragma once

#include <QoKernel/Devices.h>

namespace qo::host
{
/// A request that was answered before it was handed over.
class FinishedOperation final : public IPluginOperation
{
public:
    static PluginOperationPtr withResults(PluginResultArray results);
    static PluginOperationPtr withResult(const PluginResultPtr& result);
    /// The cause is one sentence for people.
    static PluginOperationPtr failed(const CString& cause);

    int GetState() override { return m_error.IsEmpty() ? OS_Finished : OS_Failed; }
    bool GetProgress(std::int64_t&, std::int64_t&) override { return false; }
    void GetResults(PluginResultArray& results) override { results.Append(m_results); }
    CString GetErrorText() override { return m_error; }

private:
    PluginResultArray m_results;
    CString m_error;
};
} // namespace qo::host
