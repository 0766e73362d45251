#include "KVTagLib/ByteStream.h"

#include <algorithm>
#include <cstring>

namespace KVTagLib
{
thread_local std::unique_ptr<char[]> ByteStream::s_spareBlock;

ByteStream::ByteStream(std::unique_ptr<qo::IFile> file)
    : m_file(std::move(file)), m_block(std::move(s_spareBlock))
{
    if (!m_block)
        m_block = std::make_unique_for_overwrite<char[]>(blockBytes);
    for (std::size_t i = 0; i < m_pages.size(); ++i)
        m_pages[i].bytes = m_block.get() + i * pageBytes;
    m_size = static_cast<long>(m_file->sizeAtOpen());
}

ByteStream::~ByteStream()
{
    s_spareBlock = std::move(m_block);
}

TagLib::ByteVector ByteStream::readBlock(unsigned long length)
{
    const long left = m_size - m_position;
    if (left <= 0 || length == 0)
        return {};
    const long wanted = static_cast<long>(std::min<unsigned long>(length, left));
    m_served += wanted;
    if (m_served > maxBytes || ++m_reads > maxReads)
    {
        m_exhausted = true;
        return {};
    }
    // What is larger than a page is mostly a picture or a whole tag, which is read once; it shall
    // not displace pages.
    const Page* page = wanted <= pageBytes || m_size <= blockBytes ? pageAt(m_position) : nullptr;
    if (page && page->start + page->length >= m_position + wanted)
    {
        const char* bytes = page->bytes + (m_position - page->start);
        m_position += wanted;
        return {bytes, static_cast<unsigned>(wanted)};
    }
    TagLib::ByteVector block(static_cast<unsigned>(wanted));
    const long got = readAt(m_position, block.data(), wanted);
    if (got < wanted)
        block.resize(static_cast<unsigned>(got));
    m_position += got;
    return block;
}

void ByteStream::seek(long offset, Position from)
{
    // Parsers add sizes that a file states; a position beyond the end reads as empty.
    const long base = from == Beginning ? 0 : from == Current ? m_position : m_size;
    m_position = std::max(0L, base + offset);
}

const ByteStream::Page* ByteStream::pageAt(long position)
{
    for (const Page& page : m_pages)
    {
        if (position >= page.start && position < page.start + page.length)
            return &page;
    }
    // The first page of a small file takes the whole block; the others then stay empty.
    const bool whole = m_size <= blockBytes;
    Page& page = m_pages[whole ? 0 : m_nextPage];
    m_nextPage = (m_nextPage + 1) % m_pages.size();
    page.start = whole ? 0 : position / pageBytes * pageBytes;
    page.length = readAt(page.start, page.bytes, whole ? m_size : pageBytes);
    return position < page.start + page.length ? &page : nullptr;
}

long ByteStream::readAt(long position, char* bytes, long length)
{
    length = std::min(length, m_size - position);
    if (m_filePosition != position && !m_file->seek(position))
        return 0;
    long done = 0;
    while (done < length)
    {
        const auto got = m_file->read(bytes + done, static_cast<std::size_t>(length - done));
        if (got <= 0)
            break;
        done += static_cast<long>(got);
    }
    m_filePosition = position + done;
    return done;
}
} // namespace KVTagLib
