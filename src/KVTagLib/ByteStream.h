#pragma once

#include "platform/FileSystem.h"

#include <taglib/tiostream.h>

#include <array>
#include <memory>

namespace KVTagLib
{
/// A file as TagLib reads it; writing does nothing. The last four pages of 16 KiB are kept, so that
/// the many small jumps of a parser cost few system calls; a file of up to 64 KiB is read at once.
/// The work is bounded: after maxBytes or maxReads the stream looks as if it had ended, whatever a
/// hostile file makes the parser ask for.
class ByteStream final : public TagLib::IOStream
{
public:
    explicit ByteStream(std::unique_ptr<qo::IFile> file);
    ~ByteStream() override;
    ByteStream(const ByteStream&) = delete;
    ByteStream& operator=(const ByteStream&) = delete;

    TagLib::FileName name() const override { return ""; }
    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector&) override {}
    void insert(const TagLib::ByteVector&, unsigned long, unsigned long) override {}
    void removeBlock(unsigned long, unsigned long) override {}
    bool readOnly() const override { return true; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position from) override;
    long tell() const override { return m_position; }
    long length() override { return m_size; }
    void truncate(long) override {}

    /// Whether the limits were reached; what was parsed may then be incomplete.
    bool exhausted() const { return m_exhausted; }

private:
    static constexpr long pageBytes = 16 << 10;
    static constexpr int pageCount = 4;
    /// Files up to this size are read as one page.
    static constexpr long blockBytes = pageBytes * pageCount;
    static constexpr long maxBytes = 160L << 20;
    static constexpr int maxReads = 1'000'000;

    struct Page
    {
        long start = 0;
        long length = 0;
        char* bytes = nullptr; ///< points into m_block
    };

    const Page* pageAt(long position);
    long readAt(long position, char* bytes, long length);

    std::unique_ptr<qo::IFile> m_file;
    long m_size = 0;
    long m_position = 0;
    long m_filePosition = 0; ///< where the file itself stands
    long m_served = 0;       ///< bytes given to the parser so far
    int m_reads = 0;
    bool m_exhausted = false;
    std::unique_ptr<char[]> m_block;
    std::array<Page, pageCount> m_pages;
    std::size_t m_nextPage = 0;

    /// The block of the last stream of this thread, for the next one: allocating 64 KiB for each
    /// file costs as much as reading a small one.
    static thread_local std::unique_ptr<char[]> s_spareBlock;
};
} // namespace KVTagLib
