#include "plugins/webdav/DavTransfer.h"

#include "plugins/base/PluginFailure.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
/// A server that is silent shall not hold up a user who has cancelled.
constexpr std::uint32_t longestCleanUp = 3000; // milliseconds
constexpr std::uint32_t pauseOfCleanUp = 150;  // likewise
constexpr long partialContent = 206;

/// Servers save what they have of an upload that was cut short a moment after its end: then a part
/// is removed until it stays away. Where that fails, it has a name that no listing shows.
void removePart(DavClient& client, const DavAddress& part, bool wasCutShort)
{
    const std::uint32_t start = systemClock().tickCount();
    const auto isOver = [start] { return systemClock().tickCount() - start > longestCleanUp; };
    bool isRemoved = false;
    do
    {
        DavRequest remove = {"DELETE", part};
        remove.isCanceled = isOver;
        const bool isDone = client.run(remove).isDone();
        if (isRemoved && !isDone)
            return;
        isRemoved = isRemoved || isDone;
        if (wasCutShort)
            systemClock().sleep(pauseOfCleanUp);
    } while (wasCutShort && !isOver());
}
} // namespace

DavDownload::DavDownload(std::shared_ptr<DavClient> client,
                         const DavEntry& source,
                         const CString& target)
    : m_client(std::move(client))
    , m_source(source.address())
    , m_target(target)
    , m_size(source.GetSize())
{
}

bool DavDownload::SetRange(std::int64_t first, std::int64_t end)
{
    if (first < 0 || end < first)
        return false;
    m_first = first;
    m_end = end;
    return true;
}

bool DavDownload::GetSize(std::int64_t& size)
{
    size = m_size;
    return true;
}

bool DavDownload::Run(IQoProgress* progress)
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
    const CString cause = fetch(*out, *progress);
    if (!cause.IsEmpty() && !progress->isCanceled())
        setPluginFailure(cause);
    return cause.IsEmpty();
}

CString DavDownload::fetch(IFile& out, IQoProgress& progress)
{
    std::int64_t skip = 0;
    std::int64_t done = 0;
    bool isFirst = true;
    int writeError = 0;
    DavRequest request = {"GET", m_source};
    if (m_end >= 0)
        request.headers = {"Range: bytes=" + std::to_string(m_first) + "-" +
                           std::to_string(m_end - 1)};
    request.isCanceled = [&] { return progress.isCanceled(); };
    request.sink = [&](long status, std::string_view bytes)
    {
        // A server that knows no ranges sends the file from its start.
        if (std::exchange(isFirst, false) && status != partialContent)
            skip = m_first;
        const auto skipped = std::min<std::int64_t>(skip, static_cast<std::int64_t>(bytes.size()));
        skip -= skipped;
        bytes.remove_prefix(static_cast<std::size_t>(skipped));
        if (m_end >= 0)
            bytes = bytes.substr(0, static_cast<std::size_t>(m_end - m_first - done));
        if (!bytes.empty() && !out.write(bytes.data(), bytes.size()))
        {
            writeError = out.error();
            return false;
        }
        done += static_cast<std::int64_t>(bytes.size());
        progress.setPosition(static_cast<std::uintptr_t>(done));
        return m_end < 0 || done < m_end - m_first;
    };
    const DavAnswer answer = m_client->run(request);
    if (writeError != 0)
        return failureAt(m_target, writeError);
    if (!answer.isDone())
        return answer.failure;
    const bool isShort = m_end < 0
                             ? m_size > 0 && done < m_size
                             : done < m_end - m_first && !(m_size > 0 && m_first + done >= m_size);
    return isShort ? fromUtf8(m_source.url() + ": the file ended before it was whole") : CString();
}

DavOutcome upload(DavClient& client,
                  const CString& source,
                  const DavAddress& folder,
                  const CString& name,
                  bool replace,
                  DavOperation::Link& link)
{
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(source, OpenMode::read, error);
    if (!file)
        return {failureAt(source, error), {}};
    const DavAddress part = folder.child(toUtf8(partName()), false);
    const DavAddress target = folder.child(toUtf8(name), false);
    DavRequest put = {"PUT", part};
    put.file = file.get();
    put.headers = {"Content-Type: application/octet-stream"};
    put.isCanceled = [&link] { return link.isCanceled.load(); };
    put.sent = [&link](std::int64_t sent) { link.done = sent; };
    DavAnswer answer = client.run(put);
    if (answer.isDone())
    {
        DavRequest move = {"MOVE", part};
        move.headers = {"Destination: " + target.url(),
                        std::string("Overwrite: ") + (replace ? "T" : "F")};
        move.isCanceled = put.isCanceled;
        answer = client.run(move);
    }
    if (answer.isDone())
    {
        DavOutcome outcome;
        outcome.results.Add(boost::make_shared<DavEntry>(target, name, false, file->sizeAtOpen()));
        return outcome;
    }
    removePart(client, part, answer.status < 300);
    return {answer.failure, {}};
}
} // namespace qo::host
