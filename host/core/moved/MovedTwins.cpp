#include "core/moved/MovedTwins.h"

#include <algorithm>
#include <utility>

namespace qo::host
{
namespace
{
/// Longer ends of paths are not compared: equal files whose last eight folders agree are rare.
constexpr int mostPathEnd = 8;
constexpr std::size_t several = static_cast<std::size_t>(-2);

CString folderOf(const CString& path)
{
    return path.Left(std::max(0, path.ReverseFind(u'\\')));
}

CString nameOf(const CString& path)
{
    return path.Mid(path.ReverseFind(u'\\') + 1);
}

/// The last components; empty when the path has fewer.
std::optional<CString> endOf(const CString& path, int components)
{
    CString rest = path;
    for (int i = 0; i < components; ++i)
    {
        if (rest.IsEmpty())
            return {};
        rest = folderOf(rest);
    }
    return path.Mid(rest.GetLength());
}

void note(std::size_t& partner, std::size_t index)
{
    partner = partner == MovedTwins::none || partner == index ? index : several;
}
} // namespace

/// One round: finds the pairs of which each shares a feature and the evidence with the other alone.
class MovedTwins::Round
{
public:
    void addGone(std::size_t index, const FeaturedFile& file, const CString& evidence)
    {
        for (const int feature : file.features)
        {
            Box& box = m_boxes[{feature, evidence}];
            note(box.gone, index);
            m_boxesOfGone.emplace_back(index, &box);
        }
    }
    /// To be called after addGone() for all.
    void addFound(std::size_t index, const FeaturedFile& file, const CString& evidence)
    {
        for (const int feature : file.features)
        {
            const auto found = m_boxes.find({feature, evidence});
            if (found == m_boxes.end())
                continue;
            note(found->second.found, index);
            m_boxesOfFound.emplace_back(index, &found->second);
        }
    }
    template <class Pair>
    bool forEachPair(Pair pairThem) const
    {
        Partners foundOf;
        Partners goneOf;
        for (const auto& [gone, box] : m_boxesOfGone)
        {
            if (box->found != none)
                note(foundOf.try_emplace(gone, none).first->second, box->found);
        }
        for (const auto& [found, box] : m_boxesOfFound)
            note(goneOf.try_emplace(found, none).first->second, box->gone);
        bool isAny = false;
        for (const auto& [gone, found] : foundOf)
        {
            if (found == several || goneOf.at(found) != gone)
                continue;
            pairThem(gone, found);
            isAny = true;
        }
        return isAny;
    }

private:
    struct Box
    {
        std::size_t gone = none;
        std::size_t found = none;
    };
    using Partners = std::unordered_map<std::size_t, std::size_t>;

    std::map<std::pair<int, CString>, Box> m_boxes;
    std::vector<std::pair<std::size_t, const Box*>> m_boxesOfGone;
    std::vector<std::pair<std::size_t, const Box*>> m_boxesOfFound;
};

MovedTwins::MovedTwins(std::vector<FeaturedFile> gone,
                       std::vector<FeaturedFile> found,
                       Questions questions)
    : m_questions(std::move(questions))
{
    const auto takeOver = [](std::vector<FeaturedFile>& files, Entries& entries, auto& open)
    {
        for (FeaturedFile& file : files)
        {
            if (!file.features.empty())
                open.push_back(entries.size());
            entries.push_back({std::move(file), none, {}});
        }
    };
    takeOver(gone, m_gone, m_openGone);
    takeOver(found, m_found, m_openFound);
}

void MovedTwins::pair()
{
    pairLone();
    // Each pair may show where a folder went, so the strongest evidence is asked again.
    while (pairByPlace() || pairByName() || pairByFolder() || pairByPathEnd() || pairByTitle() ||
           pairLone())
    {
    }
}

bool MovedTwins::pairBy(const Evidence& ofGone, const Evidence& ofFound)
{
    Round round;
    for (const std::size_t gone : m_openGone)
    {
        if (const auto evidence = ofGone(gone))
            round.addGone(gone, m_gone[gone].file, *evidence);
    }
    for (const std::size_t found : m_openFound)
    {
        if (const auto evidence = ofFound(found))
            round.addFound(found, m_found[found].file, *evidence);
    }
    const bool isAny = round.forEachPair(
        [this](std::size_t gone, std::size_t found)
        {
            m_gone[gone].twin = found;
            m_found[found].twin = gone;
            learnFolder(folderOf(m_gone[gone].file.path), folderOf(m_found[found].file.path));
        });
    std::erase_if(m_openGone, [this](std::size_t i) { return m_gone[i].twin != none; });
    std::erase_if(m_openFound, [this](std::size_t i) { return m_found[i].twin != none; });
    return isAny;
}

bool MovedTwins::pairLone()
{
    const auto nothing = [](std::size_t) { return std::optional<CString>(CString()); };
    return pairBy(nothing, nothing);
}

bool MovedTwins::pairByPlace()
{
    return pairBy(
        [this](std::size_t gone) -> std::optional<CString>
        {
            const CString& path = m_gone[gone].file.path;
            const auto folder = folderNow(folderOf(path));
            return folder ? *folder + u'\\' + nameOf(path) : std::optional<CString>();
        },
        [this](std::size_t found) { return m_found[found].file.path; });
}

bool MovedTwins::pairByName()
{
    return pairBy([this](std::size_t gone) { return nameOf(m_gone[gone].file.path); },
                  [this](std::size_t found) { return nameOf(m_found[found].file.path); });
}

bool MovedTwins::pairByFolder()
{
    return pairBy([this](std::size_t gone) { return folderNow(folderOf(m_gone[gone].file.path)); },
                  [this](std::size_t found) { return folderOf(m_found[found].file.path); });
}

bool MovedTwins::pairByPathEnd()
{
    for (int count = mostPathEnd; count > 1; --count)
    {
        if (pairBy([&](std::size_t gone) { return endOf(m_gone[gone].file.path, count); },
                   [&](std::size_t found) { return endOf(m_found[found].file.path, count); }))
            return true;
    }
    return false;
}

bool MovedTwins::pairByTitle()
{
    const auto titleOf = [](Entry& entry, const auto& question, std::size_t index)
    {
        if (!entry.title)
            entry.title = question(index);
        return entry.title->IsEmpty() ? std::optional<CString>() : entry.title;
    };
    // The title of a found file is read from the file: only where a lost file with one of its
    // features has a title to compare it with.
    std::vector<bool> hasTitle;
    for (const std::size_t gone : m_openGone)
    {
        if (!titleOf(m_gone[gone], m_questions.titleOfGone, gone))
            continue;
        for (const int feature : m_gone[gone].file.features)
        {
            hasTitle.resize(std::max(hasTitle.size(), static_cast<std::size_t>(feature) + 1));
            hasTitle[static_cast<std::size_t>(feature)] = true;
        }
    }
    const auto matters = [&hasTitle](int feature) {
        return static_cast<std::size_t>(feature) < hasTitle.size() &&
               hasTitle[std::size_t(feature)];
    };
    return pairBy(
        [&](std::size_t gone) { return titleOf(m_gone[gone], m_questions.titleOfGone, gone); },
        [&](std::size_t found) -> std::optional<CString>
        {
            Entry& entry = m_found[found];
            if (std::none_of(entry.file.features.begin(), entry.file.features.end(), matters))
                return {};
            return titleOf(entry, m_questions.titleOfFound, found);
        });
}

/// A pair shows where its folder went, and where the folders above went as long as their names are
/// the same: /m/a/cd1/1 -> /n/a/cd1/1 shows that /m/a/cd1 became /n/a/cd1, /m/a became /n/a, and /m
/// became /n.
void MovedTwins::learnFolder(const CString& from, const CString& to)
{
    CString before = from;
    CString now = to;
    while (!before.IsEmpty() && !now.IsEmpty() && before != now)
    {
        m_folders[before].count(now);
        if (nameOf(before) != nameOf(now))
            return;
        before = folderOf(before);
        now = folderOf(now);
    }
}

std::optional<CString> MovedTwins::folderNow(const CString& folder)
{
    for (CString above = folder; !above.IsEmpty(); above = folderOf(above))
    {
        if (const auto now = becameOf(above))
            return *now + folder.Mid(above.GetLength());
    }
    return {};
}

std::optional<CString> MovedTwins::becameOf(const CString& folder)
{
    const auto known = m_folders.find(folder);
    if (known == m_folders.end())
        return {};
    const auto [gone, isNew] = m_isFolderGone.try_emplace(folder, false);
    if (isNew)
        gone->second = m_questions.isFolderGone(folder);
    if (!gone->second)
        return {};
    const Places& places = known->second;
    return places.isTie ? std::optional<CString>() : places.best;
}

void MovedTwins::Places::count(const CString& place)
{
    const int files = ++m_files[place];
    if (files < m_most)
        return;
    isTie = files == m_most;
    if (files > m_most)
        best = place;
    m_most = files;
}

std::vector<std::size_t> MovedTwins::candidatesFor(std::size_t gone, std::size_t most)
{
    if (m_leftOver.empty())
    {
        for (const std::size_t found : m_openFound)
        {
            for (const int feature : m_found[found].file.features)
                m_leftOver[feature].push_back(found);
        }
    }
    std::vector<std::size_t> candidates;
    for (const int feature : m_gone[gone].file.features)
    {
        const auto left = m_leftOver.find(feature);
        if (left == m_leftOver.end())
            continue;
        for (std::size_t i = 0; i < left->second.size() && candidates.size() < most; ++i)
        {
            const std::size_t found = left->second[i];
            if (std::find(candidates.begin(), candidates.end(), found) == candidates.end())
                candidates.push_back(found);
        }
    }
    return candidates;
}
} // namespace qo::host
