#include "Analyze/NSUtils.h"
#include "Logical/LTAlbum.h"
#include "Logical/LTArtist.h"
#include "Logical/LTGenre.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTManager.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "types/CharClass.h"

#include <algorithm>

// What is the same, and in which order. Tracks are compared by title, artist, year, album and
// number; albums by name and artist; artists and genres by name (docs/sameness-of-names.md has
// examples).

namespace
{
std::u16string_view textOf(const char16_t* text)
{
    return text ? std::u16string_view(text) : std::u16string_view();
}

bool isNumberText(std::u16string_view text)
{
    return !text.empty() && std::all_of(text.begin(), text.end(), qo::isDigit);
}

int compareInts(int a, int b)
{
    return a < b ? -1 : a > b;
}

/// Names of one scan or load usually share one buffer, which is quick to see.
int compareNames(const CString& a, const CString& b)
{
    return a.sharesBufferWith(b) ? 0 : qo::compareNoCase(a.view(), b.view());
}

/// A year of two digits equals each year that ends in these: "98" and "1998".
int compareYears(std::u16string_view a, std::u16string_view b)
{
    if (a.empty() || b.empty() || a == b)
        return 0;
    if (!isNumberText(a) || !isNumberText(b))
        return qo::compareNoCase(a, b);
    constexpr int century = 100;
    const int yearA = qo::textToInt(a);
    const int yearB = qo::textToInt(b);
    if ((yearA < century) != (yearB < century))
        return compareInts(yearA % century, yearB % century);
    return compareInts(yearA, yearB);
}

/// Only the number before "/" counts; a number without a value equals every other.
int compareTrackNumbers(const CString& a, const CString& b)
{
    if (a.IsEmpty() || b.IsEmpty() || a.view() == b.view())
        return 0;
    int trackA = 0;
    int trackB = 0;
    int total = 0;
    CNSUtils::analyzeTrackNumber(a, trackA, total);
    CNSUtils::analyzeTrackNumber(b, trackB, total);
    return trackA == 0 || trackB == 0 ? 0 : compareInts(trackA, trackB);
}

/// A missing link counts as a link to an unknown object.
template <class X>
bool isNamed(const boost::shared_ptr<X>& object)
{
    return object && !object->isUnknown();
}

/// The order when one has no name (all objects but genres); 0 when both have one.
template <class X>
int compareUnknown(const boost::shared_ptr<X>& a, const boost::shared_ptr<X>& b)
{
    if (!isNamed(a))
        return -1;
    return isNamed(b) ? 0 : 1;
}

void fillTag(SimpleMusicTag& tag, const CLTArtist& artist)
{
    tag.artist = artist.getName();
}

void fillTag(SimpleMusicTag& tag, const CLTAlbum& album)
{
    tag.album = album.getName();
    if (album.getArtist())
        fillTag(tag, *album.getArtist());
}

void fillTag(SimpleMusicTag& tag, const CLTGenre& genre)
{
    tag.genre = genre.getName();
}

void fillTag(SimpleMusicTag& tag, const CLTTrack& track)
{
    if (track.getArtist())
        fillTag(tag, *track.getArtist());
    if (track.getAlbum())
        fillTag(tag, *track.getAlbum());
    if (track.getGenre())
        fillTag(tag, *track.getGenre());
    tag.title = track.getName();
    tag.trackNumber = track.getTrackNumber();
    tag.year = track.getYear();
}

template <class X>
bool isSameByTag(const boost::shared_ptr<CLTObject>& a,
                 const boost::shared_ptr<CLTObject>& b,
                 int (*compare)(const SimpleMusicTag*, const boost::shared_ptr<X>&))
{
    SimpleMusicTag tag;
    fillTag(tag, static_cast<const X&>(*b));
    return compare(&tag, boost::static_pointer_cast<X>(a)) == 0;
}

/// Lists of the same length are the same when they share one file.
template <class X>
bool shareFile(const CPtrListT<X>& a, const CPtrListT<X>& b)
{
    return a.GetSize() == b.GetSize() &&
           std::any_of(b.begin(), b.end(), [&a](const auto& file) { return a.find(file) != -1; });
}
} // namespace

bool CLTManager::isNumber(const char16_t* text)
{
    return isNumberText(textOf(text));
}

int CLTManager::compareLTNumbers(const char16_t* a, const char16_t* b)
{
    const std::u16string_view textA = textOf(a);
    const std::u16string_view textB = textOf(b);
    if (textA.empty() || textB.empty())
        return 0;
    if (isNumberText(textA) && isNumberText(textB))
        return compareInts(qo::textToInt(textA), qo::textToInt(textB));
    return qo::compareNoCase(textA, textB);
}

int CLTManager::compareLTTrackNumbers(const char16_t* a, const char16_t* b)
{
    return compareTrackNumbers(CString(a), CString(b));
}

int CLTManager::compareLTYears(const char16_t* a, const char16_t* b)
{
    return compareYears(textOf(a), textOf(b));
}

int CLTManager::compareLTNames(const char16_t* a, const char16_t* b)
{
    return qo::compareNoCase(textOf(a), textOf(b));
}

int CLTManager::compareLTTracks(const SimpleMusicTag* tag, const boost::shared_ptr<CLTTrack>& track)
{
    if (!isNamed(track))
        return 1;
    const int result = compareNames(tag->title, track->getName());
    return result != 0 ? result : compareLTTracksOfTitle(tag, track);
}

int CLTManager::compareLTTracksOfTitle(const SimpleMusicTag* tag,
                                       const boost::shared_ptr<CLTTrack>& track)
{
    int result = compareLTArtists(tag, track->getArtist());
    if (result == 0)
        result = compareYears(tag->year.view(), track->getYear().view());
    if (result == 0)
        result = compareLTAlbums(tag, track->getAlbum());
    return result != 0 ? result : compareTrackNumbers(tag->trackNumber, track->getTrackNumber());
}

int CLTManager::compareLTTracks(const boost::shared_ptr<CLTTrack>& a,
                                const boost::shared_ptr<CLTTrack>& b)
{
    int result = compareUnknown(a, b);
    if (result == 0)
        result = compareNames(a->getName(), b->getName());
    if (result == 0)
        result = compareLTArtists(a->getArtist(), b->getArtist());
    if (result == 0)
        result = compareYears(a->getYear().view(), b->getYear().view());
    if (result == 0)
        result = compareLTAlbums(a->getAlbum(), b->getAlbum());
    return result != 0 ? result : compareTrackNumbers(a->getTrackNumber(), b->getTrackNumber());
}

int CLTManager::compareLTAlbums(const SimpleMusicTag* tag, const boost::shared_ptr<CLTAlbum>& album)
{
    if (!isNamed(album))
        return 1;
    const int result = compareNames(tag->album, album->getName());
    return result != 0 ? result : compareLTArtists(tag, album->getArtist());
}

int CLTManager::compareLTAlbums(const boost::shared_ptr<CLTAlbum>& a,
                                const boost::shared_ptr<CLTAlbum>& b)
{
    int result = compareUnknown(a, b);
    if (result == 0)
        result = compareNames(a->getName(), b->getName());
    return result != 0 ? result : compareLTArtists(a->getArtist(), b->getArtist());
}

int CLTManager::compareLTArtists(const SimpleMusicTag* tag,
                                 const boost::shared_ptr<CLTArtist>& artist)
{
    return isNamed(artist) ? compareNames(tag->artist, artist->getName()) : 1;
}

int CLTManager::compareLTArtists(const boost::shared_ptr<CLTArtist>& a,
                                 const boost::shared_ptr<CLTArtist>& b)
{
    const int result = compareUnknown(a, b);
    return result != 0 ? result : compareNames(a->getName(), b->getName());
}

int CLTManager::compareLTGenres(const SimpleMusicTag* tag, const boost::shared_ptr<CLTGenre>& genre)
{
    return compareNames(tag->genre, genre->getName());
}

int CLTManager::compareLTGenres(const boost::shared_ptr<CLTGenre>& a,
                                const boost::shared_ptr<CLTGenre>& b)
{
    return compareNames(a->getName(), b->getName());
}

bool CLTManager::isSameLTLyrics(const boost::shared_ptr<CHDTextFile>& file,
                                const boost::shared_ptr<CLTLyrics>& lyrics)
{
    return lyrics->getFiles().find(file) != -1;
}

bool CLTManager::isSameLTPicture(const boost::shared_ptr<CHDPictureFile>& file,
                                 const boost::shared_ptr<CLTPicture>& picture)
{
    return picture->getFiles().find(file) != -1;
}

bool CLTManager::compareLTLyrics(const boost::shared_ptr<CLTLyrics>& a,
                                 const boost::shared_ptr<CLTLyrics>& b)
{
    return shareFile(a->getFiles(), b->getFiles());
}

bool CLTManager::compareLTPictures(const boost::shared_ptr<CLTPicture>& a,
                                   const boost::shared_ptr<CLTPicture>& b)
{
    return shareFile(a->getFiles(), b->getFiles());
}

bool CLTManager::compareLTObjects(const boost::shared_ptr<CLTObject>& a,
                                  const boost::shared_ptr<CLTObject>& b)
{
    if (a->getType() != b->getType())
        return false;
    switch (a->getType())
    {
    case CLTObjectType::Album:
        return isSameByTag<CLTAlbum>(a, b, compareLTAlbums);
    case CLTObjectType::Artist:
        return isSameByTag<CLTArtist>(a, b, compareLTArtists);
    case CLTObjectType::Genre:
        return isSameByTag<CLTGenre>(a, b, compareLTGenres);
    case CLTObjectType::Track:
        return isSameByTag<CLTTrack>(a, b, compareLTTracks);
    case CLTObjectType::Lyrics:
        return compareLTLyrics(boost::static_pointer_cast<CLTLyrics>(a),
                               boost::static_pointer_cast<CLTLyrics>(b));
    case CLTObjectType::Picture:
        return compareLTPictures(boost::static_pointer_cast<CLTPicture>(a),
                                 boost::static_pointer_cast<CLTPicture>(b));
    }
    return false;
}
