#include "QoColl/Plugins/QoDownloadItem.h"

#include "common/QoException.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace
{
constexpr std::size_t block = 4096;
constexpr int blocks = 200;

/// Copies a real file, block by block; each test puts in between what it needs.
class CopyItem : public IQoDownloadItem
{
public:
    CopyItem(Key key, const CString& source, const CString& target, std::atomic<int>& living)
        : IQoDownloadItem(key, source, target, u"copy"), m_living(living), m_buffer(block)
    {
        ++m_living;
    }
    ~CopyItem() override
    {
        m_buffer.clear(); // what a thread that still worked would miss
        --m_living;
    }

    std::function<void(int copied)> afterBlock = [](int) {};
    std::atomic<int> downloads = 0;

protected:
    bool getFileInfo(std::int64_t& size) override
    {
        qo::FileInfo info;
        const bool found = qo::fileSystem().info(m_sourcePath, qo::Spelling::exact, info) == 0;
        size = info.size;
        return found;
    }
    bool download(IQoProgress* progress) override
    {
        ++downloads;
        int error = 0;
        const auto source = qo::fileSystem().open(m_sourcePath, qo::OpenMode::read, error);
        const auto target = qo::fileSystem().open(m_targetPath, qo::OpenMode::createAlways, error);
        while (source && target && !progress->isCanceled())
        {
            const std::int64_t count = source->read(m_buffer.data(), block);
            if (count <= 0 || !target->write(m_buffer.data(), static_cast<std::size_t>(count)))
                return count == 0;
            progress->setPosition(static_cast<std::uintptr_t>(source->position()));
            afterBlock(static_cast<int>(source->position() / static_cast<int>(block)));
        }
        return false;
    }

private:
    std::atomic<int>& m_living;
    std::vector<char> m_buffer;
};

class QoDownloadItem : public testing::Test
{
protected:
    QoDownloadItem() { temp.write("far.mp3", content); }
    ~QoDownloadItem() override { EXPECT_EQ(living, 0); }

    boost::shared_ptr<CopyItem> makeItem(const char* name = "far.mp3")
    {
        return IQoDownloadItem::make<CopyItem>(
            temp.collPath(name), temp.collPath("near.mp3"), living);
    }
    /// Waits for the state that a fetch ends in.
    static int endOf(IDownloadItem& item)
    {
        while (item.GetState() == IDownloadItem::DS_Running)
            std::this_thread::yield();
        return item.GetState();
    }
    static void waitFor(const std::atomic<bool>& fact)
    {
        while (!fact)
            std::this_thread::yield();
    }

    TempDir temp;
    LogCapture log;
    const std::string content = std::string(block * blocks, 'x') + "end";
    std::atomic<int> living = 0;
};
} // namespace

TEST_F(QoDownloadItem, CopiesAFileAndCountsItsBytes)
{
    const auto item = makeItem();
    EXPECT_EQ(item->GetState(), IDownloadItem::DS_Idle);
    item->Cancel();
    EXPECT_EQ(item->GetState(), IDownloadItem::DS_Idle);
    for (int round = 0; round < 2; ++round)
    {
        item->Start();
        EXPECT_NE(item->GetState(), IDownloadItem::DS_Idle);
        EXPECT_EQ(endOf(*item), IDownloadItem::DS_Done);
        int done = 0;
        int total = 0;
        item->GetProgress(done, total);
        EXPECT_EQ(done, static_cast<int>(content.size()));
        EXPECT_EQ(total, static_cast<int>(content.size()));
        item->Cancel();
        EXPECT_EQ(item->GetState(), IDownloadItem::DS_Done);
    }
    EXPECT_EQ(temp.read("near.mp3"), content);
    EXPECT_EQ(item->GetTypeText(), "copy/*");
}

TEST_F(QoDownloadItem, FailsWithoutADownloadWhereThereIsNoFile)
{
    const auto item = makeItem("gone.mp3");
    item->Start();
    EXPECT_EQ(endOf(*item), IDownloadItem::DS_Failed);
    EXPECT_EQ(item->downloads, 0);
    EXPECT_TRUE(log.has("IQoDownloadItem::downloadThread : error getting file info ", 10));
}

TEST_F(QoDownloadItem, FailsWhereItsDownloadThrows)
{
    for (const bool ownException : {true, false})
    {
        const auto item = makeItem();
        item->afterBlock = [&](int)
        {
            if (ownException)
                throw new CQoException(CQoException::outOfMemory, u"no room");
            throw std::bad_alloc();
        };
        item->Start();
        EXPECT_EQ(endOf(*item), IDownloadItem::DS_Failed);
    }
    EXPECT_TRUE(log.has("no room", 10));
}

TEST_F(QoDownloadItem, StartOfARunningItemDoesNothingAndCancelsFromManyThreadsEndIt)
{
    const auto item = makeItem();
    std::atomic<bool> begun = false;
    item->afterBlock = [&](int)
    {
        begun = true;
        while (!item->isCanceled())
            std::this_thread::yield();
    };
    item->Start();
    waitFor(begun);
    item->Start();
    std::vector<std::thread> others;
    for (int i = 0; i < 3; ++i)
        others.emplace_back([&] { item->Cancel(); });
    item->Cancel();
    EXPECT_EQ(item->GetState(), IDownloadItem::DS_Canceled);
    for (std::thread& other : others)
        other.join();
    EXPECT_EQ(item->downloads, 1);

    item->afterBlock = [](int) {};
    item->Restart();
    EXPECT_EQ(endOf(*item), IDownloadItem::DS_Done);
}

TEST_F(QoDownloadItem, ACancelThatComesWithTheLastByteCountsAndDoesNotWaitForItself)
{
    const auto item = makeItem();
    item->afterBlock = [&](int copied)
    {
        if (copied == blocks)
            item->Cancel();
    };
    item->Start();
    EXPECT_EQ(endOf(*item), IDownloadItem::DS_Canceled);
}

TEST_F(QoDownloadItem, TheLastHandleWaitsForTheThread)
{
    for (int round = 0; round < 20; ++round)
    {
        auto item = makeItem();
        std::atomic<int> copied = 0;
        item->afterBlock = [&copied](int count)
        {
            copied = count;
            std::this_thread::yield();
        };
        item->Start();
        while (copied < round)
            std::this_thread::yield();
        item.reset();
        EXPECT_EQ(living, 0);
    }
}

TEST_F(QoDownloadItem, AThreadThatReleasesTheLastHandleRemovesTheItemAfterItsLastStep)
{
    auto item = makeItem();
    std::atomic<bool> mayRelease = false;
    item->afterBlock = [&](int)
    {
        waitFor(mayRelease);
        item.reset();
        EXPECT_EQ(living, 1);
    };
    item->Start();
    mayRelease = true;
    while (living != 0)
        std::this_thread::yield();
    // Nothing of the fixture is used by the thread any more; its own end is not waited for.
}
