#pragma once

#include "types/Export.h"

#include <functional>

namespace KVTagLib
{
/// Lets a caller stop the writing of tags: while the object lives, a writer on this thread calls
/// the function between blocks of its work and gives up when it returns true, with the file as it
/// was. After it returned true it must go on doing so. Objects may be nested and end in reverse
/// order; the innermost one is asked.
class QO_API WriteStop
{
public:
    /// The function must not be empty and must not throw: a writer lets an exception through.
    explicit WriteStop(std::function<bool()> stop);
    ~WriteStop();
    WriteStop(const WriteStop&) = delete;
    WriteStop& operator=(const WriteStop&) = delete;

    /// Whether a writer on this thread shall stop; false where no object lives.
    static bool isAsked();

private:
    std::function<bool()> m_stop;
    const WriteStop* m_outer;
};
} // namespace KVTagLib
