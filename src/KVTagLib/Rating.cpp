#include "KVTagLib/Rating.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>

using TagLib::String;

namespace KVTagLib
{
namespace
{
/// The byte of each number of half stars.
constexpr int bytes[] = {0, 13, 1, 54, 64, 118, 128, 186, 196, 242, 255};
static_assert(std::size(bytes) == mostHalfStars + 1);

std::optional<double> numberIn(const String& text)
{
    const std::string digits = text.stripWhiteSpace().to8Bit(true);
    double number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || !(number >= 0))
        return {};
    return number;
}

enum class Scale : std::uint8_t
{
    fraction,
    stars,
    halfStars,
    percent,
    none
};

Scale scaleOf(const String& text)
{
    const double number = numberIn(text).value_or(-1);
    const bool hasPoint = text.find(".") >= 0;
    return number < 0 || number > 100 ? Scale::none
           : hasPoint && number <= 1  ? Scale::fraction
           : number <= 5              ? Scale::stars
           : number <= mostHalfStars  ? Scale::halfStars
                                      : Scale::percent;
}

double sizeOf(Scale scale)
{
    switch (scale)
    {
    case Scale::fraction:
        return 1;
    case Scale::stars:
        return 5;
    case Scale::halfStars:
        return mostHalfStars;
    default:
        return 100;
    }
}

/// Rounded up from nothing: whatever is rated has half a star at least.
int halfStarsOf(double share)
{
    return share <= 0
               ? 0
               : std::clamp(static_cast<int>(std::lround(share * mostHalfStars)), 1, mostHalfStars);
}

/// With one digit after the point at most, and none if it is zero.
String plainNumber(double number)
{
    const auto tenths = std::lround(number * 10);
    const std::string whole = std::to_string(tenths / 10);
    return tenths % 10 == 0 ? whole : whole + "." + std::to_string(tenths % 10);
}
} // namespace

int ratingOfByte(unsigned char byte)
{
    const auto* const nearest = std::ranges::min_element(
        bytes, {}, [byte](int other) { return std::abs(other - static_cast<int>(byte)); });
    const int found = static_cast<int>(nearest - bytes);
    return byte > 0 && found == 0 ? 2 : found;
}

unsigned char byteOfRating(int halfStars)
{
    return static_cast<unsigned char>(bytes[std::clamp(halfStars, 0, mostHalfStars)]);
}

int ratingOfFraction(const String& text)
{
    const double share = numberIn(text).value_or(0);
    return share > 1 ? 0 : halfStarsOf(share);
}

String fractionOfRating(int halfStars)
{
    return halfStars == mostHalfStars ? String("1.0") : plainNumber(halfStars / 10.0);
}

int ratingOfPercent(const String& text)
{
    const double number = numberIn(text).value_or(0);
    return number <= 0 || number > 100 ? 0 : halfStarsOf((number / 25 + 1) / 5);
}

String percentOfRating(int halfStars)
{
    return String::number(std::clamp(halfStars * 25 / 2 - 25, 1, 99));
}

int ratingOfNumber(const String& text)
{
    const Scale scale = scaleOf(text);
    return scale == Scale::none ? 0 : halfStarsOf(*numberIn(text) / sizeOf(scale));
}

String numberOfRating(int halfStars, const String& old)
{
    const Scale scale = scaleOf(old);
    const double number = halfStars * sizeOf(scale) / mostHalfStars;
    const bool isWhole = old.find(".") < 0;
    return plainNumber(isWhole ? std::ceil(number) : number);
}
} // namespace KVTagLib
