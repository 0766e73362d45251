#pragma once

#include "devices/mtp/UsbNode.h"

#include <QoKernel/Devices.h>
#include <QoKernel/Kernel.h>

#include <libmtp.h>

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace qo::host
{
/// An object on a device, or one of its storages, by the numbers that the device gives out:
/// "s00010001" and "s00010001o0000002a" as texts.
struct MtpId
{
    static constexpr std::uint32_t rootOfStorage = LIBMTP_FILES_AND_FOLDERS_ROOT;

    std::uint32_t storage = 0;
    std::uint32_t object = rootOfStorage;

    CString text() const;
    /// False for what is no such text.
    static bool parse(const CString& text, MtpId& id);
    bool isStorage() const { return object == rootOfStorage; }
};

/// A file or folder as a listing has it.
struct MtpFile
{
    CString name;
    std::int64_t size = 0;
    std::int64_t modified = 0; ///< seconds since 1970
    LIBMTP_filetype_t type = LIBMTP_FILETYPE_UNKNOWN;
};

struct MtpStorage
{
    CString name;
    std::int64_t capacity = 0;
    std::int64_t free = 0;
    bool isWritable = false;
};

/// One open device. The library's handle is not for several threads, so each call takes the lock;
/// nothing of the caller's is called while it is held. Calls return a qo::DeviceResult, and log
/// what the library says of a failure; after the device has left, each is notConnected.
class MtpConnection
{
public:
    /// Takes over the handle.
    MtpConnection(LIBMTP_mtpdevice_t* handle, UsbNode node);
    ~MtpConnection();
    MtpConnection(const MtpConnection&) = delete;
    MtpConnection& operator=(const MtpConnection&) = delete;

    CString name();
    bool isGone();
    /// Calls of the library; call returns whether they succeeded.
    DeviceResult run(const char* what, const std::function<bool(LIBMTP_mtpdevice_t&)>& call);

    /// As the device says now.
    DeviceResult storages(std::map<std::uint32_t, MtpStorage>& list);
    DeviceResult children(const MtpId& folder, std::vector<MtpId>& ids);
    /// Of an object that a listing had, or the device is asked.
    DeviceResult file(const MtpId& id, MtpFile& file);
    DeviceResult rename(const MtpId& id, const CString& name);

private:
    const UsbNode m_node;
    std::mutex m_mutex; ///< guards what follows
    LIBMTP_mtpdevice_t* m_handle;
    bool m_isGone = false;
    std::map<std::uint32_t, MtpFile> m_files; ///< what listings had, by the object's number
};
} // namespace qo::host
