#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagsWriter.h"

namespace KVTagLib
{
struct AudioFileContent;
class TagChanges;

/// Writes tags into a file on disk: works on a copy, checks it and lets it take the file's place.
class FileTagsWriter final : public ITagsWriter
{
public:
    FileTagsWriter(const CString& path, AudioFormat format) : m_path(path), m_format(format) {}

    bool Write(CTags& tags) override;
    CString GetError() const override { return m_error; }

private:
    bool checkCopy(const CString& copy, const AudioFileContent& before, const TagChanges& changes);
    /// Always false.
    bool fail(const CString& error);

    CString m_path;
    AudioFormat m_format; ///< by the extension
    CString m_error;
};
} // namespace KVTagLib
