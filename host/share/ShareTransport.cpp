#include "share/ShareTransport.h"

#include "plugins/base/PluginFailure.h"
#include "share/Offers.h"

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
constexpr long partialContent = 206;
constexpr long forbidden = 403;
constexpr long firstFailure = 400;
constexpr long firstServerFailure = 500;
/// The reader of extracts takes no longer one.
constexpr std::int64_t largestExtract = std::int64_t{512} * 1024 * 1024;
/// A server that gives a byte with each answer is not waited for any longer than a silent one.
constexpr std::int64_t enoughBytes = std::int64_t{64} * 1024;
constexpr std::uint32_t slice = 100; // milliseconds between two questions whether to stop

/// False when the user has stopped meanwhile.
bool wait(std::uint32_t milliseconds, IQoProgress* progress)
{
    for (std::uint32_t done = 0; done < milliseconds; done += slice)
    {
        if (progress && progress->isCanceled())
            return false;
        systemClock().sleep(slice);
    }
    return true;
}

/// What only the friend can mend, so that asking again is of no use.
bool isFinal(const HttpAnswer& answer)
{
    return answer.isOtherServer || answer.isEnded ||
           (answer.status >= firstFailure && answer.status < firstServerFailure);
}

CString wordsOf(const HttpAnswer& answer)
{
    switch (answer.status)
    {
    case forbidden:
        return answer.place + u": the friend's server knows no such share: he may have revoked it";
    case 404:
        return answer.place + u": the friend no longer offers this file; a new scan shows what "
                              u"he offers";
    case 410:
        return answer.place + u": the file has changed there; a new scan shows what it is now";
    case 500:
        return answer.place + u": the friend's server cannot read the file";
    default:
        return answer.failure;
    }
}
} // namespace

/// A transfer with what has come of it.
struct ShareTransport::Fetch
{
    const CString& localPath;
    std::int64_t position; ///< so many bytes are in the local file
    IQoProgress* progress;
    std::int64_t largest; ///< the local file may not become longer
    std::unique_ptr<IFile> out = {};
    std::string tag = {};  ///< of the content that the bytes are of
    CString failure = {};  ///< one that no further request can mend
    std::string mark = {}; ///< of the file that is meant; "" for none
};

ShareTransport::Source* ShareTransport::find(const CString& device)
{
    const std::lock_guard guard(m_lock);
    if (const auto known = m_sources.find(device); known != m_sources.end())
        return &known->second;
    for (const Share& share : Shares().all())
    {
        if (share.isOwn || share.root().getDevice() != device)
            continue;
        Source& source = m_sources[device];
        source.name = share.peer;
        source.shareId = toUtf8(share.shareId);
        if (!share.address.host.empty())
        {
            source.client = std::make_unique<HttpClient>(
                HttpAddress{"https://" + share.address.place(), "/1/"}, m_limits);
            source.client->trustKey(share.address.keyDigest);
        }
        return &source;
    }
    return nullptr;
}

CString ShareTransport::getDeviceName(const CString& device)
{
    const Source* const source = find(device);
    return source ? source->name : CString();
}

int ShareTransport::getExtract(const CString& device,
                               const CString& localPath,
                               IQoProgress* progress)
{
    Fetch work{localPath, 0, progress, largestExtract};
    return fetch(device, "extract", work) ? 1 : 0;
}

int ShareTransport::getFile(const ShareFileRequest& request)
{
    Fetch work{request.localPath, request.offset, request.progress, INT64_MAX};
    if (request.size >= 0)
        work.mark = fileMark(CQoCollPath(request.path).getComponents(), request.size);
    const bool isRow =
        !request.fileId.IsEmpty() &&
        std::ranges::all_of(request.fileId.view(), [](char16_t c) { return c >= '0' && c <= '9'; });
    // The id comes from the friend's extract, and may be anything.
    return isRow && fetch(request.device, "files/" + toUtf8(request.fileId), work) ? 1 : 0;
}

bool ShareTransport::fetch(const CString& device, const std::string& path, Fetch& fetch)
{
    Source* const found = find(device);
    if (!found || !found->client)
    {
        setPluginFailure(u"the invitation of this share does not say where it is served");
        return false;
    }
    Source& source = *found;
    if (!source.refusal.IsEmpty())
    {
        setPluginFailure(source.refusal);
        return false;
    }
    int error = 0;
    fetch.out = fileSystem().open(
        fetch.localPath, fetch.position > 0 ? OpenMode::update : OpenMode::createAlways, error);
    if (!fetch.out || !fetch.out->seek(fetch.position))
    {
        setPluginFailure(failureAt(fetch.localPath, fetch.out ? fetch.out->error() : error));
        return false;
    }
    const std::int64_t start = fetch.position;
    std::int64_t taken = start; // when the attempts were last counted anew
    int attempts = 0;
    std::uint32_t pause = m_patience.pause;
    while (true)
    {
        const HttpAnswer answer = continueWith(source, path, fetch);
        if (answer.isDone() && fetch.failure.IsEmpty())
            return true;
        const bool isStopped = fetch.progress && fetch.progress->isCanceled();
        if (fetch.position >= taken + enoughBytes)
        {
            taken = fetch.position;
            attempts = 0;
            pause = m_patience.pause;
        }
        // A server that cannot be reached to begin with is not waited for.
        const bool isOver = !fetch.failure.IsEmpty() || isFinal(answer) ||
                            fetch.position == start || ++attempts == m_patience.attempts;
        const bool isUnreachable = answer.status == 0 && fetch.position == start;
        if (answer.status == forbidden || answer.isOtherServer || (isUnreachable && !isStopped))
            source.refusal = wordsOf(answer);
        if (isOver && !isStopped)
            setPluginFailure(fetch.failure.IsEmpty() ? wordsOf(answer) : fetch.failure);
        if (isOver || isStopped || !wait(pause, fetch.progress))
            return false;
        pause *= 2;
    }
}

HttpAnswer
ShareTransport::continueWith(const Source& source, const std::string& path, Fetch& fetch) const
{
    HttpAddress place = source.client->root();
    place.path += path;
    const bool continues = fetch.position > 0;
    bool isFirst = true;
    HttpRequest request;
    request.address = place;
    request.headers = {"Authorization: Bearer " + source.shareId};
    if (!fetch.mark.empty())
        request.headers.push_back(std::string(fileMarkHeader) + ": " + fetch.mark);
    if (continues)
        request.headers.push_back("Range: bytes=" + std::to_string(fetch.position) + "-");
    if (continues && !fetch.tag.empty())
        request.headers.push_back("If-Range: " + fetch.tag);
    request.isCanceled = [&] { return fetch.progress && fetch.progress->isCanceled(); };
    request.sink = [&](const HttpHead& head, std::string_view bytes)
    {
        if (std::exchange(isFirst, false))
        {
            if (continues && head.status != partialContent)
                fetch.failure = fromUtf8(place.url()) + u": the file changed while it was fetched";
            fetch.tag = head.tag;
        }
        fetch.position += static_cast<std::int64_t>(bytes.size());
        if (fetch.failure.IsEmpty() && fetch.position > fetch.largest)
            fetch.failure = fromUtf8(place.url()) + u": the list is too long";
        if (fetch.failure.IsEmpty() && !fetch.out->write(bytes.data(), bytes.size()))
            fetch.failure = failureAt(fetch.localPath, fetch.out->error());
        if (fetch.progress)
            fetch.progress->setPosition(static_cast<std::uintptr_t>(fetch.position));
        return fetch.failure.IsEmpty();
    };
    return source.client->run(std::move(request));
}
} // namespace qo::host
