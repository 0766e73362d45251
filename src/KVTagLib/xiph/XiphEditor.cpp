#include "KVTagLib/xiph/XiphEditor.h"

#include "KVTagLib/Rating.h"
#include "KVTagLib/TagText.h"
#include "KVTagLib/pictures/PictureStore.h"

#include <taglib/flacpicture.h>

#include <algorithm>
#include <string_view>

// A comment is a vendor text, a number of entries and the entries, each with its length in 4 bytes,
// little-endian. Pictures are entries in Base64, in one of two forms.

using namespace TagLib;

namespace KVTagLib
{
namespace
{
constexpr bool littleEndian = false;
constexpr unsigned sizeBytes = 4;
/// More than any real comment has: limits the work for a hostile file.
constexpr unsigned maxEntries = 1U << 16;
constexpr const char* pictureBlock = "METADATA_BLOCK_PICTURE";
constexpr const char* bareImage = "COVERART";

/// Whether the entry has that name, which is given in upper case; only ASCII letters have a case
/// here.
bool hasName(const ByteVector& entry, std::string_view name)
{
    const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
    return entry.size() > name.size() && entry[static_cast<int>(name.size())] == '=' &&
           std::equal(name.begin(),
                      name.end(),
                      entry.begin(),
                      [&](char a, char b) { return a == upper(b); });
}

ByteVector valueOf(const ByteVector& entry)
{
    return entry.mid(static_cast<unsigned>(entry.find('=')) + 1);
}
} // namespace

ByteVector XiphEditor::blockOf(const ByteVector& entry)
{
    if (hasName(entry, pictureBlock))
        return ByteVector::fromBase64(valueOf(entry));
    if (!hasName(entry, bareImage))
        return {};
    FLAC::Picture picture;
    picture.setData(ByteVector::fromBase64(valueOf(entry)));
    return picture.render();
}

bool XiphEditor::load(const ByteVector& comment)
{
    unsigned at = 0;
    const auto number = [&](unsigned& value)
    {
        if (comment.size() - at < sizeBytes)
            return false;
        value = comment.toUInt(at, littleEndian);
        at += sizeBytes;
        return true;
    };
    const auto bytes = [&](ByteVector& value)
    {
        unsigned size = 0;
        if (!number(size) || size > comment.size() - at)
            return false;
        value = comment.mid(at, size);
        at += size;
        return true;
    };
    unsigned count = 0;
    if (!bytes(m_vendor) || !number(count) || count > maxEntries)
        return false;
    m_entries.resize(count);
    for (ByteVector& entry : m_entries)
    {
        if (!bytes(entry))
            return false;
    }
    m_rest = comment.mid(at);
    return true;
}

ByteVector XiphEditor::render() const
{
    ByteVector comment = ByteVector::fromUInt(m_vendor.size(), littleEndian);
    comment.append(m_vendor);
    comment.append(ByteVector::fromUInt(static_cast<unsigned>(m_entries.size()), littleEndian));
    for (const ByteVector& entry : m_entries)
    {
        comment.append(ByteVector::fromUInt(entry.size(), littleEndian));
        comment.append(entry);
    }
    comment.append(m_rest);
    return comment;
}

std::vector<std::size_t> XiphEditor::entriesOf(Names names) const
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < m_entries.size(); ++i)
    {
        const auto named = [&](const char* name) { return hasName(m_entries[i], name); };
        if (std::ranges::any_of(names, named))
            found.push_back(i);
    }
    return found;
}

StringList XiphEditor::textsOf(const std::vector<std::size_t>& entries) const
{
    StringList texts;
    for (const std::size_t index : entries)
        texts.append(String(valueOf(m_entries[index]), String::UTF8));
    return texts;
}

void XiphEditor::setText(std::size_t index, const String& text)
{
    ByteVector& entry = m_entries[index];
    entry = entry.mid(0, static_cast<unsigned>(entry.find('=')) + 1);
    entry.append(text.data(String::UTF8));
}

void XiphEditor::add(const char* name, const ByteVector& value)
{
    ByteVector entry(name);
    entry.append(ByteVector(1, '='));
    entry.append(value);
    m_entries.push_back(entry);
}

void XiphEditor::remove(const std::vector<std::size_t>& entries)
{
    for (auto index = entries.rbegin(); index != entries.rend(); ++index)
        m_entries.erase(m_entries.begin() + static_cast<std::ptrdiff_t>(*index));
}

void XiphEditor::set(const TagChanges& changes, Field field, Names names)
{
    bool found = false;
    for (const char* name : names)
    {
        std::vector<std::size_t> entries = entriesOf({name});
        if (entries.empty())
            continue;
        found = true;
        const StringList old = textsOf(entries);
        const StringList texts = changes.changed(field, old);
        std::size_t done = 0;
        auto oldText = old.begin();
        for (const String& text : texts)
        {
            // A text that stays is not written again: its bytes may not be valid UTF-8.
            if (done >= entries.size())
                add(name, text.data(String::UTF8));
            else if (*oldText++ != text)
                setText(entries[done], text);
            ++done;
        }
        entries.erase(entries.begin(),
                      entries.begin() +
                          static_cast<std::ptrdiff_t>(std::min(done, entries.size())));
        remove(entries);
    }
    if (found)
        return;
    for (const String& text : changes.changed(field, {}))
        add(*names.begin(), text.data(String::UTF8));
}

bool XiphEditor::setExisting(Names names, const String& text)
{
    bool none = true;
    for (const char* name : names)
    {
        std::vector<std::size_t> entries = entriesOf({name});
        if (entries.empty())
            continue;
        none = false;
        if (!text.isEmpty())
        {
            setText(entries.front(), text);
            entries.erase(entries.begin());
        }
        remove(entries);
    }
    return none;
}

/// By custom number and total are two fields; a file with "3/12" in one field keeps it so.
void XiphEditor::setTrack(const TagChanges& changes)
{
    const Names numbers = {"TRACKNUMBER", "TRACKNUM"};
    const Names totals = {"TRACKTOTAL", "TOTALTRACKS"};
    const StringList old = textsOf(entriesOf(numbers));
    const bool inOneField = !old.isEmpty() && old.front().find("/") >= 0;
    const String number =
        inOneField ? tagTextOf(*changes.text(Field::trackNumber)) : changes.trackNumber();
    if (setExisting(numbers, number) && !number.isEmpty())
        add(*numbers.begin(), number.data(String::UTF8));
    const String total = changes.trackTotal();
    if (total.isEmpty() && !changes.removesTrackTotal())
        return;
    if (setExisting(totals, total) && !total.isEmpty() && !inOneField)
        add(*totals.begin(), total.data(String::UTF8));
}

/// The second name has a scale of its own.
void XiphEditor::setRating(const TagChanges& changes)
{
    const int rating = changes.rating();
    const String fraction = rating > 0 ? fractionOfRating(rating) : String();
    if (setExisting({"FMPS_RATING"}, fraction) && rating > 0)
        add("FMPS_RATING", fraction.data(String::UTF8));
    if (const StringList old = textsOf(entriesOf({"RATING"})); !old.isEmpty())
        setExisting({"RATING"}, rating > 0 ? numberOfRating(rating, old.front()) : String());
}

void XiphEditor::apply(const TagChanges& changes)
{
    constexpr Field fields[] = {Field::artist, Field::album, Field::title, Field::genre};
    constexpr const char* names[] = {"ARTIST", "ALBUM", "TITLE", "GENRE"};
    for (int i = 0; i < 4; ++i)
    {
        if (changes.has(fields[i]))
            set(changes, fields[i], {names[i]});
    }
    if (changes.has(Field::year))
        set(changes, Field::year, {"DATE", "YEAR"});
    if (changes.has(Field::lyrics))
        set(changes, Field::lyrics, {"LYRICS", "UNSYNCEDLYRICS", "UNSYNCED LYRICS"});
    if (changes.has(Field::trackNumber))
        setTrack(changes);
    if (changes.has(Field::rating))
        setRating(changes);
    if (changes.removesPictures())
        removePictures(changes);
}

int XiphEditor::frontCover() const
{
    for (const std::size_t index : entriesOf({pictureBlock, bareImage}))
    {
        if (pictureTypeOf(blockOf(m_entries[index])) == pictureType::frontCover)
            return static_cast<int>(index);
    }
    return -1;
}

void XiphEditor::removePictures(const TagChanges& changes)
{
    std::vector<std::size_t> entries = entriesOf({pictureBlock, bareImage});
    std::erase_if(entries,
                  [&](std::size_t index)
                  { return !changes.removesPicture(pictureTypeOf(blockOf(m_entries[index]))); });
    remove(entries);
}

void XiphEditor::setPicture(int index, const ByteVector& content)
{
    const ByteVector old = index < 0 ? ByteVector() : blockOf(m_entries[index]);
    add(pictureBlock, changedPicture(old, content).toBase64());
    if (index < 0)
        return;
    std::swap(m_entries[static_cast<std::size_t>(index)], m_entries.back());
    m_entries.pop_back();
}

ByteVector changedPicture(const ByteVector& old, const ByteVector& content)
{
    FLAC::Picture picture;
    if (!old.isEmpty())
        picture.parse(old);
    picture.setType(FLAC::Picture::FrontCover);
    picture.setMimeType(tagTextOf(pictureKindOf(content)->mimeType));
    picture.setData(content);
    // Zero means unknown.
    picture.setWidth(0);
    picture.setHeight(0);
    picture.setColorDepth(0);
    picture.setNumColors(0);
    return picture.render();
}

int pictureTypeOf(const ByteVector& block)
{
    FLAC::Picture picture;
    return !block.isEmpty() && picture.parse(block) ? picture.type() : pictureType::none;
}
} // namespace KVTagLib
