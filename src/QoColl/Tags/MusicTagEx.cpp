#include "QoColl/Tags/MusicTagEx.h"

#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Db/Records/QoInplaceFileDbItem.h"
#include "common/FilePathParts.h"
#include "common/Log.h"
#include "types/CharClass.h"

#include <array>
#include <atomic>

// The values of a tag in their four forms (EStore): get() and set() are the only functions that
// depend on the form; everything else is built on these. Reading and writing files is in
// MusicTagFile.cpp.

namespace
{
std::atomic<int> lyricsCount{0};
} // namespace

const CMusicTagEx::EAttribType CMusicTagEx::m_attribTypes[] = {CTagAttrib::AT_Artist,
                                                               CTagAttrib::AT_Album,
                                                               CTagAttrib::AT_Title,
                                                               CTagAttrib::AT_Genre,
                                                               CTagAttrib::AT_TrackNumber,
                                                               CTagAttrib::AT_Year,
                                                               CTagAttrib::AT_Lyrics,
                                                               CTagAttrib::AT_Picture,
                                                               CTagAttrib::AT_FileName};

/// Play time in milliseconds and bit rate in kbit/s.
struct CMusicTagEx::Numbers
{
    std::uint32_t time = 0;
    std::uint32_t bitrate = 0;
};

/// The form with an object for each attribute.
struct CMusicTagEx::Attribs
{
    Numbers numbers;
    std::array<CTagAttrib, attribCount> all{CTagAttrib(m_attribTypes[0]),
                                            CTagAttrib(m_attribTypes[1]),
                                            CTagAttrib(m_attribTypes[2]),
                                            CTagAttrib(m_attribTypes[3]),
                                            CTagAttrib(m_attribTypes[4]),
                                            CTagAttrib(m_attribTypes[5]),
                                            CTagAttrib(m_attribTypes[6]),
                                            CTagAttrib(m_attribTypes[7]),
                                            CTagAttrib(m_attribTypes[8])};
};

namespace
{
constexpr CTagAttribValue::ESrcValueType original = CTagAttribValue::SV_Original;

/// The position in the order of the attribute types; -1 for a type that a tag does not have.
int indexOf(CTagAttrib::EAttribType type) noexcept
{
    constexpr int fileNameIndex = 8;
    if (type == CTagAttrib::AT_FileName)
        return fileNameIndex;
    return CTagAttrib::isRealTagAttrib(type) ? type - CTagAttrib::AT_Artist : -1;
}

/// The record's text for an attribute. For the file name it is the whole path, from which the name
/// is taken when it is asked for.
CString textOf(const QoFileDbItem& record, CTagAttrib::EAttribType type)
{
    switch (type)
    {
    case CTagAttrib::AT_Artist:
        return record.artist;
    case CTagAttrib::AT_Album:
        return record.album;
    case CTagAttrib::AT_Title:
        return record.title;
    case CTagAttrib::AT_Genre:
        return record.genre;
    case CTagAttrib::AT_TrackNumber:
        return record.trackNumber;
    case CTagAttrib::AT_Year:
        return record.year;
    case CTagAttrib::AT_Lyrics:
        return record.lyrics;
    case CTagAttrib::AT_Picture:
        return record.picturePath;
    default:
        return record.path;
    }
}

/// The same, but lyrics that the record got after the tag was made from it do not belong to the
/// tag.
CString mirroredText(const QoFileDbItem& record, CTagAttrib::EAttribType type, bool hasLyrics)
{
    return type == CTagAttrib::AT_Lyrics && !hasLyrics ? CString() : textOf(record, type);
}
} // namespace

/// The values of SV_Original in the order of m_attribTypes, with the path instead of the file name.
struct CMusicTagEx::Texts
{
    void set(int index, const CString& text)
    {
        all[index] = text;
        present = static_cast<std::uint16_t>(present | 1U << index);
    }
    bool has(int index) const noexcept { return (present >> index & 1) != 0; }

    CString all[attribCount];
    Numbers numbers;
    std::uint16_t present = 0; ///< one bit for each text that is a value
};

CMusicTagEx::CMusicTagEx() noexcept : m_record(nullptr) {}

CMusicTagEx::~CMusicTagEx()
{
    forget();
    setHasOriginalLyrics(false);
}

void CMusicTagEx::forget() const noexcept
{
    if (m_store == EStore::texts)
        delete m_texts;
    else if (m_store == EStore::attribs)
        delete m_attribs;
    m_store = EStore::nowhere;
}

int CMusicTagEx::getNrAttribTypes() noexcept
{
    return attribCount;
}

CMusicTagEx::EAttribType CMusicTagEx::getAttribType(int index) noexcept
{
    return m_attribTypes[index];
}

/// The values of the former form become those of SV_Original.
CMusicTagEx::Attribs& CMusicTagEx::attribs() const
{
    if (m_store == EStore::attribs)
        return *m_attribs;
    auto made = std::make_unique<Attribs>();
    for (EAttribType type : m_attribTypes)
    {
        CString text;
        if (get(type, original, text))
            made->all[static_cast<std::size_t>(indexOf(type))].setValue(original, text, true);
    }
    made->numbers = numbers();
    forget();
    m_attribs = made.release();
    m_store = EStore::attribs;
    return *m_attribs;
}

/// Copies the texts of a mirrored record, or starts without values.
CMusicTagEx::Texts& CMusicTagEx::texts()
{
    if (m_store == EStore::texts)
        return *m_texts;
    auto made = std::make_unique<Texts>();
    if (m_store == EStore::record)
    {
        for (EAttribType type : m_attribTypes)
            made->set(indexOf(type), mirroredText(*m_record, type, m_hasOriginalLyrics));
        made->numbers = numbers();
    }
    m_texts = made.release();
    m_store = EStore::texts;
    return *m_texts;
}

const CTagAttrib* CMusicTagEx::getConstAttrib(EAttribType type) const
{
    const int index = indexOf(type);
    return index == -1 ? nullptr : &attribs().all[static_cast<std::size_t>(index)];
}

CTagAttrib* CMusicTagEx::getAttrib(EAttribType type)
{
    return const_cast<CTagAttrib*>(getConstAttrib(type));
}

/// In the three cheaper forms the only values are those of SV_Original.
bool CMusicTagEx::get(EAttribType type, ESrcValueType source, CString& text) const
{
    // The output may be the very text that is read, as that of the record.
    if (m_store == EStore::attribs)
    {
        CString value;
        const bool found = getConstAttrib(type)->getValue(source, value);
        text = value;
        return found;
    }
    const bool isOriginal = source == original || source == CTagAttribValue::SV_Current;
    const int index = indexOf(type);
    if (!isOriginal || m_store == EStore::nowhere ||
        (m_store == EStore::texts && !m_texts->has(index)))
    {
        text.Empty();
        return false;
    }
    const CString kept = m_store == EStore::record
                             ? mirroredText(*m_record, type, m_hasOriginalLyrics)
                             : m_texts->all[index];
    text = type == CTagAttrib::AT_FileName ? qo::fileNameOf(kept) : kept;
    return true;
}

CString CMusicTagEx::getOriginal(EAttribType type) const
{
    CString text;
    get(type, original, text);
    return text;
}

void CMusicTagEx::set(EAttribType type, const CString& text, ESrcValueType source, bool makeCurrent)
{
    if (m_store == EStore::attribs || source != original)
        getAttrib(type)->setValue(source, text, makeCurrent);
    else
        texts().set(indexOf(type), text);
}

bool CMusicTagEx::isEdited(EAttribType type) const
{
    return m_store == EStore::attribs && getConstAttrib(type)->getCrtValueType() != original;
}

bool CMusicTagEx::makeOriginal(EAttribType type)
{
    return m_store == EStore::attribs && getAttrib(type)->setCrtValueAsOriginal();
}

void CMusicTagEx::setCrtFileNameAsOriginal()
{
    makeOriginal(CTagAttrib::AT_FileName);
}

/// The form stays, since attribute objects keep their choice of a source.
void CMusicTagEx::clear()
{
    if (m_store == EStore::nowhere)
        return;
    if (m_store == EStore::record)
        keepTexts();
    if (m_store == EStore::texts)
    {
        for (CString& text : m_texts->all)
            text.Empty();
        m_texts->present = 0;
        return;
    }
    for (CTagAttrib& attrib : m_attribs->all)
        attrib.clear();
}

void CMusicTagEx::reset()
{
    if (m_store != EStore::attribs)
        return;
    for (CTagAttrib& attrib : m_attribs->all)
        attrib.setCrtValueType(original);
}

bool CMusicTagEx::isDirty(bool realTagOnly) const
{
    if (m_store != EStore::attribs)
        return false;
    for (const CTagAttrib& attrib : m_attribs->all)
    {
        if (attrib.getCrtValueType() != original && (!realTagOnly || attrib.isRealTagAttrib()))
            return true;
    }
    return false;
}

bool CMusicTagEx::getArtist(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Artist, type, text);
}

bool CMusicTagEx::getAlbum(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Album, type, text);
}

bool CMusicTagEx::getTitle(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Title, type, text);
}

bool CMusicTagEx::getGenre(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Genre, type, text);
}

bool CMusicTagEx::getTrackNumber(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_TrackNumber, type, text);
}

bool CMusicTagEx::getYear(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Year, type, text);
}

bool CMusicTagEx::getLyrics(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Lyrics, type, text);
}

bool CMusicTagEx::getPicture(ESrcValueType type, CString& text) const
{
    return get(CTagAttrib::AT_Picture, type, text);
}

void CMusicTagEx::setArtist(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Artist, text, type, makeCurrent);
}

void CMusicTagEx::setAlbum(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Album, text, type, makeCurrent);
}

void CMusicTagEx::setTitle(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Title, text, type, makeCurrent);
}

void CMusicTagEx::setGenre(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Genre, text, type, makeCurrent);
}

void CMusicTagEx::setTrackNumber(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_TrackNumber, text, type, makeCurrent);
}

void CMusicTagEx::setYear(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Year, text, type, makeCurrent);
}

void CMusicTagEx::setPicture(const CString& text, ESrcValueType type, bool makeCurrent)
{
    set(CTagAttrib::AT_Picture, text, type, makeCurrent);
}

void CMusicTagEx::setLyrics(const CString& text,
                            bool hasOriginalLyrics,
                            ESrcValueType type,
                            bool makeCurrent)
{
    set(CTagAttrib::AT_Lyrics, text, type, makeCurrent);
    setHasOriginalLyrics(hasOriginalLyrics);
}

void CMusicTagEx::setHasOriginalLyrics(bool has)
{
    if (has == m_hasOriginalLyrics)
        return;
    // The flag says which lyrics of a record are the tag's: it changes the flag alone.
    keepTexts();
    m_hasOriginalLyrics = has;
    lyricsCount += has ? 1 : -1;
}

void CMusicTagEx::checkNrLyrics()
{
    qo::log(qo::level::flow, u"CMusicTagEx::checkNrLyrics : %d", lyricsCount.load());
}

void CMusicTagEx::updateAttrib(EAttribType /*type*/, const char16_t* /*value*/) {}

void CMusicTagEx::getSimpleTag(SimpleMusicTag& tag) const
{
    tag.artist = getArtist();
    tag.album = getAlbum();
    tag.title = getTitle();
    tag.genre = getGenre();
    tag.trackNumber = getTrackNumber();
    tag.year = getYear();
}

void CMusicTagEx::getTagInfo(IQorganizer::TagInfo& info) const
{
    info.artist = getArtist();
    info.album = getAlbum();
    info.title = getTitle();
    info.trackNumber = getTrackNumber();
    info.year = getYear();
    info.genre = getGenre();
}

namespace
{
/// Copies the original values into any record that has these fields.
template <class Record>
void fillRecord(const CMusicTagEx& tag, Record& record)
{
    record.artist = tag.getArtist();
    record.album = tag.getAlbum();
    record.title = tag.getTitle();
    record.genre = tag.getGenre();
    record.trackNumber = tag.getTrackNumber();
    record.year = tag.getYear();
    record.lyrics = tag.getLyrics();
    record.picturePath = tag.getPicture();
    record.duration = static_cast<int>(tag.getTime());
}
} // namespace

void CMusicTagEx::getTag(boost::shared_ptr<QoFileDbItem>& item) const
{
    fillRecord(*this, *item);
    item->lyricsLoaded = m_hasOriginalLyrics;
    item->bitrate = static_cast<int>(getBitrate());
}

void CMusicTagEx::getTag(boost::shared_ptr<QoInplaceFileDbItem>& item) const
{
    fillRecord(*this, *item);
}

void CMusicTagEx::setTag(const boost::shared_ptr<QoFileDbItem>& item)
{
    take(*item);
}

void CMusicTagEx::take(const QoFileDbItem& record)
{
    for (EAttribType type : m_attribTypes)
    {
        const CString text = textOf(record, type);
        const bool asName = type == CTagAttrib::AT_FileName && m_store == EStore::attribs;
        set(type, asName ? qo::fileNameOf(text) : text, original, false);
    }
    setHasOriginalLyrics(record.lyricsLoaded);
    setNumbers(static_cast<unsigned>(record.duration), static_cast<unsigned>(record.bitrate));
}

CMusicTagEx::Numbers CMusicTagEx::numbers() const noexcept
{
    switch (m_store)
    {
    case EStore::nowhere:
        break;
    case EStore::record:
        return {static_cast<std::uint32_t>(m_record->duration),
                static_cast<std::uint32_t>(m_record->bitrate)};
    case EStore::texts:
        return m_texts->numbers;
    case EStore::attribs:
        return m_attribs->numbers;
    }
    return {};
}

void CMusicTagEx::setNumbers(unsigned time, unsigned bitrate)
{
    (m_store == EStore::attribs ? m_attribs->numbers : texts().numbers) = {time, bitrate};
}

unsigned CMusicTagEx::getTime() const noexcept
{
    return numbers().time;
}

unsigned CMusicTagEx::getBitrate() const noexcept
{
    return numbers().bitrate;
}

void CMusicTagEx::mirror(const QoFileDbItem& record)
{
    // A tag with edits copies the file's values and keeps the edits. Lyrics of an unknown origin
    // are copied too: in the record those of the file may come in their place.
    if (m_store == EStore::attribs || (!record.lyricsLoaded && !record.lyrics.IsEmpty()))
        return take(record);
    forget();
    setHasOriginalLyrics(record.lyricsLoaded);
    m_record = &record;
    m_store = EStore::record;
}

void CMusicTagEx::keepTexts()
{
    if (m_store == EStore::record)
        texts();
}

bool CMusicTagEx::fillEmptyAttribs(ESrcValueType type)
{
    // Without attribute objects there is no other source.
    if (m_store != EStore::attribs)
        return false;
    bool changed = false;
    for (CTagAttrib& attrib : m_attribs->all)
    {
        CString value;
        if (attrib.getCrtValueType() != original)
            continue;
        if (attrib.getCrtValue(value) && !value.IsEmpty())
            continue;
        if (!attrib.getValue(type, value) || value.IsEmpty())
            continue;
        attrib.setValue(CTagAttribValue::SV_Edited, value, true);
        changed = true;
    }
    return changed;
}

/// " 3 / 12 " gives "3" and "12".
bool CMusicTagEx::splitTrackNumber(const CString& text, CString& track, CString& total)
{
    const int slash = text.Find(u'/');
    CString left = slash == -1 ? text : text.Left(slash);
    CString right = slash == -1 ? CString() : text.Mid(slash + 1);
    track = left.Trim();
    total = right.Trim();
    return !total.IsEmpty();
}

bool CMusicTagEx::splitTrackNumber(const CString& text, int& track, int& total)
{
    CString trackText;
    CString totalText;
    splitTrackNumber(text, trackText, totalText);
    track = qo::textToInt(trackText.view());
    total = qo::textToInt(totalText.view());
    return total != 0;
}

void CMusicTagEx::makeTrackNumber(int track, int total, CString& text)
{
    if (total == 0)
        text.Format(u"%d", track);
    else
        text.Format(u"%d/%d", track, total);
}

void CMusicTagEx::makeTrackNumber(const CString& track, const CString& total, CString& text)
{
    makeTrackNumber(qo::textToInt(track.view()), qo::textToInt(total.view()), text);
}
