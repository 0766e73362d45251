#include "share/ShareTransport.h"

#include "core/share/Offers.h"
#include "plugins/base/PluginFailure.h"

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
constexpr long forbidden = 403;
/// The reader of extracts takes no longer one.
constexpr std::int64_t largestExtract = std::int64_t{512} * 1024 * 1024;

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
    return fetch(device, "extract", {localPath, 0, largestExtract, progress}) ? 1 : 0;
}

int ShareTransport::getFile(const ShareFileRequest& request)
{
    Fetch work{request.localPath, request.offset, INT64_MAX, request.progress};
    if (request.size >= 0)
        work.headers.push_back(std::string(fileMarkHeader) + ": " +
                               fileMark(CQoCollPath(request.path).getComponents(), request.size));
    const bool isRow =
        !request.fileId.IsEmpty() &&
        std::ranges::all_of(request.fileId.view(), [](char16_t c) { return c >= '0' && c <= '9'; });
    // The id comes from the friend's extract, and may be anything.
    return isRow && fetch(request.device, "files/" + toUtf8(request.fileId), work) ? 1 : 0;
}

bool ShareTransport::fetch(const CString& device, const std::string& path, const Fetch& fetch)
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
    const std::unique_ptr<IFile> out = fileSystem().open(
        fetch.localPath, fetch.position > 0 ? OpenMode::update : OpenMode::createAlways, error);
    if (!out || !out->seek(fetch.position))
    {
        setPluginFailure(failureAt(fetch.localPath, out ? out->error() : error));
        return false;
    }
    HttpResume content(*out, fetch.localPath, fetch.position, fetch.largest, fetch.progress);
    const auto send = [&](HttpRequest request)
    {
        request.address = source.client->root();
        request.address.path += path;
        request.headers.push_back("Authorization: Bearer " + source.shareId);
        request.headers.insert(request.headers.end(), fetch.headers.begin(), fetch.headers.end());
        return source.client->run(std::move(request));
    };
    if (content.run(send, m_patience))
        return true;
    if (fetch.progress && fetch.progress->isCanceled())
        return false;
    const HttpAnswer& answer = content.answer();
    const CString cause = content.isOwn() ? content.cause() : wordsOf(answer);
    setPluginFailure(cause);
    const bool isUnreachable = answer.status == 0 && content.position() == fetch.position;
    if (answer.status == forbidden || answer.isOtherServer || isUnreachable)
        source.refusal = cause;
    return false;
}
} // namespace qo::host
