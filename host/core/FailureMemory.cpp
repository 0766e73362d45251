#include "core/FailureMemory.h"

#include "core/DatabaseError.h"

#include <algorithm>

namespace qo::host
{
namespace
{
struct FailureLine
{
    int level;
    const char16_t* start;
};
/// The lines that end an operation.
constexpr FailureLine failureLines[] = {{qo::level::error, u"CQoCollection::load : "},
                                        {qo::level::error, u"CQoCollection::saveToDb : "},
                                        {qo::level::detail, u"CMusicTagEx::readTag: "},
                                        {qo::level::detail, u"CMusicTagEx::writeTagKVTagLib : "}};
} // namespace

FailureMemory::FailureMemory()
{
    setWithDetails(false);
    setQoKernelLogger(this);
}

FailureMemory::~FailureMemory()
{
    setQoKernelLogger(nullptr);
}

void FailureMemory::setWithDetails(bool withDetails)
{
    const int least = withDetails ? qo::level::detail : qo::level::error;
    setMaxLevel(std::max(builtInLogger().getMaxLevel(), least));
}

std::string FailureMemory::lastFailure() const
{
    const std::lock_guard lock(m_mutex);
    return toUtf8(m_lastFailure);
}

void FailureMemory::forget()
{
    const std::lock_guard lock(m_mutex);
    m_lastFailure.Empty();
}

void FailureMemory::writeText(int level, const CString& text)
{
    if (builtInLogger().takes(level))
        builtInLogger().writeText(level, text);
    for (const FailureLine& line : failureLines)
    {
        const CString prefix(line.start);
        if (level != line.level || !text.view().starts_with(prefix.view()))
            continue;
        const std::lock_guard lock(m_mutex);
        // Codes and further lines are for who mends the program.
        m_lastFailure = fromUtf8(databaseWords(text.Mid(prefix.GetLength())));
        m_lastFailure.Trim();
    }
}
} // namespace qo::host
