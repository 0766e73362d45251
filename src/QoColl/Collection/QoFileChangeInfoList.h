#pragma once

#include "QoColl/Collection/QoFileChangeInfo.h"
#include "common/AutoListT.h"
#include "types/CharClass.h"

#include <unordered_map>

/// The changes that a host wants in one go, at most one for each path: a later change of the same
/// path replaces the earlier one. Paths are compared as paths, without regard to case. The path of
/// an entry must not be changed while it is in the list; its other fields may be. An entry that is
/// given to addChangeInfo() is deleted even if that fails: out of memory ends in
/// qo::throwOutOfMemory(), with the list as it was.
///
///   CQoFileChangeInfoList changes;
///   changes.addFileToMove(u"C:\\M\\a.mp3", u"C:\\M\\b.mp3", false);
///   changes.addFileToDelete(u"c:\\m\\A.mp3");     // replaces the move: one entry
class QO_API CQoFileChangeInfoList : public CAutoListT<CQoFileChangeInfo>
{
public:
    using Base = CAutoListT<CQoFileChangeInfo>;
    using Compare =
        CGenListT<CQoFileChangeInfo*, CQoFileChangeInfo*, const CQoFileChangeInfo*>::Compare;

    CQoFileChangeInfoList();
    ~CQoFileChangeInfoList() override;
    CQoFileChangeInfoList(const CQoFileChangeInfoList&) = delete;
    CQoFileChangeInfoList& operator=(const CQoFileChangeInfoList&) = delete;

    // Each returns the entry, which belongs to the list.
    CQoFileChangeInfo* addVelmoraFile(const CString& path, const QoFileDbItemPtr& item);
    CQoFileChangeInfo* addFileToScan(const CString& path,
                                     CQoFileChangeInfo::EScanFileType type,
                                     CQoFileChangeInfo::ESetImportedAction importedAction);
    CQoFileChangeInfo* addFileToMove(const CString& path, const CString& newPath, bool rescan);
    CQoFileChangeInfo* addFileToDelete(const CString& path);
    /// Takes ownership of info, or copies it if copy is set. If there is an entry of that path, it
    /// is overwritten field by field, and info is deleted unless copy is set.
    CQoFileChangeInfo* addChangeInfo(CQoFileChangeInfo* info, bool copy);

    /// Null if there is no change of that path.
    CQoFileChangeInfo* findChangeInfo(const CString& path) const;
    CQoFileChangeInfo::EAction getAction(const CString& path) const;

    /// Like addChangeInfo() without a copy; returns the index of the entry.
    int Add(CQoFileChangeInfo* info);
    /// Copies every entry; returns the former number of entries.
    int Append(const CQoFileChangeInfoList& other);
    void Copy(const CQoFileChangeInfoList& other);

    // The operations of the base class, with the same rule of one change for a path: adding goes
    // through addChangeInfo(), and an entry that is there already keeps its position.
    int addSorted(CQoFileChangeInfo* info, Compare cmp, bool unique) override;
    bool removeBinary(const CQoFileChangeInfo* info, Compare cmp) override;
    int add(CQoFileChangeInfo* info) override { return Add(info); }
    int addUnique(CQoFileChangeInfo* info) override { return Add(info); }
    bool remove(const CQoFileChangeInfo* info) override;
    void clear() override;
    void sort(SortCompare cmp, void* context) override;
    void RemoveAt(int index);
    const_iterator begin() const noexcept { return Base::begin(); }
    const_iterator end() const noexcept { return Base::end(); }
    CQoFileChangeInfo* operator[](int index) const noexcept { return GetAt(index); }

private:
    // Hidden, since they would change entries without the index.
    using Base::ElementAt;
    using Base::InsertAt;
    using Base::RemoveAll;
    using Base::SetAt;
    using Base::SetAtGrow;
    using Base::SetSize;

    struct SamePath
    {
        std::size_t operator()(const CString& key) const noexcept
        {
            return qo::hashNoCase(key.view());
        }
        bool operator()(const CString& a, const CString& b) const noexcept
        {
            return qo::compareNoCase(a.view(), b.view()) == 0;
        }
    };

    int indexOf(const CString& path) const;
    void dropIndexes() const noexcept;

    /// The index of each entry by the normal form of its path. Holds the first m_indexed entries;
    /// the rest is added at the next look-up.
    mutable std::unordered_map<CString, int, SamePath, SamePath> m_indexes;
    mutable int m_indexed = 0;
};
