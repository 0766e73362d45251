#include "QoColl/Sharing/QoShareManager.h"

#include "Logical/LTManager.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/QoCollDb.h"
#include "QoColl/Plugins/DownloadItem.h"
#include "common/FileUtils.h"
#include "common/QoException.h"
#include "platform/SpecialFolders.h"
#include "support/FakeShare.h"
#include "support/LogCapture.h"
#include "support/Print.h"
#include "support/Records.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <thread>

namespace
{
const CQoCollPath root(CQoCollPath::share, u"17\\..");

class QoShareManager : public testing::Test
{
protected:
    QoShareManager()
    {
        CQoCollection::initGlobal();
        qo::specialFolders().setBase(m_dir.collPath("base"));
        m_share.offer(FakeShare::song("5", "C:\\Music\\a.mp3", "Bob") +
                      FakeShare::song("6", "C:\\Music\\b.mp3", "Eve"));
    }
    ~QoShareManager() override
    {
        CQoCollection::cleanUpGlobal();
        qo::specialFolders().setBase(CString());
    }
    /// The type of the exception, 0 for none.
    int fetchExtract()
    {
        try
        {
            CQoShareManager::getFilesFromShare(root, &m_progress, m_files, &m_isWhole);
            return CQoException::noError;
        }
        catch (CQoException* caught)
        {
            return std::unique_ptr<CQoException>(caught)->getType();
        }
    }
    bool isExtractThere() const
    {
        return std::filesystem::exists(qo::toSystemPath(m_share.localExtract));
    }

    const TempDir m_dir;
    FakeShare m_share;
    CDummyProgress m_progress;
    QoFileDbItemArray m_files;
    bool m_isWhole = false;
};
} // namespace

TEST_F(QoShareManager, ExtractIsReadAndRemovedAndFailuresHaveTheirTypes)
{
    EXPECT_EQ(fetchExtract(), CQoException::noError);
    ASSERT_EQ(m_files.GetSize(), 2);
    EXPECT_TRUE(m_isWhole);
    QoFileDbItemArray ofLongId;
    CQoShareManager::getFilesFromShare(
        CQoCollPath(CQoCollPath::share, CString(u'7', 300)), &m_progress, ofLongId);
    EXPECT_EQ(ofLongId.GetSize(), 2);
    EXPECT_EQ(m_files[0]->path, CString(u"\\\\share:17%1..\\C:\\Music\\a.mp3"));
    EXPECT_EQ(m_share.localExtract.ReverseFind(u'\\'),
              qo::addBackslash(CFileUtils::GetTempDir(CFileUtils::tempQorganizer)).GetLength() - 1);
    EXPECT_FALSE(isExtractThere());
    const CString first = m_share.localExtract;

    m_share.extract.replace(m_share.extract.find("VERSION:1"), 9, "VERSION:2");
    EXPECT_EQ(fetchExtract(), CQoException::unsupportedExtract);
    EXPECT_FALSE(isExtractThere());
    EXPECT_NE(m_share.localExtract, first);

    m_share.isBroken = true;
    EXPECT_EQ(fetchExtract(), CQoException::extractFailed);
    EXPECT_FALSE(isExtractThere());
    CQoShareManager::SetVelmoraShareManager(nullptr);
    EXPECT_EQ(fetchExtract(), CQoException::extractFailed);
    EXPECT_EQ(m_files.GetSize(), 2);
    EXPECT_EQ(CQoShareManager::getDeviceName(root), CString());
}

TEST_F(QoShareManager, OnlyFilesOfTheCollectionAreFetchedAndByThePeersRow)
{
    const CString db = m_dir.collPath("qodb");
    CQoCollDb::CreateDatabaseIfNotValid(db, {});
    CStringArray roots;
    roots.Add(root.toString());
    ASSERT_TRUE(CQoCollection::m_foreignCollection.load(
        db, u"17", roots, CQoPathsInfoMap(), true, &m_progress, nullptr));

    const CString song = root.toString() + u"C:\\Music\\b.mp3";
    const CString target = m_dir.collPath("b.mp3");
    EXPECT_TRUE(CQoShareManager::getFile(song, target, 7, &m_progress, true, false));
    EXPECT_EQ(m_share.last.fileId, CString(u"6"));
    EXPECT_EQ(m_share.last.device, CString(u"17\\.."));
    EXPECT_EQ(m_share.last.offset, 7);
    EXPECT_TRUE(m_share.last.flag1 && !m_share.last.flag2);
    const char16_t* const strangers[] = {u"\\\\share:17%1..\\C:\\Music\\c.mp3",
                                         u"\\\\share:18\\C:\\Music\\b.mp3",
                                         u"C:\\Music\\b.mp3",
                                         u""};
    for (const char16_t* path : strangers)
        EXPECT_FALSE(CQoShareManager::getFile(path, target, 0, &m_progress, true, true));
    EXPECT_EQ(m_share.requests, 1);
    EXPECT_TRUE(std::filesystem::exists(m_dir.path("b.mp3")));
    m_share.isBroken = true;
    EXPECT_FALSE(CQoShareManager::getFile(song, target, 0, &m_progress, true, true));
    EXPECT_FALSE(std::filesystem::exists(m_dir.path("b.mp3")));
    // Without a transport nothing was written, so nothing is removed.
    m_dir.write("b.mp3", "kept");
    CQoShareManager::SetVelmoraShareManager(nullptr);
    EXPECT_FALSE(CQoShareManager::getFile(song, target, 0, &m_progress, true, true));
    EXPECT_EQ(m_dir.read("b.mp3"), "kept");
    CQoShareManager::SetVelmoraShareManager(&m_share);

    // An item needs no collection while it works.
    const auto fetch = [&](const CString& path)
    {
        const auto item = CQoShareManager::getPlayDownloadItem(path);
        CQoCollection::m_foreignCollection.clearCollection(&m_progress);
        item->Start();
        while (item->GetState() == IDownloadItem::DS_Running)
            std::this_thread::yield();
        EXPECT_EQ(std::filesystem::exists(qo::toSystemPath(item->GetTargetPath())),
                  item->GetState() == IDownloadItem::DS_Done);
        return item->GetState();
    };
    m_share.isBroken = false;
    EXPECT_EQ(fetch(song), IDownloadItem::DS_Done);
    EXPECT_TRUE(m_share.last.flag1 && m_share.last.flag2);
    EXPECT_EQ(fetch(song), IDownloadItem::DS_Failed);
}
