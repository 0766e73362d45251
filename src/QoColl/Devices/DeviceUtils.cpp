#include "QoColl/Devices/DeviceUtils.h"

#include "common/Log.h"
#include "common/Paths.h"

namespace qo
{
namespace
{
/// The chosen folder as a path; invalid when it stands for none.
CQoCollPath chosenFolder(const CQoCollPath& root, const CString& relative, bool rootIfEmpty)
{
    return relative.IsEmpty() && !rootIfEmpty ? CQoCollPath() : deviceFullPath(root, relative);
}
} // namespace

CQoCollPath deviceFullPath(const CQoCollPath& root, const CString& relative)
{
    CStringArray components = root.getComponents();
    components.Append(CQoCollPath(relative, true).getComponents());
    return {root.getType(), root.getDevice(), components};
}

CString deviceRelativePath(const CQoCollPath& root, const CQoCollPath& full)
{
    return full.relativeTo(root).join(u"\\");
}

void deviceFullPaths(const CQoCollPath& root,
                     const DeviceFolders& folders,
                     bool rootIfEmpty,
                     CollPathArray& paths)
{
    for (const CString& chosen : {folders.music, folders.movies})
    {
        const CQoCollPath path = chosenFolder(root, chosen, rootIfEmpty);
        if (path.isValid())
            addUniquePath(paths, path);
    }
    for (const CString& extra : folders.extra)
        addUniquePath(paths, deviceFullPath(root, extra));
}

void devicePathsInfo(const CQoCollPath& root,
                     const DeviceFolders& folders,
                     bool rootIfEmpty,
                     CQoPathsInfoMap& info)
{
    for (const CString& extra : folders.extra)
        info.SetAt(deviceFullPath(root, extra).toString(), folders.extraTypes.getType(extra));
    const CQoCollPath movies = chosenFolder(root, folders.movies, rootIfEmpty);
    if (movies.isValid())
        info.SetAt(movies.toString(), CQoPathInfo::nothingIsMusic);
    const CQoCollPath music = chosenFolder(root, folders.music, rootIfEmpty);
    if (music.isValid())
        info.SetAt(music.toString(), CQoPathInfo::audioIsMusic);
}

void deviceTargetDirs(const CQoCollPath& root,
                      const DeviceFolders& folders,
                      bool rootIfEmpty,
                      CString& music,
                      CString& movies)
{
    music = chosenFolder(root, folders.music, rootIfEmpty).toString();
    movies = chosenFolder(root, folders.movies, rootIfEmpty).toString();
}
} // namespace qo

void CQoDeviceUtils::findMusicDirs(const CStringArray& dirs,
                                   CStringArray& music,
                                   CStringArray& movies)
{
    using qo::log;
    using qo::level::flow;
    for (const CString& dir : dirs)
    {
        log(flow, u"CQoDeviceUtils::findMusicDirs : checking folder %s", dir);
        const CString name = CQoCollPath(dir, true).getLast();
        if (CQoPaths::isMusicFolderName(name))
        {
            log(flow, u"CQoDeviceUtils::findMusicDirs : found 'music' named dir %s", dir);
            music.Add(dir);
        }
        if (CQoPaths::isVideoFolderName(name))
        {
            log(flow, u"CQoDeviceUtils::findMusicDirs : found 'movie' named dir %s", dir);
            movies.Add(dir);
        }
    }
}

bool CQoDeviceUtils::findValidMusicDirsPair(const CStringArray& music,
                                            const CStringArray& movies,
                                            CString& outMusic,
                                            CString& outMovies)
{
    for (const CString& musicDir : music)
    {
        const CQoCollPath musicPath(musicDir, true);
        for (const CString& moviesDir : movies)
        {
            if (musicPath.isParentOrChildOf(CQoCollPath(moviesDir, true)))
                continue;
            outMusic = musicDir;
            outMovies = moviesDir;
            return true;
        }
    }
    return false;
}

void CQoDeviceUtils::chooseMusicAndMoviesDirs(const CStringArray& dirs,
                                              const CString& start,
                                              CString& music,
                                              CString& movies,
                                              bool& foundMusic,
                                              bool& foundMovies)
{
    CStringArray musicDirs;
    CStringArray moviesDirs;
    findMusicDirs(dirs, musicDirs, moviesDirs);
    foundMusic = !musicDirs.IsEmpty();
    foundMovies = !moviesDirs.IsEmpty();
    if (!findValidMusicDirsPair(musicDirs, moviesDirs, music, movies))
        music = movies = start;
}
