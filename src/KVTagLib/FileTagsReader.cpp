#include "KVTagLib/FileTagsReader.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/pictures/PictureSize.h"
#include "KVTagLib/pictures/PictureStore.h"

namespace KVTagLib
{
namespace
{
/// Sets the items that the file has; others stay absent.
void fillTexts(const TagValues& values, CTags& tags)
{
    if (values.has(Field::artist))
        tags.AddArtist(values.value(Field::artist), false);
    for (int i = 0; i < fieldCount; ++i)
    {
        const auto field = static_cast<Field>(i);
        // Artists are a list.
        if (field != Field::artist && values.has(field))
            tags.SetFound(field, values.value(field));
        for (const CString& value : values.further(field))
            tags.AddFurther(field, value);
    }
}

/// The chosen picture first. A picture that cannot be stored is left out.
void extractPictures(const TagValues& values, int maxPictures, int maxPictureSize, CTags& tags)
{
    const EmbeddedPicture* chosen = values.chosenPicture();
    const auto extract = [&](const EmbeddedPicture& picture)
    {
        const bool countFits = maxPictures < 0 || tags.GetPictureCount() < maxPictures;
        const bool sizeFits =
            maxPictureSize < 0 || picture.content.size() <= static_cast<unsigned>(maxPictureSize);
        if (!countFits || !sizeFits)
            return;
        const CString path = storePicture(tags.GetPictureDir(), picture.content);
        if (path.IsEmpty())
            return;
        const PictureSize size = pictureSizeOf(picture.content);
        tags.AddPicture(CPictureTag(path,
                                    anyKindOf(picture.content).mimeType,
                                    PictureFacts{picture.type,
                                                 textOf(picture.description),
                                                 picture.content.size(),
                                                 size.width,
                                                 size.height}));
    };
    if (chosen)
        extract(*chosen);
    for (const EmbeddedPicture& picture : values.pictures())
    {
        if (&picture != chosen)
            extract(picture);
    }
}
} // namespace

bool FileTagsReader::Read(CTags& tags, int maxPictures, int maxPictureSize)
{
    m_error.Empty();
    AudioFileContent content(tags.GetExtent());
    if (!readAudioFile(m_path, m_format, content, m_error))
        return false;
    fillTexts(content.values, tags);
    // Without a sound frame TagLib gives zeros, which would look like a known play time. A video
    // without sound has a time alone.
    if (content.properties.sampleRate > 0 || content.properties.milliseconds > 0)
    {
        tags.SetTime(content.properties.milliseconds);
        tags.SetBitrate(content.properties.bitrate);
    }
    if (!tags.GetPictureDir().IsEmpty())
        extractPictures(content.values, maxPictures, maxPictureSize, tags);
    return true;
}
} // namespace KVTagLib
