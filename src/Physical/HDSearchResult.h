#pragma once

#include "Physical/QoCheckObject.h"
#include "QoColl/Db/Forward.h"
#include "QoColl/Tags/Forward.h"

/// A hit of a search on the web, around its record; no part of a tree. The file name of its path
/// reads "source::clip_index".
class QO_API CHDSearchResult final : public CQoCheckObject
{
    struct Key
    {
        explicit Key() = default;
    };

public:
    static boost::shared_ptr<CHDSearchResult>
    createSearchResult(const boost::shared_ptr<QoFileDbItem>& item);
    CHDSearchResult(Key, const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDSearchResult() override;

    /// The path.
    CString toString(bool full) const override;

    const CString& getTitle() const noexcept { return m_title; }
    bool isVideo() const noexcept { return m_isVideo; }
    const CString& getPath() const noexcept;
    void getSimpleTag(SimpleMusicTag& tag) const;
    /// What the plug-in that found it stored with it.
    CString getXML() const;
    /// What stands ahead of "::" in the file name; the whole name without it.
    CString getSource() const;
    /// The file name up to the first '_' behind "::", or whole without one.
    CString getClipUID() const;
    /// Whether this is a file of that clip, compared exactly; index becomes its number within.
    bool isSameClip(const CString& uid, int& index) const;
    /// A file that is being downloaded has its identity already.
    bool isDownloading() const noexcept;
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }

private:
    CString getClipUID(int& index) const;

    CString m_title;
    bool m_isVideo;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
