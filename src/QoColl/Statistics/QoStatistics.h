#pragma once

#include "QoColl/Statistics/StatisticsKeys.h"
#include "QoColl/Statistics/UsageStatistics.h"
#include "types/String.h"

class CQoCollection;

/// Turns what happens in the kernel and its host into named counters and values, and gives them to
/// the host's reporter. Without one nothing is reported or logged. Unless a comment says otherwise,
/// each report leaves a line in the log. No locks: as for collections.
class QO_API CQoStatistics : public qo::StatisticsKeys
{
public:
    /// The host keeps the reporter, and sets null before that goes.
    static void setStatisticsReporter(IUsageStatistics* reporter);

    static void incrementReport(const char16_t* key, int amount);
    static void report(const char16_t* key, int value);
    static void report(const char16_t* key, const char16_t* value);

    static void reportSwitchToQoView();    ///< without a line in the log
    static void reportAutomaticAddUsage(); ///< likewise

    // Both count the own collection, whether or not there is a reporter.
    static void reportNumberOfFilesAtStart();
    static void reportNumberOfFilesAtEnd();

    /// An action on so many files that begins: of those with a check mark, or else of those that
    /// are selected. The target, such as a device, may be "".
    static void
    reportStartFilesAction(const CString& action, const CString& target, int count, bool checked);
    static void reportEndFilesAction(const CString& action, const CString& target, int count);
    static void reportStartMPFilesAction(const CString& action, int count);

    static void reportAvailableDeviceCount(const CString& device, int count);

    // Folders for music and movies on a device. A name of "" is not reported.
    static void reportMusicMoviesFoldersDetectedChangedDeviceName(const CString& device,
                                                                  const CString& newName);
    static void
    reportMusicMoviesFoldersDetected(const CString& device, const CString& newName, int found);
    /// found is then 1 for music, 2 for movies and 3 for both.
    static void reportMusicMoviesFoldersDetected(const CString& device,
                                                 const CString& newName,
                                                 bool music,
                                                 bool movies);
    static void reportMusicMoviesFoldersChanging(const CString& device);
    static void
    reportMusicMoviesFoldersChanged(const CString& device, const CString& newName, int kind);
    /// Nothing if no folder is another one than before; kind is formed as found above.
    static void reportMusicMoviesFoldersChanged(const CString& device,
                                                const CString& newName,
                                                const CString& oldMusic,
                                                const CString& newMusic,
                                                const CString& oldMovies,
                                                const CString& newMovies);

    /// The invitations sent (both directions, giving, getting) and accepted (likewise).
    static void reportAnywhereInvitationsAtStart(
        int exchange, int give, int get, int acceptExchange, int acceptGive, int acceptGet);
    static void reportMyselfSharesAtStart(int count);

    /// Writes the numbers of folders and files to the log if it takes such lines; no report.
    static void logStatistics(const CQoCollection& collection);

    /// Counts the files of the collection. gathered are the music files that a source of this
    /// program brought; noArtistTitle those without artist or title, or with "unknown". The last
    /// three may be null. music and nonMusic go by the flags of each file.
    static void countFiles(const CQoCollection& collection,
                           int& files,
                           int& gathered,
                           int* music,
                           int* nonMusic,
                           int* noArtistTitle);

private:
    static void reset();

    static IUsageStatistics* m_pStatisticsReporter;
    // Of the last logStatistics().
    static int m_nrDirs;
    static int m_nrFiles;
    static int m_nrMusicFiles;
    static int m_nrOtherFiles;
};
