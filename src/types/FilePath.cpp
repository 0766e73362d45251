#include "types/FilePath.h"

#include "types/TextPool.h"

namespace qo
{
FilePath::FilePath(std::u16string_view path, const FilePath& neighbour)
{
    const std::size_t length = path.rfind(u'\\') + 1; // without a backslash npos + 1, which is 0
    const std::u16string_view folder = path.substr(0, length);
    m_folder = neighbour.m_folder.view() == folder ? neighbour.m_folder : CString(folder);
    m_name = CString(path.substr(length));
}

CString FilePath::text() const
{
    return m_folder + m_name;
}

void FilePath::shareFolder(TextPool& pool)
{
    m_folder = pool.intern(m_folder.view());
}

int FilePath::CompareNoCase(const CString& text) const noexcept
{
    const std::u16string_view path = text.view();
    const std::u16string_view folder = m_folder.view();
    const int order = compareNoCase(folder, path.substr(0, folder.size()));
    return order != 0 ? order : compareNoCase(m_name.view(), path.substr(folder.size()));
}

int FilePath::CompareNoCase(const FilePath& other) const noexcept
{
    if (m_folder.sharesBufferWith(other.m_folder))
        return compareNoCase(m_name.view(), other.m_name.view());
    if (m_folder.GetLength() > other.m_folder.GetLength())
        return -other.CompareNoCase(*this);
    // The shorter folder against the beginning of the other, and the name against what follows.
    const std::u16string_view folder = m_folder.view();
    const std::u16string_view longer = other.m_folder.view();
    const std::u16string_view rest = longer.substr(folder.size());
    const std::u16string_view name = m_name.view();
    if (const int order = compareNoCase(folder, longer.substr(0, folder.size())))
        return order;
    if (const int order = compareNoCase(name.substr(0, rest.size()), rest))
        return order;
    return compareNoCase(name.substr(rest.size()), other.m_name.view());
}
} // namespace qo
