#pragma once

#include "types/String.h"

#include <string>

/// A folder of its own below the build's temporary folder, removed with all its content at the
/// end. Tests that run at the same time never share one.
class TempDir
{
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    /// The system path, without a closing slash.
    const std::string& path() const { return m_path; }
    /// The system path of something below the folder.
    std::string path(const std::string& relative) const { return m_path + "/" + relative; }
    /// The same in collection form.
    CString collPath() const;
    CString collPath(const std::string& relative) const;

    /// Writes a file, making the folders above it; returns its system path.
    std::string write(const std::string& relative, const std::string& content) const;
    /// Makes a folder with its parents; returns its system path.
    std::string makeFolder(const std::string& relative) const;
    /// A file's bytes; a missing file is a failure of the test.
    std::string read(const std::string& relative) const;

private:
    std::string m_path;
};
