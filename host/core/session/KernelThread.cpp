#include "core/session/KernelThread.h"

#include "core/base/DatabaseError.h"

#include <memory>

namespace qo::host
{
void KernelThread::rethrowAsHostError(const CString& database)
{
    try
    {
        throw;
    }
    catch (CQoException* raw)
    {
        const std::unique_ptr<CQoException> exception(raw);
        const bool isMemory = exception->getType() == CQoException::outOfMemory;
        throw HostError(ExitCode::failed,
                        isMemory ? "there is not enough memory"
                                 : toUtf8(exception->getErrorMessage()));
    }
    catch (CSQLiteException* raw)
    {
        const std::unique_ptr<CSQLiteException> exception(raw);
        throw databaseError(*exception,
                            database.IsEmpty() ? CQoPaths::getQoDbFilePath() : database);
    }
    catch (CException* raw)
    {
        const std::unique_ptr<CException> exception(raw);
        char16_t text[1024] = {};
        exception->GetErrorMessage(text, 1024);
        throw HostError(ExitCode::failed, toUtf8(CString(text)));
    }
}

KernelThread::KernelThread() : m_thread([this] { work(); }) {}

KernelThread::~KernelThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_wake.notify_one();
    m_thread.join();
}

void KernelThread::add(std::function<void()> task)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push_back(std::move(task));
    }
    m_wake.notify_one();
}

void KernelThread::work()
{
    for (;;)
    {
        std::function<void()> task;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_isEnding || !m_tasks.empty(); });
            if (m_tasks.empty())
                return;
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
        }
        task();
    }
}
} // namespace qo::host
