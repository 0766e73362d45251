#include "plugins/base/ThreadOperation.h"

#include "plugins/base/PluginFailure.h"

#include <exception>

namespace qo::host
{
ThreadOperation::ThreadOperation(Work work, std::int64_t total)
    : m_total(total)
    , m_thread(
          [this, work = std::move(work)]
          {
              try
              {
                  m_outcome = work(m_link);
              }
              catch (const std::exception& error)
              {
                  m_outcome.failure = fromUtf8(error.what());
              }
              if (!m_outcome.failure.IsEmpty() && !m_link.isCanceled)
                  setPluginFailure(m_outcome.failure);
              m_state = m_outcome.failure.IsEmpty() ? OS_Finished : OS_Failed;
          })
{
}

ThreadOperation::~ThreadOperation()
{
    m_link.isCanceled = true;
    m_thread.join();
}

int ThreadOperation::GetState()
{
    return m_state;
}

bool ThreadOperation::GetProgress(std::int64_t& done, std::int64_t& total)
{
    done = m_link.done;
    total = m_total;
    return true;
}

void ThreadOperation::GetResults(PluginResultArray& results)
{
    if (m_state != OS_Running)
        results.Append(m_outcome.results);
}

CString ThreadOperation::GetErrorText()
{
    return m_state != OS_Running ? m_outcome.failure : CString();
}
} // namespace qo::host
