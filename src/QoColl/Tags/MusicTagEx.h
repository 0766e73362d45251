#pragma once

#include "KVTagLib/Forward.h"
#include "QoColl/Db/Forward.h"
#include "QoColl/Tags/IQorganizer.h"
#include "QoColl/Tags/SimpleMusicTag.h"
#include "QoColl/Tags/TagAttrib.h"

#include <cstdint>

/// The tag of one music file, each attribute with its values by source. It is filled from the file
/// or from the record that mirrors it; neither makes it dirty. Paths are in collection form.
/// Nothing here throws but for lack of memory.
///
/// Most tags hold the file's own texts and nothing else: these stay in the record, or are kept as
/// plain texts, and the attributes become objects once a second source or a caller asks for them.
/// Not for several threads at once: even getConstAttrib() may make them.
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
    /// Null for a type that a tag does not have; valid as long as the tag.
    CTagAttrib* getAttrib(EAttribType type);
    const CTagAttrib* getConstAttrib(EAttribType type) const;

    /// Drops the values of all attributes, see CTagAttrib::clear().
    void clear();
    /// Drops the edit: every attribute chooses SV_Original again. The values stay.
    void reset();
    /// With realTagOnly the file name is not looked at.
    bool isDirty(bool realTagOnly) const;

    /// False, and an empty text, if the source has no value.
    bool getArtist(ESrcValueType type, CString& text) const;
    bool getAlbum(ESrcValueType type, CString& text) const;
    bool getTitle(ESrcValueType type, CString& text) const;
    bool getGenre(ESrcValueType type, CString& text) const;
    bool getTrackNumber(ESrcValueType type, CString& text) const;
    bool getYear(ESrcValueType type, CString& text) const;
    bool getLyrics(ESrcValueType type, CString& text) const;
    bool getPicture(ESrcValueType type, CString& text) const;

    /// The file's own values: a pending edit is not seen here.
    CString getArtist() const { return getOriginal(CTagAttrib::AT_Artist); }
    CString getAlbum() const { return getOriginal(CTagAttrib::AT_Album); }
    CString getTitle() const { return getOriginal(CTagAttrib::AT_Title); }
    CString getGenre() const { return getOriginal(CTagAttrib::AT_Genre); }
    CString getTrackNumber() const { return getOriginal(CTagAttrib::AT_TrackNumber); }
    CString getYear() const { return getOriginal(CTagAttrib::AT_Year); }
    CString getLyrics() const { return getOriginal(CTagAttrib::AT_Lyrics); }
    CString getPicture() const { return getOriginal(CTagAttrib::AT_Picture); }

    void setArtist(const CString& text, ESrcValueType type, bool makeCurrent);
    void setAlbum(const CString& text, ESrcValueType type, bool makeCurrent);
    void setTitle(const CString& text, ESrcValueType type, bool makeCurrent);
    void setGenre(const CString& text, ESrcValueType type, bool makeCurrent);
    void setTrackNumber(const CString& text, ESrcValueType type, bool makeCurrent);
    void setYear(const CString& text, ESrcValueType type, bool makeCurrent);
    void setPicture(const CString& text, ESrcValueType type, bool makeCurrent);
    void
    setLyrics(const CString& text, bool hasOriginalLyrics, ESrcValueType type, bool makeCurrent);

    /// Whether the lyrics are known to be the file's; tags that hold them are counted.
    void setHasOriginalLyrics(bool has);
    bool getHasOriginalLyrics() const noexcept { return m_hasOriginalLyrics; }
    /// Logs how many living tags hold lyrics.
    static void checkNrLyrics();

    /// Play time in milliseconds, bitrate in kbit/s; 0 when unknown.
    unsigned getTime() const noexcept;
    unsigned getBitrate() const noexcept;

    /// Reserved: changes nothing.
    void updateAttrib(EAttribType type, const char16_t* value);
    /// To be called once the file bears its new name, see CTagAttrib::setCrtValueAsOriginal().
    void setCrtFileNameAsOriginal();

    /// Fill the six texts of a track with the file's own values.
    void getSimpleTag(SimpleMusicTag& tag) const;
    void getTagInfo(IQorganizer::TagInfo& info) const;

    /// Between the tag's original values and a record. The file name is only read.
    void getTag(boost::shared_ptr<QoFileDbItem>& item) const;
    void setTag(const boost::shared_ptr<QoFileDbItem>& item);
    /// setTag() without a copy: the texts are read in the record, which must outlive this tag.
    /// Before they change, keepTexts() has to be called, or the tag changes with them.
    void mirror(const QoFileDbItem& record);
    void keepTexts();
    /// getTag() without the lyrics flag and the bitrate.
    void getTag(boost::shared_ptr<QoInplaceFileDbItem>& item) const;

    /// Hands over what the source has, pictures excepted.
    void getTag(ESrcValueType type, KVTagLib::CTags& tags) const;
    /// Stores what the tags hold under the source. The first picture that can be copied into
    /// pictureDir becomes the source's picture.
    void
    setTag(ESrcValueType type, KVTagLib::CTags& tags, const CString& pictureDir, bool makeCurrent);
    /// Where the file's own value is empty and nothing is edited, takes the value of that source as
    /// an edit. Whether anything changed.
    bool fillEmptyAttribs(ESrcValueType type);

    /// Reads the file's tag; a failure leaves the attributes without values.
    bool readTag(const char16_t* path);
    static bool readTag(const char16_t* path, KVTagLib::CTags& tags);
    /// Writes every current value into the file, which is made writable for it; lyrics that a
    /// record left out stay as they are in the file. Afterwards the tag is clean; after a failure,
    /// as for an edited picture that cannot be loaded, it is as before.
    bool writeTag(const char16_t* path);
    static bool writeTag(const char16_t* path, KVTagLib::CTags& tags);
    /// Reads only the play time anew.
    void updateTime(const char16_t* path);
    static bool fileSupportsTags(const CString& path);

    /// Copies the first picture that can be copied into the folder; result is its new path.
    static bool
    copyGetFirstValidPicturePath(KVTagLib::CTags& tags, const CString& destDir, CString& result);

    /// Splits "track/total". Whether there is a total.
    static bool splitTrackNumber(const CString& text, CString& track, CString& total);
    static bool splitTrackNumber(const CString& text, int& track, int& total);
    /// Without a total only the track.
    static void makeTrackNumber(int track, int total, CString& text);
    static void makeTrackNumber(const CString& track, const CString& total, CString& text);

private:
    static constexpr int attribCount = 9;
    struct Numbers;
    struct Attribs;
    struct Texts;
    /// Where the values are.
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
    /// As CTagAttrib::setCrtValueAsOriginal().
    bool makeOriginal(EAttribType type);
    Attribs& attribs() const;
    Texts& texts();
    void take(const QoFileDbItem& record);
    Numbers numbers() const noexcept;
    void setNumbers(unsigned time, unsigned bitrate);
    void forget() const noexcept;

    static const EAttribType m_attribTypes[attribCount];

    /// Only a second source or a chosen one makes the attributes objects.
    union
    {
        mutable const QoFileDbItem* m_record;
        mutable Texts* m_texts;
        mutable Attribs* m_attribs;
    };
    mutable EStore m_store = EStore::nowhere;
    bool m_hasOriginalLyrics = false;
};
