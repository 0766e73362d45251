#pragma once

#include "types/StringArray.h"

class CQoPathsInfoMap;

/// Where the kernel's own data and the user's folders lie. Operations that name a folder of the
/// kernel's own make it when it is missing, and return its path whether or not that worked.
class QO_API CQoPaths
{
public:
    /// Kinds of media with an output folder of their own; value 10 is not among them.
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

    static CString getQoDataDir();
    static CString getLogDir();
    static CString getPictureTempDir();
    static CString makeTempFilePath(const CString& name);
    static CString getVelmoraOutputDir();
    static CString getVelmoraQof();
    /// There is one such file, so this is getVelmoraQof().
    static CString getLastUsedQof();
    static CString getQoDbFilePath();

    /// The default folder of a number from 1 to 12 below the music or the video base; "" for any
    /// other number. 8 and 10 share one name.
    static CString getDefaultFolder(int number);
    /// Whether a folder's name counts as that of a music or a video folder in some language.
    static bool isMusicFolderName(const CString& name);
    static bool isVideoFolderName(const CString& name);

    /// One folder for each output media type, in their order: the configured or the default one.
    static void getOutputDirs(CStringArray& dirs);
    static void checkCreateOutputDirs();
    static bool isOutputDir(const CString& path);
    static bool isInDirs(const CString& path, const CStringArray& dirs);
    static bool isInOutputDirs(const CString& path);
    /// noMediaType when no output folder holds the path, and when more than one does.
    static EMediaType getOutputDirType(const CString& path);

    /// With a map, it is emptied and gets the stored kind of each folder.
    static void getMusicCollectionDirs(CStringArray& dirs, CQoPathsInfoMap* map);
    static void setMusicCollectionDirs(const CStringArray& dirs, const CQoPathsInfoMap& map);
    static bool isInMusicCollectionDirs(const CString& path);

    /// Music collection folders, then output folders.
    static void getRootDirs(CStringArray& dirs);
    static bool isInRootDirs(const CString& path);
    static bool isParentDirOrSubDirOfRootDirs(const CString& path);

    /// The music library of the machine that hosts this virtual one; "" when there is none.
    static CString getItunesOnMacFolder();
};
