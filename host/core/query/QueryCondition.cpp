#include "core/query/QueryCondition.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/FileFields.h"
#include "core/query/FoldedText.h"
#include "core/query/QueryRange.h"

#include <unicode/parseerr.h>
#include <unicode/regex.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace qo::host
{
namespace
{
/// Where a word without a field is sought.
constexpr QueryField textFields[] = {QueryField::title,
                                     QueryField::artist,
                                     QueryField::album,
                                     QueryField::genre,
                                     QueryField::year,
                                     QueryField::path};

std::vector<QueryField> fieldsOf(std::optional<QueryField> field)
{
    if (field)
        return {*field};
    return {std::begin(textFields), std::end(textFields)};
}

enum Cost : int
{
    ofNumbers,
    ofText,
    ofManyTexts,
    ofRegex,
    ofTree, ///< asks the collection's trees or the host's store
    ofDisk
};

int costOf(QueryField field)
{
    switch (field)
    {
    case QueryField::missing:
        return ofDisk;
    case QueryField::kind:
    case QueryField::unplaced:
    case QueryField::edited:
    case QueryField::marked:
    case QueryField::albumArtist:
    case QueryField::disc:
    case QueryField::comment:
    case QueryField::addedBy:
    case QueryField::rating:
    case QueryField::plays:
    case QueryField::played:
        return ofTree;
    default:
        return infoOf(field).kind == QueryKind::text ? ofText : ofNumbers;
    }
}

class NotCondition final : public QueryCondition
{
public:
    explicit NotCondition(std::unique_ptr<QueryCondition> condition)
        : m_condition(std::move(condition))
    {
    }
    bool fits(QueryRecord& record) override { return !m_condition->fits(record); }
    int cost() const override { return m_condition->cost(); }

private:
    std::unique_ptr<QueryCondition> m_condition;
};

/// One field, or one of all texts, holds a text; without a text: has none.
class TextCondition final : public QueryCondition
{
public:
    explicit TextCondition(const QueryWord& word)
        : m_fields(fieldsOf(word.field)), m_text(folded(fromUtf8(word.value).view()))
    {
        // An accent alone is no text either, and must not mean "without an artist".
        if (m_text.empty() && (!word.field || !word.value.empty()))
            throw HostError(ExitCode::usage,
                            "in \"" + word.typed + "\", there is no text to look for");
    }
    bool fits(QueryRecord& record) override
    {
        return std::ranges::any_of(m_fields,
                                   [&](QueryField field)
                                   {
                                       const auto text = record.foldedText(field);
                                       return m_text.empty() ? text.empty()
                                                             : text.find(m_text) != text.npos;
                                   });
    }
    int cost() const override { return m_fields.size() > 1 ? ofManyTexts : costOf(m_fields[0]); }

private:
    std::vector<QueryField> m_fields;
    std::u16string m_text;
};

/// A regular expression, which is sought in texts as they are, without regard to case. ICU ends a
/// search that takes too long, as hostile expressions can bring about.
class RegexCondition final : public QueryCondition
{
public:
    explicit RegexCondition(const QueryWord& word)
        : m_typed(word.typed), m_fields(fieldsOf(word.field))
    {
        if (word.value.empty())
            throw HostError(ExitCode::usage,
                            "in \"" + word.typed + "\", the regular expression is empty");
        UParseError place;
        UErrorCode error = U_ZERO_ERROR;
        m_pattern.reset(icu::RegexPattern::compile(
            icu::UnicodeString::fromUTF8(word.value), UREGEX_CASE_INSENSITIVE, place, error));
        if (m_pattern && U_SUCCESS(error))
            m_matcher.reset(m_pattern->matcher(error));
        if (!m_matcher || U_FAILURE(error))
            throw HostError(ExitCode::usage,
                            "in \"" + word.typed + "\", the regular expression cannot be read at " +
                                "character " + std::to_string(std::max(place.offset, 0) + 1));
        constexpr int steps = 500; // of some ten thousand operations each
        constexpr int stackBytes = 1 << 20;
        m_matcher->setTimeLimit(steps, error);
        m_matcher->setStackLimit(stackBytes, error);
    }

    bool fits(QueryRecord& record) override
    {
        return std::ranges::any_of(m_fields,
                                   [&](QueryField field) { return isFoundIn(record, field); });
    }
    int cost() const override { return ofRegex; }

private:
    bool isFoundIn(QueryRecord& record, QueryField field)
    {
        const std::u16string_view text = record.text(field);
        const icu::UnicodeString alias(false, text.data(), static_cast<int>(text.size()));
        UErrorCode error = U_ZERO_ERROR;
        m_matcher->reset(alias);
        const bool isFound = m_matcher->find(error);
        if (U_FAILURE(error))
            throw HostError(ExitCode::failed,
                            "the regular expression of \"" + m_typed + "\" takes too long on " +
                                shownPath(record.item().path));
        return isFound;
    }

    std::string m_typed;
    std::vector<QueryField> m_fields;
    std::unique_ptr<icu::RegexPattern> m_pattern;
    std::unique_ptr<icu::RegexMatcher> m_matcher;
};

class RangeCondition final : public QueryCondition
{
public:
    RangeCondition(QueryField field, const QueryRange& range) : m_field(field), m_range(range) {}
    bool fits(QueryRecord& record) override
    {
        const auto number = record.number(m_field);
        return number && m_range.holds(*number);
    }
    int cost() const override { return costOf(m_field); }

private:
    QueryField m_field;
    QueryRange m_range;
};

/// A field that ranges ask for has no value.
class UnknownCondition final : public QueryCondition
{
public:
    explicit UnknownCondition(QueryField field) : m_field(field) {}
    bool fits(QueryRecord& record) override { return !record.number(m_field); }
    int cost() const override { return costOf(m_field); }

private:
    QueryField m_field;
};

class FlagCondition final : public QueryCondition
{
public:
    explicit FlagCondition(QueryField flag) : m_flag(flag) {}
    bool fits(QueryRecord& record) override { return record.is(m_flag); }
    int cost() const override { return costOf(m_flag); }

private:
    QueryField m_flag;
};

std::unique_ptr<QueryCondition> flagCondition(const QueryWord& word)
{
    auto condition = std::make_unique<FlagCondition>(*word.field);
    if (word.value == "no")
        return std::make_unique<NotCondition>(std::move(condition));
    if (!word.value.empty() && word.value != "yes")
        throw HostError(ExitCode::usage,
                        "in \"" + word.typed + "\", there is nothing to compare; write " +
                            infoOf(*word.field).name + ": or ^" + infoOf(*word.field).name + ":");
    return condition;
}

void checkKind(const QueryWord& word)
{
    const std::u16string value = folded(fromUtf8(word.value).view());
    if (std::ranges::none_of(
            fileTypes, [&](const char* kind) { return fromUtf8(kind).view().starts_with(value); }))
        throw HostError(ExitCode::usage,
                        "in \"" + word.typed +
                            "\", there is no such kind; there are music, video, picture, text and "
                            "other");
}

/// Whether the value of a number may be a text, as "A3" of a record's side.
bool isPlainText(const QueryWord& word)
{
    return (*word.field == QueryField::track || *word.field == QueryField::disc) &&
           word.value.find_first_of("0123456789.") != 0;
}

std::unique_ptr<QueryCondition> plainCondition(const QueryWord& word, QueryFacts& facts)
{
    if (word.isRegex)
    {
        if (word.field && infoOf(*word.field).kind != QueryKind::text &&
            infoOf(*word.field).kind != QueryKind::number)
            throw HostError(ExitCode::usage,
                            "in \"" + word.typed + "\", the field " + infoOf(*word.field).name +
                                " has no text for a regular expression");
        return std::make_unique<RegexCondition>(word);
    }
    if (!word.field)
        return std::make_unique<TextCondition>(word);
    const QueryKind kind = infoOf(*word.field).kind;
    if (kind == QueryKind::flag)
        return flagCondition(word);
    if (*word.field == QueryField::kind)
        checkKind(word);
    if (kind == QueryKind::text || (!word.value.empty() && isPlainText(word)))
        return std::make_unique<TextCondition>(word);
    if (word.value.empty())
        return std::make_unique<UnknownCondition>(*word.field);
    return std::make_unique<RangeCondition>(*word.field,
                                            parseRange(kind, word.value, word.typed, facts.now()));
}
} // namespace

std::unique_ptr<QueryCondition> QueryCondition::of(const QueryWord& word, QueryFacts& facts)
{
    if (!isUtf8(word.typed))
        throw HostError(ExitCode::usage, "the query is not UTF-8");
    auto condition = plainCondition(word, facts);
    if (word.isNot)
        return std::make_unique<NotCondition>(std::move(condition));
    return condition;
}
} // namespace qo::host
