#include "plugins/http/HttpResume.h"

#include "plugins/base/PluginFailure.h"

#include <utility>

namespace qo::host
{
namespace
{
constexpr long statusOfPart = 206;
constexpr long firstClientFailure = 400;
constexpr long firstServerFailure = 500;
/// A server that gives a byte with each answer is not waited for any longer than a silent one.
constexpr std::int64_t enoughBytes = std::int64_t{64} * 1024;
constexpr const char16_t* hasChanged = u": the file changed while it was fetched";
} // namespace

HttpResume::HttpResume(IFile& out,
                       const CString& path,
                       std::int64_t position,
                       std::int64_t largest,
                       IQoProgress* progress)
    : m_out(out)
    , m_path(path)
    , m_start(position)
    , m_largest(largest)
    , m_progress(progress)
    , m_position(position)
{
}

bool HttpResume::run(const Send& send, const HttpPatience& patience)
{
    std::int64_t taken = m_position; // when the attempts were last counted anew
    int attempts = 0;
    std::uint32_t pause = patience.pause;
    while (true)
    {
        m_isFirstPart = true;
        const bool isResumed = m_position > 0;
        m_answer = send(nextRequest());
        if (isResumed && m_isFirstPart && m_answer.isDone() && m_answer.status != statusOfPart)
            m_trouble = hasChanged;
        if (m_trouble)
            m_failure = m_answer.place + m_trouble;
        if (m_answer.isDone() && m_failure.IsEmpty())
            return true;
        if (m_position >= taken + enoughBytes)
        {
            taken = m_position;
            attempts = 0;
            pause = patience.pause;
        }
        if (isOver() || ++attempts == patience.attempts ||
            !restUnless(pause, [this] { return isStopped(); }))
            return false;
        pause *= 2;
    }
}

/// A server that cannot be reached to begin with is not waited for.
bool HttpResume::isOver() const
{
    const bool isRefused =
        m_answer.status >= firstClientFailure && m_answer.status < firstServerFailure;
    const bool canGoOn = m_position > m_start && !m_tag.empty() && !m_tag.starts_with("W/");
    return !canGoOn || isRefused || m_answer.isOtherServer || m_answer.isEnded ||
           !m_failure.IsEmpty();
}

HttpRequest HttpResume::nextRequest()
{
    HttpRequest request;
    if (m_position > 0)
        request.headers.push_back("Range: bytes=" + std::to_string(m_position) + "-");
    if (m_position > 0 && !m_tag.empty())
        request.headers.push_back("If-Range: " + m_tag);
    request.isCanceled = [this] { return isStopped(); };
    request.sink = [this](const HttpHead& head, std::string_view bytes)
    { return take(head, bytes); };
    return request;
}

bool HttpResume::take(const HttpHead& head, std::string_view bytes)
{
    if (std::exchange(m_isFirstPart, false))
    {
        const bool isOther = !m_tag.empty() && !head.tag.empty() && head.tag != m_tag;
        if (m_position > 0 && (head.status != statusOfPart || isOther))
            m_trouble = hasChanged;
        m_tag = head.tag;
    }
    const auto count = static_cast<std::int64_t>(bytes.size());
    if (!m_trouble && count > m_largest - m_position)
        m_trouble = u": more bytes come than the server has said, or than anyone needs";
    if (m_trouble)
        return false;
    if (!m_out.write(bytes.data(), bytes.size()))
    {
        m_failure = failureAt(m_path, m_out.error());
        return false;
    }
    m_position += count;
    if (m_progress)
        m_progress->setPosition(static_cast<std::uintptr_t>(m_position));
    return true;
}
} // namespace qo::host
