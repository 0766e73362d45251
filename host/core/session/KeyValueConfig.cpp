#include "core/session/KeyValueConfig.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/Secret.h"
#include "core/session/SettingText.h"

#include <algorithm>
#include <cerrno>
#include <unordered_map>
#include <utility>

class KVConfig::Key
{
public:
    CString name;
    CString value;
    CString defaultValue;
    std::string remarks; ///< the lines ahead of it in the file that are no settings but fine
    bool isStored = false;
};

class KVConfig::Section
{
public:
    Key* find(const CString& key) const
    {
        const auto found = byName.find(key);
        return found == byName.end() ? nullptr : found->second;
    }
    Key* findOrAdd(const CString& key)
    {
        if (Key* const known = find(key))
            return known;
        keys.push_back(std::make_unique<Key>());
        keys.back()->name = key;
        byName[key] = keys.back().get();
        return keys.back().get();
    }

    CString name;
    std::string remarks;
    std::vector<std::unique_ptr<Key>> keys;
    std::unordered_map<CString, Key*> byName;
};

namespace qo::host
{
namespace
{
constexpr std::size_t largestSettings = 64U << 20;

/// The first and the last line of a file that is whole. A file that was written by hand may do
/// without; one that has the first must have the other.
constexpr std::string_view firstLine = "# Settings. The last line of a whole file is \"# end\".";
constexpr std::string_view lastLine = "# end";

std::string_view trim(std::string_view text)
{
    constexpr const char* blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// The first '=' without a backslash before it.
std::size_t findEquals(std::string_view line)
{
    for (std::size_t i = 0; i < line.size(); ++i)
    {
        if (line[i] == '\\')
            ++i;
        else if (line[i] == '=')
            return i;
    }
    return std::string_view::npos;
}
} // namespace

KeyValueConfig::KeyValueConfig(const CString& file, bool readOnly)
    : m_file(file), m_readOnly(readOnly)
{
    std::string text;
    const int error = readFile(file, largestSettings, text);
    if (error == ENOENT)
        return;
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the settings file " + shownPath(file) +
                            " cannot be read: " + errorWords(error));
    parse(text);
    host::wipe(text);
}

KeyValueConfig::~KeyValueConfig()
{
    try
    {
        save();
    }
    catch (const std::exception& exception)
    {
        qo::log(qo::level::error, u"%s", fromUtf8(exception.what()));
    }
}

void KeyValueConfig::parse(const std::string& text)
{
    int rejectedLines = 0;
    Section* current = nullptr;
    std::size_t at = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    bool isWhole = !std::string_view(text).substr(at).starts_with(firstLine);
    for (std::size_t end = 0; at < text.size(); at = end + 1)
    {
        end = std::min(text.find('\n', at), text.size());
        const std::string_view line = std::string_view(text).substr(at, end - at);
        const std::string_view trimmed = trim(line);
        if (trimmed == lastLine)
            isWhole = true;
        // Of a value that was cut short nobody knows the rest.
        const bool isCut = !isWhole && end == text.size();
        if (trimmed == firstLine || trimmed == lastLine ||
            (!isCut && parseLine(line, trimmed, current)))
            continue;
        ++rejectedLines;
        m_rejected.append(line).append("\n");
    }
    m_mayLackSettings = m_sections.empty() || rejectedLines > 0 || !isWhole;
    if (!isWhole)
        m_complaint = "the settings file " + shownPath(m_file) +
                      " was cut short: the lines that are left count, and root folders that they "
                      "lack are taken from the database";
    else if (rejectedLines > 0)
        m_complaint = "the settings file " + shownPath(m_file) + " has " +
                      std::to_string(rejectedLines) +
                      (rejectedLines == 1 ? " line that is" : " lines that are") +
                      " no setting and " + (rejectedLines == 1 ? "is" : "are") + " passed over";
}

bool KeyValueConfig::parseLine(std::string_view raw, std::string_view line, Section*& current)
{
    if (line.empty() || line[0] == '#')
    {
        m_remarks.append(raw).append("\n");
        return true;
    }
    CString name;
    if (line[0] == '[')
    {
        if (line.back() != ']' || !unescapeSetting(line.substr(1, line.size() - 2), name) ||
            name.IsEmpty())
            return false;
        current = section(name);
        current->remarks += std::exchange(m_remarks, {});
        return true;
    }
    const std::size_t equals = findEquals(line);
    CString value;
    const bool isSetting = current && equals != std::string_view::npos &&
                           unescapeSetting(trim(line.substr(0, equals)), name) && !name.IsEmpty() &&
                           unescapeSetting(trim(line.substr(equals + 1)), value);
    if (!isSetting)
        return false;
    Key* const key = current->findOrAdd(name);
    key->value = value;
    key->isStored = true;
    key->remarks += std::exchange(m_remarks, {});
    return true;
}

KVConfig::Section* KeyValueConfig::section(const CString& name)
{
    if (const Section* const known = findSection(name))
        return const_cast<Section*>(known);
    m_sections.push_back(std::make_unique<Section>());
    m_sections.back()->name = name;
    return m_sections.back().get();
}

const KVConfig::Section* KeyValueConfig::findSection(const CString& name) const
{
    for (const auto& known : m_sections)
    {
        if (known->name == name)
            return known.get();
    }
    return nullptr;
}

KVConfig::Section* KeyValueConfig::addSection(int, const char16_t* name)
{
    return section(name);
}

KVConfig::Key*
KeyValueConfig::addKey(Section* section, const char16_t* name, const char16_t* defaultValue)
{
    Key* const key = section->findOrAdd(name);
    key->defaultValue = defaultValue;
    return key;
}

CString KeyValueConfig::getValue(const Key* key) const
{
    return key->isStored ? key->value : key->defaultValue;
}

void KeyValueConfig::setValue(Key* key, const CString& value)
{
    if (key->isStored && key->value == value)
        return;
    key->value = value;
    key->isStored = true;
    m_isDirty = true;
}

void KeyValueConfig::unset(Key* key)
{
    m_isDirty = m_isDirty || key->isStored;
    key->isStored = false;
    key->value.Empty();
}

bool KeyValueConfig::isStored(const char16_t* sectionName, const char16_t* keyName) const
{
    const Section* const found = findSection(sectionName);
    const Key* const key = found ? found->find(keyName) : nullptr;
    return key && key->isStored;
}

std::vector<KeyValueConfig::Entry> KeyValueConfig::entries() const
{
    std::vector<Entry> list;
    for (const auto& section : m_sections)
    {
        for (const auto& key : section->keys)
            list.push_back(
                {section->name, key->name, getValue(key.get()), key->defaultValue, key->isStored});
    }
    return list;
}

std::string KeyValueConfig::toText() const
{
    std::string text = std::string(firstLine) + "\n";
    for (const auto& section : m_sections)
    {
        std::string lines;
        for (const auto& key : section->keys)
        {
            lines += key->remarks;
            if (key->isStored)
                lines += escapeSetting(key->name) + "=" + escapeSetting(key->value) + "\n";
        }
        text += section->remarks;
        if (!lines.empty())
            text += "[" + escapeSetting(section->name) + "]\n" + lines;
    }
    return text + m_remarks + std::string(lastLine) + "\n";
}

void KeyValueConfig::save()
{
    if (!m_isDirty || m_readOnly)
        return;
    keepRejected();
    std::string text = toText();
    // Users who keep their settings under version control have a link here: the file that it leads
    // to is replaced, not the link.
    const std::string real = resolvedPath(toSystemPath(m_file));
    const CString target = real.empty() ? m_file : fromSystemPath(real);
    const int error = fileSystem().replaceFile(target, text.data(), text.size());
    host::wipe(text);
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the settings file " + shownPath(m_file) +
                            " cannot be written: " + errorWords(error));
    m_isDirty = false;
}

void KeyValueConfig::wipe()
{
    m_isDirty = false;
    for (const auto& section : m_sections)
    {
        for (const auto& key : section->keys)
        {
            const PassingSecret secret(key->value);
        }
        section->keys.clear();
        section->byName.clear();
    }
}

void KeyValueConfig::keepRejected()
{
    if (m_rejected.empty())
        return;
    const CString aside = m_file + u".rejected";
    int error = 0;
    const std::unique_ptr<IFile> file = fileSystem().open(aside, OpenMode::append, error);
    if (!file || !file->write(m_rejected.data(), m_rejected.size()))
        throw HostError(ExitCode::failed,
                        "lines of the settings file cannot be kept in " + shownPath(aside) + ": " +
                            errorWords(file ? file->error() : error));
    m_rejected.clear();
}
} // namespace qo::host
