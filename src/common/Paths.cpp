#include "common/Paths.h"

#include "common/CollPath.h"
#include "common/FileUtils.h"
#include "common/PathsInfoMap.h"
#include "common/Settings.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/SpecialFolders.h"
#include "types/CharClass.h"
#include "types/CriticalSection.h"

#include <algorithm>

// Folders are computed from the settings at each call, so a change of a setting takes effect at
// once. The tables list the output folders with their settings and default names.

namespace
{
using S = CQoSettings;

struct OutputRow
{
    CQoPaths::EMediaType type;
    S::ESetting dirSetting;
};
constexpr OutputRow outputRows[] = {{CQoPaths::recordedMusicFiles, S::RecordedMusicFilesDir},
                                    {CQoPaths::recordedStreams, S::RecordedStreamsDir},
                                    {CQoPaths::convertedMusicFiles, S::ConvertedMusicFilesDir},
                                    {CQoPaths::importedMusicFiles, S::ImportedMusicFilesDir},
                                    {CQoPaths::musicVideoClips, S::MusicVideoClipsDir},
                                    {CQoPaths::podcasts, S::PodcastsDir},
                                    {CQoPaths::audioBooks, S::AudioBooksDir},
                                    {CQoPaths::convertedMovies, S::ConvertedMoviesDir},
                                    {CQoPaths::recordedWebVideos, S::RecordedWebVideosDir},
                                    {CQoPaths::purchasedMusicFiles, S::PurchasedMusicFilesDir},
                                    {CQoPaths::importedMovies, S::ImportedMoviesDir}};

struct DefaultFolder
{
    const char16_t* name;
    bool isVideo;
};
/// In the order of their numbers, from 1.
constexpr DefaultFolder defaultFolders[] = {{u"Velmora Recorded Music", false},
                                            {u"Velmora Recorded Streams", false},
                                            {u"Velmora Converted Music", false},
                                            {u"Velmora Imported Music", false},
                                            {u"Velmora Music Videos", false},
                                            {u"Velmora Podcasts", false},
                                            {u"Velmora Audiobooks", false},
                                            {u"Velmora Converted Videos", true},
                                            {u"Velmora Recorded Webvideos", true},
                                            {u"Velmora Converted Videos", true},
                                            {u"Velmora Purchased Music", false},
                                            {u"Velmora Imported Movies", true}};

constexpr const char16_t* musicWords[] = {
    u"music", u"musik", u"musique", u"muzica", u"musica", u"audio"};
constexpr const char16_t* videoWords[] = {u"movie", u"video", u"film"};

constexpr std::uint32_t folderCheckInterval = 500; // milliseconds
constexpr const char16_t* collectionDirKey = u"MusicCollectionDir%d";
constexpr const char16_t* collectionDirTypeKey = u"MusicCollectionDirType%d";
constexpr const char16_t* hostMusicFolder = u"\\\\psf\\home\\music\\iTunes\\itunes Media";

/// Creates the base with its parents and the folder in it, and returns its path.
CString madeSubFolder(const CString& base, const char16_t* name)
{
    (void)qo::fileSystem().makeDirectories(base);
    const CString folder = qo::combinePath(base, name);
    CFileUtils::AssureDirExists(folder);
    return folder;
}

/// The configured folder, else the default one.
CString outputDir(const OutputRow& row)
{
    const CString configured = S::get(row.dirSetting);
    return configured.IsEmpty() ? CQoPaths::getDefaultFolder(row.type) : configured;
}

/// Without regard to case.
bool containsOneOf(CString name, const char16_t* const* words, std::size_t count)
{
    name.MakeLower();
    return std::any_of(
        words, words + count, [&](const char16_t* word) { return name.Find(word) >= 0; });
}

/// audioIsMusic for a text that is no known type.
CQoPathInfo::EType toPathType(const CString& text)
{
    return CQoPathInfo::toType(qo::textToInt(text.view()));
}
} // namespace

CString CQoPaths::getQoDataDir()
{
    return madeSubFolder(qo::specialFolders().data(), u"Qorganizer");
}

CString CQoPaths::getLogDir()
{
    return madeSubFolder(qo::combinePath(qo::specialFolders().state(), u"log"), u"QOP");
}

CString CQoPaths::getPictureTempDir()
{
    // A scan asks once for each file, so a folder that existed half a second ago is not checked
    // again.
    static CCriticalSection lock;
    static CString configured;
    static CString folder;
    static std::uint32_t checkedAt = 0;
    const qo::Guard guard(lock);
    const CString now = S::get(S::TempFolder);
    const std::uint32_t tick = qo::systemClock().tickCount();
    if (folder.IsEmpty() || now != configured || tick - checkedAt >= folderCheckInterval)
    {
        folder = madeSubFolder(CFileUtils::GetTempDir(CFileUtils::tempQorganizer), u"Covers");
        configured = now;
        checkedAt = tick;
    }
    return folder;
}

CString CQoPaths::makeTempFilePath(const CString& name)
{
    return qo::combinePath(CFileUtils::GetTempDir(CFileUtils::tempQorganizer), name);
}

CString CQoPaths::getVelmoraOutputDir()
{
    const CString folder = S::get(S::OutputFolder);
    CFileUtils::AssureDirExists(folder);
    return folder;
}

CString CQoPaths::getVelmoraQof()
{
    return qo::combinePath(getQoDataDir(), u"velmora.qof");
}

CString CQoPaths::getLastUsedQof()
{
    return getVelmoraQof();
}

CString CQoPaths::getQoDbFilePath()
{
    return qo::combinePath(getQoDataDir(), u"qodb");
}

CString CQoPaths::getDefaultFolder(int number)
{
    if (number < 1 || number > static_cast<int>(std::size(defaultFolders)))
        return {};
    const DefaultFolder& folder = defaultFolders[number - 1];
    const CString configured = S::get(folder.isVideo ? S::VideoBaseDir : S::MusicBaseDir);
    if (!configured.IsEmpty())
        return qo::combinePath(configured, folder.name);
    const qo::ISpecialFolders& special = qo::specialFolders();
    return qo::combinePath(folder.isVideo ? special.videos() : special.music(), folder.name);
}

bool CQoPaths::isMusicFolderName(const CString& name)
{
    return containsOneOf(name, musicWords, std::size(musicWords));
}

bool CQoPaths::isVideoFolderName(const CString& name)
{
    return containsOneOf(name, videoWords, std::size(videoWords));
}

void CQoPaths::getOutputDirs(CStringArray& dirs)
{
    dirs.RemoveAll();
    for (const OutputRow& row : outputRows)
        dirs.Add(outputDir(row));
}

void CQoPaths::checkCreateOutputDirs()
{
    CStringArray dirs;
    getOutputDirs(dirs);
    for (const CString& dir : dirs)
    {
        (void)qo::fileSystem().makeDirectories(CQoCollPath(dir).getParent().toString());
        CFileUtils::AssureDirExists(dir);
    }
}

bool CQoPaths::isOutputDir(const CString& path)
{
    CStringArray dirs;
    getOutputDirs(dirs);
    qo::CollPathArray paths;
    qo::addPaths(paths, dirs);
    return qo::findPath(paths, CQoCollPath(path)) >= 0;
}

bool CQoPaths::isInDirs(const CString& path, const CStringArray& dirs)
{
    const CQoCollPath parsed(path);
    for (const CString& dir : dirs)
    {
        if (parsed.isValid() && parsed.isSubPathOrSame(CQoCollPath(dir)))
            return true;
    }
    return false;
}

bool CQoPaths::isInOutputDirs(const CString& path)
{
    CStringArray dirs;
    getOutputDirs(dirs);
    return isInDirs(path, dirs);
}

/// Ambiguous if output folders lie in each other or are the same.
CQoPaths::EMediaType CQoPaths::getOutputDirType(const CString& path)
{
    const CQoCollPath parsed(path);
    EMediaType type = noMediaType;
    for (const OutputRow& row : outputRows)
    {
        if (!parsed.isSubPathOrSame(CQoCollPath(outputDir(row))))
            continue;
        if (type != noMediaType)
            return noMediaType;
        type = row.type;
    }
    return type;
}

void CQoPaths::getMusicCollectionDirs(CStringArray& dirs, CQoPathsInfoMap* map)
{
    S::getList(S::MusicCollectionDirsCount, collectionDirKey, dirs);
    if (!map)
        return;
    map->RemoveAll();
    for (int i = 0; i < dirs.GetSize(); ++i)
        map->SetAt(CQoCollPath(dirs[i]).toString(),
                   toPathType(S::getIndexed(collectionDirTypeKey, i)));
}

void CQoPaths::setMusicCollectionDirs(const CStringArray& dirs, const CQoPathsInfoMap& map)
{
    for (int i = 0; i < dirs.GetSize(); ++i)
    {
        CString type;
        type.Format(u"%d", map.getType(CQoCollPath(dirs[i]).toString()));
        S::setIndexed(collectionDirTypeKey, i, type);
    }
    S::setList(S::MusicCollectionDirsCount, collectionDirKey, dirs);
}

bool CQoPaths::isInMusicCollectionDirs(const CString& path)
{
    CStringArray dirs;
    getMusicCollectionDirs(dirs, nullptr);
    return isInDirs(path, dirs);
}

void CQoPaths::getRootDirs(CStringArray& dirs)
{
    CStringArray outputDirs;
    getOutputDirs(outputDirs);
    getMusicCollectionDirs(dirs, nullptr);
    dirs.Append(outputDirs);
}

bool CQoPaths::isInRootDirs(const CString& path)
{
    CStringArray dirs;
    getRootDirs(dirs);
    return isInDirs(path, dirs);
}

bool CQoPaths::isParentDirOrSubDirOfRootDirs(const CString& path)
{
    CStringArray dirs;
    getRootDirs(dirs);
    const CQoCollPath parsed(path);
    for (const CString& dir : dirs)
    {
        const CQoCollPath root(dir);
        if (parsed == root || parsed.isParentOrChildOf(root))
            return true;
    }
    return false;
}

CString CQoPaths::getItunesOnMacFolder()
{
    std::vector<qo::DirEntry> entries;
    if (qo::fileSystem().list(hostMusicFolder, entries) != 0)
        return {};
    for (const qo::DirEntry& entry : entries)
    {
        CString name = entry.name;
        if (name.MakeLower().Find(u"itunes") >= 0)
            return qo::combinePath(hostMusicFolder, entry.name);
    }
    return {};
}
