#include "cli/rules/PlanListing.h"

#include "cli/files/FileRecord.h"
#include "cli/shown/Text.h"
#include "core/base/SystemPath.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace qo::cli
{
namespace
{
using host::PlannedFile;
using host::ReorganizePlan;
using Verdict = PlannedFile::Verdict;

/// Moves into one target folder for one reason.
struct MoveGroup
{
    std::string folder; ///< that holds all their places
    std::vector<const PlannedFile*> files;
};

const char* verdictName(Verdict verdict)
{
    switch (verdict)
    {
    case Verdict::move:
        return "move";
    case Verdict::stay:
        return "stay";
    default:
        return "refused";
    }
}

void putRecord(CommandLine& line, const ReorganizePlan& plan, const PlannedFile& file)
{
    Json object;
    object["plan"] = plan.id.empty() ? Json() : Json(plan.id);
    object["do"] = verdictName(file.verdict);
    putPath(object, "from", file.from);
    putPath(object, "to", file.to);
    object["kind"] = file.kind;
    object["by"] = file.decidedBy;
    object["reason"] = file.reason.empty() ? Json() : Json(file.reason);
    object["size"] = file.mark.size;
    line.out.line(dump(object));
}

std::string targetOf(const ReorganizePlan& plan, const std::string& path)
{
    for (const std::string& target : plan.targets)
    {
        if (host::isBelow(path, target))
            return target;
    }
    return {};
}

void widen(std::string& folder, const std::string& path)
{
    while (folder != "/" && !host::isBelow(path, folder))
        folder = host::parentOf(folder);
}

/// In the order in which their first files come.
std::vector<MoveGroup> groupsOf(const ReorganizePlan& plan)
{
    std::vector<MoveGroup> groups;
    std::map<std::pair<std::string, std::string>, std::size_t> indexes;
    for (const PlannedFile& file : plan.files)
    {
        if (file.verdict != Verdict::move)
            continue;
        const auto [at, isNew] =
            indexes.try_emplace({targetOf(plan, file.to), file.decidedBy}, groups.size());
        if (isNew)
            groups.push_back({host::parentOf(file.from), {}});
        MoveGroup& group = groups[at->second];
        widen(group.folder, file.from);
        widen(group.folder, file.to);
        group.files.push_back(&file);
    }
    return groups;
}

std::string relative(const std::string& path, const std::string& folder)
{
    return folder == "/" ? path : path.substr(folder.size() + 1);
}

/// "a -> b" in a row that holds `taken` columns already. On a terminal each path has half of the
/// rest, and what the other one leaves of its half.
std::string
moveText(const Output& out, std::size_t taken, const std::string& from, const std::string& to)
{
    constexpr std::string_view arrow = " -> ";
    taken += arrow.size();
    const std::size_t half = (out.columns() - std::min(out.columns(), taken)) / 2;
    const auto widthOf = [half](const std::string& path)
    { return std::min(textWidth(harmless(path)), half); };
    return out.fitted(from, taken + widthOf(to)) + std::string(arrow) +
           out.fitted(to, taken + widthOf(from));
}

void putRefused(CommandLine& line, const PlannedFile& file)
{
    constexpr std::size_t indent = 9;
    const std::string verdict = Output::styled(Style::error, "refused") + "  ";
    line.out.line(verdict + (file.to.empty() ? line.out.fitted(file.from, indent)
                                             : moveText(line.out, indent, file.from, file.to)));
    const std::string blanks(indent, ' ');
    const std::string reason = harmless(file.reason);
    if (line.out.columns() == 0)
        return line.out.line(blanks + reason);
    line.out.write(wrapped(blanks, reason, indent, line.out.columns()));
}

void putMoves(CommandLine& line, const ReorganizePlan& plan, bool isFirst)
{
    constexpr std::size_t indent = 2;
    for (const MoveGroup& group : groupsOf(plan))
    {
        if (!std::exchange(isFirst, false))
            line.out.line("");
        const std::string place = group.folder == "/" ? "" : "in " + group.folder + ", ";
        const std::string heading = harmless(place + "by " + group.files[0]->decidedBy + ":");
        line.out.line(Output::styled(Style::heading, heading));
        for (const PlannedFile* file : group.files)
            line.out.line(std::string(indent, ' ') + moveText(line.out,
                                                              indent,
                                                              relative(file->from, group.folder),
                                                              relative(file->to, group.folder)));
    }
}
} // namespace

void listPlan(CommandLine& line, const ReorganizePlan& plan, bool withStaying)
{
    bool isFirst = true;
    for (const Verdict verdict : {Verdict::refused, Verdict::move, Verdict::stay})
    {
        if (verdict == Verdict::stay && !withStaying)
            break;
        if (verdict == Verdict::move && !line.json)
        {
            putMoves(line, plan, isFirst);
            continue;
        }
        for (const PlannedFile& file : plan.files)
        {
            if (file.verdict != verdict || line.out.isClosed())
                continue;
            if (line.json)
                putRecord(line, plan, file);
            else if (verdict == Verdict::refused)
                putRefused(line, file);
            else
                line.out.line(harmless("stays    " + file.from + ": " + file.reason));
            isFirst = false;
        }
    }
    line.out.flush();
}

std::string planSummary(const ReorganizePlan& plan)
{
    const int moves = plan.count(Verdict::move);
    const int refused = plan.count(Verdict::refused);
    const int staying = plan.count(Verdict::stay);
    std::string text = (moves == 0 ? "nothing" : countText(moves, "file")) + " would move";
    if (refused > 0)
        text += ", " + std::to_string(refused) + (refused == 1 ? " is refused" : " are refused");
    if (staying > 0)
        text += ", " + std::to_string(staying) + (staying == 1 ? " stays" : " stay");
    return text;
}
} // namespace qo::cli
