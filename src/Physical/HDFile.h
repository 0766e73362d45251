#pragma once

#include "Physical/HDObject.h"
#include "QoColl/Db/Records/Forward.h"
#include "QoColl/Tags/Forward.h"
#include "types/FilePath.h"

#include <cstdint>

/// A file of the physical tree. All that is known of it stands in its record (QoFileDbItem), which
/// it shares with the collection's array: a change through either is seen by the other. The class
/// of the object depends on the extension: music, picture, text or other.
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
    /// Results of getAudioVideoType().
    enum EAudioVideoType : int
    {
        AV_Audio = 1,
        AV_Video = 2,
        AV_None = 4
    };

    /// Makes the file, of the class that the extension of the record's path calls for. Never null.
    static boost::shared_ptr<CHDFile> createHDFile(const boost::shared_ptr<QoFileDbItem>& item);
    ~CHDFile() override;

    CString toString(bool full) const override;
    /// Clears the file's links to logical objects, without touching their side.
    virtual void clearLTObjects();
    /// Copies from the record what the object holds beside it; to be called after the record
    /// changed.
    virtual void setFileInfo();
    /// A value of EAudioVideoType.
    virtual int getAudioVideoType() const;

    EHDFileType getFileType() const noexcept { return m_fileType; }
    const boost::shared_ptr<QoFileDbItem>& getDbItem() const noexcept { return m_dbItem; }
    void setParentDir(const boost::shared_ptr<CHDDirectory>& dir);
    const boost::shared_ptr<CHDDirectory>& getParentDir() const noexcept { return m_parent; }
    /// Valid until the record's path changes.
    const qo::FilePath& getPath() const noexcept;
    /// The last component of the path, with extension.
    CString getFileName() const;
    /// The name without extension, as it was when the object was made: it does not follow a rename.
    CString getFileTitle() const;
    /// The extension without the dot, in the case of the path.
    CString getExt() const;
    /// Bytes, by the record.
    std::int64_t getSize() const noexcept;
    /// The six texts of the tag that the logical objects are made from.
    void getSimpleTag(SimpleMusicTag& tag) const;
    /// Whether the record's parameters (FT_PARAMS) describe the file as recorded from a stream of
    /// some length.
    bool isLongStream() const;

    /// The record's text for an atom type of a name pattern (CNSAtom::EType). False for a type
    /// without text in a record, or an empty text; for a number outside of 1 to 22 value is not
    /// changed.
    bool getAtomValueFromDbFileItem(int atomType, CString& value) const;
    /// The record's text for a logical type; "" for lyrics and pictures, which have no name.
    CString getLTAssocFromDbFileItem(CLTObjectType::EType type) const;
    void setLTAssocToDbFileItem(CLTObjectType::EType type, const CString& value);
    /// The member of a record with that text; null for lyrics and pictures.
    static CString QoFileDbItem::*getLTAssocField(CLTObjectType::EType type) noexcept;
    /// To be called before the record changes or is used without this file: copies the texts of the
    /// tag out of the record, so that whoever holds the file still sees the tag as it was.
    void keepTag();

    /// Negative, 0 or positive, by the whole path without regard to case.
    static int cmpFilePath(const CString& path, const boost::shared_ptr<CHDFile>& file);
    static int cmpFilePath(const qo::FilePath& path, const boost::shared_ptr<CHDFile>& file);
    /// Whether the extension is in the table, without regard to case.
    static bool isOneOfExt(const char16_t* ext, const char16_t* const* table, int count);
    static bool isPictureFile(const CString& ext);
    static bool isTextFile(const CString& ext);

protected:
    CHDFile(EHDFileType type, const boost::shared_ptr<QoFileDbItem>& item);

private:
    void setFileTitle(const qo::FilePath& path);

    static constexpr std::uint16_t wholeText = 0xFFFF;

    EHDFileType m_fileType;
    /// How much of m_titleText is the title. That is usually the name in the path, whose buffer is
    /// shared, so the title costs no memory of its own.
    std::uint16_t m_titleLength = wholeText;
    boost::shared_ptr<CHDDirectory> m_parent;
    CString m_titleText;
    boost::shared_ptr<QoFileDbItem> m_dbItem;
};
