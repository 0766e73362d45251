#pragma once

#include "types/Export.h"

#include <functional>

namespace KVTagLib
{
/// While it lives, what writes tags on this thread asks the function between blocks of its work
/// whether to stop. It gives up then, with the file as it was. The function must stay with a yes.
/// Of several the youngest is asked; they end in reverse order.
class QO_API WriteStop
{
public:
    /// The function must not be empty and must not throw: what writes passes an exception on.
    explicit WriteStop(std::function<bool()> stop);
    ~WriteStop();
    WriteStop(const WriteStop&) = delete;
    WriteStop& operator=(const WriteStop&) = delete;

    /// Whether the writer is to stop; false where no object lives.
    static bool isAsked();

private:
    std::function<bool()> m_stop;
    const WriteStop* m_outer;
};
} // namespace KVTagLib
