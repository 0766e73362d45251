#pragma once

#include <QoKernel/Collection.h>

#include <string>
#include <vector>

namespace qo::host
{
struct FileField;
class KnownNotes;
} // namespace qo::host

namespace qo::cli
{
/// A line for each file, as somebody wants it: "{artist} - {title}". In braces stands the name of a
/// field of docs/fields.md, with a width if one likes: "{title:30}" fills or cuts to 30 columns,
/// "{size:>10}" sets to the right. "{{" and "}}" are braces.
class LineFormat
{
public:
    /// Throws HostError that says what is wrong with it.
    explicit LineFormat(const std::string& typed);

    /// On the kernel's thread.
    std::string lineOf(const QoFileDbItem& item, host::KnownNotes& notes) const;

private:
    struct Part
    {
        std::string text; ///< ahead of the field
        const host::FileField* field = nullptr;
        std::size_t width = 0; ///< 0: as long as it is
        bool toTheRight = false;
    };

    void addField(const std::string& typed, Part& part);

    std::vector<Part> m_parts;
};
} // namespace qo::cli
