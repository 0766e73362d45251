#pragma once

#include "platform/FileSystem.h"
#include "platform/Platform.h"

#include <new>

/// The real file system, but memory runs out whenever an open file is read.
class HungryFiles final : public qo::IFileSystem
{
public:
    HungryFiles() { qo::setFileSystem(this); }
    ~HungryFiles() override { qo::setFileSystem(nullptr); }

    int info(const CString& path, qo::Spelling spelling, qo::FileInfo& info) override
    {
        return m_real.info(path, spelling, info);
    }
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override
    {
        return m_real.list(folder, entries);
    }
    std::unique_ptr<qo::IFile> open(const CString& path, qo::OpenMode mode, int& error) override
    {
        auto file = m_real.open(path, mode, error);
        return file ? std::make_unique<File>(std::move(file)) : nullptr;
    }
    int makeDirectory(const CString& path) override { return m_real.makeDirectory(path); }
    int makeDirectories(const CString& path) override { return m_real.makeDirectories(path); }
    int removeFile(const CString& path) override { return m_real.removeFile(path); }
    int removeDirectory(const CString& path) override { return m_real.removeDirectory(path); }
    int moveFile(const CString& from, const CString& to) override
    {
        return m_real.moveFile(from, to);
    }
    int moveFileNoReplace(const CString& from, const CString& to) override
    {
        return m_real.moveFileNoReplace(from, to);
    }
    int copyFile(const CString& from, const CString& to) override
    {
        return m_real.copyFile(from, to);
    }
    int replaceFile(const CString& path,
                    const void* data,
                    std::size_t size,
                    qo::Durability durability) override
    {
        return m_real.replaceFile(path, data, size, durability);
    }
    int mayChange(const CString& path) override { return m_real.mayChange(path); }
    int makeWritable(const CString& path) override { return m_real.makeWritable(path); }
    bool isLink(const CString& path) override { return m_real.isLink(path); }

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

    qo::IFileSystem& m_real = qo::fileSystem();
};
