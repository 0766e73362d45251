#pragma once

#include "QoColl/Db/Forward.h"
#include "types/FileTime.h"
#include "types/String.h"

#include <string>

/// An extract: a text file with the media files of one collection, by which a peer can show that
/// collection and ask for a file by its id. UTF-8 with a mark, lines end with CR LF.
///
///   QODB_EXTRACT_VERSION:1;QODB_EXTRACT_REVISION:0;TIME_INFO:2024-01-31 23:59:59;
///   INS:17<tab>C:\Music\a.mp3<tab>Ann<tab>Dawn<tab>Gold<tab>Folk<tab>3<tab>1999<tab>...
///
/// After "INS:" stand the id, path, artist, title, album, genre, track number, year, size in bytes,
/// duration in milliseconds, flags, bit rate in kbit/s and creation time in ticks. In the texts,
/// backslash, CR, LF and tab are written as \\, \r, \n and \t.
///
/// An extract may come from anyone: see LoadQoDbExtract(). No locks; nothing throws but the
/// database, and failures of files are results, with a line in the log.
class QO_API CQoDbExtract
{
public:
    enum ERetCode : int
    {
        extractUnreadable = 0,
        extractLoaded = 1,
        extractUnsupported = 2 ///< of a newer version
    };

    /// The name of an extract in a folder: "<folder>\uc_extract_<name>.txt", or with "sc".
    static CString GetUCQoDbExtractFileName(const CString& folder, const CString& name);
    static CString GetSCQoDbExtractFileName(const CString& folder, const CString& name);

    /// 1 if nothing follows the first line, or the file cannot be read; else 0.
    static int IsEmptyQodbExtract(const CString& path);

    // Each replaces the file in one step, for its owner only; 1, or 0 with the file as it was.

    static int CreateEmptyQoDbExtract(const CString& path);
    /// Of the user's own collection in the database, with the time of its last change. Failures of
    /// the database are thrown as CSQLiteException*.
    static int CreateQoDbExtractForAll(const CString& dbPath, const CString& path);
    /// Files that are neither audio nor video are left out.
    static int
    CreateQoDbExtract(const QoFileDbItemArray& files, const CString& path, const FILETIME& time);

    /// Adds the records to files, which stays sorted by path; of records of one path the first
    /// stays. name is the id of the share, below whose root the paths then stand; the ids of the
    /// peer stand in clipUid. Left out in silence are lines that are no records or have too few
    /// fields, records whose path is no path of a drive or a network or has a part "." or ".."
    /// between slashes of either kind, and lines beyond 64 Ki characters. A file beyond 512 MiB, or
    /// with more than two million records, is not read to its end and counts as unreadable.
    static ERetCode
    LoadQoDbExtract(const CString& name, const CString& path, QoFileDbItemArray& files);

    /// Copies what an extract holds of a file, without its path.
    static void CopyShareTags(QoFileDbItemPtr source, QoFileDbItemPtr target);

    CString m_strExtractFileName; ///< for the host's use

private:
    static void WriteRelevantInformationForQoDbExtract(std::string& text,
                                                       const QoFileDbItemPtr& item);
    static void ParseVERLine(const CString& line, unsigned int& version, unsigned int& revision);
    static CString FormatTimeInfo(const FILETIME& time);
};
