#pragma once

#include "QoColl/Plugins/Forward.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

class IQoProgress;

// The functionalities of a plug-in. A call that returns an operation begins a request; null means
// that it could not begin. Calls come from one thread at a time, except where a comment says
// otherwise. Nothing may throw.

class QO_API ILoginWrapper
{
public:
    virtual ~ILoginWrapper();
    /// Succeeds when the service accepts them. Keeps neither of the texts.
    virtual PluginOperationPtr CheckCredentials(const CString& user, const CString& password) = 0;
    /// Whether they may be tried at all; no traffic.
    virtual bool CanTryCredentials(const CString& user, const CString& password) = 0;
};

/// Folders and files.
class QO_API IPhysicalBrowseWrapper
{
public:
    virtual ~IPhysicalBrowseWrapper();
    /// One result, an IPhysicalResult; its name does not matter.
    virtual PluginOperationPtr GetRootFolder() = 0;
    /// What is in the folder itself, as IPhysicalResult, without entries for it and its parent.
    virtual PluginOperationPtr
    GetSubFoldersAndFiles(const boost::shared_ptr<IPhysicalResult>& folder) = 0;
    /// One result, an IFillStateResult.
    virtual PluginOperationPtr GetFillState() = 0;
};

/// Of plug-ins whose listings do not say from where a file can be fetched.
class QO_API IPhysicalBrowseDownloadpathWrapper
{
public:
    virtual ~IPhysicalBrowseDownloadpathWrapper();
    /// One result: the same file, ready for a download.
    virtual PluginOperationPtr GetDownloadUrl(const boost::shared_ptr<IPhysicalResult>& item) = 0;
};

/// Artists, albums and tracks, as IGenericResult.
class QO_API ILogicalBrowseWrapper
{
public:
    virtual ~ILogicalBrowseWrapper();
    virtual PluginOperationPtr GetArtists() = 0;
    virtual PluginOperationPtr GetAlbums(const PluginResultPtr& artist) = 0;
    virtual PluginOperationPtr GetTracksForAlbum(const PluginResultPtr& album) = 0;
};

/// The transfer of one file; used by one thread, which need not be the one that made it.
class QO_API IPluginDownload
{
public:
    virtual ~IPluginDownload();
    /// Bytes from the first one to the one before end; false if that cannot be.
    virtual bool SetRange(std::int64_t first, std::int64_t end) = 0;
    /// The size of the whole file in bytes; false if there is no such file.
    virtual bool GetSize(std::int64_t& size) = 0;
    /// Writes the file or the range into the target, which it replaces, and returns when that is
    /// done: true if all bytes came. Reports them with setPosition(), and asks often whether it is
    /// cancelled.
    virtual bool Run(IQoProgress* progress) = 0;
};

/// Its calls may come from the threads of downloads, also at the same time.
class QO_API IDownloadWrapper
{
public:
    virtual ~IDownloadWrapper();
    /// The target is a path in collection form. Null if the result cannot be fetched.
    virtual boost::shared_ptr<IPluginDownload> CreateDownload(const PluginResultPtr& source,
                                                              const CString& target) = 0;
    /// False if it cannot tell.
    virtual bool CanSetRanges(bool& can) = 0;
    /// The track of that ITrackResult::GetText(); null if the plug-in does not know it any more. No
    /// traffic.
    virtual boost::shared_ptr<ITrackResult> GetTrack(const CString& text);
};

class QO_API IPhysicalUploadWrapper
{
public:
    virtual ~IPhysicalUploadWrapper();
    /// Sends a local file (a path in collection form) into the folder; one result: the file as the
    /// service has it, perhaps under another name. Without replace an existing file of that name
    /// stays, and the request fails or gives the new one another name. What a failure leaves has
    /// no name that a listing shows.
    virtual PluginOperationPtr UploadFile(const CString& source,
                                          const boost::shared_ptr<IPhysicalResult>& parent,
                                          const CString& name,
                                          bool replace) = 0;
    /// One result: the new folder.
    virtual PluginOperationPtr CreateFolder(const boost::shared_ptr<IPhysicalResult>& parent,
                                            const CString& name) = 0;
    /// Files, and folders with all that is in them.
    virtual PluginOperationPtr RemoveItems(const PluginResultArray& items) = 0;
    /// Whether files may lie in the root; false if it cannot tell.
    virtual bool CanUploadToRoot(bool& can);
    /// How many folders may stand one in another; false if it cannot tell.
    virtual bool GetMaxPathDepth(int& depth);
};

class QO_API ILogicalUploadWrapper
{
public:
    virtual ~ILogicalUploadWrapper();
    virtual PluginOperationPtr UploadTrack(const CString& source,
                                           const CString& artist,
                                           const CString& album,
                                           const CString& title) = 0;
    virtual PluginOperationPtr RemoveTrack(const PluginResultPtr& track) = 0;
};

class QO_API ISearchWrapper
{
public:
    virtual ~ISearchWrapper();
    /// The tracks that fit the text, the best first, as ITrackResult.
    virtual PluginOperationPtr Search(const CString& text) = 0;
};
