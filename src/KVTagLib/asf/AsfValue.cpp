#include "KVTagLib/asf/AsfValue.h"

#include <string>
#include <string_view>

using namespace TagLib;

namespace KVTagLib
{
namespace
{
/// The bytes without an odd last byte and without zero units at the end.
std::string_view unitsOf(const ByteVector& bytes)
{
    const char* data = bytes.data();
    std::size_t size = bytes.size() & ~1U;
    while (size > 0 && data[size - 1] == 0 && data[size - 2] == 0)
        size -= 2;
    return {data, size};
}

String numberText(const ByteVector& bytes, unsigned width)
{
    constexpr bool littleEndian = false;
    const long long number = bytes.mid(0, width).toLongLong(littleEndian);
    return std::to_string(static_cast<unsigned long long>(number));
}
} // namespace

String asfText(const ByteVector& bytes)
{
    return {bytes.mid(0, static_cast<unsigned>(unitsOf(bytes).size())), String::UTF16LE};
}

ByteVector asfBytes(const String& text)
{
    ByteVector bytes = text.data(String::UTF16LE);
    bytes.append(ByteVector(2, '\0'));
    return bytes;
}

bool isSameAsfText(const ByteVector& a, const ByteVector& b)
{
    return unitsOf(a) == unitsOf(b);
}

bool isSameAsfName(const ByteVector& a, const ByteVector& b)
{
    // A capital letter and its small one differ in one bit of the first of their two bytes.
    constexpr char caseBit = 0x20;
    const std::string_view left = unitsOf(a);
    const std::string_view right = unitsOf(b);
    if (left.size() != right.size())
        return false;
    for (std::size_t i = 0; i < left.size(); ++i)
    {
        const char small = static_cast<char>(left[i] | caseBit);
        const bool isLetter = i % 2 == 0 && left[i + 1] == 0 && small >= 'a' && small <= 'z';
        if (left[i] != right[i] && (!isLetter || small != (right[i] | caseBit)))
            return false;
    }
    return true;
}

bool isShown(const AsfValue& value)
{
    return value.type == AsfValue::text || value.type == AsfValue::number ||
           value.type == AsfValue::longNumber || value.type == AsfValue::shortNumber;
}

String shownText(const AsfValue& value)
{
    switch (value.type)
    {
    case AsfValue::text:
        return asfText(value.bytes);
    case AsfValue::number:
        return numberText(value.bytes, 4);
    case AsfValue::longNumber:
        return numberText(value.bytes, 8);
    case AsfValue::shortNumber:
        return numberText(value.bytes, 2);
    default:
        return {};
    }
}

ASF::Picture pictureOf(const AsfValue& value)
{
    ASF::Picture picture;
    // TagLib's comments call this function private, but it is exported and there is no other way.
    picture.parse(value.type == AsfValue::binary ? value.bytes : ByteVector());
    return picture;
}
} // namespace KVTagLib
