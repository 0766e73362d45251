#pragma once

#include "core/collection/KnownNotes.h"
#include "core/query/QueryField.h"

#include <QoKernel/Collection.h>

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace qo::host
{
class PendingTags;

/// What queries ask for beside the records: check marks and edits of the host's store, read when
/// first asked for, and the time of the query. On the kernel's thread.
class QueryFacts
{
public:
    QueryFacts();
    ~QueryFacts();
    QueryFacts(const QueryFacts&) = delete;
    QueryFacts& operator=(const QueryFacts&) = delete;

    std::int64_t now() const { return m_now; } ///< ticks
    bool isMarked(const QoFileDbItem& item);
    bool isEdited(const QoFileDbItem& item);
    KnownNotes& notes() { return m_notes; }
    const FileNotes& notesOf(const QoFileDbItem& item) { return m_notes.of(item); }

private:
    std::int64_t m_now;
    std::optional<std::unordered_set<LastingId>> m_marked;
    std::unique_ptr<PendingTags> m_pending;
    KnownNotes m_notes;
};

/// Whether it is music without an artist or a title. Many tracks have no album.
bool isUntagged(const QoFileDbItem& item);

/// A record as conditions look at it, one after another. Texts are folded when they are first asked
/// for, and those that neighbours share, such as artists and folders, once for all of them. On the
/// kernel's thread, with the collection loaded.
class QueryRecord
{
public:
    explicit QueryRecord(QueryFacts& facts) : m_facts(facts) {}

    void look(const QoFileDbItem& item);
    const QoFileDbItem& item() const { return *m_item; }

    /// The value of a field of the kind text or number; "" for none. Valid until the next call.
    std::u16string_view text(QueryField field);
    /// The same as searches compare it; valid until the next record.
    std::u16string_view foldedText(QueryField field);
    /// The value of a field that ranges ask for; none if it is not known.
    std::optional<std::int64_t> number(QueryField field) const;
    /// Of a field of the kind flag.
    bool is(QueryField flag) const;

private:
    static constexpr std::size_t textFields = static_cast<std::size_t>(QueryField::format) + 1;

    struct Text
    {
        std::u16string_view raw; ///< of the record that was folded last
        std::u16string folded;
        bool isKnown = false; ///< of the present record
    };

    const CString* tagText(QueryField field) const;
    const CString* noteText(QueryField field) const;
    std::u16string_view folderText();
    void setFolderText();
    std::u16string_view nameText();

    QueryFacts& m_facts;
    const QoFileDbItem* m_item = nullptr;
    std::array<Text, textFields> m_texts;
    CString m_name;          ///< of a file in a place, whose path is not spelled as it is shown
    std::u16string m_folder; ///< in collection form
    std::u16string m_folderText;
    std::u16string m_foldedFolder;
    std::u16string m_computed;
};
} // namespace qo::host
