#include "share/Offers.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/query/Query.h"

#include <QoKernel/Sharing.h>

#include <openssl/crypto.h>

#include <algorithm>
#include <utility>

namespace qo::host
{
std::shared_ptr<Offer> Offer::of(const Share& share)
{
    QueryRequest request;
    if (share.query && !share.query->IsEmpty())
        request.words = {toUtf8(*share.query)};
    QoFileDbItemArray records;
    if (share.query)
        records = Query(request).files();
    File extract;
    const CString folder = CFileUtils::GetTempDir(CFileUtils::tempQorganizer);
    extract.path = combinePath(folder, u"offer-" + guidToText(systemClock().newGuid()));
    const FILETIME changed = ownCollection().getCollInfo().modifiedTime;
    FileInfo info;
    if (!CQoDbExtract::CreateQoDbExtract(records, extract.path, changed) ||
        fileSystem().info(extract.path, Spelling::exact, info) != 0)
        throw HostError(ExitCode::failed,
                        "the extract " + shownPath(extract.path) +
                            " cannot be written; \"qo log\" has the cause");
    extract.size = info.size;
    Files files;
    for (const QoFileDbItemPtr& item : records)
    {
        // As in the extract, which leaves all others out.
        if ((item->flags & fileFlag::mediaMask) != 0)
            files.emplace(item->id, File{item->path, item->size});
    }
    return std::make_shared<Offer>(share, std::move(extract), std::move(files));
}

Offer::Offer(const Share& share, File extract, Files files)
    : m_friendName(share.peer)
    , m_shareId(toUtf8(share.shareId))
    , m_extract(std::move(extract))
    , m_files(std::move(files))
{
}

Offer::~Offer()
{
    fileSystem().removeFile(m_extract.path);
}

const Offer::File* Offer::file(int row) const
{
    const auto found = m_files.find(row);
    return found == m_files.end() ? nullptr : &found->second;
}

std::shared_ptr<const Offer> Offers::find(std::string_view shareId) const
{
    const std::lock_guard guard(m_lock);
    std::shared_ptr<const Offer> found;
    for (const auto& offer : m_offers)
    {
        const std::string& id = offer->shareId();
        // Each id is compared to its end, and with all of them, so that the time of an answer does
        // not say how much of an id was right. How long ids are is no secret.
        if (id.size() == shareId.size() && !id.empty() &&
            CRYPTO_memcmp(id.data(), shareId.data(), id.size()) == 0)
            found = offer;
    }
    return found;
}

void Offers::replace(std::vector<std::shared_ptr<Offer>> offers)
{
    const std::lock_guard guard(m_lock);
    for (const auto& former : m_offers)
    {
        const bool stays = std::ranges::any_of(offers,
                                               [&](const std::shared_ptr<Offer>& offer)
                                               { return offer->shareId() == former->shareId(); });
        if (!stays)
            former->end();
    }
    m_offers = std::move(offers);
}
} // namespace qo::host
