#pragma once

#include "cli/CommandLine.h"
#include "cli/files/FileRecord.h"

#include <string>
#include <vector>

namespace qo::cli
{
/// Rows in the shape that the user asked for: columns that stand below each other for people, tabs
/// behind a line of names with --long, an object a row with --json.
class Listing
{
public:
    struct Column
    {
        std::size_t widest = 0; ///< what is longer is cut; 0: never
        bool toTheRight = false;
    };

    /// The names are the keys of the records that --long puts out. Columns may be fewer or more.
    Listing(CommandLine& line,
            bool isLong,
            std::vector<std::string> names,
            std::vector<Column> columns);

    /// Which of the two calls below the row is to come by.
    bool isForPeople() const { return !m_line.json && !m_isLong; }
    void addCells(std::vector<std::string> cells);
    /// path is what stands under "path" with --long: the exact bytes of a name.
    void addRecord(const Json& record, const std::string& path = std::string());
    /// Whether nobody reads any more.
    bool isClosed() const { return m_line.out.isClosed(); }
    /// Puts out the columns, whose width all rows decide.
    void finish();

private:
    std::string rowText(const std::vector<std::string>& cells) const;

    CommandLine& m_line;
    bool m_isLong;
    std::vector<std::string> m_names;
    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_rows;
};
} // namespace qo::cli
