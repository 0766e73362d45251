#include "common/StdioFileEx.h"

#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "types/Utf.h"

#include <algorithm>
#include <cstring>
#include <string_view>

// Reading goes through a buffer, byte by byte, so that UTF-8 and UTF-16 lines are found in the same
// way; writing collects up to 64 KiB. The encoding of a file that is read follows from its mark.

namespace
{
constexpr std::size_t bufferSize = std::size_t(64) * 1024;
// Limits the memory for one line of a foreign file.
constexpr std::size_t longestLine = std::size_t(1024) * 1024;
constexpr unsigned char utf8Mark[] = {0xEF, 0xBB, 0xBF};
constexpr char16_t utf16Mark = 0xFEFF;

/// The platform's mode for the flags: without a writing flag the file is only read.
qo::OpenMode modeOf(unsigned flags)
{
    if ((flags & (CStdioFileEx::modeWrite | CStdioFileEx::modeReadWrite)) == 0)
        return qo::OpenMode::read;
    if (flags & CStdioFileEx::modeCreate)
        return flags & CStdioFileEx::modeNoTruncate ? qo::OpenMode::append
                                                    : qo::OpenMode::createAlways;
    return qo::OpenMode::update;
}
} // namespace

CStdioFileEx::CStdioFileEx(unsigned codePage) : m_codePage(codePage) {}

CStdioFileEx::~CStdioFileEx()
{
    Close();
}

bool CStdioFileEx::Open(const CString& path, unsigned flags)
{
    Close();
    m_flags = flags;
    m_isUnicode = false;
    m_firstRead = m_firstWrite = true;
    m_file = qo::fileSystem().open(path, modeOf(flags), m_error);
    if (!m_file)
        return false;
    if (modeOf(flags) == qo::OpenMode::read || modeOf(flags) == qo::OpenMode::update)
    {
        char16_t mark = 0;
        m_isUnicode = m_file->read(&mark, sizeof(mark)) == sizeof(mark) && mark == utf16Mark;
        m_file->seek(0);
    }
    return true;
}

bool CStdioFileEx::Close()
{
    const bool done = flush();
    m_file.reset();
    m_buffer.clear();
    m_next = 0;
    return done;
}

std::int64_t CStdioFileEx::GetPosition() const
{
    if (!m_file)
        return 0;
    const auto ahead = static_cast<std::int64_t>(m_buffer.size() - m_next);
    return m_file->position() - ahead + static_cast<std::int64_t>(m_output.size());
}

std::int64_t CStdioFileEx::GetLength()
{
    if (!m_file)
        return 0;
    const std::int64_t position = m_file->position();
    const std::int64_t stored = m_file->seekToEnd() ? m_file->position() : m_file->sizeAtOpen();
    m_file->seek(position);
    return std::max(stored, position + static_cast<std::int64_t>(m_output.size()));
}

/// Reads the next block; false at the end or after a failure.
bool CStdioFileEx::fill()
{
    m_buffer.resize(bufferSize);
    m_next = 0;
    const std::int64_t got = m_file ? m_file->read(m_buffer.data(), bufferSize) : 0;
    m_buffer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    if (got < 0)
        m_error = m_file->error();
    return got > 0;
}

/// -1 at the end.
int CStdioFileEx::nextByte()
{
    if (m_next >= m_buffer.size() && !fill())
        return -1;
    return static_cast<unsigned char>(m_buffer[m_next++]);
}

/// Skips the mark at the start of the file, at the first read.
void CStdioFileEx::skipMark()
{
    if (!m_firstRead)
        return;
    m_firstRead = false;
    if (m_next >= m_buffer.size() && !fill())
        return;
    if (m_isUnicode)
        m_next = sizeof(utf16Mark);
    else if (m_codePage == utf8CodePage && m_buffer.size() >= sizeof(utf8Mark) &&
             std::memcmp(m_buffer.data(), utf8Mark, sizeof(utf8Mark)) == 0)
        m_next = sizeof(utf8Mark);
}

bool CStdioFileEx::ReadString(CString& line)
{
    line.Empty();
    skipMark();
    const bool any = m_isUnicode ? readWideLine(line) : readByteLine(line);
    if (!line.IsEmpty() && line[line.GetLength() - 1] == u'\r')
        line = line.Left(line.GetLength() - 1);
    return any;
}

bool CStdioFileEx::readWideLine(CString& line)
{
    bool any = false;
    for (int low = nextByte(); low >= 0; low = nextByte())
    {
        any = true;
        const int high = nextByte();
        const int unit = low | high << 8;
        if (high < 0 || unit == '\n')
            break;
        if (static_cast<std::size_t>(line.GetLength()) < longestLine / 2)
            line += static_cast<char16_t>(unit);
    }
    return any;
}

/// Mostly a line ends in the block that it begins in, and is then taken in one piece.
bool CStdioFileEx::readByteLine(CString& line)
{
    std::string ahead; // what stands in former blocks
    bool any = false;
    while (m_next < m_buffer.size() || fill())
    {
        any = true;
        const std::string_view rest(m_buffer.data() + m_next, m_buffer.size() - m_next);
        const std::size_t end = rest.find('\n');
        const bool isWhole = end != std::string_view::npos;
        const std::string_view piece =
            rest.substr(0, std::min(isWhole ? end : rest.size(), longestLine - ahead.size()));
        m_next += isWhole ? end + 1 : rest.size();
        if (isWhole && ahead.empty())
        {
            line = qo::fromUtf8(piece);
            return true;
        }
        ahead += piece;
        if (isWhole)
            break;
    }
    line = qo::fromUtf8(ahead);
    return any;
}

bool CStdioFileEx::put(const void* data, std::size_t size)
{
    const char* const bytes = static_cast<const char*>(data);
    m_output.insert(m_output.end(), bytes, bytes + size);
    return m_output.size() < bufferSize || flush();
}

bool CStdioFileEx::flush()
{
    if (!m_file || m_output.empty())
        return true;
    const bool done = m_file->write(m_output.data(), m_output.size());
    if (!done)
        m_error = m_file->error();
    m_output.clear();
    return done;
}

bool CStdioFileEx::WriteString(const char16_t* text)
{
    if (!m_file)
        return false;
    const bool wide = m_flags & modeUnicode;
    bool done = true;
    if (m_firstWrite && m_file->position() == 0)
    {
        if (wide)
            done = put(&utf16Mark, sizeof(utf16Mark));
        else if (m_codePage == utf8CodePage)
            done = put(utf8Mark, sizeof(utf8Mark));
    }
    m_firstWrite = false;
    const CString value(text);
    if (wide)
        return put(value.GetString(),
                   static_cast<std::size_t>(value.GetLength()) * sizeof(char16_t)) &&
               done;
    const std::string bytes = qo::toUtf8(value);
    return put(bytes.data(), bytes.size()) && done;
}
