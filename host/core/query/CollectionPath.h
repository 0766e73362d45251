#pragma once

#include <QoKernel/Kernel.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qo::host
{
/// The spelling of a typed path under which the loaded collection has a file or folder; none if it
/// has nothing there. A path of a place whose files are loaded, say the service "NAS", counts from
/// its root and may have its name ahead: "NAS/Music/01.mp3", "Music/01.mp3" and "/Music/01.mp3" are
/// one file, and "NAS" is the place itself. On the kernel's thread.
std::optional<CString> pathInCollection(const std::string& typed);

/// Whether a typed text can only be meant as a path: "/...", "./...", "../...", "." or "..".
bool looksLikePath(const std::string& typed);

/// The files at or below what a path or a shell pattern names. In patterns "*", "?" and "[...]"
/// stand for parts of one name, as in a shell.
class PathSelection
{
public:
    /// None for a text that is neither: no path of the collection and no pattern. Throws HostError
    /// for what looks like a path, but is not in the collection.
    static std::optional<PathSelection> of(const std::string& typed);

    /// A path in collection form.
    bool holds(const CString& path) const;
    bool isPattern() const { return m_isPattern; }
    const std::string& typed() const { return m_typed; }

private:
    std::string m_typed;
    bool m_isPattern = false;
    CString m_path;
    CString m_below;
    std::vector<std::string> m_patterns; ///< of paths as they are shown; one must fit
};
} // namespace qo::host
