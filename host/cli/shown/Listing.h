#pragma once

#include "cli/CommandLine.h"
#include "core/base/Json.h"

#include <string>
#include <vector>

namespace qo::cli
{
using host::Json;

/// Rows in the form that the user asked for: aligned columns for people; with --long tabs between
/// the values, after a line of names; with --json one object a row.
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

    /// True: rows are passed to addCells(). False: to addRecord().
    bool isForPeople() const { return !m_line.json && !m_isLong; }
    void addCells(std::vector<std::string> cells);
    /// path is the value of "path" with --long, with the exact bytes of its names.
    void addRecord(const Json& record, const std::string& path = std::string());
    /// Whether the reader has closed the output.
    bool isClosed() const { return m_line.out.isClosed(); }
    /// Writes the columns; their width depends on all rows.
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
