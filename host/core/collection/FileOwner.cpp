#include "core/collection/FileOwner.h"

#include <QoKernel/Logical.h>
#include <QoKernel/Physical.h>
#include <QoKernel/Tags.h>

namespace qo::host
{
namespace
{
CString nameOf(const CLTObject* object)
{
    return object ? object->getName() : CString();
}

FileOwner ownerOfPicture(const CHDFile& file)
{
    SimpleMusicTag tag;
    file.getSimpleTag(tag);
    int position = 0;
    boost::shared_ptr<CLTObject> album = file.getLTAssoc(CLTObjectType::Album);
    if (!album)
        album = CLTManager::findLTAlbum(tag, position);
    boost::shared_ptr<CLTObject> artist = file.getLTAssoc(CLTObjectType::Artist);
    if (!artist)
        artist = CLTManager::findLTArtist(tag, position);
    return {nameOf(artist.get()), nameOf(album.get()), {}, album || artist};
}

FileOwner ownerOfText(const CHDTextFile& file)
{
    SimpleMusicTag tag;
    file.getSimpleTag(tag);
    int position = 0;
    const boost::shared_ptr<CLTLyrics>& lyrics = file.getLyrics();
    const auto track = lyrics ? lyrics->getTrack() : CLTManager::findLTTrack(tag, position);
    auto album = lyrics ? lyrics->getAlbum() : CLTManager::findLTAlbum(tag, position);
    if (track)
        album = track->getAlbum();
    if (!track && !album)
        return {};
    return {nameOf((track ? track->getArtist() : album->getArtist()).get()),
            nameOf(album.get()),
            nameOf(track.get()),
            true};
}
} // namespace

std::optional<FileOwner> ownerOf(const CHDFile& file)
{
    if (file.getFileType() == CHDFile::FT_Picture)
        return ownerOfPicture(file);
    if (file.getFileType() == CHDFile::FT_Text)
        return ownerOfText(static_cast<const CHDTextFile&>(file));
    return {};
}
} // namespace qo::host
