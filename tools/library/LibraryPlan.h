#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace library
{
/// The kinds of tags that mp3 files come with.
enum class Mp3Tag
{
    id3v1,
    id3v22,
    id3v23,
    id3v24,
    id3v23and1,
    ape
};

/// One music file to be made; all texts in UTF-8.
struct Track
{
    std::string sound; ///< file name of the base sound
    std::string extension;
    Mp3Tag mp3Tag = Mp3Tag::id3v23;
    bool tagged = true;
    std::vector<std::string> artists;
    std::string album;
    std::string title;
    std::string genre;
    std::string number; ///< "3" or "3/12"
    std::string date;
    std::string lyrics;
    bool lyricsBeside = false; ///< in a text file instead of the tag
    bool embeddedCover = false;
    std::string fileName; ///< without extension
};

struct Album
{
    std::string folder; ///< relative, Artist/Album
    std::string name;
    bool coverBeside = false;
    std::vector<Track> tracks;
};

/// Hands out the albums of a library with that many music files in all, the same ones for the same
/// seed on every machine. The first album holds one file of each format and kind of tag.
void planLibrary(int files, std::uint64_t seed, const std::function<void(const Album&)>& take);
} // namespace library
