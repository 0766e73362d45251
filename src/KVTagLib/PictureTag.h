#pragma once

#include "types/String.h"

#include <cstdint>

namespace KVTagLib
{
/// What a picture shows, in the numbers that ID3v2, FLAC and Windows Media share (0 to 20).
namespace pictureType
{
constexpr int none = -1; ///< the format has no types, and the picture is not its first
constexpr int other = 0;
constexpr int frontCover = 3;
constexpr int count = 21;
} // namespace pictureType

/// What a tag, and the picture itself, say about a picture.
struct PictureFacts
{
    int type = pictureType::other; ///< see pictureType; hostile files may have any number
    CString description = {};
    std::int64_t bytes = 0;
    int width = 0; ///< pixels; 0 where the picture does not say
    int height = 0;
};

/// One picture of a tag: the file that holds it, and what is known of it. A plain value; the file
/// belongs to the owner of its folder and outlives this object.
class QO_API CPictureTag
{
public:
    /// frontCover: whether the tag marks the picture as the front cover.
    explicit CPictureTag(bool frontCover = false) : CPictureTag({}, {}, frontCover) {}
    CPictureTag(const CString& filePath, const CString& mimeType, bool frontCover)
        : CPictureTag(
              filePath,
              mimeType,
              PictureFacts{frontCover ? pictureType::frontCover : pictureType::other, {}, 0, 0, 0})
    {
    }
    CPictureTag(const CString& filePath, const CString& mimeType, const PictureFacts& facts)
        : m_mimeType(mimeType), m_filePath(filePath), m_facts(facts)
    {
    }

    /// The path of the picture file in collection form.
    CString GetFilePath() const { return m_filePath; }
    bool IsFrontCover() const { return m_facts.type == pictureType::frontCover; }
    /// As a reader found them; only the type is known of a picture that is to be written.
    const PictureFacts& GetFacts() const { return m_facts; }

    /// The MIME type, such as "image/jpeg", by the picture's content.
    CString m_mimeType;

private:
    CString m_filePath;
    PictureFacts m_facts;
};

/// Which pictures a writer takes out of a tag.
enum class PictureRemoval : std::uint8_t
{
    none,
    frontCovers, ///< in MP4, which has no types, the first picture
    all
};
} // namespace KVTagLib
