#include "QoColl/Statistics/QoStatistics.h"

#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/Log.h"

namespace
{
/// Calls for each file below the folder, those of sub-folders first.
template <class Function>
void forEachFileBelow(const CHDDirectory& dir, const Function& function)
{
    for (const auto& sub : dir.getSubDirs())
        forEachFileBelow(*sub, function);
    for (const auto& file : dir.getFiles())
        function(*file);
}

int countDirsBelow(const CHDDirectory& dir)
{
    int count = dir.getSubDirs().GetSize();
    for (const auto& sub : dir.getSubDirs())
        count += countDirsBelow(*sub);
    return count;
}

bool isMusicByFlag(const CHDFile& file)
{
    return (file.getDbItem()->flags & qo::fileFlag::music) != 0;
}

bool isUnknownName(const CString& name)
{
    return name.IsEmpty() || name.CompareNoCase(u"unknown") == 0;
}

CString keyFor(const CString& key, const CString& target)
{
    return target.IsEmpty() ? key : key + u"_" + target;
}
} // namespace

IUsageStatistics::~IUsageStatistics() = default;

IUsageStatistics* CQoStatistics::m_pStatisticsReporter = nullptr;
int CQoStatistics::m_nrDirs = 0;
int CQoStatistics::m_nrFiles = 0;
int CQoStatistics::m_nrMusicFiles = 0;
int CQoStatistics::m_nrOtherFiles = 0;

void CQoStatistics::setStatisticsReporter(IUsageStatistics* reporter)
{
    m_pStatisticsReporter = reporter;
}

void CQoStatistics::incrementReport(const char16_t* key, int amount)
{
    if (!m_pStatisticsReporter)
        return;
    qo::log(qo::level::flow, u"CQoStatistics::incrementReport: %s += %d", key, amount);
    m_pStatisticsReporter->increment(key, amount);
}

void CQoStatistics::report(const char16_t* key, int value)
{
    if (!m_pStatisticsReporter)
        return;
    qo::log(qo::level::flow, u"CQoStatistics::report: %s = %d", key, value);
    m_pStatisticsReporter->reportNumber(key, value);
}

void CQoStatistics::report(const char16_t* key, const char16_t* value)
{
    if (!m_pStatisticsReporter)
        return;
    qo::log(qo::level::flow, u"CQoStatistics::report: %s = '%s'", key, value);
    m_pStatisticsReporter->reportText(key, value);
}

void CQoStatistics::reportSwitchToQoView()
{
    if (m_pStatisticsReporter)
        m_pStatisticsReporter->increment(SwitchToQoView, 1);
}

void CQoStatistics::reportAutomaticAddUsage()
{
    if (m_pStatisticsReporter)
        m_pStatisticsReporter->increment(AutomaticAddFileCount, 1);
}

void CQoStatistics::countFiles(const CQoCollection& collection,
                               int& files,
                               int& gathered,
                               int* music,
                               int* nonMusic,
                               int* noArtistTitle)
{
    const auto raise = [](int* count, bool isCounted) { *count += isCounted ? 1 : 0; };
    const auto count = [&](const CHDFile& file)
    {
        ++files;
        if (int* const ofKind = isMusicByFlag(file) ? music : nonMusic)
            ++*ofKind;
        if (!dynamic_cast<const CHDMusicFile*>(&file))
            return;
        const QoFileDbItem& item = *file.getDbItem();
        raise(&gathered, item.source != IPostProcessingQueue::sourceNone);
        if (noArtistTitle)
            raise(noArtistTitle, isUnknownName(item.artist) || isUnknownName(item.title));
    };
    for (const auto& root : collection.getRootDirs())
        forEachFileBelow(*root, count);
}

void CQoStatistics::reportNumberOfFilesAtStart()
{
    int files = 0;
    int gathered = 0;
    int noArtistTitle = 0;
    countFiles(CQoCollection::m_ownCollection, files, gathered, nullptr, nullptr, &noArtistTitle);
    report(NumberOfFilesInCollectionAtStart, files);
    report(NumberOfFilesInCollectionAtStartVelmoraGathered, gathered);
    report(NumberOfFilesInCollectionWithNoArtistTitle, noArtistTitle);
}

void CQoStatistics::reportNumberOfFilesAtEnd()
{
    int files = 0;
    int gathered = 0;
    int music = 0;
    int nonMusic = 0;
    countFiles(CQoCollection::m_ownCollection, files, gathered, &music, &nonMusic, nullptr);
    report(NumberOfFilesInCollectionAtEnd, files);
    report(NumberOfFilesInCollectionAtEndVelmoraGathered, gathered);
    report(CountMusicTypeFiles, music);
    report(CountNonMusicTypeFiles, nonMusic);
}

void CQoStatistics::reportStartFilesAction(const CString& action,
                                           const CString& target,
                                           int count,
                                           bool checked)
{
    incrementReport(keyFor(action, target), count);
    incrementReport(checked ? OperationOnCheckedTracks : OperationOnSelectedTracks, count);
}

void CQoStatistics::reportEndFilesAction(const CString& action, const CString& target, int count)
{
    incrementReport(keyFor(action + Success, target), count);
}

void CQoStatistics::reportStartMPFilesAction(const CString& action, int count)
{
    reportStartFilesAction(action, CString(), count, false);
}

void CQoStatistics::reportAvailableDeviceCount(const CString& device, int count)
{
    report(CString(Available) + u"_" + device, count);
}

void CQoStatistics::reportMusicMoviesFoldersDetectedChangedDeviceName(const CString& device,
                                                                      const CString& newName)
{
    if (!newName.IsEmpty())
        report(CString(MusicMoviesFoldersDetectionChangedDeviceName) + u"_" + device,
               newName.GetString());
}

void CQoStatistics::reportMusicMoviesFoldersDetected(const CString& device,
                                                     const CString& newName,
                                                     int found)
{
    reportMusicMoviesFoldersDetectedChangedDeviceName(device, newName);
    report(CString(MusicMoviesFoldersDetected) + u"_" + device, found);
}

void CQoStatistics::reportMusicMoviesFoldersDetected(const CString& device,
                                                     const CString& newName,
                                                     bool music,
                                                     bool movies)
{
    reportMusicMoviesFoldersDetected(device, newName, (music ? 1 : 0) + (movies ? 2 : 0));
}

void CQoStatistics::reportMusicMoviesFoldersChanging(const CString& device)
{
    report(CString(MusicMoviesFoldersChanging) + u"_" + device, 1);
}

void CQoStatistics::reportMusicMoviesFoldersChanged(const CString& device,
                                                    const CString& newName,
                                                    int kind)
{
    reportMusicMoviesFoldersDetectedChangedDeviceName(device, newName);
    report(CString(MusicMoviesFoldersChanged) + u"_" + device, kind);
}

void CQoStatistics::reportMusicMoviesFoldersChanged(const CString& device,
                                                    const CString& newName,
                                                    const CString& oldMusic,
                                                    const CString& newMusic,
                                                    const CString& oldMovies,
                                                    const CString& newMovies)
{
    const bool isMusicChanged = oldMusic != newMusic;
    const bool areMoviesChanged = oldMovies != newMovies;
    if (isMusicChanged)
        report(MusicFolderChanged, newMusic.GetString());
    if (areMoviesChanged)
        report(MoviesFolderChanged, newMovies.GetString());
    if (isMusicChanged || areMoviesChanged)
        reportMusicMoviesFoldersChanged(
            device, newName, (isMusicChanged ? 1 : 0) + (areMoviesChanged ? 2 : 0));
}

void CQoStatistics::reportAnywhereInvitationsAtStart(
    int exchange, int give, int get, int acceptExchange, int acceptGive, int acceptGet)
{
    report(NumberOfAnywhereExchange, exchange);
    report(NumberOfAnywhereGive, give);
    report(NumberOfAnywhereGet, get);
    report(NumberOfAnywhereAcceptExchange, acceptExchange);
    report(NumberOfAnywhereAcceptGive, acceptGive);
    report(NumberOfAnywhereAcceptGet, acceptGet);
}

void CQoStatistics::reportMyselfSharesAtStart(int count)
{
    report(NumberOfAnywhereOwn, count);
}

void CQoStatistics::reset()
{
    m_nrDirs = m_nrFiles = m_nrMusicFiles = m_nrOtherFiles = 0;
}

void CQoStatistics::logStatistics(const CQoCollection& collection)
{
    if (!qo::isLogged(qo::level::step))
        return;
    reset();
    for (const auto& root : collection.getRootDirs())
    {
        m_nrDirs += countDirsBelow(*root);
        forEachFileBelow(*root,
                         [](const CHDFile& file)
                         { ++(isMusicByFlag(file) ? m_nrMusicFiles : m_nrOtherFiles); });
    }
    m_nrFiles = m_nrMusicFiles + m_nrOtherFiles;
    qo::log(qo::level::step,
            u"nrDirs = %d, nrFiles = %d, nrMusicFiles = %d, nrOtherFiles = %d",
            m_nrDirs,
            m_nrFiles,
            m_nrMusicFiles,
            m_nrOtherFiles);
}
