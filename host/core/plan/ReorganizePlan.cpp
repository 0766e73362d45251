#include "core/plan/ReorganizePlan.h"

#include "core/base/Disk.h"
#include "core/base/HostError.h"
#include "core/base/HostFiles.h"
#include "core/base/SystemPath.h"
#include "core/plan/MoveText.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <string_view>

namespace qo::host
{
namespace
{

constexpr int formatVersion = 1;
constexpr std::size_t largestFile = std::size_t(1) << 30;
constexpr std::size_t longestLine = std::size_t(256) << 10;
constexpr std::array<const char*, 3> verdictNames = {"move", "stay", "refused"};

bool readVerdict(const Json& object, PlannedFile::Verdict& verdict)
{
    const std::string name = movetext::textOf(object, "do");
    const auto* const found = std::find(verdictNames.begin(), verdictNames.end(), name);
    verdict = static_cast<PlannedFile::Verdict>(found - verdictNames.begin());
    return found != verdictNames.end();
}

std::string fileLine(const PlannedFile& file)
{
    Json object;
    object["do"] = verdictNames[static_cast<std::size_t>(file.verdict)];
    object["from"] = pathInText(file.from);
    if (!file.to.empty())
        object["to"] = pathInText(file.to);
    object["mark"] = movetext::fromMark(file.mark);
    const std::pair<const char*, const std::string&> texts[] = {{"record", file.recordId},
                                                                {"kind", file.kind},
                                                                {"by", file.decidedBy},
                                                                {"why", file.reason}};
    for (const auto& [key, text] : texts)
    {
        if (!text.empty())
            object[key] = text;
    }
    if (file.targetDevice != 0)
        object["device"] = file.targetDevice;
    return movetext::line(object);
}

/// What is wrong with the line, "" for nothing.
std::string readFileLine(const Json& object, PlannedFile& file)
{
    if (!readVerdict(object, file.verdict))
        return "does not say what to do";
    if (!movetext::readPath(object, "from", file.from))
        return "names no file";
    if (object.contains("to") && !movetext::readPath(object, "to", file.to))
        return "names no place to go to";
    if (!movetext::readMark(object, "mark", file.mark))
        return "does not tell size and time of the file";
    file.recordId = movetext::textOf(object, "record");
    file.kind = movetext::textOf(object, "kind");
    file.decidedBy = movetext::textOf(object, "by");
    file.reason = movetext::textOf(object, "why");
    const auto device = object.find("device");
    if (device != object.end() && device->is_number_unsigned())
        file.targetDevice = *device;
    return {};
}

std::string readHead(const Json& object, ReorganizePlan& plan)
{
    const auto version = object.find("plan");
    if (version == object.end() || !version->is_number_integer())
        return "does not begin as one";
    if (*version != formatVersion)
        return "is of version " + version->dump() + ", and only version " +
               std::to_string(formatVersion) + " is understood";
    plan.id = movetext::textOf(object, "id");
    plan.made = movetext::textOf(object, "made");
    plan.rule = movetext::textOf(object, "rule");
    if (!movetext::isRunId(plan.id))
        return "has no id";
    if (!movetext::readPaths(object, "targets", plan.targets) ||
        !movetext::readPaths(object, "kept", plan.keptFolders))
        return "does not tell its folders";
    return {};
}

std::string headLine(const ReorganizePlan& plan)
{
    Json object;
    object["plan"] = formatVersion;
    object["id"] = plan.id;
    object["made"] = plan.made;
    object["rule"] = plan.rule;
    object["targets"] = movetext::fromPaths(plan.targets);
    object["kept"] = movetext::fromPaths(plan.keptFolders);
    return movetext::line(object);
}

/// What keeps the line from being part of a plan, "" for nothing. The first line has number 1.
std::string readLine(std::string_view line, std::size_t number, ReorganizePlan& plan)
{
    if (line.size() > longestLine)
        return "is too long";
    const Json object = movetext::parse(line);
    if (object.is_null())
        return "is damaged";
    if (number == 1)
        return readHead(object, plan);
    PlannedFile file;
    std::string fault = readFileLine(object, file);
    if (fault.empty())
        fault = plan.fault(file);
    if (fault.empty())
        plan.files.push_back(std::move(file));
    return fault;
}

/// With so many lines at most.
ReorganizePlan readPlan(const std::string& path, std::size_t mostLines)
{
    std::string content;
    if (const int error = readFile(fromSystemPath(path), largestFile, content))
        throw HostError(error == ENOENT ? ExitCode::notFound : ExitCode::failed,
                        "the plan " + path + " cannot be read: " + errorWords(error));
    ReorganizePlan plan;
    std::size_t number = 0;
    const auto take = [&](std::string_view line)
    {
        const std::string fault = readLine(line, ++number, plan);
        if (fault.empty())
            return number < mostLines;
        throw HostError(ExitCode::failed,
                        path + " is no plan that can be used: " +
                            (number == 1 ? "it " : "line " + std::to_string(number) + " ") + fault);
    };
    movetext::forEachLine(content, take);
    if (number == 0)
        throw HostError(ExitCode::failed, path + " is no plan that can be used: it is empty");
    return plan;
}
} // namespace

int markOf(const std::string& path, FileMark& mark)
{
    bool isRegular = false;
    return markOf(path, mark, isRegular);
}

int markOf(const std::string& path, FileMark& mark, bool& isRegular)
{
    NameInfo info;
    if (const int error = disk::look(path, info))
        return error;
    isRegular = info.kind == NameInfo::Kind::regular;
    mark = markOf(info);
    return 0;
}

FileMark markOf(const NameInfo& info)
{
    return {info.device, info.inode, info.size, info.modified};
}

int ReorganizePlan::count(PlannedFile::Verdict verdict) const
{
    return static_cast<int>(std::count_if(files.begin(),
                                          files.end(),
                                          [&](const PlannedFile& file)
                                          { return file.verdict == verdict; }));
}

std::string ReorganizePlan::fault(const PlannedFile& file) const
{
    if (!isPlainPath(file.from) || file.mark.size < 0)
        return "names no file";
    if (file.verdict != PlannedFile::Verdict::move)
        return {};
    if (!isPlainPath(file.to))
        return "names no place to go to";
    const bool isInside =
        std::any_of(targets.begin(),
                    targets.end(),
                    [&](const std::string& target) { return isBelow(file.to, target); });
    return isInside ? std::string() : "leads out of the folders of the plan: " + file.to;
}

ReorganizePlan ReorganizePlan::read(const std::string& path)
{
    return readPlan(path, std::numeric_limits<std::size_t>::max());
}

ReorganizePlan ReorganizePlan::readHead(const std::string& path)
{
    return readPlan(path, 1);
}

void ReorganizePlan::write(const std::string& path) const
{
    std::string content = headLine(*this);
    const auto refused = [](const PlannedFile& file)
    { return file.verdict == PlannedFile::Verdict::refused; };
    for (const PlannedFile& file : files)
    {
        if (refused(file))
            content += fileLine(file);
    }
    for (const PlannedFile& file : files)
    {
        if (!refused(file))
            content += fileLine(file);
    }
    const int error =
        fileSystem().replaceFile(fromSystemPath(path), content.data(), content.size());
    if (error != 0)
        throw HostError(ExitCode::failed,
                        "the plan " + path + " cannot be written: " + errorWords(error));
}
} // namespace qo::host
