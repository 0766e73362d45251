#pragma once

#include "core/query/QueryRecord.h"
#include "core/query/QueryWords.h"

#include <memory>

namespace qo::host
{
/// What one word of a query asks of a record.
class QueryCondition
{
public:
    virtual ~QueryCondition() = default;

    virtual bool fits(QueryRecord& record) = 0;
    /// The dearer a condition is, the later it is asked.
    virtual int cost() const = 0;

    /// Throws HostError for a value that the field cannot have.
    static std::unique_ptr<QueryCondition> of(const QueryWord& word, QueryFacts& facts);
};
} // namespace qo::host
