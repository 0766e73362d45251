#include "core/moved/HeadStore.h"

#include "core/base/HostError.h"
#include "core/base/HostFiles.h"

#include <QoKernel/Tags.h>

#include <algorithm>
#include <charconv>
#include <sstream>
#include <vector>

namespace qo::host
{
namespace
{
constexpr std::size_t largestHeads = std::size_t(1) << 30;
constexpr const char* firstLine = "velmora-heads 1";

/// Ids that this system makes have no blanks; foreign ones with blanks do without a head.
std::string keyOf(const QoFileDbItem& record)
{
    std::string key = toUtf8(record.velmoraId);
    return key.find_first_of(" \n\r\t") == std::string::npos ? key : std::string();
}
} // namespace

HeadStore::HeadStore(const CString& file) : m_file(file)
{
    std::string text;
    if (readFile(file, largestHeads, text) == 0)
        parse(text);
}

void HeadStore::parse(const std::string& text)
{
    std::istringstream lines(text);
    std::string line;
    if (!std::getline(lines, line) || line != firstLine)
        return;
    while (std::getline(lines, line))
    {
        std::istringstream words(line);
        std::string id;
        std::string digest;
        Head head;
        if (!(words >> id >> head.size >> head.modified >> digest))
            continue;
        const char* const end = digest.data() + digest.size();
        const auto [behind, error] = std::from_chars(digest.data(), end, head.digest, 16);
        if (error == std::errc() && behind == end)
            m_heads[id] = head;
    }
}

bool HeadStore::fits(const Head& head, const QoFileDbItem& record)
{
    return head.size == record.size && head.modified == toTicks(record.modifTime);
}

std::optional<std::uint64_t> HeadStore::headOf(const QoFileDbItem& record) const
{
    const auto found = m_heads.find(keyOf(record));
    if (found == m_heads.end() || !fits(found->second, record))
        return {};
    return found->second.digest;
}

bool HeadStore::update(const QoFileDbItemArray& records, IQoProgress& progress)
{
    std::unordered_map<std::string, Head> current;
    bool isWhole = true;
    progress.setStage(IQoProgress::stageCheck);
    progress.setRange(IQoProgress::rangeKnown, records.GetSize());
    for (const QoFileDbItemPtr& record : records)
    {
        progress.step(1);
        const std::string key = keyOf(*record);
        if (key.empty() || record->size <= 0)
            continue;
        const auto known = m_heads.find(key);
        if (known != m_heads.end() && fits(known->second, *record))
        {
            current.insert(*known);
            continue;
        }
        isWhole = isWhole && !progress.isCanceled();
        if (!isWhole)
            continue;
        progress.setCurrentItem(record->path, IQoProgress::itemFilePath);
        const auto digest = KVTagLib::digestOfSoundHead(CQoUtils::getRealPath(record->path));
        if (!digest)
            continue;
        current[key] = {record->size, toTicks(record->modifTime), *digest};
        m_isDirty = true;
    }
    m_isDirty = m_isDirty || current.size() != m_heads.size();
    m_heads = std::move(current);
    return isWhole;
}

void HeadStore::save()
{
    if (!m_isDirty)
        return;
    std::vector<const std::pair<const std::string, Head>*> sorted;
    for (const auto& entry : m_heads)
        sorted.push_back(&entry);
    std::sort(sorted.begin(), sorted.end(), [](auto* a, auto* b) { return a->first < b->first; });
    std::string text = std::string(firstLine) + "\n";
    for (const auto* entry : sorted)
    {
        char digest[17] = {};
        std::to_chars(digest, digest + 16, entry->second.digest, 16);
        text += entry->first + " " + std::to_string(entry->second.size) + " " +
                std::to_string(entry->second.modified) + " " + digest + "\n";
    }
    if (const int error = fileSystem().replaceFile(m_file, text.data(), text.size()))
        throw HostError(ExitCode::failed,
                        shownPath(m_file) + " cannot be written: " + errorWords(error));
    m_isDirty = false;
}
} // namespace qo::host
