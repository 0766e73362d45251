#include "cli/music/MusicFilter.h"

#include "cli/CommandLine.h"
#include "cli/shown/ClosestName.h"
#include "cli/shown/Text.h"
#include "core/base/HostError.h"

#include <QoKernel/Collection.h>
#include <QoKernel/Physical.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
/// One name that tracks are asked for.
class WantedName
{
public:
    explicit WantedName(const std::optional<std::string>& typed)
        : m_isWanted(typed.has_value()), m_name(fromUtf8(typed.value_or("")))
    {
    }

    bool fits(const CLTObject* object)
    {
        if (!m_isWanted)
            return true;
        // Neighbours share their artist and album as a rule.
        if (!m_wasAsked || object != m_last)
        {
            m_wasAsked = true;
            m_last = object;
            m_lastFits = CLTManager::compareLTNames(nameOf(object), m_name) == 0;
            m_wasSeen = m_wasSeen || m_lastFits;
        }
        return m_lastFits;
    }
    bool isMissing() const { return m_isWanted && !m_wasSeen; }

    template <class List>
    [[noreturn]] void complain(const char* kind, const List& all) const
    {
        std::string text = m_name.IsEmpty()
                               ? std::string("every track has an ") + kind
                               : std::string("there is no ") + kind + " \"" + toUtf8(m_name) + "\"";
        ClosestName closest(m_name);
        for (const auto& each : all)
            closest.look(each->getName());
        if (!closest.best().IsEmpty())
            text += "; the closest is \"" + toUtf8(closest.best()) + "\"";
        throw host::HostError(host::ExitCode::notFound, text);
    }

private:
    bool m_isWanted;
    bool m_wasSeen = false;
    bool m_wasAsked = false;
    bool m_lastFits = false;
    const CLTObject* m_last = nullptr;
    CString m_name;
};
} // namespace

CString nameOf(const CLTObject* object)
{
    return object ? object->getName() : CString();
}

std::string displayName(const CLTObject* object)
{
    return isUnnamed(object) ? "[unknown]" : oneLine(object->getDisplayName());
}

std::vector<const CLTTrack*> MusicFilter::tracks() const
{
    WantedName wantedArtist(artist);
    WantedName wantedAlbum(album);
    WantedName wantedGenre(genre);
    std::vector<const CLTTrack*> found;
    for (const auto& track : CLTManager::getTracks())
    {
        // Lyrics may keep a track whose file has gone.
        if (track->getMusicFiles().IsEmpty())
            continue;
        const bool byArtist = wantedArtist.fits(track->getArtist().get());
        const bool onAlbum = wantedAlbum.fits(track->getAlbum().get());
        const bool ofGenre = wantedGenre.fits(track->getGenre().get());
        if (byArtist && onAlbum && ofGenre)
            found.push_back(track.get());
    }
    if (!found.empty() || !isSet())
        return found;
    if (wantedArtist.isMissing())
        wantedArtist.complain("artist", CLTManager::getArtists());
    if (wantedAlbum.isMissing())
        wantedAlbum.complain("album", CLTManager::getAlbums());
    if (wantedGenre.isMissing())
        wantedGenre.complain("genre", CLTManager::getGenres());
    throw host::HostError(host::ExitCode::notFound, "no track has all of these names");
}

void addFilter(CLI::App& command, MusicFilter& filter)
{
    addOptional(
        command, "--artist", filter.artist, "Only tracks by this artist; \"\": without one");
    addOptional(command, "--album", filter.album, "Only tracks on albums of this name");
    addOptional(command, "--genre", filter.genre, "Only tracks of this genre");
}

void MusicSum::add(const CLTTrack& track)
{
    ++tracks;
    for (const auto& file : track.getMusicFiles())
        duration += std::max(file->getDbItem()->duration, 0);
    const int year = textToInt(track.getYear().view());
    if (year <= 0)
        return;
    firstYear = firstYear == 0 ? year : std::min(firstYear, year);
    lastYear = std::max(lastYear, year);
}

std::string MusicSum::years() const
{
    if (firstYear == 0)
        return {};
    const std::string first = std::to_string(firstYear);
    return firstYear == lastYear ? first : first + "-" + std::to_string(lastYear);
}
} // namespace qo::cli
