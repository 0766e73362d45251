#pragma once

#include "platform/FileSystem.h"

namespace qo
{
/// IFileSystem over POSIX calls and statx.
class PosixFileSystem final : public IFileSystem
{
public:
    int info(const CString& path, Spelling spelling, FileInfo& info) override;
    int list(const CString& folder, std::vector<DirEntry>& entries) override;
    std::unique_ptr<IFile> open(const CString& path, OpenMode mode, int& error) override;
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
                    Durability durability) override;
    int makeWritable(const CString& path) override;
    bool isLink(const CString& path) override;
    int look(const CString& path, NameInfo& info) override;
    int lookThrough(const CString& path, NameInfo& info) override;
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

private:
    /// The system path to read from: as given, or the only existing one that differs in case alone.
    static std::string readPath(const CString& path);
};
} // namespace qo
