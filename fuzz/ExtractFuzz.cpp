#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Sharing/ShareInvitation.h"
#include "common/CollPath.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/FilePath.h"
#include "types/Utf.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>

namespace
{
/// One file for the whole run, named after the process.
const std::string& extractPath()
{
    static const std::string path = "/tmp/qo-extract-fuzz-" + std::to_string(::getpid());
    return path;
}

void require(bool holds)
{
    if (!holds)
        std::abort();
}
} // namespace

/// Any bytes are an extract that can be read or refused. What it names lies below the share, each
/// path once and in order. They are a link, too, and nobody makes a valid one by chance.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(extractPath(), std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(size));
    QoFileDbItemArray files;
    CQoDbExtract::LoadQoDbExtract(u"17", qo::fromSystemPath(extractPath()), files);
    const CQoCollPath root(CQoCollPath::share, u"17");
    const qo::FilePath* last = nullptr;
    for (const QoFileDbItemPtr& item : files)
    {
        const CQoCollPath path(item->path);
        require(path.isSubPathOf(root));
        require(std::ranges::none_of(path.getComponents(),
                                     [](const CString& name)
                                     { return name == u"." || name == u".."; }));
        require(!last || last->CompareNoCase(item->path) < 0);
        last = &item->path;
    }
    const CString link = qo::fromUtf8(bytes);
    require(CShareInvitation::IsShareInvitation(link) != CShareInvitation::SHARE_INVITATION_OK ||
            CShareInvitation::GetParam(link, u"u") == u"Ann");
    return 0;
}
