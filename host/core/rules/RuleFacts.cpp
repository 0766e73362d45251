#include "core/rules/RuleFacts.h"

#include "core/plan/TargetName.h"

#include <QoKernel/Logical.h>

#include <optional>
#include <vector>

namespace qo::host
{
namespace
{
struct HashNoCase
{
    std::size_t operator()(const CString& text) const noexcept { return hashNoCase(text.view()); }
};
struct EqualNoCase
{
    bool operator()(const CString& a, const CString& b) const noexcept
    {
        return a.CompareNoCase(b) == 0;
    }
};
template <class Value>
using ByName = std::unordered_map<CString, Value, HashNoCase, EqualNoCase>;

/// What has no recording of its own has only the time at which it came to the disk.
bool isOfRecording(CNSAtom::EType attribute)
{
    return attribute >= CNSAtom::Source;
}

/// Whether the collection knows the artist or the album.
bool isKnown(const CHDFile& file)
{
    const auto isNamed = [&file](CLTObjectType::EType type)
    {
        const auto object = file.getLTAssoc(type);
        return object && !object->isUnknown();
    };
    return isNamed(CLTObjectType::Artist) || isNamed(CLTObjectType::Album);
}
} // namespace

/// Music that answers for what lies beside it. Each question is put to it once.
class RuleFacts::MusicOfAlbum
{
public:
    void add(const File& file) { m_files.push_back(file); }

    /// "" where it does not agree.
    const CString& valueOf(CNSAtom::EType attribute, RuleAttributes& attributes)
    {
        const auto [known, isNew] = m_values.try_emplace(attribute);
        if (isNew)
            known->second = agreed<CString>([&](const File& file)
                                            { return attributes.valueOf(file, attribute); });
        return known->second;
    }
    std::optional<int> outputOf(const CSeperateRule& separator)
    {
        const auto [known, isNew] = m_outputs.try_emplace(&separator);
        const auto ask = [&](const File& file)
        { return isKnown(*file) ? separator.getMatchingOutputType(file) : std::optional<int>(); };
        if (isNew)
            known->second = agreed<std::optional<int>>(ask);
        return known->second;
    }

private:
    /// Files without a value do not vote, as long as more than half have one.
    template <class Value, class Ask>
    Value agreed(Ask ask) const
    {
        Value common{};
        std::size_t sayings = 0;
        for (const File& file : m_files)
        {
            const Value value = ask(file);
            if (value == Value())
                continue;
            if (sayings++ > 0 && value != common)
                return Value();
            common = value;
        }
        return sayings * 2 > m_files.size() ? common : Value();
    }

    std::vector<File> m_files;
    std::unordered_map<int, CString> m_values;
    std::unordered_map<const CSeperateRule*, std::optional<int>> m_outputs;
};

struct RuleFacts::MusicOfFolder
{
    ByName<File> byTitle; ///< by the name without extension
    ByName<MusicOfAlbum> byAlbum;
    MusicOfAlbum all;
};

RuleFacts::RuleFacts(const CReorganizeRule& rule) : m_rule(rule) {}

RuleFacts::~RuleFacts() = default;

void RuleFacts::moveTo(const boost::shared_ptr<CHDFile>& file)
{
    m_file = file;
    m_beside = nullptr;
    m_values.fill({});
    if (file->getFileType() != CHDFile::FT_Music && file->getParentDir())
        askMusicBeside();
}

void RuleFacts::askMusicBeside()
{
    MusicOfFolder& music = musicOf(*m_file->getParentDir());
    if (music.byTitle.empty())
        return;
    const auto namesake = music.byTitle.find(fileTitleOf(m_file->getPath()));
    if (namesake != music.byTitle.end())
    {
        m_file = namesake->second;
        return;
    }
    const CString album = m_attributes.valueOf(m_file, CNSAtom::Album);
    const auto ofAlbum = music.byAlbum.find(album);
    if (album.IsEmpty())
        m_beside = &music.all;
    else if (ofAlbum != music.byAlbum.end())
        m_beside = &ofAlbum->second;
}

RuleFacts::MusicOfFolder& RuleFacts::musicOf(const CHDDirectory& folder)
{
    std::unique_ptr<MusicOfFolder>& music = m_folders[&folder];
    if (music)
        return *music;
    music = std::make_unique<MusicOfFolder>();
    for (const File& file : folder.getFiles())
    {
        if (file->getFileType() != CHDFile::FT_Music)
            continue;
        music->byTitle.emplace(fileTitleOf(file->getPath()), file);
        music->byAlbum[m_attributes.valueOf(file, CNSAtom::Album)].add(file);
        music->all.add(file);
    }
    return *music;
}

int RuleFacts::outputOf(const CSeperateRule& separator)
{
    if (m_beside && !isKnown(*m_file))
    {
        if (const std::optional<int> output = m_beside->outputOf(separator))
            return *output;
    }
    return separator.getMatchingOutputType(m_file);
}

const CString& RuleFacts::valueOf(CNSAtom::EType attribute)
{
    static const CString none;
    const auto index = static_cast<std::size_t>(attribute);
    if (index >= m_values.size())
        return none;
    std::optional<CString>& value = m_values[index];
    if (value)
        return *value;
    value = knownValue(attribute);
    if (value->IsEmpty() && m_rule.getUnknownAttribDefValue(attribute, *value))
        value = plainValue(*value);
    return *value;
}

CString RuleFacts::knownValue(CNSAtom::EType attribute)
{
    const CString own = m_attributes.valueOf(m_file, attribute);
    if (!m_beside)
        return own;
    const CString& ofMusic = m_beside->valueOf(attribute, m_attributes);
    // Where only the spelling differs it goes where the music goes.
    const bool isSame = own.IsEmpty() || own.CompareNoCase(ofMusic) == 0;
    return !ofMusic.IsEmpty() && (isSame || isOfRecording(attribute)) ? ofMusic : own;
}
} // namespace qo::host
