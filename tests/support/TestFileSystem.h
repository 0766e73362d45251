#pragma once

#include <QoKernel/Kernel.h>

#include <functional>
#include <string>

/// The real file system, which everything uses while this lives. A hook is asked before each call,
/// with the name of the call and its first path, and answers with the error number with which the
/// call shall fail, 0 for letting it through: so a test makes a disk that fails at the n-th call,
/// one that is slow, or one that cannot do something.
class TestFileSystem : public qo::IFileSystem
{
public:
    using Hook = std::function<int(const std::string& call, const CString& path)>;

    explicit TestFileSystem(Hook before = {});
    ~TestFileSystem() override;
    TestFileSystem(const TestFileSystem&) = delete;
    TestFileSystem& operator=(const TestFileSystem&) = delete;

    int info(const CString& path, qo::Spelling spelling, qo::FileInfo& info) override;
    int list(const CString& folder, std::vector<qo::DirEntry>& entries) override;
    std::unique_ptr<qo::IFile> open(const CString& path, qo::OpenMode mode, int& error) override;
    int makeDirectory(const CString& path) override;
    int makeDirectories(const CString& path) override;
    int removeFile(const CString& path) override;
    int removeDirectory(const CString& path) override;
    int moveFile(const CString& from, const CString& to) override;
    int moveFileNoReplace(const CString& from, const CString& to) override;
    int copyFile(const CString& from, const CString& to) override;
    int replaceFile(const CString& path,
                    const void* data,
                    std::size_t size,
                    qo::Durability durability) override;
    int makeWritable(const CString& path) override;
    bool isLink(const CString& path) override;
    int look(const CString& path, qo::NameInfo& info) override;
    int lookThrough(const CString& path, qo::NameInfo& info) override;
    int giveRights(const CString& folder,
                   std::uint32_t mode,
                   std::uint32_t owner,
                   std::uint32_t group) override;
    int mayChange(const CString& path) override;
    int mayRemove(const CString& path) override;
    int mayRead(const CString& path) override;
    int
    copyAsNew(const CString& from, const CString& to, const std::function<bool()>& stop) override;
    int compareFiles(const CString& one,
                     const CString& other,
                     const std::function<bool()>& stop) override;
    int sync(const CString& path) override;
    int syncAll(const CString& folder) override;
    int room(const CString& folder, std::uint64_t& bytes) override;

protected:
    qo::IFileSystem& real() { return m_real; }

private:
    int before(const char* call, const CString& path) const
    {
        return m_before ? m_before(call, path) : 0;
    }

    qo::IFileSystem& m_real = qo::fileSystem();
    Hook m_before;
};
