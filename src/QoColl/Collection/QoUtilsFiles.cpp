#include "Analyze/NSUtils.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "QoColl/Collection/QoUtils.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "common/CollPath.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/CharClass.h"

#include <algorithm>
#include <string_view>

namespace
{
using Show = CQoUtils::ShowFilterInfo;

bool isMusicFile(const CQoUtils::File& file)
{
    return file->getFileType() == CHDFile::FT_Music;
}

/// A file on a removable disk is real, whether or not the disk is present.
bool isRealFile(const CQoUtils::File& file)
{
    const CQoCollPath::EDeviceType type = CQoCollPath::typeOf(file->getPath());
    return type >= CQoCollPath::drive && type <= CQoCollPath::usb;
}

/// The name of the file without its folder, from a path of any kind or a bare name.
CString withoutFolder(const CString& name)
{
    if (name.Find(u'\\') >= 0 && CQoCollPath::typeOf(name) != CQoCollPath::invalid)
        return CQoCollPath(name).getLast();
    return name.Mid(name.ReverseFind(u'\\') + 1);
}

/// Without white space at both ends.
std::u16string_view trimmed(std::u16string_view text)
{
    while (!text.empty() && qo::isSpace(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && qo::isSpace(text.back()))
        text.remove_suffix(1);
    return text;
}
} // namespace

int CQoUtils::getFileAudioVideoType(const File& file)
{
    return file->getAudioVideoType();
}

/// A file with a source (recorded, downloaded) was made by the application; others are the user's.
int CQoUtils::getFileVelmoraMyMusicType(const File& file)
{
    return file->getDbItem()->source != IPostProcessingQueue::sourceNone ? Show::ST_Velmora
                                                                         : Show::ST_MyMusic;
}

int CQoUtils::getFileIsMusicType(const File& file)
{
    return file->getDbItem()->flags & qo::fileFlag::music ? Show::ST_Music : Show::ST_NoMusic;
}

int CQoUtils::getFileReviewedType(const File& file)
{
    return file->getDbItem()->reviewed ? Show::ST_Reviewed : Show::ST_NotReviewed;
}

int CQoUtils::getFileImportedType(const File& file)
{
    return file->getDbItem()->imported ? Show::ST_Imported : Show::ST_NotImported;
}

int CQoUtils::getFilePurchasedType(const File& file)
{
    return file->getDbItem()->flags & qo::fileFlag::purchased ? Show::ST_Purchased
                                                              : Show::ST_NotPurchased;
}

bool CQoUtils::existMusicFilesInList(const Files& files)
{
    return std::any_of(files.begin(), files.end(), isMusicFile);
}

void CQoUtils::getMusicFiles(const Files& files, CPtrListT<CHDMusicFile>& musicFiles)
{
    for (const File& file : files)
    {
        if (isMusicFile(file))
            musicFiles.add(boost::static_pointer_cast<CHDMusicFile>(file));
    }
}

int CQoUtils::countMusicFiles(const Files& files)
{
    return static_cast<int>(std::count_if(files.begin(), files.end(), isMusicFile));
}

void CQoUtils::getMusicNonMusicTypeFileCount(const Files& files, int& music, int& other)
{
    music = 0;
    for (const File& file : files)
        music += getFileIsMusicType(file) == Show::ST_Music;
    other = files.GetSize() - music;
}

bool CQoUtils::existRealFilesInList(const Files& files)
{
    return std::any_of(files.begin(), files.end(), isRealFile);
}

void CQoUtils::getRealFiles(const Files& files, Files& realFiles)
{
    for (const File& file : files)
    {
        if (isRealFile(file))
            realFiles.add(file);
    }
}

std::int64_t CQoUtils::getFileSize(const File& file)
{
    qo::FileInfo info;
    const int error =
        qo::fileSystem().info(getRealPath(file->getPath()), qo::Spelling::anyCase, info);
    if (error == 0)
        return info.size;
    qo::log(qo::level::error,
            u"CQoUtils::getFileSize : GetFileAttributesEx failed for %s : %s",
            file->getPath(),
            CFileUtils::GetLastErrorText(error));
    return 0;
}

void CQoUtils::getArtistTitleFromFileName(CString name, CString& artist, CString& title)
{
    constexpr int longestTrackNumber = 2;
    name = withoutFolder(name);
    std::u16string_view rest = name.view();
    // After a dropped track number the rest is treated as a name again, so it also loses what looks
    // like an extension.
    bool hasExtension = true;
    do
    {
        const std::size_t dot = hasExtension ? rest.rfind(u'.') : std::u16string_view::npos;
        hasExtension = dot != std::u16string_view::npos;
        rest = rest.substr(0, dot);
        const std::size_t dash = rest.find(u'-');
        const bool hasArtist = dash != std::u16string_view::npos;
        artist = CString(trimmed(hasArtist ? rest.substr(0, dash) : std::u16string_view()));
        rest = trimmed(hasArtist ? rest.substr(dash + 1) : rest);
    } while (artist.GetLength() <= longestTrackNumber && CNSUtils::isNumber(artist));
    title = CString(rest);
}

CString CQoUtils::getArtistFromFileName(const CString& name)
{
    CString artist;
    CString title;
    getArtistTitleFromFileName(name, artist, title);
    return artist;
}

bool CQoUtils::isSimilarFile(const File& a, const File& b)
{
    return a->getDbItem()->title.CompareNoCase(b->getDbItem()->title) == 0;
}

void CQoUtils::getDirFiles(const Dir& dir, bool recursive, Files& files)
{
    if (recursive)
        return dir->getAllFiles(files);
    for (const File& file : dir->getFiles())
        files.add(file);
}

void CQoUtils::getDirSubDirs(const Dir& dir, bool recursive, CPtrListT<CHDDirectory>& dirs)
{
    const int first = dirs.GetSize();
    for (const Dir& subDir : dir->getSubDirs())
        dirs.add(subDir);
    // The list grows while it is walked, so no recursion is needed.
    for (int i = first; recursive && i < dirs.GetSize(); ++i)
    {
        const Dir next = dirs[i];
        for (const Dir& subDir : next->getSubDirs())
            dirs.add(subDir);
    }
}
