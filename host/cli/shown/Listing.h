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
///
/// On a terminal a row takes one line. Where the columns are too wide together, texts are cut
/// first, at their end, and then paths, at their beginning. Elsewhere nothing is cut.
class Listing
{
public:
    enum class Column
    {
        text,
        number, ///< stands to the right
        name,   ///< tells the row from others, so it is never cut
        path
    };

    /// The names are the keys of the records that --long puts out. Columns may be fewer or more.
    Listing(CommandLine& line,
            bool isLong,
            std::vector<std::string> names,
            std::vector<Column> columns);

    /// Has each row written when it is added. The widths then do not depend on the rows, so a list
    /// of any length begins at once: a number has seven columns, texts share a third of the rest.
    void writeAtOnce();

    /// True: rows are passed to addCells(). False: to addRecord().
    bool isForPeople() const { return !m_line.json && !m_isLong; }
    /// The cells may be texts from outside.
    void addCells(std::vector<std::string> cells);
    /// path is the value of "path" with --long.
    void addRecord(const Json& record, const std::string& path = std::string());
    /// Whether the reader has closed the output.
    bool isClosed() const { return m_line.out.isClosed(); }
    /// Writes the columns; their width depends on all rows.
    void finish();

private:
    std::size_t rowWidth() const;
    void fit();
    void narrow(Column kind, std::size_t least);
    std::string rowText(std::vector<std::string> cells) const;

    CommandLine& m_line;
    bool m_isLong;
    std::vector<std::string> m_names;
    std::vector<Column> m_columns;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_rows;
    bool m_writesAtOnce = false;
};
} // namespace qo::cli
