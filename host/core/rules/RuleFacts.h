#pragma once

#include "core/rules/RuleAttributes.h"

#include <QoKernel/Physical.h>
#include <QoKernel/Rules.h>

#include <array>
#include <memory>
#include <optional>
#include <unordered_map>

namespace qo::host
{
/// What a rule can ask of one file after another. Music answers for itself. What lies beside music
/// of the same name, but for the extension, answers as that music does. Any other one knows its own
/// artist and album; what it does not know is asked of the music of that album in its folder, or of
/// all music there if it has no album, and known where more than half of that knows it and none
/// says otherwise. For the kernel's thread; neither rule nor collection may change meanwhile.
class RuleFacts
{
public:
    explicit RuleFacts(const CReorganizeRule& rule);
    ~RuleFacts();
    RuleFacts(const RuleFacts&) = delete;
    RuleFacts& operator=(const RuleFacts&) = delete;

    /// The file that is asked from now on.
    void moveTo(const boost::shared_ptr<CHDFile>& file);
    /// The file that answers: itself, or the music beside it.
    const boost::shared_ptr<CHDFile>& answering() const { return m_file; }
    /// See CSeperateRule::getMatchingOutputType().
    int outputOf(const CSeperateRule& separator);
    /// As RuleAttributes has it; the rule's default value for one that is empty.
    const CString& valueOf(CNSAtom::EType attribute);

private:
    using File = boost::shared_ptr<CHDFile>;
    class MusicOfAlbum;
    struct MusicOfFolder;

    void askMusicBeside();
    MusicOfFolder& musicOf(const CHDDirectory& folder);
    CString knownValue(CNSAtom::EType attribute);

    const CReorganizeRule& m_rule;
    RuleAttributes m_attributes;
    File m_file;                      ///< that answers
    MusicOfAlbum* m_beside = nullptr; ///< what else is asked; null for nothing
    /// Those that were asked for, by type.
    std::array<std::optional<CString>, CNSAtom::atomTypesCount + 1> m_values;
    std::unordered_map<const CHDDirectory*, std::unique_ptr<MusicOfFolder>> m_folders;
};
} // namespace qo::host
