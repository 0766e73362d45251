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
    class File final : public PassingFile
    {
    public:
        using PassingFile::PassingFile;
        std::int64_t read(void*, std::size_t) override { throw std::bad_alloc(); }
    };
};
