#include "KVTagLib/FileTagsWriter.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/AudioFileEditor.h"
#include "KVTagLib/AudioRegion.h"
#include "KVTagLib/CopyStream.h"
#include "KVTagLib/TagChanges.h"
#include "KVTagLib/Tags.h"
#include "KVTagLib/WriteStop.h"
#include "platform/FileReplacement.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <exception>
#include <optional>
#include <string>

namespace KVTagLib
{
namespace
{
/// The sound must be the same; the bitrate may be reckoned from the size of the file.
bool sameSound(const AudioProperties& a, const AudioProperties& b)
{
    return a.milliseconds == b.milliseconds && a.sampleRate == b.sampleRate &&
           a.channels == b.channels;
}

std::optional<std::string> digestOf(const CString& path, AudioFormat format)
{
    int error = 0;
    const auto file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    return file ? digestOfSound(*file, format) : std::nullopt;
}

/// TagLib throws when memory runs out on a size that a damaged file made up, and the copy when it
/// is to stop.
bool editCopy(qo::FileReplacement& copy, AudioFormat format, const TagChanges& changes)
{
    try
    {
        CopyStream stream(copy);
        return editAudioFile(stream, format, changes);
    }
    catch (const std::exception&)
    {
        return false;
    }
}
} // namespace

bool FileTagsWriter::Write(CTags& tags)
{
    m_error.Empty();
    qo::FileInfo info;
    if (const int error = qo::fileSystem().info(m_path, qo::Spelling::exact, info); error != 0)
        return fail(qo::errorText(error));
    // Reading may fall back to another spelling, writing never: the name was checked above.
    AudioFileContent before(true);
    if (!readAudioFile(m_path, m_format, before, m_error))
        return false;
    const TagChanges changes(tags, before.values);
    if (changes.empty())
        return true;

    qo::FileReplacement replacement(m_path);
    if (const int error = replacement.prepare(&WriteStop::isAsked); error != 0)
        return fail(WriteStop::isAsked() ? u"it was stopped" : qo::errorText(error));
    const bool edited = !WriteStop::isAsked() && editCopy(replacement, before.format, changes);
    if (const int error = replacement.copyError(); error != 0)
        return fail(qo::errorText(error));
    if (!edited)
        m_error = u"the tag cannot be changed without loss";
    const bool good =
        edited && checkCopy(qo::fromSystemPath(replacement.copyPath()), before, changes);
    // Whatever was cut short has another reason then.
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
    return true;
}

/// The copy is judged by what a reader makes of it, not by what the editor believes it did.
bool FileTagsWriter::checkCopy(const CString& copy,
                               const AudioFileContent& before,
                               const TagChanges& changes)
{
    AudioFileContent after(true);
    if (!readAudioFile(copy, before.format, after, m_error))
        return false;
    const auto oldSound = digestOf(m_path, before.format);
    const auto newSound = digestOf(copy, before.format);
    if (after.format != before.format || !sameSound(before.properties, after.properties) ||
        !oldSound || oldSound != newSound)
        return fail(u"the sound would be damaged");
    return changes.fulfilledBy(before.values, after.values) ||
           fail(u"the tag of this file cannot hold the new values");
}

bool FileTagsWriter::fail(const CString& error)
{
    m_error = error;
    return false;
}
} // namespace KVTagLib
