#include "plugins/http/HttpDownload.h"

#include "plugins/base/PluginFailure.h"
#include "plugins/http/HttpResume.h"

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
constexpr long partialContent = 206;
} // namespace

bool HttpDownload::SetRange(std::int64_t first, std::int64_t end)
{
    if (first < 0 || end < first)
        return false;
    m_first = first;
    m_end = end;
    return true;
}

bool HttpDownload::GetSize(std::int64_t& size)
{
    size = m_size;
    return true;
}

bool HttpDownload::Run(IQoProgress* progress)
{
    int error = 0;
    const std::unique_ptr<IFile> out = fileSystem().open(m_target, OpenMode::createAlways, error);
    if (!out)
    {
        setPluginFailure(failureAt(m_target, error));
        return false;
    }
    if (m_end == m_first)
        return true;
    const CString cause = m_end < 0 ? fetchWhole(*out, *progress) : fetchRange(*out, *progress);
    if (!cause.IsEmpty() && !progress->isCanceled())
        setPluginFailure(cause);
    return cause.IsEmpty();
}

CString HttpDownload::fetchWhole(IFile& out, IQoProgress& progress)
{
    HttpResume content(out, m_target, 0, m_size > 0 ? m_size : INT64_MAX, &progress);
    if (!content.run([this](HttpRequest request) { return send(std::move(request)); }))
        return content.cause();
    return content.position() < m_size
               ? content.answer().place + u": the file ended before it was whole"
               : CString();
}

CString HttpDownload::fetchRange(IFile& out, IQoProgress& progress)
{
    const std::int64_t length = m_end - m_first;
    std::int64_t skip = 0;
    std::int64_t done = 0;
    bool isFirst = true;
    int writeError = 0;
    HttpRequest request;
    request.headers = {"Range: bytes=" + std::to_string(m_first) + "-" + std::to_string(m_end - 1)};
    request.isCanceled = [&] { return progress.isCanceled(); };
    request.sink = [&](const HttpHead& head, std::string_view bytes)
    {
        if (std::exchange(isFirst, false) && head.status != partialContent)
            skip = m_first;
        const auto skipped = std::min<std::int64_t>(skip, static_cast<std::int64_t>(bytes.size()));
        skip -= skipped;
        bytes.remove_prefix(static_cast<std::size_t>(skipped));
        bytes = bytes.substr(0, static_cast<std::size_t>(length - done));
        if (!bytes.empty() && !out.write(bytes.data(), bytes.size()))
        {
            writeError = out.error();
            return false;
        }
        done += static_cast<std::int64_t>(bytes.size());
        progress.setPosition(static_cast<std::uintptr_t>(done));
        return done < length;
    };
    const HttpAnswer answer = send(std::move(request));
    if (writeError != 0)
        return failureAt(m_target, writeError);
    if (!answer.isDone())
        return answer.failure;
    const bool isShort = done < length && !(m_size > 0 && m_first + done >= m_size);
    return isShort ? answer.place + u": the file ended before it was whole" : CString();
}
} // namespace qo::host
