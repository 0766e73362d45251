#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagsReader.h"

namespace KVTagLib
{
/// The reader that the factory gives out: reads the tags of a file on disk through TagLib. The
/// extension says which format to expect, but the content decides.
class FileTagsReader final : public ITagsReader
{
public:
    FileTagsReader(const CString& path, AudioFormat format) : m_path(path), m_format(format) {}

    bool Read(CTags& tags, int maxPictures, int maxPictureSize) override;
    CString GetError() const override { return m_error; }

private:
    CString m_path;
    AudioFormat m_format; ///< by the extension
    CString m_error;
};
} // namespace KVTagLib
