#include "platform/posix/MountTable.h"

#include <fstream>
#include <sstream>
#include <vector>

// "36 35 8:17 / /media/My\040Stick rw,noatime master:1 - vfat /dev/sdb1 rw": number, parent,
// device, root, point, options, any number of further fields, "-", type, source, options.

namespace qo
{
namespace
{
/// Blanks, tabs, line feeds and backslashes stand as three octal digits after a backslash.
std::string unescapeOctal(const std::string& text)
{
    const auto isOctal = [&](std::size_t i)
    { return i < text.size() && text[i] >= '0' && text[i] <= '7'; };
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == '\\' && isOctal(i + 1) && isOctal(i + 2) && isOctal(i + 3))
        {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 +
                                       (text[i + 3] - '0'));
            i += 3;
        }
        else
            plain += text[i];
    }
    return plain;
}

/// False for a line that has too few fields.
bool parseLine(const std::string& line, MountEntry& entry)
{
    std::istringstream fields(line);
    std::string word;
    if (!(fields >> word >> word >> entry.device >> entry.root >> entry.point))
        return false;
    while (fields >> word && word != "-")
        ;
    if (!(fields >> entry.type >> entry.source))
        return false;
    for (std::string* text : {&entry.root, &entry.point, &entry.source})
        *text = unescapeOctal(*text);
    return true;
}
} // namespace

std::vector<MountEntry> readMounts(const std::string& table)
{
    std::vector<MountEntry> mounts;
    std::ifstream file(table);
    for (std::string line; std::getline(file, line);)
    {
        MountEntry entry;
        if (!parseLine(line, entry))
            continue;
        std::erase_if(mounts, [&](const MountEntry& other) { return other.point == entry.point; });
        mounts.push_back(std::move(entry));
    }
    return mounts;
}
} // namespace qo
