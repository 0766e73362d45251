#pragma once

#include "QoColl/Db/Forward.h"
#include "QoColl/Plugins/Forward.h"
#include "QoColl/Sharing/VelmoraShareManager.h"

class CQoCollPath;

/// Turns the paths of shares (\\share:17\C:\Music\a.mp3, the share's id before the peer's path)
/// into work for the host's transport. Files are looked up in the foreign collection, then in the
/// own one, so these calls belong to the thread that works with the kernel.
class QO_API CQoShareManager
{
public:
    /// Not owned; null, as at first, lets every transfer fail. To be called before any transfer.
    static void SetVelmoraShareManager(IVelmoraShareManager* manager);

    /// The path of "17\C:\Music\a.mp3", which is escaped as in a full path.
    static CQoCollPath getFullPath(const CString& relativePath);
    /// Fetches the extract of the share in which the path lies and adds its records to files, which
    /// stays sorted. Throws a CQoException*: extractFailed, with files as they were, when it cannot
    /// be fetched, unsupportedExtract for one of a newer version. An extract that cannot be read to
    /// its end is no failure; isWhole says whether one was read.
    static void getFilesFromShare(const CQoCollPath& path,
                                  IQoProgress* progress,
                                  QoFileDbItemArray& files,
                                  bool* isWhole = nullptr);
    /// For display; "" for a path of another kind.
    static CString getDeviceName(const CQoCollPath& path);
    /// The peer's row of a file in the collection; "" for one that is in none, and for one of the
    /// user's own.
    static CString getFileID(const CQoCollPath& path);
    static bool getFileSize(const CQoCollPath& path, std::int64_t& size);
    /// Fetches a file from that offset on; waits for the end. False, without asking the host, for a
    /// path of another kind or a file in no collection; after any failure there is no local file.
    static bool getFile(const CString& sharePath,
                        const CString& localPath,
                        std::int64_t offset,
                        IQoProgress* progress,
                        bool flag1,
                        bool flag2);
    /// The same for a request that is complete; may be called from any thread.
    static bool fetch(const ShareFileRequest& request);
    /// A download to a temporary file, not started yet.
    static boost::shared_ptr<IDownloadItem> getPlayDownloadItem(const CString& sharePath);

private:
    CQoShareManager() = default;
    static IVelmoraShareManager* m_pVelmoraShareManager;
};
