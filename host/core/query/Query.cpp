#include "core/query/Query.h"

#include "core/collection/CollectionFiles.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace qo::host
{
namespace
{
/// Fits where the path does not.
class NotBelow final : public QueryCondition
{
public:
    explicit NotBelow(PathSelection path) : m_path(std::move(path)) {}
    bool fits(QueryRecord& record) override { return !m_path.holds(record.item().path); }
    int cost() const override { return 0; }

private:
    PathSelection m_path;
};

/// Music of one name.
class NameCondition final : public QueryCondition
{
public:
    NameCondition(CString QoFileDbItem::*member, const std::string& name)
        : m_member(member), m_name(fromUtf8(name))
    {
    }
    bool fits(QueryRecord& record) override
    {
        const QoFileDbItem& item = record.item();
        return compareNoCase((item.*m_member).view(), m_name.view()) == 0 &&
               CQoUtils::isMusicFilePath(item.path);
    }
    int cost() const override { return 0; }

private:
    CString QoFileDbItem::*m_member;
    CString m_name;
};

} // namespace

Query::Query(const QueryRequest& request)
{
    const std::pair<const std::optional<std::string>&, CString QoFileDbItem::*> names[] = {
        {request.artist, &QoFileDbItem::artist},
        {request.album, &QoFileDbItem::album},
        {request.genre, &QoFileDbItem::genre}};
    for (const auto& [name, member] : names)
    {
        if (name)
            m_common.push_back(std::make_unique<NameCondition>(member, *name));
    }
    if (request.isMarked)
    {
        QueryWord marked;
        marked.field = QueryField::marked;
        m_common.push_back(QueryCondition::of(marked, m_facts));
    }
    m_isPathsOnly = m_common.empty();
    addWords(request.words);
}

void Query::addWords(const std::vector<std::string>& arguments)
{
    std::deque<PathSelection> paths;
    const auto isPath = [&paths](const std::string& argument)
    {
        // A word that begins with a field is never a path, unless it says so with a slash.
        if (beginsWithField(argument) && !looksLikePath(argument))
            return false;
        auto path = PathSelection::of(argument);
        if (path)
            paths.push_back(std::move(*path));
        return path.has_value();
    };
    for (const QueryAlternative& words : QueryParser::parse(arguments, isPath))
    {
        Alternative& alternative = m_alternatives.emplace_back();
        for (const QueryWord& word : words)
        {
            if (!word.isWhole)
            {
                alternative.conditions.push_back(QueryCondition::of(word, m_facts));
                m_isPathsOnly = false;
                continue;
            }
            PathSelection path = std::move(paths.front());
            paths.pop_front();
            m_hasPatterns = m_hasPatterns || path.isPattern();
            if (word.isNot)
                alternative.conditions.push_back(std::make_unique<NotBelow>(std::move(path)));
            else
                alternative.paths.push_back(std::move(path));
        }
        std::ranges::stable_sort(
            alternative.conditions, {}, [](const auto& condition) { return condition->cost(); });
    }
}

bool Query::fits(Alternative& alternative)
{
    const auto holds = [this](const PathSelection& path)
    { return path.holds(m_record.item().path); };
    return (alternative.paths.empty() || std::ranges::any_of(alternative.paths, holds)) &&
           std::ranges::all_of(alternative.conditions,
                               [this](const auto& condition) { return condition->fits(m_record); });
}

bool Query::fits(const QoFileDbItem& item)
{
    m_record.look(item);
    return std::ranges::all_of(
               m_common, [this](const auto& condition) { return condition->fits(m_record); }) &&
           (m_alternatives.empty() ||
            std::ranges::any_of(m_alternatives,
                                [this](Alternative& alternative) { return fits(alternative); }));
}

QoFileDbItemArray Query::files()
{
    QoFileDbItemArray all;
    ownCollection().copyFiles(all);
    if (m_alternatives.empty() && m_common.empty())
        return all;
    QoFileDbItemArray found;
    for (const QoFileDbItemPtr& item : all)
    {
        if (fits(*item))
            found.Add(item);
    }
    return found;
}
} // namespace qo::host
