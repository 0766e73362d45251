#pragma once

#include <QoKernel/Kernel.h>

#include <functional>
#include <string>

/// An open file that another one stands behind.
class PassingFile : public qo::IFile
{
public:
    explicit PassingFile(std::unique_ptr<qo::IFile> real) : m_real(std::move(real)) {}

    std::int64_t read(void* buffer, std::size_t size) override
    {
        return m_real->read(buffer, size);
    }
    bool write(const void* data, std::size_t size) override { return m_real->write(data, size); }
    bool seek(std::int64_t position) override { return m_real->seek(position); }
    bool seekToEnd() override { return m_real->seekToEnd(); }
    std::int64_t position() const override { return m_real->position(); }
    std::int64_t sizeAtOpen() const override { return m_real->sizeAtOpen(); }
    int error() const override { return m_real->error(); }

private:
    std::unique_ptr<qo::IFile> m_real;
};

/// The real file system, which everything uses while this lives. A hook is asked before each call,
/// with the name of the call and its first path, and answers with the error number with which the
/// call shall fail, 0 for letting it through: so a test makes a disk that fails at the n-th call,
/// one that is slow, or one that cannot do something.
class TestFileSystem : public qo::IFileSystem
{
public:
    using Hook = std::function<int(const std::string& call, const CString& path)>;
    using Stop = std::function<bool()>;

    explicit TestFileSystem(Hook before = {}) : m_before(std::move(before))
    {
        qo::setFileSystem(this);
    }
    ~TestFileSystem() override { qo::setFileSystem(nullptr); }
    TestFileSystem(const TestFileSystem&) = delete;
    TestFileSystem& operator=(const TestFileSystem&) = delete;

    std::unique_ptr<qo::IFile> open(const CString& path, qo::OpenMode mode, int& error) override
    {
        error = before("open", path);
        return error != 0 ? nullptr : m_real.open(path, mode, error);
    }
    bool isLink(const CString& path) override
    {
        return before("isLink", path) == 0 && m_real.isLink(path);
    }
    int info(const CString& path, qo::Spelling spelling, qo::FileInfo& info) override
    {
        return pass("info", &qo::IFileSystem::info, path, spelling, info);
    }
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override
    {
        return pass("list", &qo::IFileSystem::list, folder, entries);
    }
    int makeDirectory(const CString& path) override
    {
        return pass("makeDirectory", &qo::IFileSystem::makeDirectory, path);
    }
    int makeDirectories(const CString& path) override
    {
        return pass("makeDirectories", &qo::IFileSystem::makeDirectories, path);
    }
    int removeFile(const CString& path) override
    {
        return pass("removeFile", &qo::IFileSystem::removeFile, path);
    }
    int removeDirectory(const CString& path) override
    {
        return pass("removeDirectory", &qo::IFileSystem::removeDirectory, path);
    }
    int moveFile(const CString& from, const CString& to) override
    {
        return pass("moveFile", &qo::IFileSystem::moveFile, from, to);
    }
    int moveFileNoReplace(const CString& from, const CString& to) override
    {
        return pass("moveFileNoReplace", &qo::IFileSystem::moveFileNoReplace, from, to);
    }
    int copyFile(const CString& from, const CString& to) override
    {
        return pass("copyFile", &qo::IFileSystem::copyFile, from, to);
    }
    int replaceFile(const CString& path,
                    const void* data,
                    std::size_t size,
                    qo::Durability durability) override
    {
        return pass("replaceFile", &qo::IFileSystem::replaceFile, path, data, size, durability);
    }
    int makeWritable(const CString& path) override
    {
        return pass("makeWritable", &qo::IFileSystem::makeWritable, path);
    }
    int look(const CString& path, qo::NameInfo& info) override
    {
        return pass("look", &qo::IFileSystem::look, path, info);
    }
    int lookThrough(const CString& path, qo::NameInfo& info) override
    {
        return pass("lookThrough", &qo::IFileSystem::lookThrough, path, info);
    }
    int giveRights(const CString& folder,
                   std::uint32_t mode,
                   std::uint32_t owner,
                   std::uint32_t group) override
    {
        return pass("giveRights", &qo::IFileSystem::giveRights, folder, mode, owner, group);
    }
    int mayChange(const CString& path) override
    {
        return pass("mayChange", &qo::IFileSystem::mayChange, path);
    }
    int mayRemove(const CString& path) override
    {
        return pass("mayRemove", &qo::IFileSystem::mayRemove, path);
    }
    int mayRead(const CString& path) override
    {
        return pass("mayRead", &qo::IFileSystem::mayRead, path);
    }
    int copyAsNew(const CString& from, const CString& to, const Stop& stop) override
    {
        return pass("copyAsNew", &qo::IFileSystem::copyAsNew, from, to, stop);
    }
    int compareFiles(const CString& one, const CString& other, const Stop& stop) override
    {
        return pass("compareFiles", &qo::IFileSystem::compareFiles, one, other, stop);
    }
    int sync(const CString& path) override { return pass("sync", &qo::IFileSystem::sync, path); }
    int syncAll(const CString& folder) override
    {
        return pass("syncAll", &qo::IFileSystem::syncAll, folder);
    }
    int room(const CString& folder, std::uint64_t& bytes) override
    {
        return pass("room", &qo::IFileSystem::room, folder, bytes);
    }

protected:
    qo::IFileSystem& real() { return m_real; }

private:
    int before(const char* call, const CString& path) const
    {
        return m_before ? m_before(call, path) : 0;
    }
    template <class... Parameters, class... Arguments>
    int pass(const char* call,
             int (qo::IFileSystem::*function)(const CString&, Parameters...),
             const CString& path,
             Arguments&&... arguments)
    {
        const int error = before(call, path);
        return error != 0 ? error : (m_real.*function)(path, std::forward<Arguments>(arguments)...);
    }

    qo::IFileSystem& m_real = qo::fileSystem();
    Hook m_before;
};
