#include "support/TempDir.h"

#include "platform/FileSystem.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace fs = std::filesystem;

TempDir::TempDir()
{
    fs::create_directories(QO_TEST_TEMP);
    m_path = std::string(QO_TEST_TEMP) + "/XXXXXX";
    if (!::mkdtemp(m_path.data()))
        throw std::runtime_error("cannot make a folder below " QO_TEST_TEMP);
}

TempDir::~TempDir()
{
    // A test may have taken away the rights to its own folders; links are not followed.
    std::error_code error;
    for (auto i = fs::recursive_directory_iterator(
             m_path, fs::directory_options::skip_permission_denied, error);
         i != fs::recursive_directory_iterator();
         i.increment(error))
    {
        if (i->symlink_status(error).type() == fs::file_type::directory)
            fs::permissions(i->path(), fs::perms::owner_all, fs::perm_options::add, error);
    }
    fs::remove_all(m_path, error);
}

CString TempDir::collPath() const
{
    return qo::fromSystemPath(m_path);
}

CString TempDir::collPath(const std::string& relative) const
{
    return qo::fromSystemPath(path(relative));
}

std::string TempDir::write(const std::string& relative, const std::string& content) const
{
    const std::string file = path(relative);
    fs::create_directories(fs::path(file).parent_path());
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << content;
    if (!out.flush())
        throw std::runtime_error("cannot write " + file);
    return file;
}

std::string TempDir::makeFolder(const std::string& relative) const
{
    fs::create_directories(path(relative));
    return path(relative);
}

std::string TempDir::read(const std::string& relative) const
{
    std::ifstream in(path(relative), std::ios::binary);
    EXPECT_TRUE(in.good()) << "cannot read " << path(relative);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}
