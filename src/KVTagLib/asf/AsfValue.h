#pragma once

#include <taglib/asfpicture.h>
#include <taglib/tbytevector.h>
#include <taglib/tstring.h>

#include <cstdint>

namespace KVTagLib
{
/// One value of an attribute in a Windows Media header.
struct AsfValue
{
    enum Type : std::uint16_t
    {
        text = 0,
        binary = 1,
        truth = 2,
        number = 3,
        longNumber = 4,
        shortNumber = 5
    };

    std::uint16_t type = text; ///< a Type, or an unknown number, which is kept
    std::uint16_t language = 0;
    std::uint16_t stream = 0; ///< 0 for the whole file
    TagLib::ByteVector bytes = {};
};

/// Texts are UTF-16, little-endian; zeros at their end do not count.
TagLib::String asfText(const TagLib::ByteVector& bytes);
TagLib::ByteVector asfBytes(const TagLib::String& text);
bool isSameAsfText(const TagLib::ByteVector& a, const TagLib::ByteVector& b);
/// Without regard to the case of Latin letters.
bool isSameAsfName(const TagLib::ByteVector& a, const TagLib::ByteVector& b);

/// Whether a reader shows it as a text: texts and numbers.
bool isShown(const AsfValue& value);
/// The text or the number as text; empty for a value that is not shown.
TagLib::String shownText(const AsfValue& value);

/// The picture in a binary value; isValid() is false if there is none.
TagLib::ASF::Picture pictureOf(const AsfValue& value);
} // namespace KVTagLib
