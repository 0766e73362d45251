#pragma once

#include <QoKernel/Kernel.h>

#include <map>
#include <string>
#include <unordered_map>
#include <vector>

namespace qo::host
{
/// Edited tag values that are not written into their files yet: a JSON file beside the collection,
/// by path. Not for several threads at once.
class PendingTags
{
public:
    /// The value of each edited field by its name ("artist"); UTF-8, "" removes the field.
    using Fields = std::map<std::string, std::string>;

    /// The names that a field can have, in the order in which people read them.
    static const std::vector<std::string>& fieldNames();

    /// An absent file is an empty list. A file that is no such list is renamed, with a complaint;
    /// one that cannot be read throws HostError.
    explicit PendingTags(const CString& file);

    /// Paths in collection form, in their order.
    std::vector<CString> paths() const;
    /// Empty when nothing is pending for the file.
    Fields fields(const CString& path) const;
    void set(const CString& path, const std::string& field, const std::string& value);
    /// Drops one field, or all with an empty name. Whether there was anything.
    bool drop(const CString& path, const std::string& field = std::string());

    /// Takes edits along to where their files went, all at once: new paths by the pathKey() of the
    /// old one, "" for a file that has gone. Edits of a path that another file comes to are
    /// dropped.
    void follow(const std::unordered_map<std::u16string, CString>& places);

    bool isEmpty() const { return m_files.empty(); }
    bool isDirty() const { return m_isDirty; }
    /// Writes the list in one piece if it changed, or anyhow. Throws HostError.
    void save(bool anyhow = false);

    const std::string& complaint() const { return m_complaint; }

private:
    bool parse(const std::string& text);

    CString m_file;
    std::map<std::string, Fields> m_files; ///< by the collection path in UTF-8
    bool m_isDirty = false;
    std::string m_complaint;
};
} // namespace qo::host
