#pragma once

#include "QoColl/Sharing/QoShareManager.h"
#include "common/QoProgress.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <string>

/// A transport to one peer while it lives. An empty content is one that cannot be fetched.
class FakeShare : public IVelmoraShareManager
{
public:
    FakeShare() { CQoShareManager::SetVelmoraShareManager(this); }
    ~FakeShare() override { CQoShareManager::SetVelmoraShareManager(nullptr); }
    FakeShare(const FakeShare&) = delete;
    FakeShare& operator=(const FakeShare&) = delete;

    int getExtract(const CString&, const CString& localPath, IQoProgress*) override
    {
        localExtract = localPath;
        return put(localPath, extract) && !extract.empty() && !isBroken ? 1 : 0;
    }
    CString getDeviceName(const CString& device) override { return u"Bob " + device; }
    int getFile(const ShareFileRequest& request) override
    {
        last = request;
        ++requests;
        return put(request.localPath, "bytes") && !isBroken && !request.progress->isCanceled() ? 1
                                                                                               : 0;
    }

    /// An extract of the current version with these lines.
    void offer(const std::string& lines)
    {
        extract = "\xEF\xBB\xBFQODB_EXTRACT_VERSION:1;QODB_EXTRACT_REVISION:0;TIME_INFO:1601-01-01 "
                  "00:00:00;\r\n" +
                  lines;
    }
    /// A line for a song of an artist, with that row.
    static std::string song(const std::string& row, std::string path, const std::string& artist)
    {
        for (std::size_t i = path.find('\\'); i != std::string::npos; i = path.find('\\', i + 2))
            path.insert(i, 1, '\\');
        return "INS:" + row + "\t" + path + "\t" + artist +
               "\tsong\talbum\tg\t1\t2000\t5\t6\t9\t128\t7\r\n";
    }

    std::string extract;
    CString localExtract;
    ShareFileRequest last;
    int requests = 0;
    bool isBroken = false; ///< fails after it has written

private:
    static bool put(const CString& path, const std::string& content)
    {
        return qo::fileSystem().replaceFile(path, content.data(), content.size()) == 0;
    }
};
