#include "core/runs/RecordValues.h"

#include <QoKernel/Kernel.h>

#include <boost/make_shared.hpp>

#include <charconv>

namespace qo::host::recordvalues
{
namespace
{
template <class Number>
void read(const std::map<std::string, std::string>& values, const char* name, Number& number)
{
    const auto found = values.find(name);
    if (found == values.end())
        return;
    Number value{};
    const std::string& text = found->second;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size())
        number = value;
}

CString textOf(const std::map<std::string, std::string>& values, const char* name)
{
    const auto found = values.find(name);
    return found == values.end() ? CString() : fromUtf8(found->second);
}
} // namespace

std::map<std::string, std::string> of(const QoFileDbItem& record)
{
    std::map<std::string, std::string> values = {
        {"source", std::to_string(static_cast<int>(record.source))},
        {"flags", std::to_string(record.flags)},
        {"session", std::to_string(record.session)},
        {"params", toUtf8(record.params)},
        {"reviewed", record.reviewed ? "1" : "0"},
        {"imported", record.imported ? "1" : "0"},
        {"clip", toUtf8(record.clipUid)}};
    std::erase_if(values,
                  [](const auto& value) { return value.second.empty() || value.second == "0"; });
    return values;
}

QoFileDbItemPtr recordOf(const CString& path,
                         const std::string& id,
                         const std::map<std::string, std::string>& values)
{
    auto record = boost::make_shared<QoFileDbItem>();
    record->path = path;
    record->velmoraId = fromUtf8(id);
    int source = 0;
    int reviewed = 0;
    int imported = 0;
    record->flags = 0;
    read(values, "source", source);
    read(values, "flags", record->flags);
    read(values, "session", record->session);
    read(values, "reviewed", reviewed);
    read(values, "imported", imported);
    record->source = static_cast<eItemSource>(source);
    record->params = textOf(values, "params");
    record->clipUid = textOf(values, "clip");
    record->reviewed = reviewed != 0;
    record->imported = imported != 0;
    return record;
}
} // namespace qo::host::recordvalues
