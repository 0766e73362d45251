#include "core/query/RecordOrder.h"

#include "core/base/ClosestName.h"
#include "core/base/HostError.h"
#include "core/query/FoldedText.h"

namespace qo::host
{
TypedOrder TypedOrder::parse(const std::string& typed, const std::vector<std::string>& names)
{
    TypedOrder order;
    for (std::size_t start = 0; start < typed.size();)
    {
        const std::size_t comma = std::min(typed.find(',', start), typed.size());
        std::string name = typed.substr(start, comma - start);
        start = comma + 1;
        const bool isDescending = name.ends_with('-');
        if (isDescending || name.ends_with('+'))
            name.pop_back();
        const auto found = std::ranges::find(names, name);
        if (found == names.end())
            throw HostError(ExitCode::usage,
                            "\"" + name + "\" is nothing to sort by" +
                                suggestionOrList(name, names));
        order.keys.push_back({static_cast<std::size_t>(found - names.begin()), isDescending});
    }
    return order;
}

bool TypedOrder::comesBefore(const std::vector<Value>& a, const std::vector<Value>& b) const
{
    for (std::size_t i = 0; i < keys.size(); ++i)
    {
        const bool hasA = a[i].index() != 0;
        const bool hasB = b[i].index() != 0;
        if (hasA != hasB)
            return hasA;
        if (a[i] != b[i])
            return (a[i] < b[i]) != keys[i].isDescending;
    }
    return false;
}

TypedOrder::Value textValue(const CString& text)
{
    if (text.IsEmpty())
        return {};
    return folded(text.view());
}

RecordOrder::RecordOrder(const std::string& typed) : m_order(TypedOrder::parse(typed, fieldNames()))
{
}

std::vector<std::string> RecordOrder::fieldNames()
{
    std::vector<std::string> names;
    for (const QueryFieldInfo& field : queryFields())
    {
        if (field.kind != QueryKind::flag)
            names.emplace_back(field.name);
    }
    return names;
}

std::vector<TypedOrder::Value> RecordOrder::valuesOf(const QoFileDbItem& item)
{
    m_record.look(item);
    std::vector<TypedOrder::Value> values;
    for (const TypedOrder::Key& key : m_order.keys)
    {
        // The fields that can be sorted by are the first ones.
        const auto field = static_cast<QueryField>(key.index);
        TypedOrder::Value value;
        if (infoOf(field).kind == QueryKind::text)
        {
            if (const auto text = m_record.foldedText(field); !text.empty())
                value = std::u16string(text);
        }
        else if (const auto number = m_record.number(field))
            value = *number;
        values.push_back(std::move(value));
    }
    return values;
}

void RecordOrder::sort(QoFileDbItemArray& files)
{
    std::vector<QoFileDbItemPtr> rows(files.begin(), files.end());
    sortRows(rows, m_order, [this](const QoFileDbItemPtr& item) { return valuesOf(*item); });
    files.RemoveAll();
    for (const QoFileDbItemPtr& item : rows)
        files.Add(item);
}
} // namespace qo::host
