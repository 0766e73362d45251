#pragma once

#include "QoColl/Plugins/DownloadItem.h"
#include "common/MakeObject.h"
#include "common/QoProgress.h"
#include "types/CriticalSection.h"

#include <atomic>
#include <cstdint>
#include <thread>

/// The kernel's download item: the thread, the state and the progress. A subclass says in
/// getFileInfo() and download() how large its file is and how the bytes come; both are called on
/// the item's thread, one after the other.
///
/// The thread must never call into a subclass that is destroyed, and a destructor of this class
/// would run too late for that. Therefore items are made by make() alone, which needs no more of a
/// subclass than a constructor with the key as its first argument. The handle that it returns ends
/// and joins the thread before the subclass goes. When the thread itself releases the last handle,
/// for instance in a report of its progress, it removes the item after its last step.
class QO_API IQoDownloadItem : public IDownloadItem, public IQoProgress
{
protected:
    struct Key
    {
        explicit Key() = default;
    };

public:
    template <class Item, class... Args>
    static boost::shared_ptr<Item> make(Args&&... args)
    {
        return qo::orOutOfMemory(QO_HERE(u".\\QoColl\\Plugins\\QoDownloadItem"),
                                 [&]
                                 {
                                     return boost::shared_ptr<Item>(
                                         new Item(Key(), std::forward<Args>(args)...),
                                         &IQoDownloadItem::release);
                                 });
    }
    IQoDownloadItem(const IQoDownloadItem&) = delete;
    IQoDownloadItem& operator=(const IQoDownloadItem&) = delete;

    void Start() override;
    bool Pause() override { return false; }
    bool Resume() override { return false; }
    void Cancel() override;
    void Restart() override;
    void GetProgress(int& done, int& total) override;
    int GetState() override;
    CString GetSourceName() override { return m_sourceName; }
    std::string GetSourceNameUtf8() override;
    std::string GetTypeText() override;
    CString GetTargetPath() override { return m_targetPath; }

    // The item is the progress of its own download; both calls take no lock.
    /// The number of bytes that have come; only its lowest 32 bits are kept.
    void setPosition(std::uintptr_t done) override;
    bool isCanceled() override;
    void setStage(int) override {}
    void setCurrentItem(const char16_t*, int) override {}
    void setRange(int, int) override {}
    void step(int) override {}

protected:
    /// The name of the source is what GetSourceName() gives.
    IQoDownloadItem(Key,
                    const CString& sourcePath,
                    const CString& targetPath,
                    const CString& sourceName);
    ~IQoDownloadItem() override;

    /// The size in bytes; false, when there is no such file, ends in DS_Failed without a download.
    virtual bool getFileInfo(std::int64_t& size) = 0;
    /// Fetches the file to the target path and asks the progress often whether it is cancelled;
    /// true when the target is complete. Removes what a failure leaves.
    virtual bool download(IQoProgress* progress) = 0;
    /// The last step of a fetch, short, with the lock held, so that no cancellation comes between
    /// it and the state: what has come is kept under its name, or removed if it is not wanted.
    /// False ends in DS_Failed. This one has nothing to do.
    virtual bool settle(bool isWanted);

    const CString m_sourcePath;
    const CString m_targetPath;

private:
    class Worker;

    static void release(IQoDownloadItem* item);
    bool isOwnThread() const;
    void downloadThread();
    int fetch();
    /// fetch() without exceptions, which would end the program here.
    int fetchOrFail();

    const CString m_sourceName;
    int m_state = DS_Idle;
    std::atomic<std::uint32_t> m_done = 0;
    std::uint32_t m_total = 0;
    std::atomic<bool> m_cancel = false;
    boost::shared_ptr<Worker> m_thread; ///< that of the last Start(), which may have ended
    bool m_isRunning = false;
    unsigned m_threadId = 0;
    bool m_isReleased = false; ///< the thread removes the item when it ends
    /// Guards all that is neither constant nor atomic. It is not held while bytes are fetched or a
    /// thread is waited for that still works.
    CCriticalSection m_lock;
};
