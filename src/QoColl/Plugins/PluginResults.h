#pragma once

#include "QoColl/Plugins/Forward.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstdint>

// What the operations of a plug-in give. A result lives as long as its handles, also after the
// operation that gave it, and is handed back to the plug-in to say what is meant. The kernel trusts
// none of its texts and numbers.

/// An artist, album or track with the names thereof; the base of all results.
class QO_API IGenericResult
{
public:
    enum EKind : int
    {
        RK_Other = 0,
        RK_Artist = 1,
        RK_Album = 2,
        RK_Track = 3,
        RK_Folder = 4,
        RK_File = 5
    };

    virtual ~IGenericResult();
    virtual EKind GetKind() const = 0;
    /// The artist's name, also of an album or a track; "" where it is unknown.
    virtual CString GetArtist() const { return {}; }
    /// The album's name, also of a track.
    virtual CString GetAlbum() const { return {}; }
    virtual CString GetTitle() const { return {}; }
    /// Of the file that a track comes as, such as "mp3"; may be "".
    virtual CString GetExtension() const { return {}; }
    /// Bytes; 0 where it is unknown. For a range that was set, see IPhysicalResult::SetSize().
    virtual std::int64_t GetSize() const { return 0; }
    /// Milliseconds; 0 where it is unknown.
    virtual int GetDuration() const { return 0; }
};

/// A file or folder.
class QO_API IPhysicalResult : public IGenericResult
{
public:
    EKind GetKind() const override { return IsFolder() ? RK_Folder : RK_File; }
    /// One name without a path. The kernel takes no entry whose name is "", "." or "..".
    virtual CString GetName() const = 0;
    /// The place by the plug-in's own means, such as a URL, for log lines and to know a folder
    /// again that is listed a second time; must not hold a password. "" is never the same place.
    virtual CString GetPath() const = 0;
    virtual bool IsFolder() const = 0;
    /// How many bytes shall be fetched, from now on also what GetSize() says.
    virtual void SetSize(std::int64_t bytes) = 0;
};

/// A track that a search has found.
class QO_API ITrackResult : public IGenericResult
{
public:
    EKind GetKind() const override { return RK_Track; }
    /// The text by which IDownloadWrapper::GetTrack() makes the track again, on another day.
    virtual CString GetText() const = 0;
};

/// The one result of GetFillState(); bytes.
class QO_API IFillStateResult : public IGenericResult
{
public:
    EKind GetKind() const override { return RK_Other; }
    virtual std::int64_t GetTotal() const = 0;
    virtual std::int64_t GetFree() const = 0;
    /// Whether there is no limit: then the numbers mean nothing.
    virtual bool IsUnlimited() const { return false; }
};
