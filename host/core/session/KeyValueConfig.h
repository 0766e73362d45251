#pragma once

#include <QoKernel/Kernel.h>

#include <memory>
#include <string>
#include <vector>

namespace qo::host
{
/// The host's store of settings: a UTF-8 text file of sections "[Name]" and lines "key=value".
/// In names and values a backslash stands before what would otherwise be lost: "\n", "\r", "\t",
/// "\s" (a blank at either end), "\=", "\\", and "\uXXXX" for other controls and for half a
/// surrogate pair. Keys that nobody declares stay in the file, and so do empty lines and those that
/// begin with "#", each ahead of what it stood ahead of. The file begins with a line that says how
/// a whole one ends, so that one which was cut short is noticed. Lines that cannot be read are
/// moved to "<file>.rejected" by the next save. Not for several threads at once.
class KeyValueConfig final : public KVConfig
{
public:
    struct Entry
    {
        CString section;
        CString key;
        CString value;
        CString defaultValue;
        bool isStored = false; ///< false: the declared default stands
    };

    /// Reads the file; an absent one is an empty store. Throws HostError when it is there but
    /// cannot be read, so that it is never overwritten unread. A read-only store never saves.
    explicit KeyValueConfig(const CString& file, bool readOnly = false);
    /// Saves what changed; a failure is logged.
    ~KeyValueConfig() override;

    Section* addSection(int kind, const char16_t* name) override;
    Key* addKey(Section* section, const char16_t* name, const char16_t* defaultValue) override;
    CString getValue(const Key* key) const override;
    void setValue(Key* key, const CString& value) override;

    /// Back to the default; the file has it no more.
    void unset(Key* key);

    /// Whether the file or a call gave a value of its own.
    bool isStored(const char16_t* section, const char16_t* key) const;
    /// Every key, in the order of the file and then of declaration.
    std::vector<Entry> entries() const;

    /// Writes the file, or what it links to, in one piece if anything changed. Throws HostError.
    void save();

    /// Overwrites every value, and empties the store, without saving anything any more. For
    /// passwords, when they are done with.
    void wipe();

    /// What was wrong with the file, as one sentence; empty when all was well.
    const std::string& complaint() const { return m_complaint; }
    /// Whether there was no file, nothing in it, or something wrong with it.
    bool mayLackSettings() const { return m_mayLackSettings; }
    const CString& file() const { return m_file; }

private:
    void parse(const std::string& text);
    bool parseLine(std::string_view raw, std::string_view line, Section*& section);
    Section* section(const CString& name);
    const Section* findSection(const CString& name) const;
    std::string toText() const;
    void keepRejected();

    CString m_file;
    bool m_readOnly;
    bool m_isDirty = false;
    bool m_mayLackSettings = true;
    std::vector<std::unique_ptr<Section>> m_sections;
    std::string m_remarks;  ///< empty lines and those with "#" after the last setting
    std::string m_rejected; ///< lines of the file that are no settings
    std::string m_complaint;
};
} // namespace qo::host
