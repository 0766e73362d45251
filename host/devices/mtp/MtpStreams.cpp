#include "devices/mtp/MtpStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qo::host
{
namespace
{
/// A file without a name in the kernel's temporary folder.
class NamelessFile
{
public:
    NamelessFile()
    {
        std::string path = toSystemPath(CQoPaths::makeTempFilePath(u"portable-")) + "XXXXXX";
        m_descriptor = ::mkostemp(path.data(), O_CLOEXEC);
        m_error = m_descriptor < 0 ? errno : 0;
        if (m_descriptor >= 0)
            ::unlink(path.c_str());
    }
    ~NamelessFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    NamelessFile(const NamelessFile&) = delete;
    NamelessFile& operator=(const NamelessFile&) = delete;

    int descriptor() const { return m_descriptor; }
    int error() const { return m_error; }
    DeviceResult read(void* buffer, std::size_t size, std::size_t& done) const
    {
        const ssize_t count = ::read(m_descriptor, buffer, size);
        done = count < 0 ? 0 : static_cast<std::size_t>(count);
        return count < 0 ? deviceResult::fromError(errno) : deviceResult::ok;
    }
    DeviceResult write(const void* data, std::size_t size) const
    {
        const auto* at = static_cast<const char*>(data);
        for (std::size_t left = size; left > 0;)
        {
            const ssize_t count = ::write(m_descriptor, at, left);
            if (count < 0 && errno == EINTR)
                continue;
            if (count <= 0)
                return deviceResult::fromError(count < 0 ? errno : EIO);
            at += count;
            left -= static_cast<std::size_t>(count);
        }
        return deviceResult::ok;
    }
    bool rewind() const { return ::lseek(m_descriptor, 0, SEEK_SET) == 0; }

private:
    int m_descriptor;
    int m_error;
};

/// Cannot be written.
class ReadingStream : public IByteStream
{
public:
    DeviceResult write(const void*, std::size_t, std::size_t& done) final
    {
        done = 0;
        return deviceResult::accessDenied;
    }
    DeviceResult commit() final { return deviceResult::accessDenied; }
};

/// Reads parts of the object, each with a call of its own.
class PartReader final : public ReadingStream
{
public:
    PartReader(std::shared_ptr<MtpConnection> connection, const MtpId& id, std::int64_t size)
        : m_connection(std::move(connection)), m_id(id), m_size(size)
    {
    }

    DeviceResult read(void* buffer, std::size_t size, std::size_t& done) override
    {
        done = 0;
        const auto wanted = static_cast<std::uint32_t>(std::min<std::int64_t>(
            {m_size - m_at, static_cast<std::int64_t>(size), std::int64_t{1} << 20}));
        if (wanted == 0)
            return deviceResult::ok;
        const auto call = [&](LIBMTP_mtpdevice_t& device)
        {
            unsigned char* data = nullptr;
            unsigned count = 0;
            const int result = ::LIBMTP_GetPartialObject(
                &device, m_id.object, static_cast<std::uint64_t>(m_at), wanted, &data, &count);
            const std::unique_ptr<unsigned char, decltype(&::free)> owner(data, &::free);
            // What ends before its size was not sent in full.
            if (result != 0 || !data || count == 0)
                return false;
            done = std::min<std::size_t>(count, wanted);
            std::memcpy(buffer, data, done);
            return true;
        };
        const DeviceResult result = m_connection->run("GetPartialObject", call);
        m_at += static_cast<std::int64_t>(done);
        return result;
    }
    std::int64_t size() const override { return m_size; }

private:
    const std::shared_ptr<MtpConnection> m_connection;
    const MtpId m_id;
    const std::int64_t m_size;
    std::int64_t m_at = 0;
};

class CopyReader final : public ReadingStream
{
public:
    DeviceResult fill(MtpConnection& connection, const MtpId& id, std::int64_t size)
    {
        if (m_file.error() != 0)
            return deviceResult::fromError(m_file.error());
        m_size = size;
        const DeviceResult result = connection.run(
            "Get_File_To_File_Descriptor",
            [&](LIBMTP_mtpdevice_t& device)
            {
                return ::LIBMTP_Get_File_To_File_Descriptor(
                           &device, id.object, m_file.descriptor(), nullptr, nullptr) == 0;
            });
        return result == deviceResult::ok && !m_file.rewind() ? deviceResult::failed : result;
    }

    DeviceResult read(void* buffer, std::size_t size, std::size_t& done) override
    {
        return m_file.read(buffer, size, done);
    }
    std::int64_t size() const override { return m_size; }

private:
    NamelessFile m_file;
    std::int64_t m_size = 0;
};

struct FormatRow
{
    std::uint16_t code; ///< as in qo::wpd::formatOf()
    LIBMTP_filetype_t type;
};
constexpr FormatRow formatRows[] = {
    {0x3004, LIBMTP_FILETYPE_TEXT}, {0x3005, LIBMTP_FILETYPE_HTML}, {0x3008, LIBMTP_FILETYPE_WAV},
    {0x3009, LIBMTP_FILETYPE_MP3},  {0x300A, LIBMTP_FILETYPE_AVI},  {0x300B, LIBMTP_FILETYPE_MPEG},
    {0x300C, LIBMTP_FILETYPE_ASF},  {0x3801, LIBMTP_FILETYPE_JPEG}, {0x3804, LIBMTP_FILETYPE_BMP},
    {0x3807, LIBMTP_FILETYPE_GIF},  {0x3808, LIBMTP_FILETYPE_JPEG}, {0x380B, LIBMTP_FILETYPE_PNG},
    {0x380D, LIBMTP_FILETYPE_TIFF}, {0xB901, LIBMTP_FILETYPE_WMA},  {0xB902, LIBMTP_FILETYPE_OGG},
    {0xB903, LIBMTP_FILETYPE_AAC},  {0xB906, LIBMTP_FILETYPE_FLAC}, {0xB981, LIBMTP_FILETYPE_WMV},
    {0xB982, LIBMTP_FILETYPE_MP4},  {0xB983, LIBMTP_FILETYPE_MP2},  {0xBA82, LIBMTP_FILETYPE_XML},
    {0xBA83, LIBMTP_FILETYPE_DOC}};

LIBMTP_filetype_t typeOf(const PropertyBag& values)
{
    const PropertyValue* const format = values.find(wpd::objectFormat);
    const auto* const id = format ? std::get_if<GUID>(format) : nullptr;
    const auto* const row =
        std::find_if(std::begin(formatRows),
                     std::end(formatRows),
                     [&](const FormatRow& each) { return id && *id == wpd::formatOf(each.code); });
    return row == std::end(formatRows) ? LIBMTP_FILETYPE_UNKNOWN : row->type;
}

class ObjectWriter final : public IByteStream
{
public:
    ObjectWriter(std::shared_ptr<MtpConnection> connection,
                 const MtpId& parent,
                 std::string name,
                 LIBMTP_filetype_t type)
        : m_connection(std::move(connection))
        , m_parent(parent)
        , m_name(std::move(name))
        , m_type(type)
    {
    }
    int error() const { return m_file.error(); }

    DeviceResult read(void*, std::size_t, std::size_t& done) override
    {
        done = 0;
        return deviceResult::accessDenied;
    }
    DeviceResult write(const void* data, std::size_t size, std::size_t& done) override
    {
        const DeviceResult result = m_file.write(data, size);
        done = result == deviceResult::ok ? size : 0;
        m_written += done;
        return result;
    }
    DeviceResult commit() override
    {
        if (!m_file.rewind())
            return deviceResult::fromError(errno);
        return m_connection->run("Send_File_From_File_Descriptor",
                                 [this](LIBMTP_mtpdevice_t& device) { return send(device); });
    }
    std::int64_t size() const override { return 0; }

private:
    bool send(LIBMTP_mtpdevice_t& device) const
    {
        const std::unique_ptr<LIBMTP_file_t, decltype(&::LIBMTP_destroy_file_t)> file(
            ::LIBMTP_new_file_t(), &::LIBMTP_destroy_file_t);
        file->filename = ::strdup(m_name.c_str());
        file->filesize = m_written;
        file->filetype = m_type;
        file->parent_id = m_parent.object;
        file->storage_id = m_parent.storage;
        file->item_id = 0;
        if (::LIBMTP_Send_File_From_File_Descriptor(
                &device, m_file.descriptor(), file.get(), nullptr, nullptr) == 0)
            return true;
        // The device may have made the object before its bytes failed to come.
        if (file->item_id != 0)
            ::LIBMTP_Delete_Object(&device, file->item_id);
        return false;
    }

    const std::shared_ptr<MtpConnection> m_connection;
    const MtpId m_parent;
    const std::string m_name;
    const LIBMTP_filetype_t m_type;
    NamelessFile m_file;
    std::uint64_t m_written = 0;
};
} // namespace

DeviceResult readObject(const std::shared_ptr<MtpConnection>& connection,
                        const MtpId& id,
                        std::unique_ptr<IByteStream>& stream)
{
    MtpFile file;
    DeviceResult result = connection->file(id, file);
    bool givesParts = false;
    if (result == deviceResult::ok)
        result = connection->run("Check_Capability",
                                 [&](LIBMTP_mtpdevice_t& device)
                                 {
                                     givesParts =
                                         ::LIBMTP_Check_Capability(
                                             &device, LIBMTP_DEVICECAP_GetPartialObject) != 0;
                                     return true;
                                 });
    if (result != deviceResult::ok)
        return result;
    if (givesParts)
    {
        stream = std::make_unique<PartReader>(connection, id, file.size);
        return deviceResult::ok;
    }
    auto copy = std::make_unique<CopyReader>();
    result = copy->fill(*connection, id, file.size);
    if (result == deviceResult::ok)
        stream = std::move(copy);
    return result;
}

bool placeOf(const PropertyBag& values, MtpId& parent, std::string& name)
{
    const PropertyValue* const folder = values.find(wpd::objectParentId);
    const PropertyValue* const called = values.find(wpd::objectOriginalName);
    if (!folder || !called || !std::get_if<CString>(folder) || !std::get_if<CString>(called))
        return false;
    name = toUtf8(farNameOf(*std::get_if<CString>(called)));
    return MtpId::parse(*std::get_if<CString>(folder), parent) && !name.empty();
}

DeviceResult writeObject(const std::shared_ptr<MtpConnection>& connection,
                         const PropertyBag& values,
                         std::unique_ptr<IByteStream>& stream)
{
    MtpId parent;
    std::string name;
    if (!placeOf(values, parent, name))
        return deviceResult::accessDenied;
    auto writer = std::make_unique<ObjectWriter>(connection, parent, name, typeOf(values));
    if (writer->error() != 0)
        return deviceResult::fromError(writer->error());
    stream = std::move(writer);
    return deviceResult::ok;
}
} // namespace qo::host
