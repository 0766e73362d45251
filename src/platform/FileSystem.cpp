#include "platform/FileSystem.h"

#include "types/Utf.h"

namespace qo
{
namespace
{
// What common file systems allow for one name.
constexpr std::size_t maxNameBytes = 255;

bool isForbidden(char16_t c)
{
    return c < 0x20 || c == 0x7F || c == u'/' || c == u'\\' || (c >= 0xF000 && c <= 0xF0FF);
}

/// Cuts between two characters and keeps a short extension.
CString cutToBytes(const CString& name)
{
    const int dot = name.ReverseFind(u'.');
    const CString extension = dot > 0 && name.GetLength() - dot <= 16 ? name.Mid(dot) : CString();
    CString stem = name.Left(name.GetLength() - extension.GetLength());
    while (!stem.IsEmpty() && toUtf8(stem + extension).size() > maxNameBytes)
    {
        const char16_t last = stem[stem.GetLength() - 1];
        stem = stem.Left(stem.GetLength() - (last >= 0xDC00 && last <= 0xDFFF ? 2 : 1));
    }
    return stem + extension;
}
} // namespace

IFile::~IFile() = default;
IFileSystem::~IFileSystem() = default;

bool IFileSystem::exists(const CString& path)
{
    FileInfo found;
    return info(path, Spelling::anyCase, found) == 0;
}

bool IFileSystem::isDirectory(const CString& path)
{
    FileInfo found;
    return info(path, Spelling::anyCase, found) == 0 && found.kind == FileKind::directory;
}

CString safeLocalName(const CString& name)
{
    CString safe = fromUtf8(toUtf8(name));
    for (int i = 0; i < safe.GetLength(); ++i)
    {
        if (isForbidden(safe[i]))
            safe.SetAt(i, u'_');
    }
    safe.Trim();
    if (toUtf8(safe).size() > maxNameBytes)
        safe = cutToBytes(safe);
    return safe.IsEmpty() || safe == u"." || safe == u".." ? CString(u"_") : safe;
}
} // namespace qo
