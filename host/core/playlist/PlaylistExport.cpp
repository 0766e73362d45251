#include "core/playlist/PlaylistExport.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"

#include <QoKernel/Inside.h>

#include <algorithm>
#include <cerrno>
#include <fstream>

namespace qo::host
{
namespace
{
constexpr std::size_t fewestDigits = 2;
constexpr std::size_t longestEnding = 16; ///< with its point; what is longer is none
/// The rules of FAT, which also hold on all other file systems but for the count of bytes.
constexpr VolumeRules strictest = {200, VolumeRules::Length::bytes, true, true};

ListedSong songOf(const QoFileDbItem& item)
{
    return {{}, item.title, item.artist, item.album, item.duration};
}

ListedSong songOf(const StoredEntry& entry)
{
    return {{}, entry.title, entry.artist, {}, entry.duration};
}

/// A remembered place; no list can hold a line break in it.
std::string withoutLineBreaks(std::string place)
{
    for (char& c : place)
        c = c == '\n' || c == '\r' ? ' ' : c;
    return place;
}

/// ".mp3", or "".
std::string endingOf(const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    const std::size_t point = name.rfind('.');
    return point == std::string::npos || point == 0 || name.size() - point > longestEnding
               ? ""
               : name.substr(point);
}

std::string numbered(std::size_t number, std::size_t highest)
{
    const std::string digits = std::to_string(number);
    const std::size_t width = std::max(fewestDigits, std::to_string(highest).size());
    return std::string(width - digits.size(), '0') + digits;
}

/// "Kino - Zvezda", or the file's own name.
CString nameOfCopy(const QoFileDbItem& item)
{
    if (item.title.IsEmpty())
    {
        const CString name = fileNameOf(item.path);
        const int point = name.ReverseFind(u'.');
        return point > 0 ? name.Left(point) : name;
    }
    return item.artist.IsEmpty() ? item.title : item.artist + u" - " + item.title;
}

bool isSameContent(const std::string& one, const std::string& other)
{
    NameInfo a;
    NameInfo b;
    return disk::look(one, a) == 0 && disk::look(other, b) == 0 && a.size == b.size &&
           fileSystem().compareFiles(fromSystemPath(one), fromSystemPath(other), {}) == 0;
}

/// Sees what is to be copied, and whether that can be.
void lookAtSource(SongCopy& copy)
{
    // A link that leads from the music folder would lead nowhere on another disk.
    copy.source = resolvedPath(copy.from);
    NameInfo info;
    int error = copy.source.empty() ? errno : disk::look(copy.source, info);
    if (error == 0)
        error = fileSystem().mayRead(fromSystemPath(copy.source));
    if (error != 0)
        copy.failure = errorWords(error);
    else if (info.kind != NameInfo::Kind::regular)
        copy.failure = "it is no file";
    else
        copy.size = info.size;
}

/// Gives the copy the first name that no other file has.
void chooseName(SongCopy& copy, const std::string& start, const std::string& folder)
{
    const std::string ending = endingOf(copy.from);
    for (int number = 1;; ++number)
    {
        const std::string end = number > 1 ? " (" + std::to_string(number) + ")" : "";
        copy.song.place = portableName(fromUtf8(start), end + ending);
        copy.to = inFolder(folder, copy.song.place);
        if (disk::isNothingAt(copy.to))
            return;
        copy.isThere = isSameContent(copy.source, copy.to);
        if (copy.isThere)
            return;
    }
}
} // namespace

void writePlaylistFile(const std::string& path, const std::string& text)
{
    const CString place = fromSystemPath(path);
    const bool isNew = disk::isNothingAt(path);
    // Other players run as other users: a new list gets the rights that this user gives new files.
    if (isNew)
        std::ofstream(path).flush();
    FileReplacement replacement(place);
    int error = replacement.prepare();
    if (error == 0)
    {
        replacement.resizeCopy(0);
        replacement.writeCopy(0, text.data(), text.size());
        error = replacement.commit();
    }
    if (error != 0 && isNew)
        disk::removeFile(path);
    if (error != 0)
        throw HostError(ExitCode::failed, path + " cannot be written: " + errorWords(error));
}

std::string portableName(const CString& name, const std::string& ending)
{
    VolumeRules rules = strictest;
    rules.longestName -= static_cast<int>(ending.size());
    CString stem = fittingFolderName(plainValue(name), rules);
    if (isNoName(stem))
        stem = u"_";
    return toUtf8(stem) + toUtf8(fittingFolderName(plainText(fromUtf8(ending)), strictest));
}

std::vector<ListedSong> exportedSongs(const std::vector<StoredEntry>& entries,
                                      PlaceStyle style,
                                      const std::string& folder,
                                      std::vector<std::size_t>& missing)
{
    std::vector<ListedSong> songs;
    songs.reserve(entries.size());
    EntryLookup lookup;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        const EntryLookup::Answer answer = lookup.look(entries[i]);
        const bool isFound = answer.state == EntryState::found;
        if (!isFound)
            missing.push_back(i);
        ListedSong song = isFound ? songOf(*answer.item) : songOf(entries[i]);
        const CString path = isFound ? answer.item->path.text() : entries[i].path;
        const std::string system = path.IsEmpty() ? "" : toSystemPath(path);
        song.place = system.empty() ? withoutLineBreaks(placeOf(entries[i]))
                                    : placeFor(system, style, folder);
        if (!song.place.empty())
            songs.push_back(std::move(song));
    }
    return songs;
}

std::vector<SongCopy> planCopies(const std::vector<StoredEntry>& entries, const std::string& folder)
{
    std::vector<SongCopy> copies;
    EntryLookup lookup;
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        const EntryLookup::Answer answer = lookup.look(entries[i]);
        if (answer.state != EntryState::found)
            continue;
        SongCopy copy;
        copy.index = i;
        copy.song = songOf(*answer.item);
        copy.from = toSystemPath(answer.item->path);
        lookAtSource(copy);
        chooseName(
            copy, numbered(i + 1, entries.size()) + " " + toUtf8(nameOfCopy(*answer.item)), folder);
        copies.push_back(std::move(copy));
    }
    return copies;
}

void checkCopies(const std::vector<SongCopy>& copies, const std::string& folder)
{
    std::string there = folder;
    while (disk::isNothingAt(there))
        there = parentOf(there);
    NameInfo info;
    if (const int error = disk::lookAtFolder(there, info))
        throw HostError(ExitCode::failed, there + " cannot be used: " + errorWords(error));
    const std::string nearest = disk::nearestFolder(folder);
    const CString place = fromSystemPath(nearest);
    if (const int error = fileSystem().mayChange(place))
        throw HostError(ExitCode::failed,
                        "nothing can be copied to " + folder + ": " + errorWords(error));
    std::uint64_t needed = 0;
    for (const SongCopy& copy : copies)
        needed += copy.isThere ? 0 : static_cast<std::uint64_t>(copy.size);
    std::uint64_t room = 0;
    if (fileSystem().room(place, room) == 0 && room < needed)
        throw HostError(ExitCode::failed,
                        "there is no room in " + nearest + ": the songs have " +
                            std::to_string(needed) + " bytes, and " + std::to_string(room) +
                            " are free; nothing was copied");
}

void makeCopies(std::vector<SongCopy>& copies,
                const std::string& folder,
                const std::function<bool()>& stop)
{
    const CString place = fromSystemPath(folder);
    if (const int error = fileSystem().makeDirectories(place))
        throw HostError(ExitCode::failed,
                        "the folder " + folder + " cannot be made: " + errorWords(error));
    std::size_t made = 0;
    for (SongCopy& copy : copies)
    {
        if (copy.isThere || !copy.failure.empty())
            continue;
        const int error =
            fileSystem().copyAsNew(fromSystemPath(copy.source), fromSystemPath(copy.to), stop);
        if (error == ECANCELED)
            throw HostError(ExitCode::interrupted,
                            "interrupted after " + std::to_string(made) + " copies into " + folder +
                                ", which stay there");
        if (error != 0)
            copy.failure = errorWords(error);
        else
            ++made;
    }
    (void)fileSystem().sync(place);
}
} // namespace qo::host
