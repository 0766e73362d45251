#pragma once

#include <taglib/tfilestream.h>

namespace qo
{
class FileReplacement;
}

namespace KVTagLib
{
/// The copy of a file that is being changed, as TagLib's editors read and write it. TagLib cannot
/// report a failed write; here the FileReplacement keeps the first error and refuses to write after
/// it. A write that shall stop ends with an exception (see WriteStop), which the writer catches. It
/// derives from FileStream since TagLib's editors ask for one; the base class's own file is not
/// used.
class CopyStream final : public TagLib::FileStream
{
public:
    /// The replacement must be prepared and outlive the stream.
    explicit CopyStream(qo::FileReplacement& replacement);

    TagLib::ByteVector readBlock(unsigned long length) override;
    void writeBlock(const TagLib::ByteVector& data) override;
    void insert(const TagLib::ByteVector& data,
                unsigned long start = 0,
                unsigned long replace = 0) override;
    void removeBlock(unsigned long start = 0, unsigned long length = 0) override;
    bool readOnly() const override { return false; }
    bool isOpen() const override { return true; }
    void seek(long offset, Position from = Beginning) override;
    void clear() override {}
    long tell() const override { return m_position; }
    long length() override;
    void truncate(long length) override;

private:
    /// Moves everything from one position to the end of the file, forward or backward.
    void moveTail(long from, long to);

    qo::FileReplacement& m_replacement;
    long m_position = 0;
};
} // namespace KVTagLib
