#include "common/Settings.h"

#include "common/Kernel.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "common/PathsInfoMap.h"
#include "common/QoException.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "support/LogCapture.h"
#include "support/MemoryConfig.h"
#include "support/Print.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <memory>

namespace
{
/// A kernel that keeps everything below a folder of the test's.
class Settings : public testing::Test
{
protected:
    Settings() { qo::specialFolders().setBase(dir.collPath()); }
    ~Settings() override
    {
        CQoSettings::declareCommon(nullptr, nullptr);
        qo::specialFolders().setBase(CString());
    }

    TempDir dir;
    MemoryConfig config;
};
} // namespace

TEST_F(Settings, AFirstStartDeclaresEveryKeyInOrderWithItsDefault)
{
    initQoKernel(&config, nullptr);
    EXPECT_EQ(config.declared.GetSize(), 29 + 14 + 45 + 1);
    EXPECT_EQ(config.declared[0], CString(u"Common/OutputFolder"));
    EXPECT_EQ(config.declared[29], CString(u"Common/VelmoraView"));
    EXPECT_EQ(config.declared[43], CString(u"QO_Settings/UnrelMaxPercent"));
    EXPECT_EQ(config.declared[88], CString(u"QO_Settings/InstallerMusicCollectionFolder"));
    EXPECT_EQ(CQoSettings::get(CQoSettings::OutputFolder), dir.collPath("Music"));
    EXPECT_EQ(CQoSettings::get(CQoSettings::ImportExportFolder).Right(1), CString(u"\\"));
    EXPECT_EQ(CQoSettings::get(CQoSettings::TempFolder), dir.collPath("cache/temp"));
    EXPECT_EQ(CQoSettings::getInt(CQoSettings::MaxFilesSavePictures), 50);
    EXPECT_EQ(CQoSettings::get(CQoSettings::RecordedStreamRule), CString(u"_station_track.ext"));
    EXPECT_TRUE(CQoSettings::getBool(CQoSettings::SendUsageStatistics));
    EXPECT_TRUE(qo::fileSystem().isDirectory(dir.collPath("state/log/QOP")));
}

TEST_F(Settings, WhatTheStoreHasWinsButAFolderThatIsGoneIsReplaced)
{
    config.sections[u"Common"][u"Language"] = u"de";
    config.sections[u"Common"][u"TempFolder"] = u"C:\\is\\not\\there";
    initQoKernel(&config, nullptr);
    EXPECT_EQ(CQoSettings::get(CQoSettings::TempFolder), dir.collPath("cache/temp"));
    EXPECT_EQ(CQoSettings::get(CQoSettings::Language), CString(u"de"));
    CQoSettings::set(CQoSettings::Language, u"fr");
    EXPECT_EQ(config.sections[u"Common"][u"Language"], CString(u"fr"));
}

TEST_F(Settings, CollectionFoldersKeepTheirKinds)
{
    initQoKernel(&config, nullptr);
    CQoPathsInfoMap map;
    map.SetAt(u"C:\\Films", CQoPathInfo::nothingIsMusic);
    CQoPaths::setMusicCollectionDirs(CStringArray::split(u"C:\\Music|C:\\Films", u'|'), map);
    CStringArray stored;
    CQoPathsInfoMap kinds;
    kinds.SetAt(u"C:\\old", CQoPathInfo::allIsMusic);
    CQoPaths::getMusicCollectionDirs(stored, &kinds);
    EXPECT_EQ(stored.join(u"|"), CString(u"C:\\Music|C:\\Films"));
    EXPECT_EQ(kinds.GetCount(), 2);
    EXPECT_EQ(kinds.getType(u"C:\\Films"), CQoPathInfo::nothingIsMusic);

    config.sections[u"QO_Settings"][u"MusicCollectionDirType1"] = u"77";
    CQoPaths::getMusicCollectionDirs(stored, &kinds);
    EXPECT_EQ(kinds.getType(u"C:\\Films"), CQoPathInfo::audioIsMusic)
        << "an unknown kind is the default";
    EXPECT_EQ(kinds.getType(u"C:\\elsewhere"), CQoPathInfo::audioIsMusic);
    CQoPathInfo::EType kind = CQoPathInfo::nothingIsMusic;
    EXPECT_FALSE(kinds.Lookup(u"C:\\elsewhere", kind));
    EXPECT_EQ(kind, CQoPathInfo::audioIsMusic);
    EXPECT_EQ(kinds[u"C:\\elsewhere"], CQoPathInfo::audioIsMusic);
}

TEST_F(Settings, BaseFoldersThatAreSetHoldTheOutputFolders)
{
    initQoKernel(&config, nullptr);
    CQoSettings::set(CQoSettings::MusicBaseDir, u"C:\\sounds");
    CQoSettings::set(CQoSettings::VideoBaseDir, u"C:\\films\\");
    CStringArray dirs;
    CQoPaths::getOutputDirs(dirs);
    EXPECT_EQ(dirs[0], CString(u"C:\\sounds\\Velmora Recorded Music"));
    EXPECT_EQ(dirs[7], CString(u"C:\\films\\Velmora Converted Videos"));
    EXPECT_EQ(CQoPaths::getOutputDirType(u"C:\\films\\Velmora Imported Movies\\a.avi"),
              CQoPaths::importedMovies);
}

TEST_F(Settings, AnEmptyPathLiesInNoFolder)
{
    const auto isIn = [](const char16_t* path, const char16_t* folder)
    { return CQoPaths::isInDirs(path, CStringArray::split(folder, u'|')); };
    EXPECT_TRUE(isIn(u"C:\\a\\b", u"D:\\|C:\\A"));
    EXPECT_TRUE(isIn(u"C:\\a", u"C:\\"));
    EXPECT_FALSE(isIn(u"C:\\a", u"C:\\a\\b|D:\\a"));
    CStringArray empty;
    empty.Add(u"");
    for (const char16_t* path : {u"", u"a", u"C:\\a"})
        EXPECT_FALSE(CQoPaths::isInDirs(path, empty)) << qo::toUtf8(CString(path));
}

TEST_F(Settings, OutputFoldersTellTheirMediaType)
{
    initQoKernel(&config, nullptr);
    CStringArray dirs;
    CQoPaths::getOutputDirs(dirs);
    ASSERT_EQ(dirs.GetSize(), 11);
    EXPECT_EQ(dirs[7], dir.collPath("Videos/Velmora Converted Videos"));
    EXPECT_EQ(CQoPaths::getOutputDirType(dirs[9] + u"\\a.mp3"), CQoPaths::purchasedMusicFiles);
    EXPECT_EQ(CQoPaths::getOutputDirType(u"C:\\elsewhere"), CQoPaths::noMediaType);
    CQoSettings::set(CQoSettings::PodcastsDir, dirs[9] + u"\\inner");
    EXPECT_EQ(CQoPaths::getOutputDirType(dirs[9] + u"\\inner\\x"), CQoPaths::noMediaType)
        << "two folders hold it";
    EXPECT_EQ(CQoPaths::getLastUsedQof(), CQoPaths::getVelmoraQof());
    EXPECT_EQ(CQoPaths::getQoDbFilePath(), dir.collPath("Qorganizer/qodb"));
    EXPECT_EQ(CQoPaths::getDefaultFolder(8), CQoPaths::getDefaultFolder(10));
}

TEST(QoException, IsSetMeansThatTheTypeIsNone)
{
    EXPECT_TRUE(CQoException(CQoException::noError, nullptr).isSet());
    CQoException exception(CQoException::outOfMemory, u"message");
    EXPECT_FALSE(exception.isSet());
    exception.set(CQoException::extractFailed, nullptr);
    EXPECT_TRUE(exception.getErrorMessage().IsEmpty());
}

TEST(QoException, TakesOverTheFirst1022UnitsOfAnotherOnesMessage)
{
    class Long final : public CException
    {
    public:
        bool GetErrorMessage(char16_t* error, unsigned maxError, unsigned*) const override
        {
            for (unsigned i = 0; i + 1 < maxError; ++i)
                error[i] = static_cast<char16_t>(u'a' + i % 26);
            error[maxError - 1] = 0;
            return true;
        }
    };
    CQoException exception(CQoException::outOfMemory, u"old");
    const Long other;
    exception.copy(&other);
    EXPECT_EQ(exception.getErrorMessage().GetLength(), 1022);
    EXPECT_EQ(exception.getType(), CQoException::outOfMemory);
}

TEST(QoException, OutOfMemoryIsLoggedAndThrownAsAPointer)
{
    const LogCapture log;
    try
    {
        qo::throwOutOfMemory({u".\\Physical\\HDDirectory", 42});
    }
    catch (CQoException* caught)
    {
        const std::unique_ptr<CQoException> exception(caught);
        EXPECT_EQ(exception->getType(), CQoException::outOfMemory);
    }
    EXPECT_TRUE(log.has("not enough memory: file: .\\Physical\\HDDirectory, line: 42 ", 10))
        << log.all();
}
