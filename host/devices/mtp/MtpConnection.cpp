#include "devices/mtp/MtpConnection.h"

#include "devices/mtp/SilentOutput.h"

#include <unistd.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>

namespace qo::host
{
namespace
{
/// A device that says it has more in one folder is not believed.
constexpr std::size_t mostInFolder = 100'000;

CString textOf(const char* text)
{
    return fromUtf8(text ? text : "");
}

std::int64_t bounded(std::uint64_t size)
{
    return static_cast<std::int64_t>(std::min<std::uint64_t>(size, INT64_MAX));
}

MtpFile fileOf(const LIBMTP_file_t& from)
{
    return {textOf(from.filename), bounded(from.filesize), from.modificationdate, from.filetype};
}

struct FileListDeleter
{
    void operator()(LIBMTP_file_t* file) const
    {
        while (file)
        {
            LIBMTP_file_t* const next = file->next;
            ::LIBMTP_destroy_file_t(file);
            file = next;
        }
    }
};
using FileList = std::unique_ptr<LIBMTP_file_t, FileListDeleter>;
} // namespace

CString MtpId::text() const
{
    char text[24];
    const int length =
        isStorage()
            ? std::snprintf(text, sizeof(text), "s%08" PRIx32, storage)
            : std::snprintf(text, sizeof(text), "s%08" PRIx32 "o%08" PRIx32, storage, object);
    return fromUtf8(std::string(text, static_cast<std::size_t>(length)));
}

bool MtpId::parse(const CString& text, MtpId& id)
{
    id = {};
    const std::string plain = toUtf8(text);
    const int count =
        std::sscanf(plain.c_str(), "s%8" SCNx32 "o%8" SCNx32, &id.storage, &id.object);
    return count > 0 && id.text() == text;
}

MtpConnection::MtpConnection(LIBMTP_mtpdevice_t* handle, UsbNode node)
    : m_node(std::move(node)), m_handle(handle)
{
}

MtpConnection::~MtpConnection()
{
    const SilentOutput silence;
    ::LIBMTP_Release_Device(m_handle);
}

bool MtpConnection::isGone()
{
    const std::lock_guard lock(m_mutex);
    m_isGone = m_isGone || ::access(m_node.path.c_str(), F_OK) != 0;
    return m_isGone;
}

DeviceResult MtpConnection::run(const char* what,
                                const std::function<bool(LIBMTP_mtpdevice_t&)>& call)
{
    std::string said;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isGone)
            return deviceResult::notConnected;
        ::LIBMTP_Clear_Errorstack(m_handle);
        if (call(*m_handle))
            return deviceResult::ok;
        for (const LIBMTP_error_t* error = ::LIBMTP_Get_Errorstack(m_handle); error;
             error = error->next)
            said += std::string(said.empty() ? "" : "; ") + error->error_text;
        ::LIBMTP_Clear_Errorstack(m_handle);
    }
    log(level::error,
        u"MtpConnection::run : %s failed for %s: %s",
        fromUtf8(what),
        fromUtf8(m_node.product),
        fromUtf8(said));
    return isGone() ? deviceResult::notConnected : deviceResult::failed;
}

CString MtpConnection::name()
{
    CString name;
    (void)run("Get_Friendlyname",
              [&](LIBMTP_mtpdevice_t& device)
              {
                  const std::unique_ptr<char, decltype(&::free)> text(
                      ::LIBMTP_Get_Friendlyname(&device), &::free);
                  name = textOf(text.get());
                  return true;
              });
    return name;
}

DeviceResult MtpConnection::storages(std::map<std::uint32_t, MtpStorage>& list)
{
    list.clear();
    return run("Get_Storage",
               [&](LIBMTP_mtpdevice_t& device)
               {
                   // Above 0: there are storages, of which the device says nothing more.
                   if (::LIBMTP_Get_Storage(&device, LIBMTP_STORAGE_SORTBY_NOTSORTED) < 0)
                       return false;
                   for (const LIBMTP_devicestorage_t* at = device.storage; at; at = at->next)
                   {
                       MtpStorage storage;
                       storage.name = textOf(at->StorageDescription);
                       if (storage.name.IsEmpty())
                           storage.name = textOf(at->VolumeIdentifier);
                       if (storage.name.IsEmpty())
                           storage.name = MtpId{at->id}.text();
                       storage.capacity = bounded(at->MaxCapacity);
                       storage.free = bounded(at->FreeSpaceInBytes);
                       storage.isWritable = at->AccessCapability == 0;
                       list.emplace(at->id, storage);
                   }
                   return true;
               });
}

DeviceResult MtpConnection::children(const MtpId& folder, std::vector<MtpId>& ids)
{
    return run("Get_Files_And_Folders",
               [&](LIBMTP_mtpdevice_t& device)
               {
                   const FileList files(
                       ::LIBMTP_Get_Files_And_Folders(&device, folder.storage, folder.object));
                   for (const LIBMTP_file_t* at = files.get(); at; at = at->next)
                   {
                       if (ids.size() >= mostInFolder)
                           return false;
                       m_files[at->item_id] = fileOf(*at);
                       ids.push_back({folder.storage, at->item_id});
                   }
                   // The library leaves out what it cannot ask about without a word, so a device
                   // that went in the middle would seem to have less than it has.
                   return ::access(m_node.path.c_str(), F_OK) == 0 &&
                          (files || !::LIBMTP_Get_Errorstack(&device));
               });
}

DeviceResult MtpConnection::file(const MtpId& id, MtpFile& file)
{
    return run("Get_Filemetadata",
               [&](LIBMTP_mtpdevice_t& device)
               {
                   if (const auto known = m_files.find(id.object); known != m_files.end())
                   {
                       file = known->second;
                       return true;
                   }
                   const FileList found(::LIBMTP_Get_Filemetadata(&device, id.object));
                   if (found)
                       file = fileOf(*found);
                   return found != nullptr;
               });
}

DeviceResult MtpConnection::rename(const MtpId& id, const CString& name)
{
    return run("Set_File_Name",
               [&](LIBMTP_mtpdevice_t& device)
               {
                   const FileList file(::LIBMTP_Get_Filemetadata(&device, id.object));
                   m_files.erase(id.object);
                   return file &&
                          ::LIBMTP_Set_File_Name(&device, file.get(), toUtf8(name).c_str()) == 0;
               });
}
} // namespace qo::host
