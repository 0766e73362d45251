#include "QoColl/Sharing/QoShareManager.h"

#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Sharing/QoShareDownloadItem.h"
#include "common/FileUtils.h"
#include "common/Log.h"
#include "common/PartFile.h"
#include "common/QoException.h"
#include "common/QoProgress.h"
#include "common/StdioFileEx.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"

namespace
{
namespace level = qo::level;

/// The record of a file; null if no collection has it. Paths of a share are in the foreign
/// collection.
QoFileDbItemPtr recordOfPath(const CQoCollPath& path)
{
    for (const CQoCollection* const collection :
         {&CQoCollection::m_foreignCollection, &CQoCollection::m_ownCollection})
    {
        if (const auto file = collection->getFileByPath(path))
            return file->getDbItem();
    }
    return {};
}

/// Whether the file is an extract at all: what is none has no records, and would seem to be that of
/// a friend who has no files any more.
bool hasExtractHead(const CString& path)
{
    CStdioFileEx file;
    CString line;
    return file.Open(path, CStdioFileEx::modeRead) && file.ReadString(line) &&
           line.Find(u"QODB_EXTRACT_VERSION:") >= 0;
}

/// A peer may have any id; this much of it tells whose extract a file is.
constexpr int longestIdInName = 60;
} // namespace

IVelmoraShareManager* CQoShareManager::m_pVelmoraShareManager = nullptr;

IVelmoraShareManager::~IVelmoraShareManager() = default;

void CQoShareManager::SetVelmoraShareManager(IVelmoraShareManager* manager)
{
    m_pVelmoraShareManager = manager;
}

CQoCollPath CQoShareManager::getFullPath(const CString& relativePath)
{
    return CQoCollPath(u"\\\\share:" + relativePath);
}

void CQoShareManager::getFilesFromShare(const CQoCollPath& path,
                                        IQoProgress* progress,
                                        QoFileDbItemArray& files,
                                        bool* isWhole)
{
    const CString& device = path.getDevice();
    // Ids come from peers; two fetches must not meet in one file.
    const CString unique =
        qo::uniqueTempPath(CFileUtils::tempQorganizer, device.Left(longestIdInName));
    const CString folder = CFileUtils::GetTempDir(CFileUtils::tempQorganizer);
    const CString local = CQoDbExtract::GetUCQoDbExtractFileName(
        folder, unique.Mid(qo::addBackslash(folder).GetLength()));
    bool isExtract = false;
    CQoDbExtract::ERetCode result = CQoDbExtract::extractUnreadable;
    {
        const qo::PartFile file(
            local, level::error, u"CQoShareManager::getFilesFromShare: could not delete file [%s]");
        if (!m_pVelmoraShareManager ||
            m_pVelmoraShareManager->getExtract(device, local, progress) == 0)
        {
            qo::log(level::error,
                    u"CQoShareManager::getFilesFromShare failed to get the qodb extract");
            throw new CQoException(CQoException::extractFailed, nullptr);
        }
        isExtract = hasExtractHead(local);
        result = CQoDbExtract::LoadQoDbExtract(device, local, files);
    }
    if (result == CQoDbExtract::extractUnsupported)
    {
        qo::log(level::step,
                u"CQoShareManager::getFilesFromShare unsupported qodb extract version");
        throw new CQoException(CQoException::unsupportedExtract, nullptr);
    }
    if (isWhole)
        *isWhole = isExtract && result == CQoDbExtract::extractLoaded;
}

CString CQoShareManager::getDeviceName(const CQoCollPath& path)
{
    return path.isShare() && m_pVelmoraShareManager
               ? m_pVelmoraShareManager->getDeviceName(path.getDevice())
               : CString();
}

CString CQoShareManager::getFileID(const CQoCollPath& path)
{
    const QoFileDbItemPtr record = recordOfPath(path);
    return record ? record->clipUid : CString();
}

bool CQoShareManager::getFileSize(const CQoCollPath& path, std::int64_t& size)
{
    const QoFileDbItemPtr record = recordOfPath(path);
    if (record)
        size = record->size;
    return record != nullptr;
}

bool CQoShareManager::getFile(const CString& sharePath,
                              const CString& localPath,
                              std::int64_t offset,
                              IQoProgress* progress,
                              bool flag1,
                              bool flag2)
{
    const CQoCollPath path(sharePath);
    const QoFileDbItemPtr record = recordOfPath(path);
    if (!path.isShare() || !record || record->clipUid.IsEmpty())
        return false;
    return fetch({localPath,
                  path.getDevice(),
                  record->clipUid,
                  offset,
                  progress,
                  flag1,
                  flag2,
                  record->path,
                  record->size});
}

bool CQoShareManager::fetch(const ShareFileRequest& request)
{
    // Nothing was written, so what is there is not a part of the file.
    if (!m_pVelmoraShareManager)
        return false;
    qo::PartFile file(
        request.localPath,
        level::step,
        u"CQoShareManager::getFile: Could not delete incomplete downloaded file [%s]");
    if (m_pVelmoraShareManager->getFile(request) == 0)
        return false;
    file.keep();
    return true;
}

boost::shared_ptr<IDownloadItem> CQoShareManager::getPlayDownloadItem(const CString& sharePath)
{
    const CQoCollPath path(sharePath);
    const CString target = qo::uniqueTempPath(CFileUtils::tempLivePlay, path.getLast());
    std::int64_t size = -1;
    (void)getFileSize(path, size);
    return IQoDownloadItem::make<CQoShareDownloadItem>(path, target, getFileID(path), size);
}
