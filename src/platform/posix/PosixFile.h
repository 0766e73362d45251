#pragma once

#include "platform/FileSystem.h"

namespace qo
{
/// An open file descriptor, which it owns. size is what sizeAtOpen() returns.
class PosixFile final : public IFile
{
public:
    explicit PosixFile(int descriptor, std::int64_t size = 0) noexcept
        : m_descriptor(descriptor), m_sizeAtOpen(size)
    {
    }
    ~PosixFile() override;
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;

    std::int64_t read(void* buffer, std::size_t size) override;
    bool write(const void* data, std::size_t size) override;
    bool seek(std::int64_t position) override;
    bool seekToEnd() override;
    std::int64_t position() const override;
    std::int64_t sizeAtOpen() const override { return m_sizeAtOpen; }
    int error() const override { return m_error; }

    int descriptor() const noexcept { return m_descriptor; }
    /// Flushes to the disk; the error number, 0 for success.
    int sync();

private:
    int m_descriptor;
    std::int64_t m_sizeAtOpen;
    int m_error = 0;
};
} // namespace qo
