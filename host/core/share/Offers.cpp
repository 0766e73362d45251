#include "core/share/Offers.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/collection/CollectionFiles.h"
#include "core/query/Query.h"
#include "core/share/DigestText.h"

#include <QoKernel/Sharing.h>

#include <nettle/memops.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace qo::host
{
namespace
{
constexpr std::u16string_view listStart = u"offer-";

CString listFolder()
{
    return CFileUtils::GetTempDir(CFileUtils::tempQorganizer);
}
} // namespace

QoFileDbItemArray offeredFiles(const CString& query)
{
    QueryRequest request;
    if (!query.IsEmpty())
        request.words = {toUtf8(query)};
    QoFileDbItemArray media;
    for (const QoFileDbItemPtr& item : Query(request).files())
    {
        if (isMedia(*item))
            media.Add(item);
    }
    return media;
}

void writeExtract(const QoFileDbItemArray& files, const CString& path)
{
    const FILETIME changed = ownCollection().getCollInfo().modifiedTime;
    if (!CQoDbExtract::CreateQoDbExtract(files, path, changed))
        throw HostError(ExitCode::failed,
                        "the extract " + shownPath(path) +
                            " cannot be written; \"qo log\" has the cause");
}

std::string fileMark(const CStringArray& components, std::int64_t size)
{
    return digestText(toUtf8(components.join(u"\\")) + "\n" + std::to_string(size));
}

void removeLeftLists()
{
    std::vector<DirEntry> entries;
    (void)fileSystem().list(listFolder(), entries);
    for (const DirEntry& entry : entries)
    {
        if (!entry.name.view().starts_with(listStart))
            continue;
        const int process = textToInt(entry.name.view().substr(listStart.size()));
        if (process > 0 && ::kill(process, 0) != 0 && errno == ESRCH)
            fileSystem().removeFile(combinePath(listFolder(), entry.name));
    }
}

std::shared_ptr<Offer> Offer::of(const Share& share)
{
    const QoFileDbItemArray records =
        share.query ? offeredFiles(*share.query) : QoFileDbItemArray();
    File extract;
    CString name;
    name.Format(u"%s%d-%s",
                CString(listStart),
                static_cast<int>(::getpid()),
                guidToText(systemClock().newGuid()));
    extract.path = combinePath(listFolder(), name);
    writeExtract(records, extract.path);
    FileInfo info;
    if (const int error = fileSystem().info(extract.path, Spelling::exact, info))
        throw HostError(ExitCode::failed, shownPath(extract.path) + ": " + errorWords(error));
    extract.size = info.size;
    Files files;
    for (const QoFileDbItemPtr& item : records)
        files.emplace(item->id, File{item->path, item->size});
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
            ::memeql_sec(id.data(), shareId.data(), id.size()) == 1)
            found = offer;
    }
    return found;
}

void Offers::replace(std::vector<std::shared_ptr<Offer>> offers)
{
    std::vector<std::string> ids;
    ids.reserve(offers.size());
    for (const auto& offer : offers)
        ids.push_back(offer->shareId());
    keepOnly(ids);
    const std::lock_guard guard(m_lock);
    m_offers = std::move(offers);
}

void Offers::keepOnly(const std::vector<std::string>& shareIds)
{
    const std::lock_guard guard(m_lock);
    std::erase_if(m_offers,
                  [&](const std::shared_ptr<Offer>& offer)
                  {
                      const bool goes =
                          std::ranges::find(shareIds, offer->shareId()) == shareIds.end();
                      if (goes)
                          offer->end();
                      return goes;
                  });
}
} // namespace qo::host
