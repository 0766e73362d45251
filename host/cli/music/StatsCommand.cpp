#include "cli/CommandLine.h"
#include "cli/KernelCommand.h"
#include "cli/files/FileChoice.h"
#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "cli/shown/Window.h"
#include "core/base/HostFiles.h"
#include "core/stats/CollectionNumbers.h"

#include <unistd.h>

#include <algorithm>

namespace qo::cli
{
namespace
{
using host::CollectionNumbers;
using host::FileSum;

struct StatsOptions
{
    FileChoice choice;
    std::string picture; ///< file; "" for none
};

std::size_t mostRows(const FileChoice& choice)
{
    constexpr std::size_t usual = 10;
    return choice.limit >= 0 ? static_cast<std::size_t>(choice.limit) : usual;
}

void putSum(Json& object, const FileSum& sum)
{
    object["files"] = sum.files;
    object["duration"] = sum.duration;
    object["size"] = sum.size;
}

/// Every row of every table.
Json numbersJson(const CollectionNumbers& numbers)
{
    Json object;
    putSum(object, numbers.all());
    object["music"] = numbers.music();
    object["untagged"] = numbers.untagged();
    object["companions"] = numbers.companions();
    object["unplaced"] = numbers.unplaced();
    for (const CollectionNumbers::Table& table : numbers.tables())
    {
        Json& rows = object[table.key] = Json::array();
        for (const CollectionNumbers::Row& row : table.rows)
        {
            Json each;
            each["name"] = row.name;
            putSum(each, row.sum);
            rows.push_back(std::move(each));
        }
    }
    return object;
}

std::string shareText(std::int64_t part, std::int64_t whole, const std::string& what)
{
    const std::int64_t percent = whole > 0 ? (100 * part + whole / 2) / whole : 0;
    return std::to_string(part) + " of " + countText(whole, what) + " (" + std::to_string(percent) +
           " %)";
}

/// "music  ██████  300  2:40:00  1.1 GiB"; on a terminal alone the bar.
void printTable(CommandLine& line, const CollectionNumbers::Table& table, std::size_t most)
{
    constexpr std::size_t nameWidth = 24;
    constexpr std::size_t numbersWidth = 34;
    const std::size_t columns = windowOf(STDOUT_FILENO).columns;
    const std::size_t barWidth = line.out.isTerminal() && columns > nameWidth + numbersWidth + 10
                                     ? std::min(columns - nameWidth - numbersWidth, std::size_t(40))
                                     : 0;
    std::int64_t largest = 1;
    for (const CollectionNumbers::Row& row : table.rows)
        largest = std::max(largest, row.sum.files);
    line.out.line("\nby " + std::string(table.heading));
    const std::size_t shown = std::min(table.rows.size(), most);
    for (std::size_t i = 0; i < shown; ++i)
    {
        const CollectionNumbers::Row& row = table.rows[i];
        const std::string name = row.name.empty() ? "[unknown]" : oneLine(fromUtf8(row.name));
        std::string bar;
        const auto filled =
            barWidth * static_cast<std::size_t>(row.sum.files) / static_cast<std::size_t>(largest);
        for (std::size_t each = 0; each < barWidth; ++each)
            bar += each < std::max<std::size_t>(filled, 1) ? "█" : " ";
        const std::string count = std::to_string(row.sum.files);
        std::string text = "  " + padded(name, nameWidth - 2);
        text += bar;
        text.append(count.size() < 9 ? 9 - count.size() : 1, ' ');
        text += count;
        text += "  " + padded(durationText(row.sum.duration), 10);
        text += "  " + sizeText(row.sum.size);
        line.out.line(text);
    }
    if (table.rows.size() > shown)
        line.out.line("  and " + std::to_string(table.rows.size() - shown) + " more");
}

void print(CommandLine& line, const CollectionNumbers& numbers, std::size_t most)
{
    const FileSum& all = numbers.all();
    line.out.line(countText(all.files, "file") + ", " + durationText(all.duration) + ", " +
                  sizeText(all.size));
    line.out.line("without artist or title: " +
                  shareText(numbers.untagged(), numbers.music(), "music file"));
    line.out.line("pictures and texts without music: " +
                  shareText(numbers.unplaced(), numbers.companions(), "file"));
    for (const CollectionNumbers::Table& table : numbers.tables())
        printTable(line, table, most);
}

void writePicture(CommandLine& line, const std::string& path, const std::string& svg)
{
    prepareOutput(line, path);
    if (line.dryRun)
        return line.note("would be written: " + path);
    if (const int error = fileSystem().replaceFile(fromSystemPath(path), svg.data(), svg.size()))
        throw HostError(ExitCode::failed,
                        "the picture " + path + " cannot be written: " + host::errorWords(error));
    line.note("written: " + path);
}

ExitCode stats(CommandLine& line, const StatsOptions& options)
{
    const auto session = openKernel(line, KernelUse::look);
    loadForReading(line, *session);
    session->kernel().run(
        [&]
        {
            FileChoice all = options.choice;
            all.limit = -1; // that is one of rows here
            const CollectionNumbers numbers(chosenFiles(all));
            const std::size_t most = mostRows(options.choice);
            if (!options.picture.empty())
                writePicture(line, host::absolutePath(options.picture), host::svgOf(numbers, most));
            if (line.json)
                line.out.line(dump(numbersJson(numbers)));
            else
                print(line, numbers, most);
        });
    return ExitCode::done;
}
} // namespace

void setUpStats(CommandLine& line, CLI::App& command)
{
    const auto options = std::make_shared<StatsOptions>();
    line.setAction(command, [&line, options] { return stats(line, *options); });
    addQuery(command, options->choice);
    addNames(command, options->choice);
    command.add_option("--limit", options->choice.limit, "Rows of each table; 10 without")
        ->type_name("N")
        ->check(CLI::NonNegativeNumber);
    addArgument(command, "--svg", options->picture, "Draw the tables into this file, too")
        ->type_name("FILE");
}
} // namespace qo::cli
