#pragma once

#include "core/query/CollectionPath.h"
#include "core/query/QueryCondition.h"

#include <QoKernel/Collection.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qo::host
{
/// What somebody asks for; a file must fit all of it.
struct QueryRequest
{
    /// Words as docs/queries.md describes them, paths and shell patterns.
    std::vector<std::string> words;
    bool isMarked = false; ///< only files with a check mark
    // Only music of exactly this name, apart from case; "" for music without one.
    std::optional<std::string> artist = {};
    std::optional<std::string> album = {};
    std::optional<std::string> genre = {};

    bool hasNames() const { return artist || album || genre; }
    bool isEmpty() const { return words.empty() && !isMarked && !hasNames(); }
};

/// Which files of the loaded collection somebody means. Every word of an alternative must fit, and
/// one of its paths. On the kernel's thread. Not to be used after a change of the collection.
class Query
{
public:
    /// Throws HostError for what cannot be read.
    explicit Query(const QueryRequest& request);

    /// Whether it asks for nothing but paths and patterns, or for nothing at all.
    bool isPathsOnly() const { return m_isPathsOnly; }
    /// Whether it may well find nothing: it asks for folders alone, which may be empty.
    bool isFoldersOnly() const { return m_isPathsOnly && !m_hasPatterns; }
    /// Throws HostError for a regular expression that takes too long.
    bool fits(const QoFileDbItem& item);
    /// In the collection's order.
    QoFileDbItemArray files();

private:
    struct Alternative
    {
        std::vector<PathSelection> paths;
        std::vector<std::unique_ptr<QueryCondition>> conditions;
    };

    void addWords(const std::vector<std::string>& arguments);
    bool fits(Alternative& alternative);

    QueryFacts m_facts;
    QueryRecord m_record{m_facts};
    std::vector<Alternative> m_alternatives;
    std::vector<std::unique_ptr<QueryCondition>> m_common; ///< of all alternatives
    bool m_isPathsOnly = true;
    bool m_hasPatterns = false;
};
} // namespace qo::host
