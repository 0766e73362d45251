#pragma once

#include "platform/FileSystem.h"
#include "platform/PortableDevices.h"

namespace qo
{
/// A local file as the other end of a transfer.
class LocalStream final : public IByteStream
{
public:
    /// The stream; null on failure, with its code.
    static std::unique_ptr<IByteStream>
    open(const CString& path, OpenMode mode, DeviceResult& result);

    DeviceResult read(void* buffer, std::size_t size, std::size_t& done) override;
    DeviceResult write(const void* data, std::size_t size, std::size_t& done) override;
    DeviceResult commit() override { return deviceResult::ok; }
    std::int64_t size() const override { return m_file->sizeAtOpen(); }

private:
    explicit LocalStream(std::unique_ptr<IFile> file) : m_file(std::move(file)) {}

    const std::unique_ptr<IFile> m_file;
};
} // namespace qo
