#pragma once

#include "plugins/http/HttpClient.h"

#include <QoKernel/Devices.h>

namespace qo::host
{
/// Fetches a file, or a range of it. A file that breaks off is taken up as HttpResume does. A
/// server that knows no ranges sends the file from its start; then the bytes before the range are
/// left out here.
class HttpDownload : public IPluginDownload
{
public:
    bool SetRange(std::int64_t first, std::int64_t end) override;
    bool GetSize(std::int64_t& size) override;
    bool Run(IQoProgress* progress) override;

protected:
    /// The size is what the server has said of the file; 0 when it has not.
    HttpDownload(const CString& target, std::int64_t size) : m_target(target), m_size(size) {}

    /// Sends a request to where the file is, some times: the request has no address yet.
    virtual HttpAnswer send(HttpRequest request) = 0;

private:
    /// Each gives the cause of a failure; "" when all has come.
    CString fetchWhole(IFile& out, IQoProgress& progress);
    CString fetchRange(IFile& out, IQoProgress& progress);

    const CString m_target;
    const std::int64_t m_size;
    std::int64_t m_first = 0;
    std::int64_t m_end = -1; ///< the one after the last byte; -1: all
};
} // namespace qo::host
