#include "LibraryPlan.h"

#include <algorithm>
#include <iterator>
#include <random>
#include <unordered_set>

namespace library
{
namespace
{
constexpr const char* firstWords[] = {
    "Velvet", "Björk",  "Crystal",  "Señor",  "Midnight", "Łódź",  "Electric", "Żółta",
    "Silent", "Noël",   "Paper",    "東京",   "Golden",   "Ночь",  "Broken",   "Ångström",
    "Lunar",  "Déjà",   "Wild",     "夜明け", "Hidden",   "Ωmega", "Northern", "Straße",
    "Rusty",  "Ümlaut", "Thousand", "Iron",   "Ivory",    "서울",  "Marble",   "Coral"};
constexpr const char* secondWords[] = {
    "Underground", "& Sons",     "Horses",  "Sessions", "Orchestra",   "Ghosts",     "Rivers",
    "Machine",     "Trio",       "Vögel",   "Lanterns", "Quartet",     "Kids",       "Mirrors",
    "ночи",        "Satellites", "Club",    "Brothers", "& the Waves", "Theatre",    "Parade",
    "楽団",        "Collective", "Sisters", "Engine",   "Circus",      "Architects", "Gardens"};
constexpr const char* titleWords[] = {
    "Love",   "Yesterday", "Río",     "Rain",   "Fire",     "Été",    "Home",   "Tonight",
    "Dream",  "Mañana",    "Summer",  "Winter", "Road",     "Cœur",   "Blue",   "さくら",
    "Dance",  "Shadow",    "Light",   "River",  "Stranger", "Café",   "Dust",   "Heart",
    "Window", "Ocean",     "Flowers", "Naïve",  "Thunder",  "Letter", "Mirror", "Gold"};
constexpr const char* joints[] = {" ", " of ", " & ", " in the ", " without ", ", "};
/// Names as tags spell them; the bracketed numbers lie above the first table of 148 genres.
constexpr const char* genres[] = {"Rock",
                                  "Pop",
                                  "Jazz",
                                  "Electronic",
                                  "Classical",
                                  "Folk",
                                  "Metal",
                                  "Blues",
                                  "Hip-Hop",
                                  "Ambient",
                                  "Soundtrack",
                                  "Soul",
                                  "(17)",
                                  "(148)",
                                  "(185)"};

struct Weighted
{
    const char* sound;
    const char* extension;
    int weight; ///< in thousandths
};

constexpr Weighted formats[] = {
    {"sound.mp3", "mp3", 420},
    {"vbr.mp3", "mp3", 80},
    {"sound.flac", "flac", 200},
    {"sound.m4a", "m4a", 110},
    {"alac.m4a", "m4a", 10},
    {"sound.ogg", "ogg", 80},
    {"sound.opus", "opus", 40},
    {"sound.wma", "wma", 15},
    {"sound.wav", "wav", 8},
    {"sound.aiff", "aiff", 6},
    {"sound.ape", "ape", 6},
    {"sound.wv", "wv", 6},
    {"sound.mpc", "mpc", 6},
    {"sound.spx", "spx", 3},
    {"sound.oga", "oga", 3},
    {"sound.tta", "tta", 2},
    {"sound.mp2", "mp2", 2},
    {"sound.m4a", "m4b", 3},
};

struct WeightedTag
{
    Mp3Tag tag;
    int weight;
};

constexpr WeightedTag mp3Tags[] = {
    {Mp3Tag::id3v23, 500},
    {Mp3Tag::id3v24, 260},
    {Mp3Tag::id3v23and1, 100},
    {Mp3Tag::id3v1, 70},
    {Mp3Tag::ape, 40},
    {Mp3Tag::id3v22, 30},
};

constexpr const char* lyricsText = "The night is long and the road is wide\n"
                                   "Le vent se lève, la mer monte\n"
                                   "さくら さくら\n";

/// The standard's distributions differ between libraries; the generator does not.
class Dice
{
public:
    explicit Dice(std::uint64_t seed) : m_engine(seed) {}
    int below(std::size_t end) { return static_cast<int>(m_engine() % end); }
    bool perMille(int chance) { return below(1000) < chance; }
    template <class T, std::size_t N>
    const T& oneOf(const T (&list)[N])
    {
        return list[below(N)];
    }
    template <class T, std::size_t N>
    const T& weighted(const T (&list)[N])
    {
        int left = below(1000);
        for (const T& entry : list)
        {
            left -= entry.weight;
            if (left < 0)
                return entry;
        }
        return list[0];
    }

private:
    std::mt19937_64 m_engine;
};

/// One component of a path: no slash, no more bytes than a name may have with what is added to it.
std::string safeName(std::string name)
{
    std::ranges::replace(name, '/', '_');
    constexpr std::size_t limit = 230;
    if (name.size() > limit)
    {
        std::size_t end = limit;
        while ((name[end] & 0xC0) == 0x80)
            --end;
        name.resize(end);
    }
    return name;
}

std::string twoDigits(int number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

class Planner
{
public:
    explicit Planner(std::uint64_t seed) : m_dice(seed) {}

    Album variety(int files);
    Album album(int files);

private:
    std::string artistName();
    std::string title();
    std::string date(const std::string& year);
    Track track(const Album& album, const std::string& artist, int number, int total);
    std::string freshFolder(const std::string& artist, const std::string& album);

    Dice m_dice;
    std::unordered_set<std::string> m_folders;
    std::string m_artist;
    int m_albumsLeft = 0;
};

std::string Planner::artistName()
{
    std::string name = m_dice.oneOf(firstWords);
    name += ' ';
    name += m_dice.oneOf(secondWords);
    if (m_dice.perMille(300))
        name = "The " + name;
    return name;
}

std::string Planner::title()
{
    std::string text = m_dice.oneOf(titleWords);
    for (int words = m_dice.below(3); words > 0; --words)
    {
        text += m_dice.oneOf(joints);
        text += m_dice.oneOf(titleWords);
    }
    if (m_dice.perMille(10))
        text += " 🎵";
    if (m_dice.perMille(4))
    {
        while (text.size() < 240)
            text += std::string(" and ") + m_dice.oneOf(titleWords);
    }
    return text;
}

std::string Planner::date(const std::string& year)
{
    if (m_dice.perMille(20))
        return year.substr(2);
    return m_dice.perMille(150) ? year + "-0" + std::to_string(1 + m_dice.below(9)) + "-17" : year;
}

std::string Planner::freshFolder(const std::string& artist, const std::string& album)
{
    const std::string base = safeName(artist) + "/" + safeName(album);
    std::string folder = base;
    for (int i = 2; !m_folders.insert(folder).second; ++i)
        folder = base + " (" + std::to_string(i) + ")";
    return folder;
}

Track Planner::track(const Album& album, const std::string& artist, int number, int total)
{
    Track track;
    track.artists = {artist};
    if (m_dice.perMille(50))
        track.artists.push_back(artistName());
    track.album = album.name;
    track.title = title();
    track.number = std::to_string(number);
    if (m_dice.perMille(400))
        track.number += "/" + std::to_string(total);
    track.tagged = !m_dice.perMille(30);
    if (m_dice.perMille(80))
        track.lyrics = lyricsText;
    track.lyricsBeside = m_dice.perMille(500);
    track.fileName = safeName(twoDigits(number) + " - " + track.title);
    return track;
}

/// Every format and kind of tag once.
Album Planner::variety(int files)
{
    Album album;
    album.name = "Every Format";
    album.folder = freshFolder("Various Artists", album.name);
    album.coverBeside = true;
    const int total = static_cast<int>(std::size(formats) + std::size(mp3Tags));
    for (int i = 0; i < std::min(total, files); ++i)
    {
        const int kind = i - static_cast<int>(std::size(formats));
        const Weighted& format = formats[std::max(0, kind >= 0 ? 0 : i)];
        Track made = track(album, artistName(), i + 1, total);
        made.sound = format.sound;
        made.extension = format.extension;
        made.mp3Tag = kind >= 0 ? mp3Tags[kind].tag : Mp3Tag::id3v24;
        made.tagged = i != 1; // the second mp3 stays without
        made.genre = genres[static_cast<std::size_t>(i) % std::size(genres)];
        made.date = date("2004");
        made.embeddedCover = i % 3 == 0;
        album.tracks.push_back(made);
    }
    return album;
}

Album Planner::album(int files)
{
    if (m_albumsLeft == 0)
    {
        m_artist = artistName();
        m_albumsLeft = 1 + m_dice.below(6);
    }
    --m_albumsLeft;
    Album album;
    album.name = title();
    album.folder = freshFolder(m_artist, album.name);
    album.coverBeside = m_dice.perMille(400);
    const std::string genre = m_dice.oneOf(genres);
    const std::string year = std::to_string(1960 + m_dice.below(65));
    const std::string albumDate = date(year);
    const Weighted& format = m_dice.weighted(formats);
    const Mp3Tag tag = m_dice.weighted(mp3Tags).tag;
    const bool cover = m_dice.perMille(200);
    const int total = 6 + m_dice.below(12);
    for (int i = 1; i <= std::min(total, files); ++i)
    {
        Track made = track(album, m_artist, i, total);
        made.sound = format.sound;
        made.extension = format.extension;
        made.mp3Tag = tag;
        made.genre = genre;
        made.date = albumDate;
        made.embeddedCover = cover;
        album.tracks.push_back(made);
    }
    return album;
}
} // namespace

void planLibrary(int files, std::uint64_t seed, const std::function<void(const Album&)>& take)
{
    Planner planner(seed);
    Album album = planner.variety(files);
    while (files > 0)
    {
        take(album);
        files -= static_cast<int>(album.tracks.size());
        if (files > 0)
            album = planner.album(files);
    }
}
} // namespace library
