#pragma once

#include "KVTagLib/Tags.h"
#include "KVTagLib/TagsReader.h"
#include "KVTagLib/TagsReaderFactory.h"
#include "KVTagLib/TagsWriter.h"
#include "KVTagLib/TagsWriterFactory.h"
#include "platform/FileSystem.h"
#include "support/TempDir.h"
#include "types/Utf.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

/// What the tests of this folder share: base sounds, reading, writing and the referees.
namespace tagfiles
{
inline std::string sound(const std::string& name)
{
    return std::string(QO_TEST_DATA) + "/sounds/" + name;
}

inline std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A copy of a base sound in the folder, under the same name.
inline std::string copySound(const TempDir& folder, const std::string& name)
{
    return folder.write(name, contentOf(sound(name)));
}

/// Every field of the tag in one comparable piece.
struct Values
{
    std::string artist = {};
    std::string album = {};
    std::string title = {};
    std::string genre = {};
    std::string track = {};
    std::string year = {};
    std::string lyrics = {};
    bool operator==(const Values&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Values& v)
{
    return out << v.artist << " / " << v.album << " / " << v.title << " / " << v.genre << " / "
               << v.track << " / " << v.year << " / " << v.lyrics;
}

inline Values valuesOf(const KVTagLib::CTags& tags)
{
    using KVTagLib::CTags;
    const auto get = [&](bool (CTags::*getter)(CString&) const)
    {
        CString text;
        return (tags.*getter)(text) ? qo::toUtf8(text) : std::string();
    };
    return {get(&CTags::GetFirstValidArtist),
            get(&CTags::GetAlbum),
            get(&CTags::GetTitle),
            get(&CTags::GetGenre),
            get(&CTags::GetTrackNumber),
            get(&CTags::GetYear),
            get(&CTags::GetLyrics)};
}

inline std::unique_ptr<KVTagLib::ITagsReader> readerFor(const std::string& path)
{
    return std::unique_ptr<KVTagLib::ITagsReader>(
        KVTagLib::CTagsReaderFactory::CreateTagsReader(qo::fromSystemPath(path)));
}

inline bool readInto(const std::string& path, KVTagLib::CTags& tags)
{
    const auto reader = readerFor(path);
    return reader && reader->Read(tags, -1, -1);
}

inline Values read(const std::string& path)
{
    KVTagLib::CTags tags;
    EXPECT_TRUE(readInto(path, tags)) << path;
    return valuesOf(tags);
}

/// The play time; 0 if it is not known.
inline int millisecondsOf(const std::string& path)
{
    KVTagLib::CTags tags;
    EXPECT_TRUE(readInto(path, tags)) << path;
    int time = 0;
    return tags.GetTime(time) ? time : 0;
}

inline KVTagLib::CTags tagsOf(const Values& values)
{
    KVTagLib::CTags tags;
    tags.AddArtist(qo::fromUtf8(values.artist), false);
    tags.SetAlbum(qo::fromUtf8(values.album));
    tags.SetTitle(qo::fromUtf8(values.title));
    tags.SetGenre(qo::fromUtf8(values.genre));
    tags.SetTrackNumber(qo::fromUtf8(values.track));
    tags.SetYear(qo::fromUtf8(values.year));
    tags.SetLyrics(qo::fromUtf8(values.lyrics));
    return tags;
}

/// A tag that has this field alone, as of CTags::SetTitle.
inline KVTagLib::CTags only(void (KVTagLib::CTags::*set)(const CString&), const char16_t* text)
{
    KVTagLib::CTags tags;
    (tags.*set)(text);
    return tags;
}

inline KVTagLib::CTags title(const char16_t* text)
{
    return only(&KVTagLib::CTags::SetTitle, text);
}

/// The same tag with a sound's picture; none of tests/data is a failure of the test.
inline KVTagLib::CTags withPicture(KVTagLib::CTags tags, const std::string& picture)
{
    EXPECT_TRUE(tags.AddPicture(qo::fromSystemPath(sound(picture)))) << picture;
    return tags;
}

/// Empty for success, else the writer's reason.
inline std::string write(const std::string& path, KVTagLib::CTags tags)
{
    const std::unique_ptr<KVTagLib::ITagsWriter> writer(
        KVTagLib::CTagsWriterFactory::CreateTagsWriter(qo::fromSystemPath(path)));
    if (!writer)
        return "no writer";
    if (writer->Write(tags))
        return {};
    const std::string error = qo::toUtf8(writer->GetError());
    return error.empty() ? "no reason given" : error;
}

inline std::string outputOf(const std::string& command)
{
    std::string output;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), &::pclose);
    std::array<char, 4096> block;
    while (pipe && std::fgets(block.data(), block.size(), pipe.get()))
        output += block.data();
    return output;
}

inline bool haveReferee()
{
    static const bool have = std::system("/usr/bin/python3 -c 'import mutagen' 2>/dev/null") == 0;
    return have;
}

inline bool haveDecoder()
{
    static const bool have = std::system("ffmpeg -version >/dev/null 2>&1") == 0;
    return have;
}

/// The second tag library's view of the file, see referee.py.
inline std::string refereeOn(const std::string& path)
{
    return outputOf("/usr/bin/python3 '" QO_SOURCE_DIR "/tests/KVTagLib/referee.py' '" + path +
                    "' 2>&1");
}

inline std::vector<std::string> sortedLines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    return lines;
}

/// What of the first list the second one lacks.
inline std::vector<std::string> difference(const std::vector<std::string>& a,
                                           const std::vector<std::string>& b)
{
    std::vector<std::string> result;
    std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(result));
    return result;
}

inline bool hasLine(const std::string& lines, const std::string& line)
{
    return ("\n" + lines).find("\n" + line + "\n") != std::string::npos;
}

/// The checksum of the decoded sound.
inline std::string soundChecksum(const std::string& path)
{
    return outputOf("ffmpeg -v quiet -i '" + path + "' -map 0:a -f md5 - 2>/dev/null");
}

/// A tag and a frame of ID3v2 of fewer than 128 bytes.
inline std::string id3v2Tag(char version, char flags, const std::string& frames)
{
    return std::string("ID3") + version + '\0' + flags + std::string(3, '\0') +
           static_cast<char>(frames.size()) + frames;
}

inline std::string id3v2Frame(const std::string& id, const std::string& body, char flag = 0)
{
    return id + std::string(3, '\0') + static_cast<char>(body.size()) + '\0' + flag + body;
}
} // namespace tagfiles
