#include "cli/music/PlacedFile.h"

#include "cli/music/MusicSum.h"
#include "cli/shown/Text.h"

#include <utility>

namespace qo::cli
{
namespace
{
std::string quoted(const CString& text)
{
    return "\"" + oneLine(text) + "\"";
}

const char* fieldName(CNSAtom::EType type)
{
    switch (type)
    {
    case CNSAtom::Artist:
        return "artist";
    case CNSAtom::Album:
        return "album";
    case CNSAtom::Track:
        return "title";
    case CNSAtom::TrackNumber:
        return "track";
    case CNSAtom::Year:
        return "year";
    case CNSAtom::Genre:
        return "genre";
    default:
        return "date or time";
    }
}

const char* resultName(EVoteResult result)
{
    switch (result)
    {
    case EVoteResult::noValue:
        return "noValue";
    case EVoteResult::contradicted:
        return "contradicted";
    case EVoteResult::tooManyWithout:
        return "tooManyWithout";
    case EVoteResult::withoutArtist:
        return "withoutArtist";
    case EVoteResult::agreed:
        return "agreed";
    }
    return "";
}

Json voteJson(const FolderVote& vote)
{
    Json object;
    object["type"] = toUtf8(CString(CLTObjectType::getTypeName(vote.type)));
    object["result"] = resultName(vote.result);
    object["value"] = toUtf8(vote.value);
    if (!vote.contradictingValue.IsEmpty())
        object["contradictedBy"] = toUtf8(vote.contradictingValue);
    object["with"] = vote.related;
    object["without"] = vote.unrelated;
    return object;
}
} // namespace

PlacedFile::PlacedFile(Placement placement, const std::vector<FolderVote>& votes)
    : m_placement(std::move(placement)), m_votes(votes)
{
    m_owner = host::ownerOf(*m_placement.file).value_or(host::FileOwner());
}

std::string PlacedFile::ownerText() const
{
    std::string text;
    for (const CString* name : {&m_owner.artist, &m_owner.album, &m_owner.title})
    {
        if (!name->IsEmpty())
            text += (text.empty() ? "" : " / ") + oneLine(*name);
    }
    return text;
}

const char* PlacedFile::by() const
{
    if (!isPlaced())
        return "";
    return !m_placement.musicFile ? "folder" : m_placement.byExactName ? "exactName" : "name";
}

std::string PlacedFile::nameReason() const
{
    if (!m_placement.musicFile)
        return "its name fits no music beside it";
    const std::string file = quoted(m_placement.musicFile->getFileName());
    if (m_placement.byExactName)
        return "named like " + file;
    std::string fields;
    for (const CNSAtom::EType type : m_placement.narrowedBy)
        fields += (fields.empty() ? "" : ", ") + std::string(fieldName(type));
    return "its name fits " + file + (fields.empty() ? "" : " by " + fields);
}

const FolderVote* PlacedFile::voteFor(CLTObjectType::EType type) const
{
    for (const FolderVote& vote : m_votes)
    {
        if (vote.type == type)
            return &vote;
    }
    return nullptr;
}

std::string PlacedFile::voteReason(CLTObjectType::EType type, const char* noun) const
{
    const FolderVote* const vote = voteFor(type);
    if (!vote)
        return {};
    const std::string name = noun;
    const std::string all = std::to_string(vote->related + vote->unrelated);
    switch (vote->result)
    {
    case EVoteResult::noValue:
        return "nothing in the folder has an " + name;
    case EVoteResult::contradicted:
        return "the folder has more than one " + name + ", as " + quoted(vote->value) + " and " +
               quoted(vote->contradictingValue);
    case EVoteResult::tooManyWithout:
        return "only " + std::to_string(vote->related) + " of " + all + " in the folder have the " +
               name + " " + quoted(vote->value);
    case EVoteResult::withoutArtist:
        return "the folder agrees on the " + name + " " + quoted(vote->value) + " but on no artist";
    case EVoteResult::agreed:
        return "the folder agrees on the " + name + " " + quoted(vote->value);
    }
    return {};
}

/// The names in the record that no track has; empty if there are none.
std::string PlacedFile::strayReason() const
{
    SimpleMusicTag tag;
    m_placement.file->getSimpleTag(tag);
    if (!tag.artist.IsEmpty() && !CLTManager::findLTArtist(tag.artist))
        return "no track has the artist " + quoted(tag.artist) + " that its record names";
    int position = 0;
    if (tag.album.IsEmpty() || CLTManager::findLTAlbum(tag, position))
        return {};
    return tag.artist.IsEmpty()
               ? "its record names the album " + quoted(tag.album) + " and no artist"
               : "no track of " + quoted(tag.artist) + " has the album " + quoted(tag.album) +
                     " that its record names";
}

std::string PlacedFile::reason() const
{
    const std::string stray = strayReason();
    const std::string start = m_placement.musicFile || !isPlaced() ? nameReason() : folderReason();
    std::string text = start + (start.empty() || stray.empty() ? "" : "; ") + stray;
    if (isPlaced() || !stray.empty())
        return text;
    // The results of the analysis are certain to be stored only for files that the same scan read.
    const std::string remedy = "; \"qo scan --deep\" gives it the artist ";
    if (m_placement.musicFile)
    {
        const QoFileDbItem& music = *m_placement.musicFile->getDbItem();
        if (music.artist.IsEmpty())
            return text + ", which has no artist" + (music.album.IsEmpty() ? " and no album" : "");
        return text + remedy + quoted(music.artist);
    }
    const FolderVote* const vote = voteFor(CLTObjectType::Artist);
    if (vote && vote->result == EVoteResult::agreed)
        return text + remedy + quoted(vote->value);
    const std::string artist = voteReason(CLTObjectType::Artist, "artist");
    return text + (artist.empty() ? "" : "; " + artist);
}

/// The reason for a file that was placed by its folder.
std::string PlacedFile::folderReason() const
{
    const FolderVote* const vote = voteFor(CLTObjectType::Artist);
    const bool isAgreed = vote && vote->result == EVoteResult::agreed &&
                          vote->value.CompareNoCase(m_owner.artist) == 0;
    const std::string artist = voteReason(CLTObjectType::Artist, "artist");
    if (!isAgreed)
        return "its record names the artist " + quoted(m_owner.artist) + " from an earlier scan" +
               (artist.empty() ? "" : "; " + artist);
    // An album that the record names but that no track has is reported by another sentence.
    const std::string album =
        m_owner.album.IsEmpty() ? "" : voteReason(CLTObjectType::Album, "album");
    return artist + (album.empty() ? "" : "; ") + album;
}

Json PlacedFile::record() const
{
    Json object;
    putPath(object, "path", path());
    object["type"] = m_placement.file->getFileType() == CHDFile::FT_Picture ? "picture" : "text";
    object["placed"] = isPlaced();
    object["artist"] = toUtf8(m_owner.artist);
    object["album"] = toUtf8(m_owner.album);
    object["title"] = toUtf8(m_owner.title);
    object["by"] = by();
    object["reason"] = reason();
    putPath(
        object, "musicFile", m_placement.musicFile ? m_placement.musicFile->getPath() : FilePath());
    object["narrowedBy"] = Json::array();
    for (const CNSAtom::EType type : m_placement.narrowedBy)
        object["narrowedBy"].push_back(fieldName(type));
    object["pattern"] = toUtf8(m_placement.pattern);
    object["folder"] = Json::array();
    for (const FolderVote& vote : m_votes)
        object["folder"].push_back(voteJson(vote));
    return object;
}
} // namespace qo::cli
