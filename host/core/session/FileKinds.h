#pragma once

#include <QoKernel/Collection.h>

#include <map>
#include <set>
#include <string>

namespace qo::host
{
/// Which extensions count as music, pictures or texts beside those that the kernel knows: the
/// setting FileKinds.
///
///   "audio: opus ape; picture: webp" makes a.opus and b.ape music, and c.webp a picture.
class FileKinds
{
public:
    static constexpr const char16_t* setting = u"FileKinds";
    static constexpr const char16_t* defaultList =
        u"audio: opus oga spx ape wv mpc mp+ mpp tta mp1 aifc mka dsf dff; video: ogv; "
        u"picture: jpeg webp";

    FileKinds() = default;
    /// Throws HostError, with the kinds that there are, for any other text.
    explicit FileKinds(const std::string& list);

    /// The list in one fixed form, so that equal kinds give equal texts.
    std::string text() const;
    /// The extensions, in small letters, whose kind is another one there.
    std::set<std::string> changedFrom(const FileKinds& other) const;
    /// Lets the kernel go by them. Before anything is loaded, on the thread that calls the kernel.
    void apply() const;

private:
    std::map<std::string, CQoUtils::EExtKind> m_kinds; ///< by the extension in small letters
};
} // namespace qo::host
