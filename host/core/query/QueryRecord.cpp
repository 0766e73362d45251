#include "core/query/QueryRecord.h"

#include "core/base/HostFiles.h"
#include "core/collection/FileFields.h"
#include "core/collection/FileOwner.h"
#include "core/collection/PendingTags.h"
#include "core/query/FoldedText.h"
#include "core/session/Session.h"

#include <QoKernel/Physical.h>

#include <algorithm>

namespace qo::host
{
QueryFacts::QueryFacts() : m_now(toTicks(systemClock().now())) {}

QueryFacts::~QueryFacts() = default;

bool QueryFacts::isMarked(const QoFileDbItem& item)
{
    if (!m_marked)
        m_marked = HostStore(Session::folder()).checkedFiles();
    return m_marked->contains(item.velmoraId);
}

bool QueryFacts::isEdited(const QoFileDbItem& item)
{
    if (!m_pending)
        m_pending = std::make_unique<PendingTags>();
    return m_pending->isEdited(item.path);
}

bool isUntagged(const QoFileDbItem& item)
{
    return (item.artist.IsEmpty() || item.title.IsEmpty()) && CQoUtils::isMusicFilePath(item.path);
}

void QueryRecord::look(const QoFileDbItem& item)
{
    m_item = &item;
    for (Text& text : m_texts)
        text.isKnown = false;
}

const CString* QueryRecord::tagText(QueryField field) const
{
    switch (field)
    {
    case QueryField::artist:
        return &m_item->artist;
    case QueryField::album:
        return &m_item->album;
    case QueryField::title:
        return &m_item->title;
    case QueryField::genre:
        return &m_item->genre;
    case QueryField::track:
        return &m_item->trackNumber;
    case QueryField::year:
        return &m_item->year;
    default:
        return noteText(field);
    }
}

const CString* QueryRecord::noteText(QueryField field) const
{
    switch (field)
    {
    case QueryField::albumArtist:
        return &m_facts.notesOf(*m_item).albumArtist;
    case QueryField::disc:
        return &m_facts.notesOf(*m_item).disc;
    case QueryField::comment:
        return &m_facts.notesOf(*m_item).comment;
    case QueryField::addedBy:
        return &m_facts.notesOf(*m_item).addedBy;
    default:
        return nullptr;
    }
}

std::u16string_view QueryRecord::nameText()
{
    const std::u16string_view name = m_item->path.name().view();
    const std::u16string_view folder = m_item->path.folder().view();
    if (folder.starts_with(u"\\\\") &&
        (folder.find(u'%') != folder.npos || name.find(u'%') != name.npos))
    {
        m_name = CQoCollPath(m_item->path).getLast();
        return m_name.view();
    }
    return name;
}

std::u16string_view QueryRecord::folderText()
{
    const std::u16string_view folder = m_item->path.folder().view();
    if (folder != m_folder)
    {
        m_folder = folder;
        setFolderText();
        m_foldedFolder.clear();
        appendFolded(m_folderText, m_foldedFolder);
    }
    return m_folderText;
}

/// The system's drive is the usual one: what it takes to ask for others would be felt.
void QueryRecord::setFolderText()
{
    if (m_folder.starts_with(u"C:\\"))
    {
        m_folderText.assign(m_folder, 2);
        std::ranges::replace(m_folderText, u'\\', u'/');
        return;
    }
    m_folderText = fromUtf8(shownPath(CString(m_folder))).view();
    if (!m_folderText.ends_with(u'/'))
        m_folderText += u'/';
}

std::u16string_view QueryRecord::text(QueryField field)
{
    if (const CString* const text = tagText(field))
        return text->view();
    switch (field)
    {
    case QueryField::path:
        m_computed = folderText();
        m_computed += nameText();
        return m_computed;
    case QueryField::name:
        return nameText();
    case QueryField::kind:
    {
        static const FileField& type = *findFileField("type");
        m_computed = std::get<CString>(type.read(*m_item, m_facts.notes())).view();
        return m_computed;
    }
    case QueryField::format:
    {
        const std::u16string_view name = nameText();
        const std::size_t dot = name.rfind(u'.');
        return dot == name.npos ? std::u16string_view() : name.substr(dot + 1);
    }
    default:
        return {};
    }
}

std::u16string_view QueryRecord::foldedText(QueryField field)
{
    Text& text = m_texts[static_cast<std::size_t>(field)];
    if (!text.isKnown)
    {
        text.isKnown = true;
        if (field == QueryField::path)
        {
            folderText();
            text.folded = m_foldedFolder;
            appendFolded(nameText(), text.folded);
        }
        else if (const std::u16string_view raw = this->text(field);
                 !tagText(field) || raw.data() != text.raw.data() || raw.size() != text.raw.size())
        {
            // Records of one artist share the text, so that most need not be folded again.
            text.raw = raw;
            text.folded.clear();
            appendFolded(raw, text.folded);
        }
    }
    return text.folded;
}

std::optional<std::int64_t> QueryRecord::number(QueryField field) const
{
    const auto unlessZero = [](std::int64_t number)
    { return number > 0 ? std::optional<std::int64_t>(number) : std::nullopt; };
    switch (field)
    {
    case QueryField::track:
        return unlessZero(textToInt(m_item->trackNumber.view()));
    case QueryField::year:
        return unlessZero(textToInt(m_item->year.view()));
    case QueryField::disc:
        return unlessZero(textToInt(noteText(field)->view()));
    case QueryField::rating:
        return unlessZero(m_facts.notesOf(*m_item).rating);
    case QueryField::plays:
        return m_facts.notesOf(*m_item).plays;
    case QueryField::played:
        return unlessZero(toTicks(m_facts.notesOf(*m_item).lastPlayed));
    case QueryField::length:
        return unlessZero(m_item->duration);
    case QueryField::bitrate:
        return unlessZero(m_item->bitrate);
    case QueryField::size:
        return m_item->size;
    case QueryField::added:
        return unlessZero(toTicks(m_item->createTime));
    case QueryField::changed:
        return unlessZero(toTicks(m_item->modifTime));
    default:
        return {};
    }
}

bool QueryRecord::is(QueryField flag) const
{
    switch (flag)
    {
    case QueryField::marked:
        return m_facts.isMarked(*m_item);
    case QueryField::edited:
        return m_facts.isEdited(*m_item);
    case QueryField::untagged:
        return isUntagged(*m_item);
    case QueryField::unplaced:
    {
        const auto file = CQoCollection::m_ownCollection.getFileByPath(m_item->path);
        const auto owner = file ? ownerOf(*file) : std::nullopt;
        return owner && !owner->isPlaced;
    }
    case QueryField::missing:
        return !fileSystem().exists(CQoUtils::getRealPath(m_item->path));
    default:
        return false;
    }
}
} // namespace qo::host
