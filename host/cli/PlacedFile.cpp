#include "cli/PlacedFile.h"

#include "cli/Text.h"

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
}

std::string PlacedFile::ownerText() const
{
    std::string text;
    for (const CString* name : {&item().artist, &item().album, &item().title})
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

std::string PlacedFile::reason() const
{
    if (m_placement.musicFile)
        return nameReason() + (isPlaced() ? "" : ", which has no artist and no album");
    const std::string artist = voteReason(CLTObjectType::Artist, "artist");
    const FolderVote* const vote = voteFor(CLTObjectType::Artist);
    if (!isPlaced() && vote && vote->result == EVoteResult::agreed)
        return nameReason() + "; the next scan gives it the artist " + quoted(vote->value);
    if (!isPlaced())
        return nameReason() + (artist.empty() ? "" : "; " + artist);
    const std::string album = voteReason(CLTObjectType::Album, "album");
    return artist + (artist.empty() || album.empty() ? "" : "; ") + album;
}

Json PlacedFile::record() const
{
    Json object;
    putPath(object, "path", path());
    object["type"] = m_placement.file->getFileType() == CHDFile::FT_Picture ? "picture" : "text";
    object["placed"] = isPlaced();
    object["artist"] = toUtf8(item().artist);
    object["album"] = toUtf8(item().album);
    object["title"] = toUtf8(item().title);
    object["by"] = by();
    object["reason"] = reason();
    putPath(
        object, "musicFile", m_placement.musicFile ? m_placement.musicFile->getPath() : CString());
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
