#pragma once

#include "support/TestFileSystem.h"

#include <new>

/// The real file system, but memory runs out whenever an open file is read.
class HungryFiles final : public TestFileSystem
{
public:
    std::unique_ptr<qo::IFile> open(const CString& path, qo::OpenMode mode, int& error) override
    {
        auto file = TestFileSystem::open(path, mode, error);
        return file ? std::make_unique<File>(std::move(file)) : nullptr;
    }

private:
    class File final : public qo::IFile
    {
    public:
        explicit File(std::unique_ptr<qo::IFile> real) : m_real(std::move(real)) {}
        std::int64_t read(void*, std::size_t) override { throw std::bad_alloc(); }
        bool write(const void* data, std::size_t size) override
        {
            return m_real->write(data, size);
        }
        bool seek(std::int64_t position) override { return m_real->seek(position); }
        bool seekToEnd() override { return m_real->seekToEnd(); }
        std::int64_t position() const override { return m_real->position(); }
        std::int64_t sizeAtOpen() const override { return m_real->sizeAtOpen(); }
        int error() const override { return m_real->error(); }

    private:
        std::unique_ptr<qo::IFile> m_real;
    };
};
