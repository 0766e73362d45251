#pragma once

#include "Physical/QoCheckObject.h"
#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Tags/Forward.h"

/// A result of a search on the web, with its record; not part of a tree. The file name of its path
/// has the form "source::clip_index": "tube::a1b2_0" and "tube::a1b2_1" are two files of one clip.
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
    const qo::FilePath& getPath() const noexcept;
    void getSimpleTag(SimpleMusicTag& tag) const;
    /// The text that the plug-in which found it stored with it; "" without one.
    CString getXML() const;
    /// What the plug-in calls the source of its tracks; where it does not say, the part before "::"
    /// in the file name ("tube"), or the whole name without "::".
    CString getSource() const;
    /// Says what a plug-in calls the source of its tracks, by the text of one, or "".
    using TrackSource = CString (*)(const CString& xml);
    /// Where getSource() asks; null for nowhere. Not while another thread works.
    static void setTrackSource(TrackSource source) noexcept { s_trackSource = source; }
    /// The file name up to the first '_' after "::" ("tube::a1b2"); the whole name without one.
    CString getClipUID() const;
    /// Whether this is a file of that clip, compared exactly. index becomes its number within the
    /// clip, 0 without one.
    bool isSameClip(const CString& uid, int& index) const;
    /// Whether it is being downloaded: then the record has its lasting id (velmoraId) already.
    bool isDownloading() const noexcept;
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }

private:
    CString getClipUID(int& index) const;

    static TrackSource s_trackSource;
    CString m_title;
    bool m_isVideo;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
