#pragma once

#include "KVTagLib/Forward.h"
#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Tags/IQorganizer.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "QoColl/Tags/TagAttrib.h"

#include <cstdint>

/// The tag of one music file, in which each attribute may have several values, one from each
/// source: the file itself (SV_Original), the user (SV_Edited), or sources of the host. For each
/// attribute one source is chosen as the current one; a tag in which another than SV_Original is
/// chosen is dirty. Paths are in collection form. Nothing here throws except for lack of memory,
/// which is a CQoException* of type outOfMemory.
///
///   tag.readTag(path)                              title: Original "Low"                 clean
///   tag.setTitle(u"Low Tide", SV_Edited, true)     Original "Low", Edited "Low Tide"     dirty
///   tag.getTitle()                                 "Low": the file's own value
///   tag.getTitle(SV_Current, text)                 "Low Tide"
///   tag.writeTag(path)                             Original "Low Tide"                   clean
///   tag.reset() instead                            Original "Low" is chosen again        clean
///
/// Most tags have nothing but the file's own values, so these are kept in the cheapest of four
/// forms: nowhere, in the file's record (mirror()), as plain texts, or as objects for each
/// attribute once a second source or a caller needs these. Not for several threads at once: even
/// getConstAttrib() may change the form.
class QO_API CMusicTagEx
{
public:
    using ESrcValueType = CTagAttrib::ESrcValueType;
    using EAttribType = CTagAttrib::EAttribType;

    CMusicTagEx() noexcept;
    CMusicTagEx(const CMusicTagEx&) = delete;
    CMusicTagEx& operator=(const CMusicTagEx&) = delete;
    virtual ~CMusicTagEx();

    static int getNrAttribTypes() noexcept;
    /// The index is not checked.
    static EAttribType getAttribType(int index) noexcept;
    /// The attribute of that type; null for a type that a tag does not have. Valid as long as the
    /// tag.
    CTagAttrib* getAttrib(EAttribType type);
    const CTagAttrib* getConstAttrib(EAttribType type) const;

    /// Removes the values of all attributes, see CTagAttrib::clear().
    void clear();
    /// Gives up edits: every attribute chooses SV_Original again. The values stay.
    void reset();
    /// Whether any attribute is edited; with realTagOnly the file name does not count.
    bool isDirty(bool realTagOnly) const;

    /// The value of a source; false, with an empty text, if it has none.
    bool getArtist(ESrcValueType type, CString& text) const;
    bool getAlbum(ESrcValueType type, CString& text) const;
    bool getTitle(ESrcValueType type, CString& text) const;
    bool getGenre(ESrcValueType type, CString& text) const;
    bool getTrackNumber(ESrcValueType type, CString& text) const;
    bool getYear(ESrcValueType type, CString& text) const;
    bool getLyrics(ESrcValueType type, CString& text) const;
    bool getPicture(ESrcValueType type, CString& text) const;

    /// The file's own values, whatever the user has entered.
    CString getArtist() const { return getOriginal(CTagAttrib::AT_Artist); }
    CString getAlbum() const { return getOriginal(CTagAttrib::AT_Album); }
    CString getTitle() const { return getOriginal(CTagAttrib::AT_Title); }
    CString getGenre() const { return getOriginal(CTagAttrib::AT_Genre); }
    CString getTrackNumber() const { return getOriginal(CTagAttrib::AT_TrackNumber); }
    CString getYear() const { return getOriginal(CTagAttrib::AT_Year); }
    CString getLyrics() const { return getOriginal(CTagAttrib::AT_Lyrics); }
    CString getPicture() const { return getOriginal(CTagAttrib::AT_Picture); }

    /// Set the value of a source, and with makeCurrent choose that source.
    void setArtist(const CString& text, ESrcValueType type, bool makeCurrent);
    void setAlbum(const CString& text, ESrcValueType type, bool makeCurrent);
    void setTitle(const CString& text, ESrcValueType type, bool makeCurrent);
    void setGenre(const CString& text, ESrcValueType type, bool makeCurrent);
    void setTrackNumber(const CString& text, ESrcValueType type, bool makeCurrent);
    void setYear(const CString& text, ESrcValueType type, bool makeCurrent);
    void setPicture(const CString& text, ESrcValueType type, bool makeCurrent);
    void
    setLyrics(const CString& text, bool hasOriginalLyrics, ESrcValueType type, bool makeCurrent);

    /// Whether the lyrics are known to be those of the file (a record may be loaded without them).
    /// Tags with known lyrics are counted.
    void setHasOriginalLyrics(bool has);
    bool getHasOriginalLyrics() const noexcept { return m_hasOriginalLyrics; }
    /// Logs how many existing tags have known lyrics.
    static void checkNrLyrics();

    /// Play time in milliseconds, bitrate in kbit/s; 0 when unknown.
    unsigned getTime() const noexcept;
    unsigned getBitrate() const noexcept;

    /// Reserved; does nothing.
    void updateAttrib(EAttribType type, const char16_t* value);
    /// To be called after the file was renamed, see CTagAttrib::setCrtValueAsOriginal().
    void setCrtFileNameAsOriginal();

    /// Fill the six texts of a track with the file's own values.
    void getSimpleTag(SimpleMusicTag& tag) const;
    void getTagInfo(IQorganizer::TagInfo& info) const;

    /// Copy the original values to and from a record. The file name is copied from the record only.
    void getTag(boost::shared_ptr<QoFileDbItem>& item) const;
    void setTag(const boost::shared_ptr<QoFileDbItem>& item);
    /// Like setTag() without copying: the texts are read from the record, which must outlive this
    /// tag. Before the record's texts change, keepTexts() must be called, or the tag changes too.
    /// If the tag has edits, it copies the texts after all.
    void mirror(const QoFileDbItem& record);
    /// Copies the texts of a mirrored record into the tag.
    void keepTexts();
    /// The same for an inplace file, without the lyrics flag and the bit rate.
    void getTag(boost::shared_ptr<QoInplaceFileDbItem>& item) const;

    /// Copies the values of a source, except pictures, into tags.
    void getTag(ESrcValueType type, KVTagLib::CTags& tags) const;
    /// Stores the values in tags under a source. The first picture that can be copied into
    /// pictureDir becomes the picture of the source.
    void
    setTag(ESrcValueType type, KVTagLib::CTags& tags, const CString& pictureDir, bool makeCurrent);
    /// Where the file has no value and nothing is edited, takes the value of that source as an
    /// edit. True if anything changed.
    bool fillEmptyAttribs(ESrcValueType type);

    /// Reads the tag of a file. False after a failure, and the attributes have no values then;
    /// cause, which may be null, gets what was wrong with a file that has a format of ours.
    bool readTag(const char16_t* path, CString* cause = nullptr);
    /// With ahead, which may be null, the file is one of those that are read ahead.
    static bool readTag(const char16_t* path,
                        KVTagLib::CTags& tags,
                        CString* cause = nullptr,
                        KVTagLib::TagsAhead* ahead = nullptr);
    /// What the first of them makes of what the second found.
    void setFileTags(const KVTagLib::CTags& tags);
    /// Writes all current values into the file, which is made writable for this. Lyrics that the
    /// record did not have stay as they are in the file. The tag is clean afterwards. After a
    /// failure, such as a picture that cannot be loaded, it is unchanged, and cause says why.
    /// hasChanged gets whether the file was changed, or said all that already.
    bool writeTag(const char16_t* path, CString* cause = nullptr, bool* hasChanged = nullptr);
    static bool writeTag(const char16_t* path,
                         KVTagLib::CTags& tags,
                         CString* cause = nullptr,
                         bool* hasChanged = nullptr);
    /// Reads the play time of the file again.
    void updateTime(const char16_t* path);
    /// By the extension of the path.
    static bool fileSupportsTags(const CString& path);

    /// Copies the first picture that can be copied into the folder; result is its new path. False
    /// if there is none.
    static bool
    copyGetFirstValidPicturePath(KVTagLib::CTags& tags, const CString& destDir, CString& result);

    /// Splits "track/total"; false without a total.
    static bool splitTrackNumber(const CString& text, CString& track, CString& total);
    static bool splitTrackNumber(const CString& text, int& track, int& total);
    /// Makes "track/total", or "track" if total is 0.
    static void makeTrackNumber(int track, int total, CString& text);
    static void makeTrackNumber(const CString& track, const CString& total, CString& text);

private:
    static constexpr int attribCount = 9;
    struct Numbers;
    struct Attribs;
    struct Texts;
    /// Which of the members of the union below has the values.
    enum class EStore : std::uint8_t
    {
        nowhere,
        record,
        texts,
        attribs
    };

    bool get(EAttribType type, ESrcValueType source, CString& text) const;
    CString getOriginal(EAttribType type) const;
    void set(EAttribType type, const CString& text, ESrcValueType source, bool makeCurrent);
    bool isEdited(EAttribType type) const;
    /// See CTagAttrib::setCrtValueAsOriginal().
    bool makeOriginal(EAttribType type);
    /// Both convert the tag to that form if necessary.
    Attribs& attribs() const;
    Texts& texts();
    /// Copies the texts and numbers of the record.
    void take(const QoFileDbItem& record);
    Numbers numbers() const noexcept;
    void setNumbers(unsigned time, unsigned bitrate);
    /// Frees what the tag holds; it has no values then.
    void forget() const noexcept;

    static const EAttribType m_attribTypes[attribCount];

    /// See EStore. Attribute objects are made only for a second source or for a caller who asks for
    /// one.
    union
    {
        mutable const QoFileDbItem* m_record;
        mutable Texts* m_texts;
        mutable Attribs* m_attribs;
    };
    mutable EStore m_store = EStore::nowhere;
    bool m_hasOriginalLyrics = false;
};
