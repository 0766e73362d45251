#include "KVTagLib/pictures/PictureSize.h"

// Where the formats have their size:
//   PNG   after the mark of 8 bytes the chunk IHDR: width and height in 4 bytes each
//   GIF   after the mark of 6 bytes: 2 bytes each, the least first
//   BMP   after 14 bytes the size of a header, which starts with them: 2 or 4 bytes each
//   WebP  in its first chunk: VP8X, VP8L and "VP8 " have them in 24, 14 and 14 bits
//   JPEG  segments, each FF, a kind and a size of 2 bytes; one of the kinds C0 to CF has them

using TagLib::ByteVector;

namespace KVTagLib
{
namespace
{
constexpr bool leastFirst = false;

/// 0 beyond the end.
unsigned numberAt(const ByteVector& bytes, unsigned at, unsigned length, bool mostFirst = true)
{
    return at + length <= bytes.size() ? bytes.toUInt(at, length, mostFirst) : 0;
}

PictureSize sizeOfPair(unsigned width, unsigned height)
{
    constexpr unsigned most = 1U << 30;
    return width < most && height < most
               ? PictureSize{static_cast<int>(width), static_cast<int>(height)}
               : PictureSize{};
}

PictureSize sizeOfBmp(const ByteVector& bytes)
{
    constexpr unsigned shortHeader = 12;
    if (numberAt(bytes, 14, 4, leastFirst) == shortHeader)
        return sizeOfPair(numberAt(bytes, 18, 2, leastFirst), numberAt(bytes, 20, 2, leastFirst));
    // A negative height says that the rows start at the top.
    const unsigned height = numberAt(bytes, 22, 4, leastFirst);
    return sizeOfPair(numberAt(bytes, 18, 4, leastFirst), height > 1U << 31 ? 0U - height : height);
}

PictureSize sizeOfWebP(const ByteVector& bytes)
{
    constexpr unsigned mask = (1U << 14) - 1;
    const ByteVector chunk = bytes.mid(12, 4);
    if (chunk == "VP8X")
        return sizeOfPair(numberAt(bytes, 24, 3, leastFirst) + 1,
                          numberAt(bytes, 27, 3, leastFirst) + 1);
    if (chunk == "VP8L")
    {
        const unsigned bits = numberAt(bytes, 21, 4, leastFirst);
        return sizeOfPair((bits & mask) + 1, ((bits >> 14) & mask) + 1);
    }
    return sizeOfPair(numberAt(bytes, 26, 2, leastFirst) & mask,
                      numberAt(bytes, 28, 2, leastFirst) & mask);
}

PictureSize sizeOfJpeg(const ByteVector& bytes)
{
    unsigned at = 2;
    while (at + 4 <= bytes.size() && bytes[static_cast<int>(at)] == '\xff')
    {
        const auto kind = static_cast<unsigned char>(bytes[static_cast<int>(at + 1)]);
        if (kind == 0xff)
        {
            ++at; // padding
            continue;
        }
        // C4, C8 and CC are tables.
        if (kind >= 0xc0 && kind <= 0xcf && kind != 0xc4 && kind != 0xc8 && kind != 0xcc)
            return sizeOfPair(numberAt(bytes, at + 7, 2), numberAt(bytes, at + 5, 2));
        at += 2 + numberAt(bytes, at + 2, 2);
    }
    return {};
}
} // namespace

PictureSize pictureSizeOf(const ByteVector& picture)
{
    if (picture.startsWith("\x89PNG"))
        return sizeOfPair(numberAt(picture, 16, 4), numberAt(picture, 20, 4));
    if (picture.startsWith("GIF8"))
        return sizeOfPair(numberAt(picture, 6, 2, leastFirst), numberAt(picture, 8, 2, leastFirst));
    if (picture.startsWith("BM"))
        return sizeOfBmp(picture);
    if (picture.mid(8, 4) == "WEBP")
        return sizeOfWebP(picture);
    return picture.startsWith("\xff\xd8") ? sizeOfJpeg(picture) : PictureSize();
}
} // namespace KVTagLib
