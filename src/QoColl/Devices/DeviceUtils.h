#pragma once

#include "common/CollPath.h"
#include "common/PathsInfoMap.h"

namespace qo
{
/// The folders that the user chose on a device or in a plug-in, as the settings keep them: relative
/// to its root, with backslashes between the names and none at the ends ("Media\Music").
struct DeviceFolders
{
    CString music; ///< "" when none was chosen
    CString movies;
    CStringArray extra;
    CQoPathsInfoMap extraTypes; ///< by the texts in extra
};

/// The full path of a relative one.
QO_API CQoCollPath deviceFullPath(const CQoCollPath& root, const CString& relative);
/// The reverse; "" for the root itself and for what does not lie below it.
QO_API CString deviceRelativePath(const CQoCollPath& root, const CQoCollPath& full);

// The chosen folders as full paths: music, movies, extra folders. A music or movies folder that was
// not chosen is the root with rootIfEmpty, and none without.

/// Appends the folders, each once.
QO_API void deviceFullPaths(const CQoCollPath& root,
                            const DeviceFolders& folders,
                            bool rootIfEmpty,
                            CollPathArray& paths);
/// Adds the type of each folder by its full path. Audio is music below a music folder, also where
/// it is the movies folder as well; nothing is below a movies folder.
QO_API void devicePathsInfo(const CQoCollPath& root,
                            const DeviceFolders& folders,
                            bool rootIfEmpty,
                            CQoPathsInfoMap& info);
/// The folders into which music and movies are copied; "" where there is none.
QO_API void deviceTargetDirs(const CQoCollPath& root,
                             const DeviceFolders& folders,
                             bool rootIfEmpty,
                             CString& music,
                             CString& movies);
} // namespace qo

/// Guesses which folders of a device or plug-in hold music and movies. No locks are needed.
class QO_API CQoDeviceUtils
{
public:
    /// Appends the folders whose last name contains a word for music, or for movies; a folder may
    /// land in both lists.
    static void findMusicDirs(const CStringArray& dirs, CStringArray& music, CStringArray& movies);
    /// The first pair, by music and then by movies, in which neither folder lies below the other.
    /// False, with the outputs as they were, if there is none.
    static bool findValidMusicDirsPair(const CStringArray& music,
                                       const CStringArray& movies,
                                       CString& outMusic,
                                       CString& outMovies);
    /// Both of these for the folders of a device: without a valid pair both results are the start
    /// folder. The flags say whether any folder has such a name.
    static void chooseMusicAndMoviesDirs(const CStringArray& dirs,
                                         const CString& start,
                                         CString& music,
                                         CString& movies,
                                         bool& foundMusic,
                                         bool& foundMovies);
};
