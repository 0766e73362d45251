#pragma once

#include <QoKernel/Collection.h>

#include <optional>
#include <string>
#include <unordered_map>

namespace qo::host
{
/// What the sound of each file begins with, by the record's lasting id: the file "heads" beside the
/// database, by which a file that vanished is known again elsewhere. Text, a first line
/// "velmora-heads 1" and for each file its id, its size in bytes, its write time in ticks and the
/// digest of its head in hexadecimal, with blanks between. What cannot be read counts as empty: all
/// of it can be made again. Not for several threads at once.
class HeadStore
{
public:
    explicit HeadStore(const CString& file);

    /// Empty when none is stored for the state in which the record knows the file.
    std::optional<std::uint64_t> headOf(const QoFileDbItem& record) const;
    /// Takes in heads of what is new or has changed, which reads the start of each of those files,
    /// and drops those of records that are gone. False when the progress stopped it, with what was
    /// read so far kept.
    bool update(const QoFileDbItemArray& records, IQoProgress& progress);
    /// Writes the file in one piece if anything changed. Throws HostError.
    void save();

private:
    struct Head
    {
        std::int64_t size = 0;
        std::int64_t modified = 0;
        std::uint64_t digest = 0;
    };

    void parse(const std::string& text);
    static bool fits(const Head& head, const QoFileDbItem& record);

    CString m_file;
    std::unordered_map<std::string, Head> m_heads;
    bool m_isDirty = false;
};
} // namespace qo::host
