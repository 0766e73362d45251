#include "KVTagLib/pictures/PictureStore.h"

#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <nettle/sha2.h>

#include <string_view>

using namespace std::string_view_literals;

namespace KVTagLib
{
namespace
{
constexpr int nameBytes = 20; ///< 160 bits of the digest, 40 digits

/// The same picture gets the same name on every file, run and machine.
CString digestName(const TagLib::ByteVector& content)
{
    unsigned char digest[SHA256_DIGEST_SIZE];
    sha256_ctx context;
    ::sha256_init(&context);
    ::sha256_update(
        &context, content.size(), reinterpret_cast<const unsigned char*>(content.data()));
    ::sha256_digest(&context, sizeof(digest), digest);
    CString name;
    for (int i = 0; i < nameBytes; ++i)
    {
        constexpr char16_t digits[] = u"0123456789abcdef";
        name += digits[digest[i] >> 4];
        name += digits[digest[i] & 15];
    }
    return name;
}

} // namespace

const PictureKind* pictureKindOf(const TagLib::ByteVector& content)
{
    struct Magic
    {
        std::string_view bytes;
        std::size_t offset;
        PictureKind kind;
    };
    static constexpr Magic known[] = {
        {"\xff\xd8\xff"sv, 0, {u".jpg", u"image/jpeg"}},
        {"\x89PNG\r\n\x1a\n"sv, 0, {u".png", u"image/png"}},
        {"GIF8"sv, 0, {u".gif", u"image/gif"}},
        {"WEBP"sv, 8, {u".webp", u"image/webp"}},
        {"BM"sv, 0, {u".bmp", u"image/bmp"}},
    };
    const std::string_view all(content.data(), content.size());
    for (const Magic& magic : known)
    {
        if (all.size() > magic.offset && all.substr(magic.offset).starts_with(magic.bytes))
            return &magic.kind;
    }
    return nullptr;
}

const PictureKind& anyKindOf(const TagLib::ByteVector& content)
{
    static constexpr PictureKind unknown = {u".bin", u"application/octet-stream"};
    const PictureKind* const kind = pictureKindOf(content);
    return kind ? *kind : unknown;
}

CString storePicture(const CString& folder, const TagLib::ByteVector& content)
{
    const CString name = digestName(content);
    if (name.IsEmpty())
        return {};
    CString path = folder;
    if (path.Right(1) != u"\\")
        path += u'\\';
    path += name;
    path += anyKindOf(content).extension;

    // The name depends on the content; the size detects a file that a power cut left empty.
    qo::FileInfo info;
    const bool present = qo::fileSystem().info(path, qo::Spelling::exact, info) == 0 &&
                         info.kind == qo::FileKind::regular &&
                         info.size == static_cast<std::int64_t>(content.size());
    if (present)
        return path;
    // A scan stores thousands of pictures, and a lost one can be extracted again, so nothing waits
    // for the disk.
    const int error = qo::fileSystem().replaceFile(
        path, content.data(), content.size(), qo::Durability::canBeMadeAgain);
    return error == 0 ? path : CString();
}

bool loadPicture(const CString& path, TagLib::ByteVector& content)
{
    int error = 0;
    const auto file = qo::fileSystem().open(path, qo::OpenMode::read, error);
    if (!file || !file->seekToEnd())
        return false;
    const std::int64_t size = file->position();
    if (size <= 0 || size > maxPictureBytes || !file->seek(0))
        return false;
    content.resize(static_cast<unsigned>(size));
    std::int64_t done = 0;
    while (done < size)
    {
        const std::int64_t got =
            file->read(content.data() + done, static_cast<std::size_t>(size - done));
        if (got <= 0)
            return false;
        done += got;
    }
    return pictureKindOf(content) != nullptr;
}
} // namespace KVTagLib
