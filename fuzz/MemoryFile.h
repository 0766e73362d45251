#pragma once

#include "platform/FileSystem.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

/// The fuzzer's bytes as an open file.
class MemoryFile final : public qo::IFile
{
public:
    MemoryFile(const std::uint8_t* data, std::size_t size)
        : m_data(data), m_size(static_cast<std::int64_t>(size))
    {
    }

    std::int64_t read(void* buffer, std::size_t size) override
    {
        const std::int64_t left = std::max<std::int64_t>(0, m_size - m_position);
        const std::int64_t count = std::min(left, static_cast<std::int64_t>(size));
        std::memcpy(buffer, m_data + m_position, static_cast<std::size_t>(count));
        m_position += count;
        return count;
    }
    bool write(const void*, std::size_t) override { return false; }
    bool seek(std::int64_t position) override
    {
        m_position = std::min(position, m_size);
        return true;
    }
    bool seekToEnd() override { return seek(m_size); }
    std::int64_t position() const override { return m_position; }
    std::int64_t sizeAtOpen() const override { return m_size; }
    int error() const override { return 0; }

private:
    const std::uint8_t* m_data;
    std::int64_t m_size;
    std::int64_t m_position = 0;
};
