#include "Database/DbFixture.h"
#include "Physical/HDSearchResult.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Player/MpPlaylistUtils.h"
#include "QoColl/Player/MpSearchResultCollection.h"
#include "QoColl/Player/MpSearchResultUtils.h"
#include "QoColl/Player/SearchResultDraggableObject.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "common/Paths.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "plugins/base/FinishedOperation.h"
#include "plugins/base/StoredPlugin.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <thread>

namespace
{
class FoundTrack : public ITrackResult
{
public:
    CString GetText() const override { return u"a_1::%x\\y"; }
    CString GetArtist() const override { return u"A/n\nn"; }
    CString GetTitle() const override { return u"../Dawn"; }
};

/// Finds one track, whatever the text.
class TubePlugin : public qo::host::StoredPlugin, public ISearchWrapper, public IDownloadWrapper
{
public:
    TubePlugin() : StoredPlugin(u"Tube", nullptr) {}
    boost::shared_ptr<ISearchWrapper> GetSearch() override
    {
        return {&*this, [](void*) {}};
    }
    boost::shared_ptr<IDownloadWrapper> GetDownload() override
    {
        return {canDownload ? this : nullptr, [](void*) {}};
    }
    CString GetTrackWebSource() override { return u"The Tube"; }
    PluginOperationPtr Search(const CString&) override
    {
        return qo::host::FinishedOperation::withResult(boost::make_shared<FoundTrack>());
    }
    boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr&,
                                                      const CString& target) override
    {
        return boost::make_shared<Stream>(target);
    }
    bool CanSetRanges(bool&) override { return false; }
    boost::shared_ptr<ITrackResult> GetTrack(const CString& text) override
    {
        const bool isKnown = text == FoundTrack().GetText();
        return isKnown ? boost::make_shared<FoundTrack>() : nullptr;
    }

    bool canDownload = true;

private:
    struct Stream : IPluginDownload
    {
        explicit Stream(const CString& path) : target(path) {}
        bool SetRange(std::int64_t, std::int64_t) override { return false; }
        bool GetSize(std::int64_t& size) override
        {
            size = 4;
            return true;
        }
        bool Run(IQoProgress*) override
        {
            return qo::fileSystem().replaceFile(target, "song", 4) == 0;
        }
        const CString target;
    };
};

class MpSearchResults : public testing::Test
{
protected:
    struct Open : CMpSearchResultCollection
    {
        using CMpSearchResultCollection::getAvailableNewPath;
    };

    MpSearchResults()
    {
        qo::specialFolders().setBase(dir.collPath("base"));
        CQoCollDb::CreateDatabaseIfNotValid(CQoPaths::getQoDbFilePath(), CQoCollDb::ConfigInfo());
        collection.load(CQoPaths::getQoDbFilePath());
    }
    ~MpSearchResults() override
    {
        CQoPluginManager::setPluginsManager({});
        qo::specialFolders().setBase(CString());
    }

    boost::shared_ptr<CHDSearchResult> add(const char16_t* name, bool isVideo = false)
    {
        CSearchResultDraggableObject object;
        object.m_name = name;
        object.m_title = u"Title";
        object.m_isVideo = isVideo;
        return collection.addSearchResultFile(object);
    }
    /// How many a fresh load finds.
    static int storedCount()
    {
        CMpSearchResultCollection fresh;
        fresh.load(CQoPaths::getQoDbFilePath());
        return fresh.getSearchResults().GetSize();
    }

    TempDir dir;
    LogCapture log;
    Open collection;
};
} // namespace

TEST_F(MpSearchResults, AFurtherFileOfAClipIsNumberedAboveTheLargestNumber)
{
    const auto first = add(u"tube::abc");
    EXPECT_EQ(first->getPath(), CString(u"\\\\sresult:web\\tube::abc"));
    EXPECT_FALSE(first->isVideo());
    EXPECT_TRUE(add(u"tube::abcd", true)->isVideo());
    EXPECT_EQ(collection.getAvailableNewPath(u"tube::abc"), CString(u"\\\\sresult:web\\tube::abc"))
        << "one without a number counts as number 0";
    add(u"tube::abc_3");
    EXPECT_EQ(add(u"tube::abc")->getPath(), CString(u"\\\\sresult:web\\tube::abc_4"));
}

TEST_F(MpSearchResults, WhatNoPlaylistHasLeavesWithTheNextSave)
{
    const auto kept = add(u"tube::kept");
    add(u"tube::unused");
    auto removed = add(u"tube::removed");
    QoFileDbItemArray tracks;
    tracks.Add(kept->getDbItem());
    tracks.Add(removed->getDbItem());
    CMpPlaylistUtils::NewPlaylist(u"list", tracks);
    EXPECT_EQ(storedCount(), 3);

    collection.clearUnusedLinks();
    collection.deleteSearchResultFile(removed);
    kept->getDbItem()->velmoraId = u"lasting";
    EXPECT_EQ(storedCount(), 3);
    EXPECT_EQ(collection.getSearchResults().GetSize(), 3);
    kept->getDbItem()->dbState = qo::dbState::modified;
    collection.saveDbChanges();
    EXPECT_EQ(storedCount(), 1);
    EXPECT_EQ(collection.getSearchResults().GetSize(), 1);
    EXPECT_EQ(kept->getDbItem()->dbState, qo::dbState::unchanged);

    collection.load(CQoPaths::getQoDbFilePath());
    EXPECT_TRUE(collection.getSearchResultByVelmoraID(u"lasting"));
    EXPECT_TRUE(collection.getSearchResultByID(kept->getDbItem()->id));
    EXPECT_TRUE(collection.getSearchResultByPath(u"\\\\sresult:web\\tube::kept"));
    EXPECT_FALSE(collection.getSearchResultByPath(u"\\\\sresult:web\\tube::removed"));
}

TEST_F(MpSearchResults, ASaveThatFailsChangesNothing)
{
    auto result = add(u"tube::abc");
    collection.deleteSearchResultFile(result);
    qo::fileSystem().removeFile(CQoPaths::getQoDbFilePath());
    qo::fileSystem().makeDirectory(CQoPaths::getQoDbFilePath());
    collection.saveDbChanges();
    EXPECT_TRUE(log.has("CMpSearchResultCollection::saveDbChanges : error saving to db ", 10));
    EXPECT_EQ(collection.getSearchResults().GetSize(), 1);
    EXPECT_EQ(result->getDbItem()->dbState, qo::dbState::deleted);
}

TEST_F(MpSearchResults, SeveralAreKeptAllOrNone)
{
    CSearchResultDraggableObject object;
    object.m_name = u"tube::abc_1";
    EXPECT_EQ(collection.addSearchResultFiles({object, object}).GetSize(), 2);
    EXPECT_EQ(storedCount(), 2);
    qo::fileSystem().removeFile(CQoPaths::getQoDbFilePath());
    qo::fileSystem().makeDirectory(CQoPaths::getQoDbFilePath());
    EXPECT_TRUE(thrownBy([&] { collection.addSearchResultFiles({object}); }));
    EXPECT_EQ(collection.getSearchResults().GetSize(), 2);
}

TEST_F(MpSearchResults, ATrackThatWasFoundIsKeptAndComesFromItsPlugin)
{
    const auto tube = boost::make_shared<TubePlugin>();
    const auto list = boost::make_shared<qo::host::PluginList>();
    list->add(tube);
    CQoPluginManager::setPluginsManager(list);
    CDummyProgress progress;
    CArray<boost::shared_ptr<ITrackResult>> tracks;
    ASSERT_TRUE(CQoPluginManager::searchTracks(u"tube", u"dawn", &progress, tracks));
    ASSERT_EQ(tracks.GetSize(), 1);
    collection.addSearchResultFile(CMpSearchResultUtils::makeDraggable(u"Tube", *tracks[0]));
    collection.load(CQoPaths::getQoDbFilePath());
    auto result = collection.getSearchResults()[0];
    EXPECT_EQ(result->getSource(), CString(u"The Tube"));
    int index = -1;
    EXPECT_TRUE(result->isSameClip(u"Tube::a%5F1%3A%3A%25x\\y", index));

    boost::shared_ptr<IPluginsManager> manager = list;
    const auto item = CMpSearchResultUtils::getPlayDownloadItem(manager, result);
    ASSERT_TRUE(item) << log.all();
    EXPECT_EQ(CQoCollPath(item->GetTargetPath()).getLast(), CString(u"A_n_n - .._Dawn.tmp"));
    item->Start();
    while (item->GetState() == IDownloadItem::DS_Running)
        std::this_thread::yield();
    EXPECT_EQ(item->GetState(), IDownloadItem::DS_Done);
    EXPECT_TRUE(qo::fileSystem().exists(item->GetTargetPath()));

    const auto fails = [&](const char* cause)
    {
        EXPECT_FALSE(CMpSearchResultUtils::getPlayDownloadItem(manager, result));
        return log.count(cause, qo::level::error) == 1;
    };
    auto strange = add(u"tube::abc");
    std::swap(strange, result);
    EXPECT_TRUE(fails("source plugin  NOT FOUND. Has it been removed?"));
    EXPECT_EQ(result->getSource(), CString(u"tube"));
    std::swap(strange, result);
    tube->canDownload = false;
    EXPECT_TRUE(fails("plugin Tube, because it has no DOWNLOAD functionality"));
    manager = boost::make_shared<qo::host::PluginList>();
    EXPECT_TRUE(fails("source plugin Tube NOT FOUND. Has it been removed?"));
    CQoPluginManager::setPluginsManager(manager);
    EXPECT_EQ(result->getSource(), CString(u"Tube"));
}
