#include "core/runs/MoveSteps.h"

#include "core/base/SystemPath.h"
#include "core/plan/TargetName.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace qo::host
{
namespace
{
using Kind = MoveStep::Kind;
using Places = std::unordered_multimap<std::string, std::size_t>; // by the key of the path
using Deed = MovedFile::Deed;

/// Walks what has to come first, depth first and without recursion, since chains may be as long as
/// the list. A node is a file, a folder to be made or a folder to be removed early, by number.
class Orderer
{
public:
    Orderer(const std::vector<MovedFile>& files,
            const std::vector<MoveStep>& foldersToMake,
            const std::vector<MoveStep>& foldersToRemove,
            const std::string& runId);

    std::vector<MoveStep> order();

private:
    enum class State : std::uint8_t
    {
        fresh,
        open, ///< on the way down
        done
    };
    struct Frame
    {
        std::size_t node;
        std::vector<std::size_t> needs;
        std::size_t next = 0;
    };

    bool isFile(std::size_t node) const { return node < m_files.size(); }
    bool isFolderToMake(std::size_t node) const
    {
        return !isFile(node) && node < m_files.size() + m_make.size();
    }
    const MoveStep& earlyRemoval(std::size_t node) const
    {
        return *m_early[node - m_files.size() - m_make.size()];
    }
    void splitRemovals(const std::vector<MoveStep>& removals);
    std::vector<std::size_t> needsOf(std::size_t node) const;
    void addContent(const std::string& folder, std::vector<std::size_t>& needs) const;
    void visit(std::size_t root);
    void descend(std::size_t node);
    void meetOpen(std::size_t node);
    void park(std::size_t file);
    void emit(std::size_t node);
    bool isFreeAlready(std::size_t node) const { return isFile(node) && !m_waiting[node].empty(); }

    const std::vector<MovedFile>& m_files;
    const std::vector<MoveStep>& m_make;
    std::string m_runId;
    std::vector<const MoveStep*> m_early; ///< folders in whose place a file comes, by path
    std::vector<const MoveStep*> m_late;  ///< the deepest first
    std::vector<std::size_t> m_byPlace;   ///< files, sorted by where they lie
    std::vector<std::string> m_fromKeys;  ///< by file
    std::vector<std::string> m_toKeys;    ///< likewise
    Places m_occupants;                   ///< files that leave where they lie
    Places m_makeByPath;
    Places m_earlyByPath;
    std::vector<State> m_states;
    std::vector<std::string> m_waiting; ///< by file: the temporary place, "" for none
    std::vector<Frame> m_stack;
    std::vector<MoveStep> m_steps;
};

Orderer::Orderer(const std::vector<MovedFile>& files,
                 const std::vector<MoveStep>& foldersToMake,
                 const std::vector<MoveStep>& foldersToRemove,
                 const std::string& runId)
    : m_files(files), m_make(foldersToMake), m_runId(runId), m_waiting(files.size())
{
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        m_fromKeys.push_back(sameNameKey(files[i].from));
        m_toKeys.push_back(sameNameKey(files[i].to));
        if (files[i].deed != Deed::copy)
            m_occupants.emplace(m_fromKeys[i], i);
    }
    for (std::size_t i = 0; i < m_make.size(); ++i)
        m_makeByPath.emplace(sameNameKey(m_make[i].to), m_files.size() + i);
    splitRemovals(foldersToRemove);
    m_states.resize(m_files.size() + m_make.size() + m_early.size());
    if (m_early.empty())
        return;
    for (std::size_t i = 0; i < files.size(); ++i)
        m_byPlace.push_back(i);
    std::sort(m_byPlace.begin(),
              m_byPlace.end(),
              [&](std::size_t a, std::size_t b) { return m_files[a].from < m_files[b].from; });
}

/// A folder goes early when a file takes its place, and so do the folders in it.
void Orderer::splitRemovals(const std::vector<MoveStep>& removals)
{
    const std::unordered_set<std::string> wanted(m_toKeys.begin(), m_toKeys.end());
    std::vector<const MoveStep*> sorted;
    for (const MoveStep& removal : removals)
        sorted.push_back(&removal);
    std::sort(sorted.begin(),
              sorted.end(),
              [](const MoveStep* a, const MoveStep* b) { return a->to < b->to; });
    std::unordered_set<std::string> early;
    for (const MoveStep* removal : sorted)
    {
        std::string above = parentOf(removal->to);
        while (above != "/" && !early.contains(above))
            above = parentOf(above);
        const std::string key = sameNameKey(removal->to);
        if (wanted.contains(key) || early.contains(above))
        {
            early.insert(removal->to);
            m_earlyByPath.emplace(key, m_files.size() + m_make.size() + m_early.size());
            m_early.push_back(removal);
        }
        else
            m_late.push_back(removal);
    }
    std::reverse(m_late.begin(), m_late.end());
}

std::vector<MoveStep> Orderer::order()
{
    for (std::size_t node = 0; node < m_states.size(); ++node)
        visit(node);
    for (const MoveStep* removal : m_late)
        m_steps.push_back(*removal);
    return std::move(m_steps);
}

std::vector<std::size_t> Orderer::needsOf(std::size_t node) const
{
    std::vector<std::size_t> needs;
    const auto add = [&](const Places& places, const std::string& key)
    {
        const auto [first, last] = places.equal_range(key);
        for (auto found = first; found != last; ++found)
        {
            if (found->second != node)
                needs.push_back(found->second);
        }
    };
    if (!isFile(node) && !isFolderToMake(node))
    {
        addContent(earlyRemoval(node).to, needs);
        return needs;
    }
    if (isFile(node) && m_files[node].deed == Deed::removeCopy)
        return needs;
    const std::string& place = isFile(node) ? m_files[node].to : m_make[node - m_files.size()].to;
    const std::string key = isFile(node) ? m_toKeys[node] : sameNameKey(place);
    add(m_makeByPath, key.substr(0, key.rfind('/')));
    add(m_occupants, key);
    if (isFile(node))
        add(m_earlyByPath, key);
    return needs;
}

void Orderer::addContent(const std::string& folder, std::vector<std::size_t>& needs) const
{
    const std::string start = folder + "/";
    auto file = std::lower_bound(m_byPlace.begin(),
                                 m_byPlace.end(),
                                 start,
                                 [&](std::size_t i, const std::string& path)
                                 { return m_files[i].from < path; });
    for (; file != m_byPlace.end() && m_files[*file].from.starts_with(start); ++file)
        needs.push_back(*file);
    auto inner = std::lower_bound(m_early.begin(),
                                  m_early.end(),
                                  start,
                                  [](const MoveStep* step, const std::string& path)
                                  { return step->to < path; });
    for (; inner != m_early.end() && (*inner)->to.starts_with(start); ++inner)
        needs.push_back(m_files.size() + m_make.size() +
                        static_cast<std::size_t>(inner - m_early.begin()));
}

void Orderer::visit(std::size_t root)
{
    if (m_states[root] == State::fresh)
        descend(root);
    while (!m_stack.empty())
    {
        Frame& frame = m_stack.back();
        if (frame.next == frame.needs.size())
        {
            emit(frame.node);
            m_states[frame.node] = State::done;
            m_stack.pop_back();
            continue;
        }
        const std::size_t need = frame.needs[frame.next++];
        if (m_states[need] == State::done || isFreeAlready(need))
            continue;
        if (m_states[need] == State::fresh)
            descend(need);
        else
            meetOpen(need);
    }
}

void Orderer::descend(std::size_t node)
{
    // On a disk that takes both for one name it would stand in its own way.
    if (isFile(node) && m_files[node].deed == Deed::move && m_waiting[node].empty() &&
        m_fromKeys[node] == m_toKeys[node])
        park(node);
    m_states[node] = State::open;
    m_stack.push_back({node, needsOf(node)});
}

/// A ring: some file of it waits beside its place, which frees that place at once.
void Orderer::meetOpen(std::size_t node)
{
    if (isFile(node))
        return park(node);
    // What stands above the file on the way down is folders that it needs; it comes back to them.
    while (!isFile(m_stack.back().node))
    {
        m_states[m_stack.back().node] = State::fresh;
        m_stack.pop_back();
    }
    const std::size_t file = m_stack.back().node;
    m_states[file] = State::fresh;
    m_stack.pop_back();
    park(file);
}

void Orderer::park(std::size_t file)
{
    if (!m_waiting[file].empty())
        return;
    std::string folder = parentOf(m_files[file].from);
    while (m_earlyByPath.contains(sameNameKey(folder)))
        folder = parentOf(folder);
    m_waiting[file] = inFolder(folder, MoveSteps::waitingName(m_runId, file, m_files[file].from));
    m_steps.push_back({Kind::move, file, m_files[file].from, m_waiting[file]});
}

void Orderer::emit(std::size_t node)
{
    if (isFolderToMake(node))
        m_steps.push_back(m_make[node - m_files.size()]);
    else if (!isFile(node))
        m_steps.push_back(earlyRemoval(node));
    else
        m_steps.push_back({Kind::move,
                           node,
                           m_waiting[node].empty() ? m_files[node].from : m_waiting[node],
                           m_files[node].to});
}
} // namespace

std::vector<MoveStep> MoveSteps::inOrder(const std::vector<MovedFile>& files,
                                         const std::vector<MoveStep>& foldersToMake,
                                         const std::vector<MoveStep>& foldersToRemove,
                                         const std::string& runId)
{
    return Orderer(files, foldersToMake, foldersToRemove, runId).order();
}

std::string
MoveSteps::waitingName(const std::string& runId, std::size_t file, const std::string& path)
{
    constexpr std::size_t longestEnd = 16;
    const std::size_t point = path.rfind('.');
    const bool hasEnd = point != std::string::npos && path.find('/', point) == std::string::npos &&
                        path.size() - point <= longestEnd;
    return ".qo-" + runId + "-" + std::to_string(file) + (hasEnd ? path.substr(point) : "");
}
} // namespace qo::host
