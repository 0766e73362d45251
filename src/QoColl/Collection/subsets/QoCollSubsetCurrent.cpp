#include "Logical/LTAlbum.h"
#include "Logical/LTLyrics.h"
#include "Logical/LTPicture.h"
#include "Logical/LTTrack.h"
#include "Physical/HDDirectory.h"
#include "Physical/HDMusicFile.h"
#include "Physical/HDPictureFile.h"
#include "Physical/HDTextFile.h"
#include "QoColl/Collection/QoCollection.h"
#include "QoColl/Collection/subsets/QoCollSubset.h"
#include "QoColl/Collection/subsets/SubsetNames.h"
#include "common/Log.h"

#include <algorithm>
#include <functional>
#include <unordered_map>
#include <utility>

// The subsets of both collections: when they are built, and how they follow changes.

namespace
{
/// A type 1 filter of fewer letters is ignored, since it would find nearly everything.
constexpr int minFilterLength = 2;

/// What goes with the kept subsets.
struct Kept
{
    qo::SubsetNames names;                   ///< of the full subset, once a text filter was set
    const CQoCollSubset* showBase = nullptr; ///< what the show subset was chosen from
    int changes = 0;                         ///< single files since the full subset was built
    CPtrListT<CLTObject> touched;            ///< albums and tracks of files that were removed
    bool areChangesKnown = false;            ///< for takeChanges()
    CQoCollSubset::Files removed;
    CQoCollSubset::Files added;
};

Kept& kept()
{
    // Never destroyed, since collections that nobody cleared are released at the end of the
    // process.
    static auto* const data = new Kept;
    return *data;
}

/// Whether one of the files went to another directory. It has the same record as before, whose path
/// is the new one, and views find directories by the path of the file that left.
bool wasAnyMoved(const CQoCollSubset::Files& removed, const CQoCollSubset::Files& added)
{
    std::unordered_map<const QoFileDbItem*, const CHDDirectory*> left;
    for (const CQoUtils::File& file : removed)
        left.emplace(file->getDbItem().get(), file->getParentDir().get());
    return std::any_of(added.begin(),
                       added.end(),
                       [&left](const CQoUtils::File& file)
                       {
                           const auto former = left.find(file->getDbItem().get());
                           return former != left.end() &&
                                  former->second != file->getParentDir().get();
                       });
}

bool isSame(const CQoUtils::ShowFilterInfo& a, const CQoUtils::ShowFilterInfo& b)
{
    return a.m_showOwn == b.m_showOwn && a.m_showForeign == b.m_showForeign &&
           a.m_showTypes == b.m_showTypes;
}

bool showsEverything(const CQoUtils::ShowFilterInfo& info)
{
    return isSame(info, {});
}

void addOwners(const CQoUtils::File& file, CPtrListT<CLTObject>& owners)
{
    if (file->getFileType() != CHDFile::FT_Music)
        return;
    if (const auto album = file->getLTAssoc(CLTObjectType::Album))
        owners.addUnique(album);
    if (const auto track = file->getLTAssoc(CLTObjectType::Track))
        owners.addUnique(track);
}

int yearOf(const boost::shared_ptr<CLTObject>& object)
{
    const auto album = boost::dynamic_pointer_cast<CLTAlbum>(object);
    return album ? CQoUtils::getAlbumYear(album) : 0;
}

template <class X>
void addFilesOf(const X& object, CQoUtils::Files& files)
{
    for (const auto& file : object.getFiles())
        files.add(file);
}

/// The pictures and texts that hang on an album or track.
CQoUtils::Files companionsOf(const CLTObject& owner)
{
    CQoUtils::Files files;
    if (owner.getType() == CLTObjectType::Album)
    {
        const auto& album = static_cast<const CLTAlbum&>(owner);
        for (const auto& picture : album.getPictures())
            addFilesOf(*picture, files);
        for (const auto& lyrics : album.getLyrics())
            addFilesOf(*lyrics, files);
    }
    else if (const auto lyrics = static_cast<const CLTTrack&>(owner).getLyrics())
        addFilesOf(*lyrics, files);
    return files;
}
} // namespace

CQoCollSubset CQoCollSubset::m_emptySubset(false);
CQoCollSubset CQoCollSubset::m_fullSubset(false);
CQoCollSubset CQoCollSubset::m_textSubset(true);
CQoCollSubset CQoCollSubset::m_showSubset(false);
const CQoCollSubset* CQoCollSubset::m_pCrtSubset = nullptr;
CString CQoCollSubset::s_filterText;
CQoCollSubset::EFilterType CQoCollSubset::s_filterType = CQoCollSubset::filterAll;
CQoCollSubset::ShowFilterInfo CQoCollSubset::s_showFilterInfo;
CCriticalSection CQoCollSubset::m_cs;

void CQoCollSubset::forgetAll()
{
    m_fullSubset.clear();
    m_textSubset.clear();
    m_showSubset.clear();
    m_pCrtSubset = nullptr;
    kept() = Kept();
}

void CQoCollSubset::refreshSubsets()
{
    const qo::Guard guard(m_cs);
    qo::log(qo::level::flow, u"creating QoCollSubsets");
    forgetAll();
    qo::log(qo::level::flow, u"QoCollSubsets created");
}

void CQoCollSubset::refreshSubsets(const Files& added)
{
    const qo::Guard guard(m_cs);
    if (!isFollowing())
        return refreshSubsets();
    qo::log(qo::level::flow, u"creating QoCollSubsets");
    CPtrListT<CLTObject> owners = std::exchange(kept().touched, {});
    for (const File& file : added)
    {
        if (!countChange())
            break;
        joinSubsets(file);
        addOwners(file, owners);
    }
    recountCompanions(owners);
    qo::log(qo::level::flow, u"QoCollSubsets created");
}

void CQoCollSubset::clearSubsets()
{
    const qo::Guard guard(m_cs);
    forgetAll();
    s_filterText.Empty();
    s_filterType = filterAll;
    s_showFilterInfo = {};
}

void CQoCollSubset::setFilterInfo(CString text, EFilterType type, const ShowFilterInfo& info)
{
    const qo::Guard guard(m_cs);
    text.MakeLower();
    s_filterText = std::move(text);
    s_filterType = type;
    s_showFilterInfo = info;
    updateCrtSubset();
}

void CQoCollSubset::updateCrtSubset()
{
    const qo::Guard guard(m_cs);
    ensureFull();
    const bool isTextOff = s_filterText.GetLength() < minFilterLength && s_filterType == filterAll;
    if (isTextOff && m_textSubset.m_isBuilt)
        m_textSubset.clear();
    else if (!isTextOff && (!m_textSubset.m_isBuilt || m_textSubset.m_filterText != s_filterText ||
                            m_textSubset.m_filterType != s_filterType))
    {
        // What was chosen from the text subset falls with it.
        if (kept().showBase == &m_textSubset)
            m_showSubset.clear();
        fillText();
    }
    const CQoCollSubset& base = isTextOff ? m_fullSubset : m_textSubset;
    if (showsEverything(s_showFilterInfo))
    {
        m_showSubset.clear();
        m_pCrtSubset = &base;
        return;
    }
    const bool isShown = m_showSubset.m_isBuilt && kept().showBase == &base &&
                         isSame(m_showSubset.m_showFilterInfo, s_showFilterInfo);
    if (!isShown)
        fillShow(base);
    m_pCrtSubset = &m_showSubset;
}

const CQoCollSubset& CQoCollSubset::getCrtSubset()
{
    const qo::Guard guard(m_cs);
    if (!m_pCrtSubset)
        updateCrtSubset();
    return *m_pCrtSubset;
}

const CQoCollSubset& CQoCollSubset::getFullSubset()
{
    const qo::Guard guard(m_cs);
    ensureFull();
    return m_fullSubset;
}

void CQoCollSubset::addDirsToSubsets(const CPtrListT<CHDDirectory>& dirs,
                                     std::vector<qo::SubsetFile>& files)
{
    // Not recursive, since paths that come from devices may have any depth.
    std::vector<const CHDDirectory*> waiting;
    for (const Dir& root : dirs)
    {
        const bool isForeign = CQoUtils::matchesCollection(root, CQoUtils::CT_Foreign);
        waiting.push_back(root.get());
        while (!waiting.empty())
        {
            const CHDDirectory* const dir = waiting.back();
            waiting.pop_back();
            for (const Dir& subDir : dir->getSubDirs())
                waiting.push_back(subDir.get());
            for (const File& file : dir->getFiles())
            {
                files.push_back({&file, linksOf(file)});
                files.back().assocs.isForeign = isForeign;
            }
        }
    }
}

void CQoCollSubset::ensureFull()
{
    if (m_fullSubset.m_isBuilt)
        return;
    std::vector<qo::SubsetFile> files;
    const CQoCollection& own = CQoCollection::m_ownCollection;
    const CQoCollection& foreign = CQoCollection::m_foreignCollection;
    files.reserve(static_cast<std::size_t>(own.getFileCount()) +
                  static_cast<std::size_t>(foreign.getFileCount()));
    addDirsToSubsets(own.getRootDirs(), files);
    addDirsToSubsets(foreign.getRootDirs(), files);
    std::vector<std::pair<const CHDFile*, int>> order;
    order.reserve(files.size());
    for (const qo::SubsetFile& each : files)
        order.emplace_back(each.file->get(), static_cast<int>(order.size()));
    std::sort(order.begin(),
              order.end(),
              [](const auto& a, const auto& b) { return std::less<>()(a.first, b.first); });
    std::vector<qo::SubsetFile> sorted;
    sorted.reserve(files.size());
    for (const auto& [file, index] : order)
        sorted.push_back(files[index]);
    m_fullSubset.fill(sorted);
}

void CQoCollSubset::fillText()
{
    qo::SubsetNames& names = kept().names;
    if (!names.isBuilt())
        names.build(m_fullSubset.m_files, m_fullSubset.m_assocs);
    const std::vector<qo::SubsetFile> files = names.match(s_filterText, s_filterType);
    // While a word is typed, most files of a wide filter mostly stay: then only the others leave.
    const CString& former = m_textSubset.m_filterText;
    const bool continues = m_textSubset.m_isBuilt && m_textSubset.m_filterType == s_filterType &&
                           !former.IsEmpty() && s_filterText.view().starts_with(former.view());
    constexpr std::size_t parts = 8;
    const auto count = static_cast<std::size_t>(m_textSubset.m_files.GetSize());
    if (!continues || count - files.size() > count / parts)
    {
        m_textSubset.clear();
        m_textSubset.fill(files);
    }
    else
        m_textSubset.addRemoveFiles(m_textSubset.filesWithout(files), false);
    m_textSubset.setFilterText(s_filterText, s_filterType);
}

/// The files of the subset that are not among these, which are sorted by address as well.
CQoCollSubset::Files CQoCollSubset::filesWithout(const std::vector<qo::SubsetFile>& others) const
{
    Files files;
    auto other = others.begin();
    for (const File& file : m_files)
    {
        if (other != others.end() && *other->file == file)
            ++other;
        else
            files.add(file);
    }
    return files;
}

void CQoCollSubset::fillShow(const CQoCollSubset& base)
{
    m_showSubset.clear();
    m_showSubset.setShowFilterInfo(s_showFilterInfo);
    std::vector<qo::SubsetFile> files;
    for (int i = 0; i < base.m_files.GetSize(); ++i)
    {
        // As CQoUtils::isObjectVisible(), with the collection that is known here.
        const qo::FileAssocs& assocs = base.m_assocs[i];
        const bool isShown =
            assocs.isForeign ? s_showFilterInfo.m_showForeign : s_showFilterInfo.m_showOwn;
        if (isShown && CQoUtils::isFileVisible(base.m_files[i], s_showFilterInfo.m_showTypes))
            files.push_back({&base.m_files[i], assocs});
    }
    m_showSubset.fill(files);
    kept().showBase = &base;
}

bool CQoCollSubset::isFollowing()
{
    return m_fullSubset.m_isBuilt;
}

void CQoCollSubset::stopFollowing()
{
    const qo::Guard guard(m_cs);
    if (isFollowing())
        forgetAll();
}

/// False when building anew is cheaper than following any further; then all is forgotten.
bool CQoCollSubset::countChange()
{
    constexpr int always = 1000;
    constexpr int parts = 8;
    if (++kept().changes <= std::max(always, m_fullSubset.m_files.GetSize() / parts))
        return true;
    forgetAll();
    return false;
}

void CQoCollSubset::removeFile(const File& file)
{
    const qo::Guard guard(m_cs);
    if (!isFollowing() || !countChange() || !m_fullSubset.hasFile(file))
        return;
    addOwners(file, kept().touched);
    leaveSubsets(file);
}

void CQoCollSubset::leaveSubsets(const File& file)
{
    m_showSubset.addRemoveFile(file, false);
    m_textSubset.addRemoveFile(file, false);
    m_fullSubset.addRemoveFile(file, false);
    if (kept().names.isBuilt())
        kept().names.remove(file.get());
    noteChange(file, false);
}

void CQoCollSubset::joinSubsets(const File& file)
{
    m_fullSubset.addRemoveFile(file, true);
    if (kept().names.isBuilt())
        kept().names.add(file, assocsOf(file));
    Files files;
    files.add(file);
    if (m_textSubset.m_isBuilt)
        m_textSubset.checkAddFiles(files);
    if (m_showSubset.m_isBuilt && kept().showBase->hasFile(file))
        m_showSubset.checkAddFiles(files);
    noteChange(file, true);
    // A file that is not shown may bring the year by which its album is ordered.
    const auto album = boost::static_pointer_cast<CLTAlbum>(file->getLTAssoc(CLTObjectType::Album));
    if (m_pCrtSubset && !m_pCrtSubset->hasFile(file) && m_pCrtSubset->hasAlbum(album) &&
        yearOf(album) != 0)
        kept().areChangesKnown = false;
}

CQoCollSubset::LTOwners CQoCollSubset::ownersOf(const Files& files)
{
    LTOwners owners;
    for (const File& file : files)
        addOwners(file, owners.objects);
    for (const auto& owner : owners.objects)
        owners.years.push_back(yearOf(owner));
    return owners;
}

void CQoCollSubset::recountAfterRelease(const LTOwners& before)
{
    const qo::Guard guard(m_cs);
    recountCompanions(before.objects);
    // Views are ordered by years, and cannot find the album whose year has changed.
    for (int i = 0; i < before.objects.GetSize(); ++i)
    {
        if (yearOf(before.objects[i]) != before.years[i])
            kept().areChangesKnown = false;
    }
}

void CQoCollSubset::recountCompanions(const CPtrListT<CLTObject>& owners)
{
    if (!isFollowing())
        return;
    for (const auto& owner : owners)
    {
        for (const File& file : companionsOf(*owner))
        {
            if (!m_fullSubset.needsRecount(file))
                continue;
            leaveSubsets(file);
            joinSubsets(file);
            // Views know only the present objects of a file, and cannot find its former lines.
            kept().areChangesKnown = false;
        }
    }
}

void CQoCollSubset::noteChange(const File& file, bool isAdded)
{
    constexpr int most = 1000;
    Kept& notes = kept();
    if (!notes.areChangesKnown)
        return;
    if (isAdded)
        notes.added.add(file);
    else if (!notes.added.remove(file)) // views never saw a file that came and went
        notes.removed.add(file);
    if (notes.added.GetSize() + notes.removed.GetSize() > most)
        notes.areChangesKnown = false;
}

bool CQoCollSubset::takeChanges(Files& removed, Files& added)
{
    const qo::Guard guard(m_cs);
    ensureFull();
    Kept& notes = kept();
    removed = std::exchange(notes.removed, {});
    added = std::exchange(notes.added, {});
    if (std::exchange(notes.areChangesKnown, true) && !wasAnyMoved(removed, added))
        return true;
    removed.clear();
    added.clear();
    return false;
}
