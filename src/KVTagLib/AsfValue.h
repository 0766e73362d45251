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

    std::uint16_t type = text; ///< may be none of the above
    std::uint16_t language = 0;
    std::uint16_t stream = 0; ///< 0: of the whole file
    TagLib::ByteVector bytes = {};
};

/// Texts are UTF-16 there; zeros at their end do not count.
TagLib::String asfText(const TagLib::ByteVector& bytes);
TagLib::ByteVector asfBytes(const TagLib::String& text);
bool isSameAsfText(const TagLib::ByteVector& a, const TagLib::ByteVector& b);

/// Whether a reader shows it as a text: texts and numbers.
bool isShown(const AsfValue& value);
/// Empty for what is not shown.
TagLib::String shownText(const AsfValue& value);

/// Not valid if the value is none.
TagLib::ASF::Picture pictureOf(const AsfValue& value);
} // namespace KVTagLib
