#include "QoColl/Sharing/QoShareManager.h"

#include "Physical/HDFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Db/Records/QoFileDbItem.h"
#include "QoColl/Sharing/QoDbExtract.h"
#include "QoColl/Sharing/QoShareDownloadItem.h"
#include "common/FileUtils.h"
#include "common/Log.h"
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

void removeExtract(const CString& path)
{
    if (qo::fileSystem().exists(path) && qo::fileSystem().removeFile(path) != 0)
        qo::log(
            level::error, u"CQoShareManager::getFilesFromShare: could not delete file [%s]", path);
}
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
    const CString device = path.getDevice();
    // Ids come from peers; two fetches must not meet in one file.
    const CString unique = qo::uniqueTempPath(CFileUtils::tempQorganizer, device);
    const CString folder = CFileUtils::GetTempDir(CFileUtils::tempQorganizer);
    const CString local = CQoDbExtract::GetUCQoDbExtractFileName(
        folder, unique.Mid(qo::addBackslash(folder).GetLength()));
    if (!m_pVelmoraShareManager || m_pVelmoraShareManager->getExtract(device, local, progress) == 0)
    {
        removeExtract(local);
        qo::log(level::error, u"CQoShareManager::getFilesFromShare failed to get the qodb extract");
        throw new CQoException(CQoException::extractFailed, nullptr);
    }
    const bool isExtract = hasExtractHead(local);
    const CQoDbExtract::ERetCode result = CQoDbExtract::LoadQoDbExtract(device, local, files);
    removeExtract(local);
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
    const CString fileId = getFileID(path);
    if (!path.isShare() || fileId.IsEmpty())
        return false;
    return fetch({localPath, path.getDevice(), fileId, offset, progress, flag1, flag2});
}

bool CQoShareManager::fetch(const ShareFileRequest& request)
{
    if (m_pVelmoraShareManager && m_pVelmoraShareManager->getFile(request) != 0)
        return true;
    if (qo::fileSystem().exists(request.localPath) &&
        qo::fileSystem().removeFile(request.localPath) != 0)
        qo::log(level::step,
                u"CQoShareManager::getFile: Could not delete incomplete downloaded file [%s]",
                request.localPath);
    return false;
}

boost::shared_ptr<IDownloadItem> CQoShareManager::getPlayDownloadItem(const CString& sharePath)
{
    const CQoCollPath path(sharePath);
    const CString target = qo::uniqueTempPath(CFileUtils::tempLivePlay, path.getLast());
    std::int64_t size = -1;
    (void)getFileSize(path, size);
    return IQoDownloadItem::make<CQoShareDownloadItem>(path, target, getFileID(path), size);
}
