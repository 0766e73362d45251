#include "KVTagLib/Tags.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Plugins/PluginSupport.h"
#include "QoColl/Plugins/PluginWrappers.h"
#include "QoColl/Plugins/QoPluginManager.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "common/FileUtils.h"
#include "common/PartFile.h"
#include "common/Paths.h"
#include "platform/Platform.h"

namespace
{
constexpr int id3HeaderSize = 10;
/// No honest tag is larger, and a server may say anything.
constexpr std::int64_t largestTag = std::int64_t{16} * 1024 * 1024;

/// Gives a listed file its size back, which a fetch of its first bytes has changed.
class ListedSize
{
public:
    explicit ListedSize(IPhysicalResult& result) : m_result(result), m_size(result.GetSize()) {}
    ~ListedSize() { m_result.SetSize(m_size); }
    ListedSize(const ListedSize&) = delete;
    ListedSize& operator=(const ListedSize&) = delete;

private:
    IPhysicalResult& m_result;
    const std::int64_t m_size;
};

/// Passes on that an operation is cancelled, but not how far a part of it has come.
class OnlyCancel final : public CDummyProgress
{
public:
    explicit OnlyCancel(IQoProgress* progress) : m_progress(progress) {}
    bool isCanceled() override { return qo::isStopped(m_progress); }

private:
    IQoProgress* m_progress;
};

/// The size of an ID3v2 tag with its header; 0 if these bytes begin none. Four bytes of seven bits
/// hold the size: 00 00 02 01 is 257.
std::int64_t sizeOfId3Tag(const unsigned char (&header)[id3HeaderSize])
{
    constexpr unsigned char unused = 0xFF;
    constexpr unsigned char highBit = 0x80;
    constexpr int bitsPerByte = 7;
    if (header[0] != 'I' || header[1] != 'D' || header[2] != '3' || header[3] == unused ||
        header[4] == unused)
        return 0;
    std::int64_t size = 0;
    for (int i = 6; i < id3HeaderSize; ++i)
    {
        if (header[i] >= highBit)
            return 0;
        size = size << bitsPerByte | header[i];
    }
    return size + id3HeaderSize;
}

/// Reads the first bytes; false, with a line in the log, if they are not all there.
bool readHeader(const CString& path, unsigned char (&header)[id3HeaderSize])
{
    int error = 0;
    const std::unique_ptr<qo::IFile> file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    if (!file)
    {
        qo::log(qo::level::error,
                u"CQoPluginManager::getFileInfoFromPhysicalPlugin : couldnt open first 10 bytes "
                u"from %s",
                path);
        return false;
    }
    if (file->read(header, id3HeaderSize) == id3HeaderSize)
        return true;
    qo::log(qo::level::error,
            u"CQoPluginManager::getFileInfoFromPhysicalPlugin : couldnt read first 10 bytes from "
            u"%s",
            path);
    return false;
}

/// Puts what the tag holds into the record.
void takeTags(const KVTagLib::CTags& tags, QoFileDbItem& item)
{
    tags.GetFirstValidArtist(item.artist);
    tags.GetAlbum(item.album);
    tags.GetTitle(item.title);
    tags.GetGenre(item.genre);
    tags.GetTrackNumber(item.trackNumber);
    tags.GetYear(item.year);
    if (tags.GetLyrics(item.lyrics))
        item.lyricsLoaded = true;
    KVTagLib::CPictureTag picture;
    if (tags.GetPicture(0, picture))
        item.picturePath = picture.GetFilePath();
}
} // namespace

bool CQoPluginManager::simpleDownload(const PhysicalResultPtr& result,
                                      int bytes,
                                      const CString& target,
                                      const boost::shared_ptr<IDownloadWrapper>& download,
                                      IQoProgress* progress)
{
    result->SetSize(bytes);
    const boost::shared_ptr<IPluginDownload> part = download->CreateDownload(result, target);
    if (!part)
        return false;
    OnlyCancel cancel(progress);
    // Without its range this would fetch the whole file.
    const bool succeeded = part->SetRange(0, bytes) && part->Run(&cancel);
    if (!succeeded)
        qo::logUnlessStopped(progress, u"CQoPluginManager::simpleDownload : download failed");
    return succeeded;
}

bool CQoPluginManager::getFileInfoFromPhysicalPlugin(
    PhysicalResultPtr result,
    const boost::shared_ptr<IDownloadWrapper>& download,
    const QoFileDbItemPtr& item,
    IQoProgress* progress)
{
    if (!download || !result)
        return true;
    const ListedSize listed(*result);
    const CString temp =
        qo::uniqueTempPath(CFileUtils::tempQorganizer, CQoCollPath(item->path).getLast());
    const qo::PartFile part(temp);
    const bool isTooShort = item->size > 0 && item->size < id3HeaderSize;
    if (!simpleDownload(result, id3HeaderSize, temp, download, progress))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::getFileInfoFromPhysicalPlugin : couldnt "
                             u"download first 10 bytes for %s",
                             item->path);
        return isTooShort;
    }
    unsigned char header[id3HeaderSize] = {};
    if (!readHeader(temp, header))
        return isTooShort;
    const std::int64_t size = sizeOfId3Tag(header);
    if (size == 0)
        return true;
    qo::fileSystem().removeFile(temp);
    const bool isPlausible = size <= largestTag && (item->size == 0 || size <= item->size);
    if (!isPlausible || !simpleDownload(result, static_cast<int>(size), temp, download, progress))
    {
        qo::logUnlessStopped(progress,
                             u"CQoPluginManager::getFileInfoFromPhysicalPlugin : couldnt "
                             u"download id3v2 header for %s",
                             item->path);
        return !isPlausible;
    }
    KVTagLib::CTags tags(CQoPaths::getPictureTempDir());
    if (CMusicTagEx::readTag(temp, tags))
        takeTags(tags, *item);
    return true;
}
