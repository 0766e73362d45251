#include "QoColl/Plugins/QoDownloadItem.h"

#include "common/Log.h"
#include "common/QoException.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "types/Utf.h"

#include <system_error>

#include <exception>
#include <memory>
#include <thread>

/// The thread of one Start().
class IQoDownloadItem::Worker
{
public:
    explicit Worker(IQoDownloadItem* item) : m_thread([item] { item->downloadThread(); }) {}
    /// On the thread itself, whose last step this is then, it lets go of it.
    ~Worker()
    {
        if (m_thread.get_id() == std::this_thread::get_id())
            m_thread.detach();
        else
            join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Several threads may wait at once, but not this thread itself.
    void join()
    {
        const qo::Guard guard(m_joining);
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    CCriticalSection m_joining;
    std::thread m_thread;
};

IDownloadItem::~IDownloadItem() = default;

IQoDownloadItem::IQoDownloadItem(Key,
                                 const CString& sourcePath,
                                 const CString& targetPath,
                                 const CString& sourceName)
    : m_sourcePath(sourcePath), m_targetPath(targetPath), m_sourceName(sourceName)
{
}

IQoDownloadItem::~IQoDownloadItem() = default;

void IQoDownloadItem::release(IQoDownloadItem* item)
{
    boost::shared_ptr<Worker> worker;
    {
        const qo::Guard guard(item->m_lock);
        item->m_cancel = true;
        item->m_isReleased = item->isOwnThread();
        if (item->m_isReleased)
            return;
        worker = item->m_thread;
    }
    if (worker)
        worker->join();
    delete item;
}

bool IQoDownloadItem::isOwnThread() const
{
    return m_isRunning && m_threadId == qo::systemClock().threadId();
}

void IQoDownloadItem::Start()
{
    const qo::Guard guard(m_lock);
    if (m_isRunning)
        return;
    m_thread.reset(); // one that has ended needs the lock no more, so it can be joined here
    m_done = 0;
    m_total = 0;
    m_cancel = false;
    m_state = DS_Failed;
    try
    {
        m_thread = qo::makeObject<Worker>(QO_HERE(u".\\QoColl\\Plugins\\QoDownloadItem"), this);
    }
    catch (const std::system_error& error)
    {
        qo::logException(u"IQoDownloadItem::Start", error.what());
        return;
    }
    // The thread waits for the lock. A caller who asks at once sees a fetch that runs.
    m_isRunning = true;
    m_state = DS_Running;
}

void IQoDownloadItem::downloadThread()
{
    {
        const qo::Guard guard(m_lock);
        m_threadId = qo::systemClock().threadId();
    }
    const int state = fetchOrFail();
    bool isReleased = false;
    {
        const qo::Guard guard(m_lock);
        const bool isKept = settle(state == DS_Done && !m_cancel);
        m_state = m_cancel ? DS_Canceled : isKept ? state : DS_Failed;
        m_isRunning = false;
        m_threadId = 0;
        isReleased = m_isReleased;
    }
    // Unless it is released, the item may be gone from here on.
    if (isReleased)
        delete this;
}

bool IQoDownloadItem::settle(bool)
{
    return true;
}

int IQoDownloadItem::fetchOrFail()
{
    const char16_t* const place = u"IQoDownloadItem::downloadThread";
    try
    {
        return fetch();
    }
    catch (CQoException* caught)
    {
        const std::unique_ptr<CQoException> exception(caught);
        qo::logException(place, *exception);
    }
    catch (CException* caught)
    {
        const std::unique_ptr<CException> exception(caught);
        qo::logException(place, *exception);
    }
    catch (const std::exception& exception)
    {
        qo::logException(place, exception.what());
    }
    catch (...)
    {
        // A plug-in may throw anything, and nothing may leave a thread.
        qo::logException(place, "an exception of another kind");
    }
    return DS_Failed;
}

int IQoDownloadItem::fetch()
{
    std::int64_t size = 0;
    if (!getFileInfo(size))
    {
        qo::log(qo::level::error,
                u"IQoDownloadItem::downloadThread : error getting file info %s",
                m_sourcePath);
        return DS_Failed;
    }
    {
        const qo::Guard guard(m_lock);
        m_total = static_cast<std::uint32_t>(size);
    }
    return download(this) ? DS_Done : DS_Failed;
}

void IQoDownloadItem::Cancel()
{
    qo::log(qo::level::flow, u"IQoDownloadItem::Cancel");
    boost::shared_ptr<Worker> worker;
    {
        const qo::Guard guard(m_lock);
        if (!m_isRunning)
            return;
        m_cancel = true;
        if (isOwnThread())
            return;
        worker = m_thread;
    }
    worker->join();
}

void IQoDownloadItem::Restart()
{
    Cancel();
    Start();
}

void IQoDownloadItem::GetProgress(int& done, int& total)
{
    const qo::Guard guard(m_lock);
    done = static_cast<int>(m_done.load());
    total = static_cast<int>(m_total);
}

int IQoDownloadItem::GetState()
{
    const qo::Guard guard(m_lock);
    return m_state;
}

std::string IQoDownloadItem::GetSourceNameUtf8()
{
    return qo::toUtf8(GetSourceName());
}

std::string IQoDownloadItem::GetTypeText()
{
    return GetSourceNameUtf8() + "/*";
}

void IQoDownloadItem::setPosition(std::uintptr_t done)
{
    m_done = static_cast<std::uint32_t>(done);
}

bool IQoDownloadItem::isCanceled()
{
    return m_cancel;
}
