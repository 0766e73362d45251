#pragma once

#include "types/Exception.h"
#include "types/String.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace qo
{
class IFile;
}

/// A buffered text file with an encoding: UTF-16 with a byte-order mark, or bytes in a code page,
/// which here is UTF-8 for every code page. Not for several threads at once.
class QO_API CStdioFileEx
{
public:
    static constexpr unsigned utf8CodePage = 65001;

    enum EFlags : unsigned
    {
        modeRead = 0x0,
        modeWrite = 0x1,
        modeReadWrite = 0x2,
        modeCreate = 0x1000,
        modeNoTruncate = 0x2000,
        modeUnicode = 0x200000 ///< writes UTF-16
    };

    explicit CStdioFileEx(unsigned codePage = utf8CodePage);
    ~CStdioFileEx();
    CStdioFileEx(const CStdioFileEx&) = delete;
    CStdioFileEx& operator=(const CStdioFileEx&) = delete;

    /// False if the file cannot be opened; the reason is in error().
    bool Open(const CString& path, unsigned flags);
    /// Writes what is buffered, and closes; false if writing fails.
    bool Close();

    /// The next line without its end (LF or CR LF); false at the end of the file. A line beyond 1
    /// MiB is cut, and its rest is skipped.
    bool ReadString(CString& line);
    /// Writes the text without adding a line end. Before the first text in an empty file it writes
    /// the mark.
    bool WriteString(const char16_t* text);

    /// In bytes, what is buffered counted in; 0 while no file is open.
    std::int64_t GetPosition() const;
    std::int64_t GetLength();

    bool isUnicode() const { return m_isUnicode; }
    /// The system's error number of the last failure.
    int error() const { return m_error; }

private:
    bool readWideLine(CString& line);
    bool readByteLine(CString& line);
    bool fill();
    int nextByte();
    bool put(const void* data, std::size_t size);
    bool flush();
    void skipMark();

    unsigned m_codePage;
    unsigned m_flags = 0;
    bool m_isUnicode = false;
    bool m_firstRead = true;
    bool m_firstWrite = true;
    int m_error = 0;
    std::unique_ptr<qo::IFile> m_file;
    std::vector<char> m_buffer;
    std::size_t m_next = 0;     ///< index of the first unread byte of the buffer
    std::vector<char> m_output; ///< not yet written to the file
};
