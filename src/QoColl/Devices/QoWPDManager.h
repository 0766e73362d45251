#pragma once

#include "QoColl/Db/Forward.h"
#include "QoColl/Devices/QoUSBManagerBase.h"
#include "QoColl/Devices/WPDUtils.h"
#include "QoColl/Plugins/Forward.h"

class IQoProgress;

/// Portable devices: players and telephones. Paths are names (\\wpd:phone7\Card\Music\a.mp3, the
/// first one that of a storage), while the device knows ids of objects, so each access looks for
/// the names from the root on. Of several objects of one name in a folder the first counts, and is
/// the only one that is listed; names are found exactly or, but for a removal, without regard to
/// case. The settings WpdDevicesCount, WpdDevice0, WpdDevice1 ... keep the devices that the user
/// took into use.
///
/// Where the result is a bool, a failure has a line in the log unless the operation was cancelled;
/// that a path leads to nothing, or a device is none to keep files on, is an answer and has none.
/// progress is asked for a cancel for each object, and for each block of a file. The calls that
/// take a path need nothing of the list of devices, so they may come from any thread.
class QO_API CQoWPDManager : public CQoUSBManagerBase
{
public:
    using ObjectInfo = CWPDUtils::ObjectInfo;
    /// Bits.
    enum EDeviceItemType : int
    {
        deviceFolders = 1,
        deviceFiles = 2,
        withoutTags = 4 ///< the records have path, size and times, and nothing of the music
    };
    static constexpr int wholeDepth = 0xffff;
    /// The block of a transfer, in bytes.
    static constexpr int transferBuffer = 256 * 1024;

    CQoWPDManager();

    /// Loads the devices from the settings and looks which are there.
    void init();
    void saveDevices() override;
    void refreshDevices() override;
    bool detectMusicAndMoviesDirs(UsbDeviceInfoPtr& device,
                                  bool& foundMusic,
                                  bool& foundMovies) override;

    /// With a watcher: init(), and the system reports to it from now on, which is to hand each
    /// report to deviceChanged() on the thread that works with the kernel. Null ends the reports.
    void registerNotifications(qo::IPortableWatcher* window);
    /// event: a PortableEvent::EEvent, others are ignored; broadcast may be null. Listeners hear of
    /// a device that came and was accepted, and of one that was connected and went.
    void deviceChanged(int event, const qo::PortableEvent* broadcast);
    void
    updateDevice(const CString& id, const CString& name, bool active, bool readable, bool writable);
    /// Looks at one device. True, with the device, if it keeps files and is no mere view of a disk
    /// of the system.
    bool refreshDevice(const CString& id, UsbDeviceInfoPtr& device);
    bool canCopyFromDevice(const CString& id) const;
    bool canCopyToDevice(const CString& id) const;

    /// The object of a path, whose parent's id for the first component is given.
    static bool getPathInfo(qo::IPortableDevice& content,
                            const CQoCollPath& path,
                            const CString& parent,
                            IQoProgress* progress,
                            ObjectInfo& info);
    static bool getPathInfo(const CQoCollPath& path, IQoProgress* progress, ObjectInfo& info);
    /// Appends a record for each file or folder below the path, with what the device says of it.
    /// False when not all could be listed; files has what was found, also after a cancel.
    static bool getFilesFromDevice(const CQoCollPath& path,
                                   int types,
                                   bool recursive,
                                   IQoProgress* progress,
                                   QoFileDbItemArray& files);
    /// The same for folders, down to that many levels.
    static bool getDirSubDirs(const CQoCollPath& path,
                              int depth,
                              IQoProgress* progress,
                              QoFileDbItemArray& dirs);
    /// Copies what the device says of the object, without its path, to the record.
    static void copyInfo(const ObjectInfo& info, QoFileDbItem& item);

    /// The sums over the storages in which the paths lie, each counted once; a path of a device
    /// alone stands for all its storages.
    static bool getDeviceFillStateInfo(const CArray<CQoCollPath>& paths,
                                       std::int64_t& total,
                                       std::int64_t& free);
    /// Makes the folders of the path that are missing; objectId is that of the last.
    static bool checkCreateDir(const CQoCollPath& path,
                               qo::IPortableDevice& content,
                               IQoProgress* progress,
                               CString& objectId);
    static bool createDir(const CQoCollPath& path, IQoProgress* progress, CString& objectId);

    /// Copies until the source ends. The progress gets the number of bytes if absolute, else that
    /// in hundredths of base.
    static bool streamCopy(qo::IByteStream& dest,
                           qo::IByteStream& source,
                           int bufferSize,
                           std::int64_t base,
                           IQoProgress* progress,
                           bool absolute);
    /// Copies a file of a device to a local path, which it replaces; after a failure or a cancel
    /// there is no such file. total is the base of the progress.
    static bool getFile(const CString& devicePath,
                        const CString& target,
                        std::int64_t total,
                        IQoProgress* progress,
                        bool absolute);
    /// Copies a local file to a path of a device, whose folders are made; record may be null. A
    /// failure or a cancel leaves no file there. An object of that name stays beside the new one.
    static bool putFile(const CString& source,
                        const QoFileDbItemPtr& record,
                        const CString& target,
                        std::int64_t total,
                        IQoProgress* progress);
    static bool deleteFile(const CString& path, IQoProgress* progress);
    /// Copies a local file to the place of one that is there. Where the device can rename files the
    /// new one is sent under a passing name, and the former one stays until all of it is there.
    /// Elsewhere the former one goes first, since of two files of one name a path leads to the
    /// older one; a failure then leaves neither.
    static bool replaceFile(const CString& source,
                            const CString& target,
                            std::int64_t total,
                            IQoProgress* progress);
    /// To be called when a local file has been sent to that path. A cable that is pulled while a
    /// file is replaced leaves one there under a passing name, which may be all that the device
    /// has of it. Those in the folder of the path go whose bytes are the first ones of the local
    /// file, so none is lost. How many stay; -1 when the folder cannot be listed.
    static int removeLeftParts(const CString& source, const CString& target, IQoProgress* progress);
    /// A download to a temporary file, not started yet.
    static boost::shared_ptr<IDownloadItem> getPlayDownloadItem(const CString& id);
};

extern QO_API CQoWPDManager theQoWPDManager;
