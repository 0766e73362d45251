#pragma once

#include "plugins/http/HttpClient.h"

#include <cstdint>
#include <functional>
#include <string>

namespace qo::host
{
/// How often a transfer that breaks off is taken up; tests take less.
struct HttpPatience
{
    int attempts = 5;          ///< in a row that bring next to nothing
    std::uint32_t pause = 500; ///< milliseconds before the second one; doubles with each
};

/// Content that comes whole into a local file. A transfer that breaks off is taken up where it was,
/// some times, and only while the server says that the content is still the same: where it has
/// given no strong entity tag it could be another one, and the transfer fails.
class HttpResume
{
public:
    /// Runs a request, to which it gives the address and what else it needs.
    using Send = std::function<HttpAnswer(HttpRequest request)>;

    /// The open file stands at position, up to which it has the content already, and may not become
    /// longer than largest. progress may be null.
    HttpResume(IFile& out,
               const CString& path,
               std::int64_t position,
               std::int64_t largest,
               IQoProgress* progress);

    /// True when the server has sent all.
    bool run(const Send& send, const HttpPatience& patience = {});
    std::int64_t position() const { return m_position; }
    /// The last one.
    const HttpAnswer& answer() const { return m_answer; }
    /// Why it failed, with the place. isOwn: found here, and not what the answer says.
    CString cause() const { return isOwn() ? m_failure : m_answer.failure; }
    bool isOwn() const { return !m_failure.IsEmpty(); }

private:
    HttpRequest nextRequest();
    bool take(const HttpHead& head, std::string_view bytes);
    bool isOver() const;
    bool isStopped() const { return m_progress && m_progress->isCanceled(); }

    IFile& m_out;
    const CString m_path;
    const std::int64_t m_start;
    const std::int64_t m_largest;
    IQoProgress* const m_progress;
    std::int64_t m_position;
    bool m_isFirstPart = true;           ///< of the answer that comes
    const char16_t* m_trouble = nullptr; ///< with the content
    std::string m_tag;                   ///< of the content that the bytes are of
    HttpAnswer m_answer;
    CString m_failure;
};
} // namespace qo::host
