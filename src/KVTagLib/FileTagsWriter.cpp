#include "KVTagLib/FileTagsWriter.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/AudioFileEditor.h"
#include "KVTagLib/CopyStream.h"
#include "KVTagLib/TagChanges.h"
#include "KVTagLib/TagRefusal.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/WriteStop.h"
#include "KVTagLib/sound/AudioRegion.h"
#include "platform/FileReplacement.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <exception>
#include <optional>
#include <string>

// Write() reads the file, computes what must change, edits a copy and lets it replace the file.
// Every step that fails leaves the file as it was, and the copy is removed.

namespace KVTagLib
{
namespace
{
/// Whether the properties of the sound are equal. The bit rate is left out: it may be computed from
/// the size of the file.
bool sameSound(const AudioProperties& a, const AudioProperties& b)
{
    return a.milliseconds == b.milliseconds && a.sampleRate == b.sampleRate &&
           a.channels == b.channels;
}

/// The digest of the sound of a file on disk; nothing if it cannot be read.
std::optional<std::string> digestOf(const CString& path, AudioFormat format)
{
    int error = 0;
    const auto file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    return file ? digestOfSound(*file, format) : std::nullopt;
}

/// Says what is in the way; "" for a copy that was changed. A lack of memory goes on to the caller.
CString editCopy(qo::FileReplacement& copy, AudioFormat format, const TagChanges& changes)
{
    try
    {
        CopyStream stream(copy);
        editAudioFile(stream, format, changes);
        return {};
    }
    catch (const TagRefusal& refusal)
    {
        return refusal.cause();
    }
    catch (const std::exception& exception)
    {
        if (isLackOfMemory(exception))
            throw;
        // TagLib met an impossible size, or the copy could not be written or shall stop.
        return withCopyAdvice(u"the file is damaged");
    }
}
} // namespace

bool FileTagsWriter::Write(CTags& tags)
{
    m_error.Empty();
    m_hasChanged = false;
    qo::FileInfo info;
    if (const int error = qo::fileSystem().info(m_path, qo::Spelling::exact, info); error != 0)
        return fail(qo::errorText(error));
    // Reading may find the file under another spelling of its name, writing must not: info() above
    // has checked the exact name.
    AudioFileContent before(TagExtent::everything);
    if (!readAudioFile(m_path, m_format, before, m_error))
        return false;
    const TagChanges changes(tags, before.values);
    if (changes.empty())
        return true;
    if (!before.obstacle.IsEmpty())
        return fail(before.obstacle);

    qo::FileReplacement replacement(m_path);
    if (const int error = replacement.prepare(&WriteStop::isAsked); error != 0)
        return fail(WriteStop::isAsked() ? u"it was stopped" : qo::errorText(error));
    m_error = WriteStop::isAsked() ? CString(u"it was stopped")
                                   : editCopy(replacement, before.format, changes);
    if (const int error = replacement.copyError(); error != 0)
        return fail(qo::errorText(error));
    const bool good =
        m_error.IsEmpty() && checkCopy(qo::fromSystemPath(replacement.copyPath()), before, changes);
    // A stop also makes other steps fail; it is the cause to report.
    if (WriteStop::isAsked())
        return fail(u"it was stopped");
    if (!good)
        return false;
    if (const int error = replacement.commit(); error != 0)
    {
        m_error = qo::errorText(error);
        if (!replacement.leftBehind().empty())
            m_error +=
                u"; the old content is kept as " + qo::fromSystemPath(replacement.leftBehind());
        return false;
    }
    m_hasChanged = true;
    return true;
}

/// The copy is checked with a reader, independent of what the editor believes to have written.
bool FileTagsWriter::checkCopy(const CString& copy,
                               const AudioFileContent& before,
                               const TagChanges& changes)
{
    AudioFileContent after(TagExtent::everything);
    if (!readAudioFile(copy, before.format, after, m_error))
        return false;
    const auto oldSound = digestOf(m_path, before.format);
    const auto newSound = digestOf(copy, before.format);
    if (after.format != before.format || !sameSound(before.properties, after.properties) ||
        !oldSound || oldSound != newSound)
        return fail(withCopyAdvice(u"the sound could not be kept as it is"));
    return changes.fulfilledBy(before.values, after.values) ||
           fail(u"the tag of this file cannot hold the new values");
}

bool FileTagsWriter::fail(const CString& error)
{
    m_error = error;
    return false;
}
} // namespace KVTagLib
