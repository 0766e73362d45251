#pragma once

#include "QoColl/Db/Forward.h"
#include "platform/Clock.h"
#include "platform/PortableDevices.h"
#include "types/StringArray.h"

class IQoProgress;

/// The calls to portable devices, over qo::portableDevices(). Where the result is a bool, false has
/// one line in the log with the call that failed and its code. May be called from any thread.
class QO_API CWPDUtils
{
public:
    /// What the kernel wants to know of an object. What the device does not say is empty or 0.
    struct ObjectInfo
    {
        CString m_id;
        CString m_name;
        CString m_originalFileName;
        CString m_pathName; ///< the name in a path; "" for what cannot be one
        GUID m_contentType;
        GUID m_functionalCategory;
        std::int64_t m_size = 0; ///< bytes
        FILETIME m_created;
        FILETIME m_modified;
        CString m_artist;
        CString m_album;
        CString m_title;
        CString m_genre;
        CString m_trackNumber;
        CString m_year;
        CString m_lyrics;
        bool m_lyricsLoaded = false; ///< the device says what the lyrics are
        int m_duration = 0;          ///< milliseconds
        int m_bitrate = 0;

        /// A folder, or a part of the device such as a storage.
        bool isFolder() const;
    };

    /// What the device is told of a file by its extension.
    struct FileFormatInfo
    {
        const char16_t* m_extension;
        GUID m_contentType;
        GUID m_format;
    };
    static const FileFormatInfo m_fileFormats[35];

    static bool guidsAreEqual(const GUID& a, const GUID& b) { return a == b; }
    // Of a property that is missing or of another type, value stays as it was.
    static bool
    getStringProperty(const qo::PropertyKey& key, const qo::PropertyBag& values, CString& value);
    static bool
    getGUIDProperty(const qo::PropertyKey& key, const qo::PropertyBag& values, GUID& value);
    static bool
    getInt8Property(const qo::PropertyKey& key, const qo::PropertyBag& values, std::int64_t& value);
    static bool
    getInt4Property(const qo::PropertyKey& key, const qo::PropertyBag& values, std::int32_t& value);
    static bool
    getDateProperty(const qo::PropertyKey& key, const qo::PropertyBag& values, FILETIME& value);
    static bool getDateProperty(const qo::PropertyKey& key,
                                const qo::PropertyBag& values,
                                qo::CalendarTime& value);
    static bool
    setStringProperty(const qo::PropertyKey& key, qo::PropertyBag& values, const CString& value);
    static bool
    setGUIDProperty(const qo::PropertyKey& key, qo::PropertyBag& values, const GUID& value);
    static bool
    setInt8Property(const qo::PropertyKey& key, qo::PropertyBag& values, std::int64_t value);
    static bool
    setInt4Property(const qo::PropertyKey& key, qo::PropertyBag& values, std::int32_t value);
    static bool
    setDateProperty(const qo::PropertyKey& key, qo::PropertyBag& values, const FILETIME& value);
    static bool setDateProperty(const qo::PropertyKey& key,
                                qo::PropertyBag& values,
                                const qo::CalendarTime& value);

    static bool getDevices(CStringArray& ids);
    static bool getDeviceName(const CString& id, CString& name);
    /// Whether files can be kept on the device.
    static bool isStorage(qo::IPortableDevice& device, qo::DeviceResult& result);
    /// The result is that of the open.
    static qo::DeviceResult
    openDevice(const CString& id, std::unique_ptr<qo::IPortableDevice>& device, bool readOnly);
    /// False for a device that cannot even be read, and for one that is no storage.
    static bool getDeviceInfo(const CString& id, CString& name, bool& readable, bool& writable);
    /// Of one storage, in bytes.
    static bool getDeviceFillStateInfo(qo::IPortableDevice& device,
                                       const CString& storageId,
                                       std::int64_t& total,
                                       std::int64_t& free);

    /// cause, unless null, gets the result of the last call to the device, here and below.
    static bool getObjectInfo(qo::IPortableDevice& device,
                              const CString& objectId,
                              ObjectInfo& info,
                              qo::DeviceResult* cause = nullptr,
                              qo::PropertySet wanted = qo::PropertySet::all);
    /// Appends them in the device's order, without those whose name cannot stand in a path. False
    /// when the device does not list them, or says nothing of one, which is left out; with a device
    /// that has left it ends there. A cancel, asked for with each, ends it without a line.
    static bool getObjectChildren(qo::IPortableDevice& device,
                                  const CString& objectId,
                                  std::vector<ObjectInfo>& children,
                                  IQoProgress* progress = nullptr,
                                  qo::DeviceResult* cause = nullptr,
                                  qo::PropertySet wanted = qo::PropertySet::listing);

    // The properties that an object needs to be made.
    static bool getReqPropsForAllContentTypes(const CString& parentId,
                                              const CString& name,
                                              qo::PropertyBag& values);
    static bool
    getReqPropsForDir(const CString& parentId, const CString& name, qo::PropertyBag& values);
    /// False for an extension that is not among the file formats.
    static bool getReqPropsForFile(const CString& parentId,
                                   const CString& name,
                                   const CString& extension,
                                   const qo::IByteStream& content,
                                   qo::PropertyBag& values);
    /// Without regard to case; false, without a line in the log, for an unknown extension.
    static bool getFormatInfo(const CString& extension, GUID& contentType, GUID& format);
    /// What the record says of the music.
    static bool addMusicProperties(qo::PropertyBag& values, const QoFileDbItemPtr& record);
    static bool createDir(qo::IPortableDevice& device,
                          const CString& parentId,
                          const CString& name,
                          CString& objectId);
};
