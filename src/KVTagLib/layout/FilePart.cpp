#include "KVTagLib/layout/FilePart.h"

#include "KVTagLib/AudioFile.h"
#include "KVTagLib/ByteStream.h"
#include "KVTagLib/layout/FormatLayouts.h"

namespace KVTagLib
{
bool readFileParts(const CString& path, std::vector<FilePart>& parts, CString& error)
{
    FileParts all;
    const auto parser = [&](ByteStream& stream) -> const char16_t*
    {
        return addParts(stream, formatOf(stream, formatOfPath(path)), all)
                   ? nullptr
                   : u"the file is of no known format";
    };
    if (!parseFile(path, parser, error))
        return false;
    parts = all.take();
    return true;
}
} // namespace KVTagLib
