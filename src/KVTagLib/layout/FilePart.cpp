#include "KVTagLib/layout/FilePart.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/ByteStream.h"
#include "KVTagLib/layout/FormatLayouts.h"
#include "platform/Platform.h"

namespace KVTagLib
{
bool readFileParts(const CString& path, std::vector<FilePart>& parts, CString& error)
{
    int number = 0;
    auto file = qo::fileSystem().open(path, qo::OpenMode::read, number);
    if (!file)
    {
        error = qo::errorText(number);
        return false;
    }
    try
    {
        constexpr unsigned headBytes = 64;
        ByteStream stream(std::move(file));
        const TagLib::ByteVector head = stream.readBlock(headBytes);
        const AudioFormat found = formatOfContent({head.data(), head.size()});
        FileParts all;
        if (addParts(stream, found == AudioFormat::unknown ? formatOfPath(path) : found, all) &&
            !stream.exhausted())
        {
            parts = all.take();
            return true;
        }
        error = stream.exhausted() ? u"the file asks for more work than a sound file would"
                                   : u"the file is of no known format";
    }
    catch (const std::exception& exception)
    {
        if (isLackOfMemory(exception))
            throw;
        error = u"the file is damaged";
    }
    return false;
}
} // namespace KVTagLib
