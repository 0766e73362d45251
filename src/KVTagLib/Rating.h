#pragma once

#include <taglib/tstring.h>

/// Ratings as programs write them into tags, and as this library has them: half stars, from 1 to
/// 10, and 0 without one.
///
///   half stars   a byte of ID3v2 (POPM)   FMPS_RATING   a number of unknown scale ("RATING")
///        1               13                   0.1                  0.5     10
///        7              186                   0.7                  3.5     70
///       10              255                   1.0                  5      100
///
/// Bytes between two of the scale count as the nearer one; the byte 1 is one star, as a player of
/// long ago wrote it.
namespace KVTagLib
{
constexpr int mostHalfStars = 10;

int ratingOfByte(unsigned char byte);
unsigned char byteOfRating(int halfStars);

/// Of a fraction of one.
int ratingOfFraction(const TagLib::String& text);
TagLib::String fractionOfRating(int halfStars);

/// Of the numbers 1, 25, 50, 75 and 99 of Windows Media, one to five stars.
int ratingOfPercent(const TagLib::String& text);
TagLib::String percentOfRating(int halfStars);

/// Of a number whose scale is guessed from it: up to 1 with a point a fraction, up to 5 stars, up
/// to 10 half stars, up to 100 percent; 0 for anything else.
int ratingOfNumber(const TagLib::String& text);
/// A number of the same scale as the old one, whole if that was.
TagLib::String numberOfRating(int halfStars, const TagLib::String& old);
} // namespace KVTagLib
