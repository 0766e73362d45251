#include "core/session/UsageFile.h"

#include "core/base/HostFiles.h"
#include "core/base/Json.h"

namespace qo::host
{
namespace
{
constexpr std::size_t largestUsageFile = 1 << 20;
} // namespace

struct UsageFile::Content
{
    Json values = Json::object();
};

UsageFile::UsageFile(CString path) : m_path(std::move(path)), m_content(std::make_unique<Content>())
{
    std::string text;
    if (readFile(m_path, largestUsageFile, text) == 0)
    {
        Json stored = Json::parse(text, nullptr, false);
        if (stored.is_object())
            m_content->values = std::move(stored);
    }
    CQoStatistics::setStatisticsReporter(this);
}

UsageFile::~UsageFile()
{
    CQoStatistics::setStatisticsReporter(nullptr);
    if (!m_hasChanged)
        return;
    const std::string text =
        m_content->values.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    if (const int error = fileSystem().replaceFile(m_path, text.data(), text.size()))
        log(level::error, u"UsageFile : %s cannot be written: %s", m_path, errorText(error));
}

void UsageFile::reportText(const char16_t* key, const char16_t* value)
{
    m_content->values[toUtf8(CString(key))] = toUtf8(CString(value));
    m_hasChanged = true;
}

void UsageFile::reportNumber(const char16_t* key, int value)
{
    m_content->values[toUtf8(CString(key))] = value;
    m_hasChanged = true;
}

void UsageFile::increment(const char16_t* key, int amount)
{
    Json& counter = m_content->values[toUtf8(CString(key))];
    counter = (counter.is_number_integer() ? counter.get<std::int64_t>() : 0) + amount;
    m_hasChanged = true;
}
} // namespace qo::host
