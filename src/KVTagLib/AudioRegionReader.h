#pragma once

#include "platform/FileSystem.h"

#include <openssl/evp.h>
#include <taglib/tbytevector.h>

#include <cstdint>
#include <limits>
#include <memory>

namespace KVTagLib
{
/// Looks into a file and adds parts of it to a digest, up to a number of bytes: what goes beyond is
/// passed over. The first failure stays, see sound().
class AudioRegionReader
{
public:
    explicit AudioRegionReader(qo::IFile& file,
                               std::int64_t limit = std::numeric_limits<std::int64_t>::max());

    std::int64_t size() const { return m_size; }
    /// Fewer bytes than asked for only at the end; none behind a failure.
    TagLib::ByteVector look(std::int64_t position, std::int64_t length);
    /// What lies there, as far as the file reaches.
    void add(std::int64_t position, std::int64_t length);
    void add(const TagLib::ByteVector& bytes);
    void addNumber(std::int64_t number);

    /// Whether all was read and added.
    bool sound() const { return m_sound; }
    /// Whether the digest takes no more.
    bool isFull() const { return m_left == 0; }
    std::string digest();

private:
    struct Free
    {
        void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
    };

    /// Fills the block from there on.
    void fill(std::int64_t position);

    qo::IFile& m_file;
    std::int64_t m_size;
    std::int64_t m_left; ///< bytes that the digest still takes
    std::unique_ptr<EVP_MD_CTX, Free> m_context;
    TagLib::ByteVector m_block;
    std::int64_t m_blockAt = 0;
    bool m_sound = true;
};

// The formats whose sound does not lie in one piece.
bool addMp4Sound(AudioRegionReader& file);
bool addOggSound(AudioRegionReader& file);
} // namespace KVTagLib
