#pragma once

#include "types/CharClass.h"
#include "types/Export.h"
#include "types/String.h"

#include <cstddef>
#include <functional>
#include <string_view>

namespace qo
{
class TextPool;

/// The path of a file in two parts: the text of its folder, which the files of a folder can share,
/// and its name. A folder of twelve songs so has its long text once, and not in each of their
/// paths. Parts are cut behind the last backslash, whatever the path says; together they are
/// always the text that was given.
///
///   "C:\Music\Ann\01 Dawn.mp3"     folder "C:\Music\Ann\", name "01 Dawn.mp3"
///   "01 Dawn.mp3"                  folder "", name "01 Dawn.mp3"
///
/// It takes the place of a CString that is read rarely and kept long: as a text it is put together
/// anew each time.
class QO_API FilePath
{
public:
    FilePath() noexcept = default;
    FilePath(const CString& path) : FilePath(path.view()) {}
    FilePath(const char16_t* path) : FilePath(CString(path)) {}
    explicit FilePath(std::u16string_view path) : FilePath(path, FilePath()) {}
    /// Shares the folder's text with the other one, if it is the same.
    FilePath(std::u16string_view path, const FilePath& neighbour);

    operator CString() const { return text(); }
    CString text() const;
    /// With the closing backslash; "" for a path without one.
    const CString& folder() const noexcept { return m_folder; }
    /// What follows the last backslash; "" if the path ends with it.
    const CString& name() const noexcept { return m_name; }
    int GetLength() const noexcept { return m_folder.GetLength() + m_name.GetLength(); }
    bool IsEmpty() const noexcept { return GetLength() == 0; }

    /// Lets the pool's text for the folder be this one's.
    void shareFolder(TextPool& pool);

    /// As of the whole texts.
    int CompareNoCase(const CString& path) const noexcept;
    int CompareNoCase(const FilePath& other) const noexcept;

    bool equals(std::u16string_view path) const noexcept
    {
        const std::size_t length = m_folder.view().size();
        return path.size() == length + m_name.view().size() &&
               path.substr(length) == m_name.view() && path.substr(0, length) == m_folder.view();
    }

private:
    CString m_folder;
    CString m_name;
};

/// By units, as for texts.
inline bool operator==(const FilePath& a, const FilePath& b) noexcept
{
    return a.name() == b.name() && a.folder() == b.folder();
}
inline bool operator==(const FilePath& a, const CString& b) noexcept
{
    return a.equals(b.view());
}
inline bool operator==(const FilePath& a, const char16_t* b) noexcept
{
    return b && a.equals(b);
}
} // namespace qo

template <>
struct std::hash<qo::FilePath>
{
    std::size_t operator()(const qo::FilePath& path) const noexcept
    {
        constexpr std::size_t step = 31;
        return std::hash<CString>()(path.folder()) * step + std::hash<CString>()(path.name());
    }
};
