#include "support/TestFileSystem.h"

TestFileSystem::TestFileSystem(Hook before) : m_before(std::move(before))
{
    qo::setFileSystem(this);
}

TestFileSystem::~TestFileSystem()
{
    qo::setFileSystem(nullptr);
}

std::unique_ptr<qo::IFile> TestFileSystem::open(const CString& path, qo::OpenMode mode, int& error)
{
    error = before("open", path);
    return error != 0 ? nullptr : m_real.open(path, mode, error);
}

bool TestFileSystem::isLink(const CString& path)
{
    return before("isLink", path) == 0 && m_real.isLink(path);
}

int TestFileSystem::info(const CString& path, qo::Spelling spelling, qo::FileInfo& info)
{
    const int error = before("info", path);
    return error != 0 ? error : m_real.info(path, spelling, info);
}

int TestFileSystem::list(const CString& folder, std::vector<qo::DirEntry>& entries)
{
    const int error = before("list", folder);
    return error != 0 ? error : m_real.list(folder, entries);
}

int TestFileSystem::makeDirectory(const CString& path)
{
    const int error = before("makeDirectory", path);
    return error != 0 ? error : m_real.makeDirectory(path);
}

int TestFileSystem::makeDirectories(const CString& path)
{
    const int error = before("makeDirectories", path);
    return error != 0 ? error : m_real.makeDirectories(path);
}

int TestFileSystem::removeFile(const CString& path)
{
    const int error = before("removeFile", path);
    return error != 0 ? error : m_real.removeFile(path);
}

int TestFileSystem::removeDirectory(const CString& path)
{
    const int error = before("removeDirectory", path);
    return error != 0 ? error : m_real.removeDirectory(path);
}

int TestFileSystem::moveFile(const CString& from, const CString& to)
{
    const int error = before("moveFile", from);
    return error != 0 ? error : m_real.moveFile(from, to);
}

int TestFileSystem::moveFileNoReplace(const CString& from, const CString& to)
{
    const int error = before("moveFileNoReplace", from);
    return error != 0 ? error : m_real.moveFileNoReplace(from, to);
}

int TestFileSystem::copyFile(const CString& from, const CString& to)
{
    const int error = before("copyFile", from);
    return error != 0 ? error : m_real.copyFile(from, to);
}

int TestFileSystem::replaceFile(const CString& path,
                                const void* data,
                                std::size_t size,
                                qo::Durability durability)
{
    const int error = before("replaceFile", path);
    return error != 0 ? error : m_real.replaceFile(path, data, size, durability);
}

int TestFileSystem::makeWritable(const CString& path)
{
    const int error = before("makeWritable", path);
    return error != 0 ? error : m_real.makeWritable(path);
}

int TestFileSystem::look(const CString& path, qo::NameInfo& info)
{
    const int error = before("look", path);
    return error != 0 ? error : m_real.look(path, info);
}

int TestFileSystem::lookThrough(const CString& path, qo::NameInfo& info)
{
    const int error = before("lookThrough", path);
    return error != 0 ? error : m_real.lookThrough(path, info);
}

int TestFileSystem::giveRights(const CString& folder,
                               std::uint32_t mode,
                               std::uint32_t owner,
                               std::uint32_t group)
{
    const int error = before("giveRights", folder);
    return error != 0 ? error : m_real.giveRights(folder, mode, owner, group);
}

int TestFileSystem::mayChange(const CString& path)
{
    const int error = before("mayChange", path);
    return error != 0 ? error : m_real.mayChange(path);
}

int TestFileSystem::mayRemove(const CString& path)
{
    const int error = before("mayRemove", path);
    return error != 0 ? error : m_real.mayRemove(path);
}

int TestFileSystem::mayRead(const CString& path)
{
    const int error = before("mayRead", path);
    return error != 0 ? error : m_real.mayRead(path);
}

int TestFileSystem::copyAsNew(const CString& from,
                              const CString& to,
                              const std::function<bool()>& stop)
{
    const int error = before("copyAsNew", from);
    return error != 0 ? error : m_real.copyAsNew(from, to, stop);
}

int TestFileSystem::compareFiles(const CString& one,
                                 const CString& other,
                                 const std::function<bool()>& stop)
{
    const int error = before("compareFiles", one);
    return error != 0 ? error : m_real.compareFiles(one, other, stop);
}

int TestFileSystem::sync(const CString& path)
{
    const int error = before("sync", path);
    return error != 0 ? error : m_real.sync(path);
}

int TestFileSystem::syncAll(const CString& folder)
{
    const int error = before("syncAll", folder);
    return error != 0 ? error : m_real.syncAll(folder);
}

int TestFileSystem::room(const CString& folder, std::uint64_t& bytes)
{
    const int error = before("room", folder);
    return error != 0 ? error : m_real.room(folder, bytes);
}
