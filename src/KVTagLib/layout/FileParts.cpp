#include "KVTagLib/layout/FileParts.h"

#include "KVTagLib/TagText.h"

namespace KVTagLib
{
void FileParts::add(int depth,
                    const TagLib::String& name,
                    std::int64_t size,
                    const TagLib::String& text)
{
    constexpr int longestText = 60;
    if (isFull())
        return;
    if (m_parts.size() == most)
        m_parts.push_back({0, u"further parts are left out"});
    else
        m_parts.push_back({depth, textOf(name, longestText), size, textOf(text, longestText)});
}

void FileParts::addRest(int depth, const char* name, std::int64_t size)
{
    if (size > 0)
        add(depth, name, size);
}
} // namespace KVTagLib
