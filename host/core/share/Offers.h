#pragma once

#include "core/share/Shares.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qo::host
{
/// The music and videos of the loaded collection that a share with that query offers; "" for all.
/// Throws HostError for a query that cannot be read. On the thread that calls the kernel.
QoFileDbItemArray offeredFiles(const CString& query);

/// Writes an extract of these files of the loaded collection. Throws HostError. Likewise.
void writeExtract(const QoFileDbItemArray& files, const CString& path);

/// By which a friend says which file he means, beside its row: a digest of its path, in components,
/// and its size. Rows are given to other files when theirs are gone.
std::string fileMark(const CStringArray& components, std::int64_t size);
/// The header that carries it.
inline constexpr const char* fileMarkHeader = "Qo-File";

/// Removes the lists of servers that ended without doing so.
void removeLeftLists();

/// What a share offers at one moment: an extract in a temporary file, and the files that it names.
/// Does not change, but for its end. From any thread.
class Offer
{
public:
    struct File
    {
        CString path;
        std::int64_t size = 0; ///< as the extract says
    };

    using Files = std::unordered_map<int, File>;

    /// Looks the share's query up in the loaded collection. On the thread that calls the kernel.
    /// Throws HostError when the extract cannot be written or the query cannot be read.
    static std::shared_ptr<Offer> of(const Share& share);
    /// The extract is a file that goes with the offer; the files have its rows.
    Offer(const Share& share, File extract, Files files);
    ~Offer();
    Offer(const Offer&) = delete;
    Offer& operator=(const Offer&) = delete;

    const CString& friendName() const { return m_friendName; }
    const std::string& shareId() const { return m_shareId; }
    const File& extract() const { return m_extract; }
    std::size_t fileCount() const { return m_files.size(); }
    /// Null for a row that is not part of the extract.
    const File* file(int row) const;

    void end() { m_hasEnded = true; }
    /// Whether the share was revoked: what is under way then ends.
    bool hasEnded() const { return m_hasEnded; }

private:
    CString m_friendName;
    std::string m_shareId;
    File m_extract;
    Files m_files;
    std::atomic<bool> m_hasEnded = false;
};

/// The offers of all shares. From any thread.
class Offers
{
public:
    /// The offer of that share id, or null. Takes the same time for each id that is wrong.
    std::shared_ptr<const Offer> find(std::string_view shareId) const;
    /// Those whose shares are not among the new ones end.
    void replace(std::vector<std::shared_ptr<Offer>> offers);
    /// All but those of these share ids end.
    void keepOnly(const std::vector<std::string>& shareIds);

private:
    mutable std::mutex m_lock; ///< guards m_offers
    std::vector<std::shared_ptr<Offer>> m_offers;
};
} // namespace qo::host
