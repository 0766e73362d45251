#include "QoColl/Devices/LocalStream.h"

#include "platform/Platform.h"

namespace qo
{
std::unique_ptr<IByteStream>
LocalStream::open(const CString& path, OpenMode mode, DeviceResult& result)
{
    int error = 0;
    std::unique_ptr<IFile> file = fileSystem().open(path, mode, error);
    result = file ? deviceResult::ok : deviceResult::fromError(error);
    return file ? std::unique_ptr<IByteStream>(new LocalStream(std::move(file))) : nullptr;
}

DeviceResult LocalStream::read(void* buffer, std::size_t size, std::size_t& done)
{
    const std::int64_t count = m_file->read(buffer, size);
    done = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count < 0 ? deviceResult::fromError(m_file->error()) : deviceResult::ok;
}

DeviceResult LocalStream::write(const void* data, std::size_t size, std::size_t& done)
{
    const bool isWritten = m_file->write(data, size);
    done = isWritten ? size : 0;
    return isWritten ? deviceResult::ok : deviceResult::fromError(m_file->error());
}
} // namespace qo
