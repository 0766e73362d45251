#pragma once

#include "core/query/Query.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace qo::host
{
/// What files come to.
struct FileSum
{
    std::int64_t files = 0;
    std::int64_t duration = 0; ///< milliseconds
    std::int64_t size = 0;     ///< bytes

    void add(const QoFileDbItem& item);
};

/// The files of a collection in numbers: all of them, and by what they are. On the kernel's thread,
/// with the collection loaded.
class CollectionNumbers
{
public:
    struct Row
    {
        std::string name; ///< "" for files without a value
        FileSum sum;
    };
    struct Table
    {
        const char* key;     ///< in JSON
        const char* heading; ///< as people read it
        /// By size of the value for decades, bitrates and months, else most files first.
        std::vector<Row> rows;
    };

    explicit CollectionNumbers(const QoFileDbItemArray& files);

    const FileSum& all() const { return m_all; }
    /// Kinds and formats of all files; decades, genres, bitrates, artists and months of the music.
    const std::vector<Table>& tables() const { return m_tables; }
    std::int64_t music() const { return m_music; }
    std::int64_t untagged() const { return m_untagged; }     ///< music without an artist or a title
    std::int64_t companions() const { return m_companions; } ///< pictures and texts
    std::int64_t unplaced() const { return m_unplaced; }     ///< of them, without music

private:
    /// Sums by the texts that the collection calls the same.
    class Counter;

    FileSum m_all;
    std::vector<Table> m_tables;
    std::int64_t m_music = 0;
    std::int64_t m_untagged = 0;
    std::int64_t m_companions = 0;
    std::int64_t m_unplaced = 0;
};

/// A picture of the tables as SVG: a bar for each row, of which a table shows at most so many.
std::string svgOf(const CollectionNumbers& numbers, std::size_t mostRows);
} // namespace qo::host
