#pragma once

#include "KVTagLib/AudioFormat.h"
#include "KVTagLib/TagsWriter.h"

namespace KVTagLib
{
struct AudioFileContent;
class TagChanges;

/// The writer that the factory gives out. It works on a copy, reads that again, and lets it take
/// the file's place only if nothing but the wanted values changed.
///
///   song.mp3 -> copy .qo-tmp-... -> edit -> read again: values as wanted, same digest of the sound
///            -> flush to disk -> rename over song.mp3
class FileTagsWriter final : public ITagsWriter
{
public:
    FileTagsWriter(const CString& path, AudioFormat format) : m_path(path), m_format(format) {}

    bool Write(CTags& tags) override;
    bool HasChanged() const override { return m_hasChanged; }
    CString GetError() const override { return m_error; }

private:
    /// Whether the copy may take the place of the file; otherwise the error says why not.
    bool checkCopy(const CString& copy, const AudioFileContent& before, const TagChanges& changes);
    /// Sets the error; always false, so that a caller can return it.
    bool fail(const CString& error);

    CString m_path;
    AudioFormat m_format; ///< by the extension
    CString m_error;
    bool m_hasChanged = false;
};
} // namespace KVTagLib
