#pragma once

#include "KVTagLib/Forward.h"
#include "types/String.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace KVTagLib
{
/// Reads the tags of files that are known to come, on threads of its own, so that whoever asks for
/// one file after the other finds most of them read. There are as many threads as cores, and up to
/// sixteen where files keep them waiting. What was read and not asked for yet is bounded: by 8 MiB
/// of texts, and by a number of files. The object itself is for one thread.
class QO_API TagsAhead
{
public:
    struct Limits
    {
        int threads = 0; ///< 0: as the machine and the files have it
        /// Milliseconds that one file of several is waited for; with four of them the disk is
        /// taken to have gone, and nothing more is read.
        std::uint32_t patience = 60'000;
    };

    /// The files come in the order in which they will be asked for, as paths in collection form.
    /// Pictures are extracted into that folder, as CTags
    /// has it. isStopped is asked while a file is waited for, on the thread that asked for the
    /// file; it may be empty.
    TagsAhead(const std::vector<CString>& files,
              const CString& pictureDir,
              std::function<bool()> isStopped,
              const Limits& limits);
    /// Waits for the files that are being read, but not for one that keeps its thread waiting: that
    /// thread ends by itself when the system gives it back.
    ~TagsAhead();
    TagsAhead(const TagsAhead&) = delete;
    TagsAhead& operator=(const TagsAhead&) = delete;

    /// Like CTagsReaderFactory::CreateTagsReader(). The reader gives what was read ahead, with all
    /// pictures, whatever limits it is called with; it waits where that is still being done. A file
    /// that is not among those that come next, or the only one, it reads at once, however long that
    /// takes. What comes before the file is passed over. The reader must not outlive this object.
    ITagsReader* createTagsReader(const CString& path);
    /// Whether the last file was not read to its end: it kept its thread waiting for too long, or
    /// the reading was stopped. The reader's Read() was false then; GetError() is "" after a stop.
    bool hasGivenUp() const { return m_hasGivenUp; }

private:
    class Reader;
    class Pool;

    bool take(const CString& path, CTags& tags, CString& error);

    std::unique_ptr<Pool> m_pool;
    std::function<bool()> m_isStopped;
    bool m_hasGivenUp = false;
};
} // namespace KVTagLib
