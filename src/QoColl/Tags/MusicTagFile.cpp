#include "KVTagLib/Tags.h"
#include "KVTagLib/TagsAhead.h"
#include "KVTagLib/TagsReader.h"
#include "KVTagLib/TagsReaderFactory.h"
#include "KVTagLib/TagsWriter.h"
#include "KVTagLib/TagsWriterFactory.h"
#include "KVTagLib/ValidExtensions.h"
#include "QoColl/Tags/MusicTagEx.h"
#include "common/FilePathParts.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/MakeObject.h"
#include "common/Paths.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <memory>

// Reading a tag from a file and writing it, through KVTagLib.

using KVTagLib::CTags;

namespace
{
/// The part of a MIME type that is usable as an extension: "jpeg" of "image/jpeg".
CString extensionOfMimeType(const CString& mimeType)
{
    constexpr int prefixLength = 6; // "image/"
    constexpr int longest = 8;
    const CString subtype = mimeType.Mid(prefixLength);
    CString ext;
    for (char16_t c : subtype.view())
    {
        const bool ascii =
            (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
        if (ascii && ext.GetLength() < longest)
            ext += c;
    }
    return ext;
}

/// The path of the copy of a picture in that folder.
CString pictureTarget(const KVTagLib::CPictureTag& picture, const CString& destDir)
{
    const CString source = picture.GetFilePath();
    CString target = qo::combinePath(destDir, qo::fileNameOf(source));
    if (qo::fileExtOf(source).IsEmpty())
        target += u"." + extensionOfMimeType(picture.m_mimeType);
    return target;
}

/// The path on level error, the cause on level detail.
void tellWriteError(const char16_t* path, const CString& error, CString* cause)
{
    qo::log(
        qo::level::error, u"CMusicTagEx::writeTagKVTagLib : error writing tags for file %s", path);
    qo::log(qo::level::detail, u"CMusicTagEx::writeTagKVTagLib : %s", error);
    if (cause)
        *cause = error;
}
} // namespace

bool CMusicTagEx::readTag(const char16_t* path, CString* cause)
{
    clear();
    CTags tags(CQoPaths::getPictureTempDir());
    const bool isRead = readTag(path, tags, cause);
    if (isRead)
        setFileTags(tags);
    return isRead;
}

void CMusicTagEx::setFileTags(const CTags& tags)
{
    constexpr auto original = CTagAttribValue::SV_Original;
    clear();

    struct Item
    {
        EAttribType type;
        bool (CTags::*get)(CString&) const;
    };
    const Item items[] = {{CTagAttrib::AT_Artist, &CTags::GetFirstValidArtist},
                          {CTagAttrib::AT_Album, &CTags::GetAlbum},
                          {CTagAttrib::AT_Title, &CTags::GetTitle},
                          {CTagAttrib::AT_Genre, &CTags::GetGenre},
                          {CTagAttrib::AT_TrackNumber, &CTags::GetTrackNumber},
                          {CTagAttrib::AT_Year, &CTags::GetYear},
                          {CTagAttrib::AT_Lyrics, &CTags::GetLyrics}};
    for (const Item& item : items)
    {
        CString text;
        (tags.*item.get)(text);
        set(item.type, text.Trim(), original, true);
    }
    // The lyrics of the file are known now, even if there are none.
    setHasOriginalLyrics(true);

    CArray<KVTagLib::CPictureTag> pictures;
    tags.GetPictures(pictures);
    if (!pictures.IsEmpty())
        setPicture(pictures[0].GetFilePath(), original, true);
    int number = 0;
    const unsigned time = tags.GetTime(number) ? static_cast<unsigned>(number) : 0;
    const unsigned bitrate = tags.GetBitrate(number) ? static_cast<unsigned>(number) : 0;
    setNumbers(time, bitrate);
}

bool CMusicTagEx::readTag(const char16_t* path,
                          CTags& tags,
                          CString* cause,
                          KVTagLib::TagsAhead* ahead)
{
    const std::unique_ptr<KVTagLib::ITagsReader> reader(
        ahead ? ahead->createTagsReader(path)
              : KVTagLib::CTagsReaderFactory::CreateTagsReader(path));
    if (!reader)
    {
        qo::log(qo::level::error,
                u"CMusicTagEx::readTag: CTagsReaderFactory::CreateTagsReader failed for file %s",
                path);
        return false;
    }
    // Taken for a damaged file, it would be stored without its tags.
    const bool read = qo::orOutOfMemory(QO_HERE(u".\\QoColl\\MusicTagEx"),
                                        [&] { return reader->Read(tags, -1, -1); });
    if (!read)
    {
        qo::log(qo::level::error,
                u"CMusicTagEx::readTag: ITagsReader->Read() failed for file %s",
                path);
        qo::log(qo::level::detail, u"CMusicTagEx::readTag: %s", reader->GetError());
        if (cause)
            *cause = reader->GetError();
    }
    return read;
}

bool CMusicTagEx::writeTag(const char16_t* path, CString* cause, bool* hasChanged)
{
    CTags tags;
    CString value;
    if (getArtist(CTagAttribValue::SV_Current, value))
        tags.AddArtist(value, false);
    if (getAlbum(CTagAttribValue::SV_Current, value))
        tags.SetAlbum(value);
    if (getTitle(CTagAttribValue::SV_Current, value))
        tags.SetTitle(value);
    if (getGenre(CTagAttribValue::SV_Current, value))
        tags.SetGenre(value);
    if (getTrackNumber(CTagAttribValue::SV_Current, value))
        tags.SetTrackNumber(value);
    if (getYear(CTagAttribValue::SV_Current, value))
        tags.SetYear(value);
    if (getLyrics(CTagAttribValue::SV_Current, value))
    {
        // A record may be loaded without its lyrics; an empty text then says nothing about the
        // file.
        const bool unknown =
            value.IsEmpty() && !m_hasOriginalLyrics && !isEdited(CTagAttrib::AT_Lyrics);
        if (!unknown)
            tags.SetLyrics(value);
    }
    if (getPicture(CTagAttribValue::SV_Current, value) && !tags.AddPicture(value) &&
        !value.IsEmpty() && isEdited(CTagAttrib::AT_Picture))
    {
        tellWriteError(path, u"the picture " + value + u" cannot be loaded", cause);
        return false;
    }
    if (!writeTag(path, tags, cause, hasChanged))
        return false;

    for (EAttribType type : m_attribTypes)
    {
        // The file name is not in the tag; setCrtFileNameAsOriginal() follows after a rename.
        if (type == CTagAttrib::AT_FileName)
            continue;
        if (makeOriginal(type) && type == CTagAttrib::AT_Lyrics)
            setHasOriginalLyrics(true);
    }
    return true;
}

bool CMusicTagEx::writeTag(const char16_t* path, CTags& tags, CString* cause, bool* hasChanged)
{
    qo::fileSystem().makeWritable(path);
    const std::unique_ptr<KVTagLib::ITagsWriter> writer(
        KVTagLib::CTagsWriterFactory::CreateTagsWriter(path));
    if (!writer)
        return false;
    const bool written =
        qo::orOutOfMemory(QO_HERE(u".\\QoColl\\MusicTagEx"), [&] { return writer->Write(tags); });
    if (!written)
        tellWriteError(path, writer->GetError(), cause);
    if (hasChanged)
        *hasChanged = writer->HasChanged();
    return written;
}

void CMusicTagEx::updateTime(const char16_t* path)
{
    CTags tags;
    int time = 0;
    if (readTag(path, tags) && tags.GetTime(time))
        setNumbers(static_cast<unsigned>(time), getBitrate());
}

bool CMusicTagEx::fileSupportsTags(const CString& path)
{
    CStringArray extensions;
    KVTagLib::GetValidExtensions(extensions);
    const CString ext = qo::fileExtOf(path);
    for (const CString& valid : extensions)
    {
        if (valid.CompareNoCase(ext) == 0)
            return true;
    }
    return false;
}

void CMusicTagEx::getTag(ESrcValueType type, CTags& tags) const
{
    CString value;
    if (getArtist(type, value))
        tags.AddArtist(value, false);
    if (getAlbum(type, value))
        tags.SetAlbum(value);
    if (getGenre(type, value))
        tags.SetGenre(value);
    if (getTitle(type, value))
        tags.SetTitle(value);
    if (getTrackNumber(type, value))
        tags.SetTrackNumber(value);
    if (getYear(type, value))
        tags.SetYear(value);
    if (getLyrics(type, value))
        tags.SetLyrics(value);
}

void CMusicTagEx::setTag(ESrcValueType type,
                         CTags& tags,
                         const CString& pictureDir,
                         bool makeCurrent)
{
    CString value;
    if (tags.GetFirstValidArtist(value))
        setArtist(value, type, makeCurrent);
    if (tags.GetAlbum(value))
        setAlbum(value, type, makeCurrent);
    if (tags.GetGenre(value))
        setGenre(value, type, makeCurrent);
    if (tags.GetTitle(value))
        setTitle(value, type, makeCurrent);
    if (tags.GetTrackNumber(value))
        setTrackNumber(value, type, makeCurrent);
    if (tags.GetYear(value))
        setYear(value, type, makeCurrent);
    if (tags.GetLyrics(value))
        setLyrics(value, type == CTagAttribValue::SV_Original, type, makeCurrent);
    if (copyGetFirstValidPicturePath(tags, pictureDir, value))
        setPicture(value, type, makeCurrent);
}

bool CMusicTagEx::copyGetFirstValidPicturePath(CTags& tags, const CString& destDir, CString& result)
{
    for (int i = 0; i < tags.GetPictureCount(); ++i)
    {
        KVTagLib::CPictureTag picture(false);
        if (!tags.GetPicture(i, picture))
            continue;
        const CString source = picture.GetFilePath();
        const CString target = pictureTarget(picture, destDir);
        const int error = source == target ? 0 : qo::fileSystem().copyFile(source, target);
        if (error == 0)
        {
            result = target;
            return true;
        }
        qo::log(qo::level::error,
                u"CMusicTagEx::copyGetFirstValidPicturePath : error copying picture %s to %s : %s",
                source,
                target,
                qo::errorText(error));
    }
    return false;
}
