#pragma once

#include "types/String.h"

#include <exception>

namespace KVTagLib
{
/// Thrown by an editor for a file that it cannot change without loss.
class TagRefusal final : public std::exception
{
public:
    /// What is in the way: "its APE tag is damaged".
    explicit TagRefusal(const CString& cause) : m_cause(cause) {}

    const CString& cause() const { return m_cause; }
    const char* what() const noexcept override { return "the tag cannot be changed"; }

private:
    CString m_cause;
};

/// The cause with what the user can do about most damages: another program writes the container
/// anew.
inline CString withCopyAdvice(const CString& cause)
{
    return cause +
           u"; a copy made with \"ffmpeg -i OLD -map_metadata 0 -c copy NEW\" can be changed";
}
} // namespace KVTagLib
