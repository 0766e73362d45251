#include "QoColl/Statistics/QoStatistics.h"

#include "QoColl/Collection/QoCollection.h"
#include "support/LogCapture.h"
#include "support/Records.h"
#include "support/SampleCollections.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

namespace
{
/// Keeps what is reported as "key = 1", "key += 1" or "key = 'text'".
class Reporter final : public IUsageStatistics
{
public:
    Reporter() { CQoStatistics::setStatisticsReporter(this); }
    ~Reporter() override { CQoStatistics::setStatisticsReporter(nullptr); }
    void reportText(const char16_t* key, const char16_t* value) override
    {
        add(key, " = '" + qo::toUtf8(CString(value)) + "'");
    }
    void reportNumber(const char16_t* key, int value) override
    {
        add(key, " = " + std::to_string(value));
    }
    void increment(const char16_t* key, int amount) override
    {
        add(key, " += " + std::to_string(amount));
    }

    /// What came since the last call.
    std::vector<std::string> take() { return std::exchange(m_reports, {}); }

private:
    void add(const char16_t* key, const std::string& what)
    {
        m_reports.push_back(qo::toUtf8(CString(key)) + what);
    }
    std::vector<std::string> m_reports;
};

using Reports = std::vector<std::string>;
} // namespace

TEST(QoStatistics, EventsHaveTheirKeys)
{
    Reporter reporter;
    LogCapture log(qo::level::flow);
    using Keys = CQoStatistics;

    CQoStatistics::reportStartFilesAction(Keys::Export, Keys::USB, 3, true);
    CQoStatistics::reportEndFilesAction(Keys::Export, Keys::USB, 2);
    EXPECT_EQ(
        reporter.take(),
        (Reports{"Export_USB += 3", "OperationOnCheckedTracks += 3", "ExportSuccess_USB += 2"}));
    EXPECT_TRUE(log.has("CQoStatistics::incrementReport: Export_USB += 3", 40));
    CQoStatistics::reportStartMPFilesAction(Keys::MPConvert, 4);
    CQoStatistics::reportEndFilesAction(Keys::Delete, u"", 1);
    EXPECT_EQ(reporter.take(),
              (Reports{"MPConvert += 4", "OperationOnSelectedTracks += 4", "RemoveSuccess += 1"}));

    CQoStatistics::reportAvailableDeviceCount(Keys::WPD, 2);
    CQoStatistics::reportMusicMoviesFoldersDetectedChangedDeviceName(u"usb", u"");
    CQoStatistics::reportMusicMoviesFoldersDetected(u"usb", u"Stick", true, false);
    CQoStatistics::reportMusicMoviesFoldersDetected(u"usb", u"", false, true);
    CQoStatistics::reportMusicMoviesFoldersChanging(u"usb");
    EXPECT_EQ(reporter.take(),
              (Reports{"Available_WPD = 2",
                       "FolderDetectionChangedDeviceName_usb = 'Stick'",
                       "FolderDetection_usb = 1",
                       "FolderDetection_usb = 2",
                       "FolderDetectionUserCorrection_usb = 1"}));
    EXPECT_TRUE(
        log.has("CQoStatistics::report: FolderDetectionChangedDeviceName_usb = 'Stick'", 40));

    CQoStatistics::reportMusicMoviesFoldersChanged(u"usb", u"Stick", u"a", u"a", u"b", u"b");
    EXPECT_EQ(reporter.take(), Reports());
    CQoStatistics::reportMusicMoviesFoldersChanged(u"usb", u"Stick", u"a", u"b", u"c", u"d");
    EXPECT_EQ(reporter.take(),
              (Reports{"FolderDetectionUserCorrectionMusic = 'b'",
                       "FolderDetectionUserCorrectionMovies = 'd'",
                       "FolderDetectionChangedDeviceName_usb = 'Stick'",
                       "FolderChanged_usb = 3"}));
    CQoStatistics::reportAnywhereInvitationsAtStart(1, 2, 3, 4, 5, 6);
    EXPECT_EQ(reporter.take().back(), "NumberOfAnywhereAcceptGet = 6");

    log.clear();
    CQoStatistics::reportSwitchToQoView();
    CQoStatistics::reportAutomaticAddUsage();
    EXPECT_EQ(reporter.take(), (Reports{"TabSwitchQO += 1", "AutomaticAddFileCount += 1"}));
    EXPECT_TRUE(log.lines().empty()) << log.all();
}

TEST(QoStatistics, WithoutReporterNothingIsLogged)
{
    const LogCapture log(qo::level::flow);
    CQoStatistics::report(CQoStatistics::Available, 1);
    CQoStatistics::report(CQoStatistics::Available, u"x");
    CQoStatistics::reportSwitchToQoView();
    CQoStatistics::reportNumberOfFilesAtStart();
    EXPECT_TRUE(log.lines().empty()) << log.all();
}

using StatisticsOfFiles = SampleCollections;

TEST_F(StatisticsOfFiles, AreCountedByFlagSourceAndNames)
{
    Reporter reporter;
    Tag named;
    named.artist = u"Ann";
    named.title = u"Song";
    Tag half = named;
    half.artist = u"UnKnown";
    LogCapture log(qo::level::step);
    add(u"C:\\own\\a\\b\\named.mp3", named);
    add(u"C:\\own\\a\\half.mp3", half);
    add(u"C:\\own\\bare.avi")->getDbItem()->flags = qo::fileFlag::video | qo::fileFlag::notMusic;
    add(u"C:\\own\\notes.txt")->getDbItem()->flags = qo::fileFlag::notMusic;
    add(u"C:\\foreign\\other.mp3");
    fileAt(u"C:\\own\\bare.avi")->getDbItem()->source = IPostProcessingQueue::sourceRadioRecording;
    fileAt(u"C:\\own\\notes.txt")->getDbItem()->source = IPostProcessingQueue::sourceRadioRecording;
    EXPECT_EQ(reporter.take(), Reports());
    EXPECT_TRUE(log.has("nrDirs = 2, nrFiles = 4, nrMusicFiles = 3, nrOtherFiles = 1", 50))
        << log.all();

    CQoStatistics::reportNumberOfFilesAtStart();
    CQoStatistics::reportNumberOfFilesAtEnd();
    EXPECT_EQ(reporter.take(),
              (Reports{"NumberOfFilesInCollectionAtStart = 4",
                       "NumberOfFilesInCollectionAtStartVelmoraGathered = 1",
                       "NumberOfFilesInCollectionWithNoArtistTitle = 2",
                       "NumberOfFilesInCollectionAtEnd = 4",
                       "NumberOfFilesInCollectionAtEndVelmoraGathered = 1",
                       "CountMusicTypeFiles = 2",
                       "CountNonMusicTypeFiles = 2"}));
}
