#include "LibraryPlan.h"
#include "SoundFile.h"

#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>

namespace
{
namespace fs = std::filesystem;

struct Options
{
    fs::path folder;
    fs::path sounds = QO_SOUNDS;
    int files = 60;
    std::uint64_t seed = 1;
};

constexpr const char* usage =
    "usage: make_library DIR [--files N] [--seed S] [--sounds DIR]\n"
    "Fills DIR with a music library of N files (60), the same one for the same seed (1).\n";

template <class Number>
bool parse(const char* text, Number& number)
{
    const char* end = text + std::strlen(text);
    const auto [stop, error] = std::from_chars(text, end, number);
    return error == std::errc() && stop == end;
}

std::optional<Options> parse(int count, char** arguments)
{
    Options options;
    for (int i = 1; i < count; ++i)
    {
        const std::string_view name = arguments[i];
        if (!name.starts_with("--") && options.folder.empty())
        {
            options.folder = name;
            continue;
        }
        const char* value = i + 1 < count ? arguments[++i] : "";
        const bool understood = name == "--files"    ? parse(value, options.files)
                                : name == "--seed"   ? parse(value, options.seed)
                                : name == "--sounds" ? (options.sounds = value, *value != 0)
                                                     : false;
        if (!understood)
            return {};
    }
    return options.folder.empty() || options.files < 1 ? std::nullopt : std::optional(options);
}

/// Base sounds and pictures, each read once.
class Sounds
{
public:
    explicit Sounds(fs::path folder) : m_folder(std::move(folder)) {}

    const TagLib::ByteVector& operator[](const std::string& name)
    {
        const auto [entry, fresh] = m_known.try_emplace(name);
        if (fresh)
        {
            std::ifstream file(m_folder / name, std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(file), {});
            if (bytes.empty())
                throw std::runtime_error("cannot read the sound " + (m_folder / name).string());
            entry->second = TagLib::ByteVector(bytes.data(), static_cast<unsigned>(bytes.size()));
        }
        return entry->second;
    }

private:
    fs::path m_folder;
    std::map<std::string, TagLib::ByteVector> m_known;
};

void write(const fs::path& path, const char* bytes, std::size_t size)
{
    std::ofstream file(path, std::ios::binary);
    file.write(bytes, static_cast<std::streamsize>(size));
    if (!file.flush())
        throw std::runtime_error("cannot write " + path.string());
}

void write(const fs::path& path, const TagLib::ByteVector& bytes)
{
    write(path, bytes.data(), bytes.size());
}

void writeAlbum(const library::Album& album, const fs::path& root, Sounds& sounds)
{
    const fs::path folder = root / album.folder;
    fs::create_directories(folder);
    const TagLib::ByteVector cover = library::namedCover(sounds["red.jpg"], album.folder);
    if (album.coverBeside)
        write(folder / "cover.jpg", library::namedCover(sounds["green.jpg"], album.folder));
    for (const library::Track& track : album.tracks)
    {
        const TagLib::ByteVector none;
        write(folder / (track.fileName + "." + track.extension),
              library::taggedSound(sounds[track.sound], track, track.embeddedCover ? cover : none));
        if (track.lyricsBeside && !track.lyrics.empty())
            write(folder / (track.fileName + ".txt"), track.lyrics.data(), track.lyrics.size());
    }
}
} // namespace

int main(int count, char** arguments)
{
    const std::optional<Options> options = parse(count, arguments);
    if (!options)
    {
        std::cerr << usage;
        return 2;
    }
    try
    {
        Sounds sounds(options->sounds);
        library::planLibrary(options->files,
                             options->seed,
                             [&](const library::Album& album)
                             { writeAlbum(album, options->folder, sounds); });
    }
    catch (const std::exception& error)
    {
        std::cerr << "make_library: " << error.what() << "\n";
        return 1;
    }
    std::cout << "made " << options->files << " music files in " << options->folder.string()
              << "\n";
    return 0;
}
