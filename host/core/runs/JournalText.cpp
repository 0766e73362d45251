#include "core/runs/JournalText.h"

#include "core/base/HostError.h"
#include "core/plan/MoveText.h"

#include <algorithm>
#include <array>

namespace qo::host::journaltext
{
namespace
{
using Kind = MoveStep::Kind;

constexpr int formatVersion = 1;
constexpr std::array<const char*, 5> kindNames = {"make", "move", "remove", "write", "erase"};
// The first of each is what a line without the word means.
constexpr std::array<const char*, 3> whatNames = {"file", "link", "folder"};
constexpr std::array<const char*, 3> deedNames = {"move", "copy", "remove copy"};
constexpr std::array<const char*, 3> outsideNames = {"neither", "source", "target"};

template <class Value>
void putWord(Json& object, const char* key, const std::array<const char*, 3>& names, Value value)
{
    if (value != Value{})
        object[key] = names[static_cast<std::size_t>(value)];
}

template <class Value>
bool readWord(const Json& object,
              const char* key,
              const std::array<const char*, 3>& names,
              Value& value)
{
    if (!object.contains(key))
        return true;
    const auto* const found = std::find(names.begin(), names.end(), movetext::textOf(object, key));
    value = static_cast<Value>(found - names.begin());
    return found != names.end();
}

bool isNote(Kind kind)
{
    return kind == Kind::writeNote || kind == Kind::removeNote;
}

std::string numbered(const char* key, std::size_t number)
{
    return std::string("{\"") + key + "\":" + std::to_string(number) + "}\n";
}

Json fromRights(const FolderRights& rights)
{
    return Json::array({rights.mode, rights.owner, rights.group});
}

/// An absent one is none.
bool readRights(const Json& object, FolderRights& rights)
{
    const auto found = object.find("rights");
    if (found == object.end())
        return true;
    const Json& list = *found;
    if (!list.is_array() || list.size() != 3 ||
        !std::all_of(
            list.begin(), list.end(), [](const Json& n) { return n.is_number_unsigned(); }))
        return false;
    rights = {list[0], list[1], list[2]};
    return true;
}

bool readNumber(const Json& value, std::size_t below, std::size_t& number)
{
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() >= below)
        return false;
    number = value.get<std::size_t>();
    return true;
}

std::string head(const MoveProgress::Start& start)
{
    Json object;
    object["journal"] = formatVersion;
    object["id"] = start.id;
    if (!start.kind.empty())
        object["kind"] = start.kind;
    object["undoes"] = start.undoes;
    object["targets"] = movetext::fromPaths(start.targets);
    object["kept"] = movetext::fromPaths(start.keptFolders);
    return movetext::line(object);
}

std::string fileLine(const MovedFile& file)
{
    Json object;
    object["file"] = pathInText(file.from);
    object["to"] = pathInText(file.to);
    object["mark"] = movetext::fromMark(file.mark);
    if (!file.recordId.empty())
        object["record"] = file.recordId;
    putWord(object, "what", whatNames, file.what);
    putWord(object, "deed", deedNames, file.deed);
    putWord(object, "outside", outsideNames, file.outside);
    if (file.targetDevice != 0)
        object["device"] = file.targetDevice;
    return movetext::line(object);
}

std::string recordLine(const MoveProgress::Record& record)
{
    Json object;
    object["record"] = record.id;
    object["file"] = record.file;
    if (!record.below.empty())
        object["below"] = pathInText("/" + record.below);
    if (!record.values.empty())
        object["values"] = record.values;
    return movetext::line(object);
}

std::string refusalLine(const MoveProgress::Refusal& refusal)
{
    Json object;
    object["refused"] = pathInText(refusal.from);
    object["to"] = pathInText(refusal.to);
    object["why"] = refusal.why;
    return movetext::line(object);
}

/// Takes up the lines one by one; each answers whether the line makes sense where it stands.
class Reader
{
public:
    bool take(std::string_view line);
    /// Only after all lines; a journal whose beginning has no end is none.
    bool isWhole() const { return m_isStarted; }
    MoveProgress& progress() { return m_progress; }

private:
    bool takeHead(const Json& object);
    bool takeFile(const Json& object);
    bool takeRecord(const Json& object);
    bool takeRefusal(const Json& object);
    bool takeStep(const Json& object);
    bool takeStartEnd();
    bool takeEvent(const std::string& key, const Json& object);
    bool takeMark(const Json& object);
    bool takeStepEvent(const std::string& key, std::size_t step, const Json& object);
    bool takeEnd(const std::string& key, std::size_t step, const Json& object);
    bool takeMove(const Json& object, MoveStep& step) const;
    bool takeNote(const Json& object, MoveStep& step) const;

    bool m_hasHead = false;
    bool m_isStarted = false;
    MoveProgress::Start m_start;
    MoveProgress m_progress;
};

bool Reader::take(std::string_view line)
{
    const Json object = movetext::parse(line);
    if (object.empty())
        return false;
    const std::string& key = object.begin().key();
    if (!m_hasHead)
        return key == "journal" && takeHead(object);
    if (key == "step")
        return takeStep(object);
    if (m_isStarted)
        return takeEvent(key, object);
    if (key == "file")
        return takeFile(object);
    if (key == "record")
        return takeRecord(object);
    return key == "refused" ? takeRefusal(object) : key == "start" && takeStartEnd();
}

bool Reader::takeHead(const Json& object)
{
    m_hasHead = true;
    m_start.id = movetext::textOf(object, "id");
    m_start.kind = movetext::textOf(object, "kind");
    m_start.undoes = movetext::textOf(object, "undoes");
    return object["journal"] == formatVersion && movetext::isRunId(m_start.id) &&
           movetext::readPaths(object, "targets", m_start.targets) &&
           movetext::readPaths(object, "kept", m_start.keptFolders);
}

bool Reader::takeFile(const Json& object)
{
    MovedFile file;
    if (!movetext::readPath(object, "file", file.from) ||
        !movetext::readPath(object, "to", file.to) ||
        !movetext::readMark(object, "mark", file.mark))
        return false;
    file.recordId = movetext::textOf(object, "record");
    const auto device = object.find("device");
    if (device != object.end() && device->is_number_unsigned())
        file.targetDevice = *device;
    if (!readWord(object, "what", whatNames, file.what) ||
        !readWord(object, "deed", deedNames, file.deed) ||
        !readWord(object, "outside", outsideNames, file.outside))
        return false;
    m_start.files.push_back(std::move(file));
    return true;
}

bool Reader::takeRecord(const Json& object)
{
    MoveProgress::Record record;
    record.id = movetext::textOf(object, "record");
    if (!object.contains("file") ||
        !readNumber(object["file"], m_start.files.size(), record.file) ||
        (object.contains("below") && !movetext::readPath(object, "below", record.below)))
        return false;
    record.below.erase(0, 1);
    if (const auto values = object.find("values"); values != object.end())
    {
        if (!values->is_object())
            return false;
        for (const auto& [key, value] : values->items())
        {
            if (!value.is_string())
                return false;
            record.values[key] = value.get<std::string>();
        }
    }
    m_start.records.push_back(std::move(record));
    return true;
}

bool Reader::takeRefusal(const Json& object)
{
    MoveProgress::Refusal refusal;
    refusal.why = movetext::textOf(object, "why");
    if (!movetext::readPath(object, "refused", refusal.from) ||
        !movetext::readPath(object, "to", refusal.to))
        return false;
    m_start.refusals.push_back(std::move(refusal));
    return true;
}

bool Reader::takeMove(const Json& object, MoveStep& step) const
{
    const auto& files = m_isStarted ? m_progress.files() : m_start.files;
    if (!object.contains("file") || !readNumber(object["file"], files.size(), step.file))
        return false;
    step.from = files[step.file].from;
    step.to = files[step.file].to;
    return (!object.contains("from") || movetext::readPath(object, "from", step.from)) &&
           (!object.contains("to") || movetext::readPath(object, "to", step.to));
}

bool Reader::takeNote(const Json& object, MoveStep& step) const
{
    const auto& files = m_isStarted ? m_progress.files() : m_start.files;
    step.text = movetext::textOf(object, "text");
    return object.contains("file") && readNumber(object["file"], files.size(), step.file) &&
           movetext::readPath(object, "note", step.to);
}

bool Reader::takeStep(const Json& object)
{
    const std::string name = movetext::textOf(object, "step");
    const auto* const kind = std::find(kindNames.begin(), kindNames.end(), name);
    if (kind == kindNames.end())
        return false;
    MoveStep step;
    step.kind = static_cast<Kind>(kind - kindNames.begin());
    step.isOurs = object.contains("ours");
    const bool isRead = step.kind == Kind::move ? takeMove(object, step)
                        : isNote(step.kind)     ? takeNote(object, step)
                                                : movetext::readPath(object, "folder", step.to) &&
                                                  readRights(object, step.rights);
    if (!isRead)
        return false;
    if (m_isStarted)
        m_progress.addStep(std::move(step));
    else
        m_start.steps.push_back(std::move(step));
    return true;
}

bool Reader::takeStartEnd()
{
    m_isStarted = true;
    m_progress = MoveProgress(std::move(m_start));
    return true;
}

bool Reader::takeEvent(const std::string& key, const Json& object)
{
    if (key == "note")
        m_progress.addNote(movetext::textOf(object, "note"));
    else if (key == "tried")
        m_progress.tried();
    else if (key == "finished")
        m_progress.finished();
    else if (key == "applied" || key == "told") // "told" in journals of earlier versions
    {
        std::size_t count = 0;
        return readNumber(object[key], MoveProgress::npos, count) && m_progress.setApplied(count);
    }
    else if (key == "known")
        return takeMark(object);
    else
    {
        std::size_t step = 0;
        return readNumber(object.begin().value(), m_progress.stepCount(), step) &&
               takeStepEvent(key, step, object);
    }
    return true;
}

bool Reader::takeMark(const Json& object)
{
    std::size_t file = 0;
    FileMark mark;
    if (!readNumber(object["known"], m_progress.files().size(), file) ||
        !movetext::readMark(object, "mark", mark))
        return false;
    m_progress.setMark(file, mark);
    return true;
}

bool Reader::takeStepEvent(const std::string& key, std::size_t step, const Json& object)
{
    if (key == "begin")
    {
        FolderRights rights;
        if (!m_progress.isOpen(step) || !readRights(object, rights))
            return false;
        m_progress.begin(step, rights, object.contains("free"));
        return true;
    }
    if (key == "lost")
    {
        const bool isPossible = m_progress.canBeLost(step);
        if (isPossible)
            m_progress.lost(step);
        return isPossible;
    }
    return m_progress.state(step) == MoveProgress::State::begun && takeEnd(key, step, object);
}

bool Reader::takeEnd(const std::string& key, std::size_t step, const Json& object)
{
    if (key == "copied")
    {
        FileMark copy;
        const bool isRead = movetext::readMark(object, "mark", copy);
        m_progress.setCopy(step, copy);
        return isRead;
    }
    if (key == "done")
        m_progress.done(step);
    else if (key == "skipped")
        m_progress.skipped(step);
    else if (key == "failed")
        m_progress.failed(step, movetext::textOf(object, "why"));
    else
        return false;
    return true;
}
} // namespace

std::string start(const MoveProgress::Start& start)
{
    std::string lines = head(start);
    for (const MoveProgress::Refusal& refusal : start.refusals)
        lines += refusalLine(refusal);
    for (const MovedFile& file : start.files)
        lines += fileLine(file);
    for (const MoveProgress::Record& record : start.records)
        lines += recordLine(record);
    for (const MoveStep& each : start.steps)
        lines += step(each, start.files);
    return lines + "{\"start\":true}\n";
}

MoveProgress read(const std::string& path, const std::string& content)
{
    Reader reader;
    std::size_t number = 0;
    const auto take = [&](std::string_view line)
    {
        ++number;
        return reader.take(line);
    };
    if (!movetext::forEachLine(content, take))
        throw HostError(ExitCode::failed,
                        path + " is no journal of a run that can be used: line " +
                            std::to_string(number) + " is damaged");
    if (!reader.isWhole())
        throw HostError(
            ExitCode::failed,
            path + " is no journal of a run that can be used: its first lines are missing");
    return std::move(reader.progress());
}

std::string step(const MoveStep& step, const std::vector<MovedFile>& files)
{
    Json object;
    object["step"] = kindNames[static_cast<std::size_t>(step.kind)];
    if (step.kind == Kind::move)
    {
        object["file"] = step.file;
        if (step.from != files[step.file].from)
            object["from"] = pathInText(step.from);
        if (step.to != files[step.file].to)
            object["to"] = pathInText(step.to);
        return movetext::line(object);
    }
    if (isNote(step.kind))
    {
        object["file"] = step.file;
        object["note"] = pathInText(step.to);
        object["text"] = step.text;
        return movetext::line(object);
    }
    object["folder"] = pathInText(step.to);
    if (step.rights.mode != 0)
        object["rights"] = fromRights(step.rights);
    if (step.isOurs)
        object["ours"] = true;
    return movetext::line(object);
}

std::string begin(std::size_t step, const MoveStep& begun, bool isFree)
{
    Json object;
    object["begin"] = step;
    if (begun.kind == Kind::removeFolder)
        object["rights"] = fromRights(begun.rights);
    if (isFree)
        object["free"] = true;
    return movetext::line(object);
}

std::string copied(std::size_t step, const FileMark& copy)
{
    Json object;
    object["copied"] = step;
    object["mark"] = movetext::fromMark(copy);
    return movetext::line(object);
}

std::string done(std::size_t step)
{
    return numbered("done", step);
}

std::string skipped(std::size_t step)
{
    return numbered("skipped", step);
}

std::string failed(std::size_t step, const std::string& why)
{
    Json object;
    object["failed"] = step;
    object["why"] = why;
    return movetext::line(object);
}

std::string lost(std::size_t step)
{
    return numbered("lost", step);
}

std::string known(std::size_t file, const FileMark& mark)
{
    Json object;
    object["known"] = file;
    object["mark"] = movetext::fromMark(mark);
    return movetext::line(object);
}

std::string note(const std::string& sentence)
{
    Json object;
    object["note"] = sentence;
    return movetext::line(object);
}

std::string tried()
{
    return "{\"tried\":true}\n";
}

std::string applied(std::size_t count)
{
    return numbered("applied", count);
}

std::string finished()
{
    return "{\"finished\":true}\n";
}
} // namespace qo::host::journaltext
