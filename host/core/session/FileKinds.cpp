#include "core/session/FileKinds.h"

#include "core/base/HostError.h"

#include <QoKernel/Kernel.h>

#include <algorithm>
#include <sstream>
#include <string_view>

namespace qo::host
{
namespace
{
struct KindName
{
    std::string_view name;
    CQoUtils::EExtKind kind;
};
constexpr KindName kindNames[] = {{"audio", CQoUtils::EK_Audio},
                                  {"video", CQoUtils::EK_Video},
                                  {"picture", CQoUtils::EK_Picture},
                                  {"text", CQoUtils::EK_Text}};

std::string trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t start = text.find_first_not_of(blanks);
    return start == text.npos
               ? std::string()
               : std::string(text.substr(start, text.find_last_not_of(blanks) - start + 1));
}

CQoUtils::EExtKind kindNamed(const std::string& name)
{
    const auto found = std::ranges::find(kindNames, name, &KindName::name);
    if (found == std::end(kindNames))
        throw HostError(ExitCode::usage,
                        "\"" + name +
                            "\" is no kind of file; a list of kinds looks like \"audio: opus ape; "
                            "video: ogv; picture: webp; text: lrc\"");
    return found->kind;
}
} // namespace

FileKinds::FileKinds(const std::string& list)
{
    std::istringstream groups(list);
    for (std::string group; std::getline(groups, group, ';');)
    {
        if (trimmed(group).empty())
            continue;
        const std::size_t colon = std::min(group.find(':'), group.size());
        const CQoUtils::EExtKind kind = kindNamed(trimmed(group.substr(0, colon)));
        std::istringstream exts(group.substr(std::min(colon + 1, group.size())));
        for (std::string ext; exts >> ext;)
        {
            CString lower = fromUtf8(ext.starts_with('.') ? ext.substr(1) : ext);
            lower.MakeLower();
            m_kinds.try_emplace(toUtf8(lower), kind);
        }
    }
}

std::string FileKinds::text() const
{
    std::string text;
    for (const KindName& name : kindNames)
    {
        std::string exts;
        for (const auto& [ext, kind] : m_kinds)
            exts += kind == name.kind ? " " + ext : std::string();
        if (!exts.empty())
            text += (text.empty() ? "" : "; ") + std::string(name.name) + ":" + exts;
    }
    return text;
}

std::set<std::string> FileKinds::changedFrom(const FileKinds& other) const
{
    std::set<std::string> changed;
    const auto addOthers = [&changed](const auto& kinds, const auto& those)
    {
        for (const auto& [ext, kind] : kinds)
        {
            const auto found = those.find(ext);
            if (found == those.end() || found->second != kind)
                changed.insert(ext);
        }
    };
    addOthers(m_kinds, other.m_kinds);
    addOthers(other.m_kinds, m_kinds);
    return changed;
}

void FileKinds::apply() const
{
    CStringArray exts;
    CArray<CQoUtils::EExtKind> kinds;
    for (const auto& [ext, kind] : m_kinds)
    {
        exts.Add(fromUtf8(ext));
        kinds.Add(kind);
    }
    CQoUtils::setFurtherExts(exts, kinds);
}
} // namespace qo::host
