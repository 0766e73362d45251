#pragma once

#include "Physical/HDObject.h"
#include "QoColl/Db/Forward.h"
#include "QoColl/Tags/Forward.h"
#include "types/String.h"

#include <cstdint>

/// A file of the physical tree around its record. The record is shared with the collection's
/// array: a change through either is seen by the other.
class QO_API CHDFile : public CHDObject
{
public:
    enum EHDFileType : std::uint8_t
    {
        FT_Other = 1,
        FT_Music = 2,
        FT_Picture = 4,
        FT_Text = 8
    };
    /// Answers of getAudioVideoType().
    enum EAudioVideoType : int
    {
        AV_Audio = 1,
        AV_Video = 2,
        AV_None = 4
    };

    /// The file of the class that the extension of the record's path calls for.
    static boost::shared_ptr<CHDFile> createHDFile(const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDFile() override;

    CString toString(bool full) const override;
    /// Lets go of the logical objects.
    virtual void clearLTObjects();
    /// Takes over from the record what the file holds apart from it.
    virtual void setFileInfo();
    virtual int getAudioVideoType() const;

    EHDFileType getFileType() const noexcept { return m_fileType; }
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }
    void setParentDir(const boost::shared_ptr<CHDDirectory>& dir);
    const boost::shared_ptr<CHDDirectory>& getParentDir() const noexcept { return m_parent; }
    /// Valid until the record's path changes.
    const CString& getPath() const noexcept;
    /// With extension.
    CString getFileName() const;
    /// The name without extension that the file was made with.
    CString getFileTitle() const;
    /// Without dot.
    CString getExt() const;
    std::int64_t getSize() const noexcept;
    void getSimpleTag(SimpleMusicTag& tag) const;
    /// Whether the record's parameters give the file a length as a recorded stream.
    bool isLongStream() const;

    /// The record's text for an atom type of a name pattern; false for a type that has none or an
    /// empty text. A type outside 1 to 22 leaves value alone.
    bool getAtomValueFromDbFileItem(int atomType, CString& value) const;
    /// The record's text for a logical type; empty for types that a record does not name.
    CString getLTAssocFromDbFileItem(CLTObjectType::EType type) const;
    void setLTAssocToDbFileItem(CLTObjectType::EType type, const CString& value);
    /// Where a record holds that text; null for types that it does not name.
    static CString QoFileDbItem::*getLTAssocField(CLTObjectType::EType type) noexcept;
    /// Before the record changes or goes on without this file: whoever has the file goes on seeing
    /// the tag that it had.
    void keepTag();

    /// Negative, 0 or positive, by the whole path without regard to case.
    static int cmpFilePath(const CString& path, const boost::shared_ptr<CHDFile>& file);
    /// Without regard to case.
    static bool isOneOfExt(const char16_t* ext, const char16_t* const* table, int count);
    static bool isPictureFile(const CString& ext);
    static bool isTextFile(const CString& ext);

protected:
    CHDFile(EHDFileType type, const boost::shared_ptr<QoFileDbItem>& item);

private:
    void setFileTitle(const CString& path);

    static constexpr std::uint16_t wholeText = 0xFFFF;

    EHDFileType m_fileType;
    /// Where the title stands in m_titleText, which shares the path's text as a rule.
    std::uint16_t m_titleStart = 0;
    std::uint16_t m_titleLength = wholeText;
    boost::shared_ptr<CHDDirectory> m_parent;
    CString m_titleText;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
