#pragma once

#include "types/StringArray.h"

class CQoPathsInfoMap;

/// Where the kernel's data and the user's folders are. A function for a folder of the kernel
/// creates it if it is missing, and returns its path even if that fails.
class QO_API CQoPaths
{
public:
    /// The kinds of media with output folders of their own; the number 10 is not used.
    enum EMediaType : int
    {
        noMediaType = 0,
        recordedMusicFiles = 1,
        recordedStreams = 2,
        convertedMusicFiles = 3,
        importedMusicFiles = 4,
        musicVideoClips = 5,
        podcasts = 6,
        audioBooks = 7,
        convertedMovies = 8,
        recordedWebVideos = 9,
        purchasedMusicFiles = 11,
        importedMovies = 12
    };

    /// The kernel's data folder, with the database and the rule files.
    static CString getQoDataDir();
    static CString getLogDir();
    /// The folder for pictures that were extracted from tags.
    static CString getPictureTempDir();
    static CString makeTempFilePath(const CString& name);
    static CString getVelmoraOutputDir();
    static CString getVelmoraQof();
    /// The same as getVelmoraQof(), since there is only one such file.
    static CString getLastUsedQof();
    /// The usual path of the collection database.
    static CString getQoDbFilePath();

    /// The default folder for a number from 1 to 12, below the music or the video base; "" for any
    /// other number. The bases are the settings MusicBaseDir and VideoBaseDir or, while these are
    /// empty, the user's music and video folders. 8 and 10 have the same name.
    static CString getDefaultFolder(int number);
    /// Whether a folder's name contains a word for music, or for video, of one of several
    /// languages: "My Music" and "Audiobooks" are music.
    static bool isMusicFolderName(const CString& name);
    static bool isVideoFolderName(const CString& name);

    /// The folder of each kind of media, in their order: the configured or the default one.
    static void getOutputDirs(CStringArray& dirs);
    /// Creates the output folders that are missing, with their parents.
    static void checkCreateOutputDirs();
    /// Whether the path is itself an output folder.
    static bool isOutputDir(const CString& path);
    /// Whether the path is one of the folders or below one.
    static bool isInDirs(const CString& path, const CStringArray& dirs);
    static bool isInOutputDirs(const CString& path);
    /// The kind of media whose output folder contains the path; noMediaType if none does, or more
    /// than one.
    static EMediaType getOutputDirType(const CString& path);

    /// The folders of the settings. A map is emptied and gets the stored type of each folder; it
    /// may be null.
    static void getMusicCollectionDirs(CStringArray& dirs, CQoPathsInfoMap* map);
    static void setMusicCollectionDirs(const CStringArray& dirs, const CQoPathsInfoMap& map);
    static bool isInMusicCollectionDirs(const CString& path);

    /// The music collection folders, followed by the output folders.
    static void getRootDirs(CStringArray& dirs);
    static bool isInRootDirs(const CString& path);
    /// Whether the path is a root folder, below one or above one.
    static bool isParentDirOrSubDirOfRootDirs(const CString& path);

    /// The music library of the machine that hosts this virtual machine; "" if there is none.
    static CString getItunesOnMacFolder();
};
