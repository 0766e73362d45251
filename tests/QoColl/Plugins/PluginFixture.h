#pragma once

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/FileUtils.h"
#include "common/Kernel.h"
#include "common/Settings.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "plugins/base/FinishedOperation.h"
#include "plugins/base/StoredPlugin.h"
#include "support/LogCapture.h"
#include "support/MemoryConfig.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A clock on which resting takes no time but is counted.
class RestlessClock : public qo::IClock
{
public:
    RestlessClock() { qo::setSystemClock(this); }
    ~RestlessClock() override { qo::setSystemClock(nullptr); }

    FILETIME now() const override { return m_real.now(); }
    qo::CalendarTime localTime() const override { return m_real.localTime(); }
    std::uint32_t tickCount() const override { return m_real.tickCount(); }
    unsigned threadId() const override { return m_real.threadId(); }
    unsigned processId() const override { return m_real.processId(); }
    GUID newGuid() const override { return m_real.newGuid(); }
    void sleep(std::uint32_t milliseconds) const override
    {
        {
            const std::lock_guard guard(m_lock);
            ++rests[milliseconds];
        }
        std::this_thread::yield();
    }

    mutable std::map<std::uint32_t, int> rests; ///< by their length

private:
    qo::IClock& m_real = qo::systemClock();
    mutable std::mutex m_lock; ///< guards the rests, since requests work on threads of their own
};

/// Cancelled from the n-th question on; keeps the positions it is told.
class CountedProgress : public CDummyProgress
{
public:
    explicit CountedProgress(int questions = -1) : m_left(questions) {}
    bool isCanceled() override { return m_left == 0 || (m_left > 0 && --m_left == 0); }
    void setPosition(std::uintptr_t position) override { positions.push_back(position); }

    std::vector<std::uintptr_t> positions;

private:
    int m_left;
};

/// A kernel that keeps all its folders below one of the test's, and has these plug-ins.
class PluginFixture : public testing::Test
{
protected:
    PluginFixture()
    {
        qo::specialFolders().setBase(dir.collPath("kernel"));
        initQoKernel(&config, nullptr);
        CQoPluginManager::setPluginsManager(plugins);
    }
    ~PluginFixture() override
    {
        CQoPluginManager::setPluginsManager({});
        EXPECT_EQ(tempFileCount(), 0) << "temporary files are left";
        CQoSettings::declareCommon(nullptr, nullptr);
        qo::specialFolders().setBase(CString());
    }

    static int tempFileCount()
    {
        std::vector<qo::DirEntry> entries;
        qo::fileSystem().list(CFileUtils::GetTempDir(CFileUtils::tempQorganizer), entries);
        const auto isFile = [](const qo::DirEntry& entry)
        { return entry.info.kind == qo::FileKind::regular; };
        return static_cast<int>(std::count_if(entries.begin(), entries.end(), isFile));
    }
    static CQoCollPath at(const char16_t* id, const char16_t* path = nullptr)
    {
        return CQoPluginManager::createPath(id, path);
    }
    /// The paths of the records, relative to the plug-in's root, one a line.
    static std::string pathsOf(const QoFileDbItemArray& records)
    {
        std::string text;
        for (const QoFileDbItemPtr& record : records)
        {
            const CString path = record->path;
            text += qo::toUtf8(path.Mid(path.Find(u'\\', 2) + 1)) + "\n";
        }
        return text;
    }

    TempDir dir;
    MemoryConfig config;
    LogCapture log;
    RestlessClock clock;
    CDummyProgress progress;
    boost::shared_ptr<qo::host::PluginList> plugins = boost::make_shared<qo::host::PluginList>();
};
