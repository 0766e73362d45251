#pragma once

#include "types/String.h"

namespace KVTagLib
{
/// One picture of a tag: the file that holds it, and what the tag says about it. A plain value; the
/// file belongs to the owner of its folder and outlives this object.
class QO_API CPictureTag
{
public:
    /// frontCover: whether the tag marks the picture as the front cover.
    explicit CPictureTag(bool frontCover = false) : m_frontCover(frontCover) {}
    CPictureTag(const CString& filePath, const CString& mimeType, bool frontCover)
        : m_mimeType(mimeType), m_filePath(filePath), m_frontCover(frontCover)
    {
    }

    /// The path of the picture file in collection form.
    CString GetFilePath() const { return m_filePath; }
    bool IsFrontCover() const { return m_frontCover; }

    /// The MIME type, such as "image/jpeg", by the picture's content.
    CString m_mimeType;

private:
    CString m_filePath;
    bool m_frontCover;
};
} // namespace KVTagLib
