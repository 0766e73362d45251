#pragma once

#include "core/query/QueryRecord.h"

#include <algorithm>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace qo::host
{
/// An order that somebody typed: names with commas between them, each with "+" or "-" at its end if
/// one likes ("year-,album").
struct TypedOrder
{
    struct Key
    {
        std::size_t index; ///< of the name in the list
        bool isDescending;
    };
    std::vector<Key> keys;

    /// Throws HostError, with the list, for a name that is not in it.
    static TypedOrder parse(const std::string& typed, const std::vector<std::string>& names);

    /// By which rows are compared: a folded text or a number. No value comes last either way.
    using Value = std::variant<std::monostate, std::u16string, std::int64_t>;
    /// Whether a row with the values of `a`, one for each key, comes before one with those of `b`.
    bool comesBefore(const std::vector<Value>& a, const std::vector<Value>& b) const;
};

/// The order of files by their fields. On the kernel's thread.
class RecordOrder
{
public:
    /// An empty text leaves files as they are.
    explicit RecordOrder(const std::string& typed);
    /// What files can be sorted by.
    static std::vector<std::string> fieldNames();

    /// Equal files keep their order.
    void sort(QoFileDbItemArray& files);
    /// The values by which this file is compared.
    std::vector<TypedOrder::Value> valuesOf(const QoFileDbItem& item);
    const TypedOrder& order() const { return m_order; }

private:
    TypedOrder m_order;
    QueryFacts m_facts;
    QueryRecord m_record{m_facts};
};

/// A text as rows are compared by it; no value if it is empty.
TypedOrder::Value textValue(const CString& text);

/// Sorts rows of any kind by their values; equal rows keep their order.
template <class Row, class ValuesOf>
void sortRows(std::vector<Row>& rows, const TypedOrder& order, ValuesOf valuesOf)
{
    if (order.keys.empty())
        return;
    using Keyed = std::pair<std::vector<TypedOrder::Value>, Row>;
    std::vector<Keyed> keyed;
    keyed.reserve(rows.size());
    for (Row& row : rows)
    {
        auto values = valuesOf(row);
        keyed.emplace_back(std::move(values), std::move(row));
    }
    std::ranges::stable_sort(keyed,
                             [&order](const Keyed& a, const Keyed& b)
                             { return order.comesBefore(a.first, b.first); });
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = std::move(keyed[i].second);
}
} // namespace qo::host
