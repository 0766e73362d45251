#pragma once

#include "QoColl/Collection/QoFileChangeInfo.h"
#include "common/AutoListT.h"
#include "types/CharClass.h"

#include <unordered_map>

/// What a host wants changed in one go: at most one change for a path, the last one. Paths are
/// compared as paths, without regard to case. An entry keeps its path while it stands in the list;
/// its other fields are free. What is handed to addChangeInfo() is deleted also when that fails:
/// out of memory ends in qo::throwOutOfMemory(), with the list as it was.
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

    // Each returns the entry in the list, which keeps it.
    CQoFileChangeInfo* addVelmoraFile(const CString& path, const QoFileDbItemPtr& item);
    CQoFileChangeInfo* addFileToScan(const CString& path,
                                     CQoFileChangeInfo::EScanFileType type,
                                     CQoFileChangeInfo::ESetImportedAction importedAction);
    CQoFileChangeInfo* addFileToMove(const CString& path, const CString& newPath, bool rescan);
    CQoFileChangeInfo* addFileToDelete(const CString& path);
    /// Takes info over; with copy a copy of it. An entry of that path is overwritten field by
    /// field; info is then deleted unless copy is set.
    CQoFileChangeInfo* addChangeInfo(CQoFileChangeInfo* info, bool copy);

    /// Null if absent.
    CQoFileChangeInfo* findChangeInfo(const CString& path) const;
    CQoFileChangeInfo::EAction getAction(const CString& path) const;

    /// As addChangeInfo without a copy; the index of the entry in the list.
    int Add(CQoFileChangeInfo* info);
    /// Copies every entry; the index behind the former last one.
    int Append(const CQoFileChangeInfoList& other);
    void Copy(const CQoFileChangeInfoList& other);

    // The list's own operations, with the same rule of one change for a path: what adds goes
    // through addChangeInfo, and an entry that is there already stays where it is.
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
    // Would put entries in place behind the back of the look-up.
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

    /// By the path's normal form; holds the first m_indexed entries and catches up when asked.
    mutable std::unordered_map<CString, int, SamePath, SamePath> m_indexes;
    mutable int m_indexed = 0;
};
