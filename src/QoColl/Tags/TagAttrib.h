#pragma once

#include "QoColl/Tags/TagAttribValue.h"

#include <memory>
#include <vector>

/// One attribute of a tag: at most one value per source, in the order in which the sources first
/// came, and the choice of the source whose value counts. A choice other than SV_Original makes
/// the attribute dirty, whatever the texts say. Not for several threads at once.
class QO_API CTagAttrib
{
public:
    using ESrcValueType = CTagAttribValue::ESrcValueType;

    enum EAttribType : int
    {
        AT_Artist = 1,
        AT_Album = 2,
        AT_Title = 3,
        AT_Genre = 4,
        AT_TrackNumber = 5,
        AT_Year = 6,
        AT_Lyrics = 7,
        AT_Picture = 8,
        AT_FileName = 10 ///< no part of the file's tag, but edited beside it
    };
    enum EAttribClass : int
    {
        AC_Text = 0,
        AC_Picture = 1
    };

    explicit CTagAttrib(EAttribType type) noexcept : m_type(type) {}
    CTagAttrib(const CTagAttrib&) = delete;
    CTagAttrib& operator=(const CTagAttrib&) = delete;
    virtual ~CTagAttrib() = default;

    /// Drops every value but keeps the choice: a dirty attribute stays dirty.
    void clear() { m_values.clear(); }

    static EAttribClass getAttribClass(EAttribType type) noexcept;
    EAttribClass getAttribClass() const noexcept { return getAttribClass(m_type); }
    /// Whether the attribute lives in the file's tag.
    static bool isRealTagAttrib(EAttribType type) noexcept;
    bool isRealTagAttrib() const noexcept { return isRealTagAttrib(m_type); }

    /// -1 if the source has no value.
    int getAttribValueIdx(ESrcValueType type) const noexcept;
    bool hasAttribValue(ESrcValueType type) const noexcept { return getAttribValueIdx(type) != -1; }
    /// The source's value, owned by this object until it is removed or cleared. If there is none:
    /// a new empty one with create, else null.
    CTagAttribValue* getAttribValue(ESrcValueType type, bool create);
    const CTagAttribValue* getAttribValue(ESrcValueType type) const noexcept;
    /// False if the source has no value. The choice stays, so it may then point to nothing.
    bool removeAttribValue(ESrcValueType type, CString& removed);

    /// False, with the text left alone, if the source has no value; an empty value is a value.
    bool getValue(ESrcValueType type, CString& value) const;
    void setValue(ESrcValueType type, const char16_t* value, bool makeCurrent);
    void setValue(ESrcValueType type, const CString& value, bool makeCurrent);

    bool getCrtValue(CString& value) const { return getValue(m_crtValueType, value); }
    ESrcValueType getCrtValueType() const noexcept { return m_crtValueType; }
    /// Does not ask whether the source has a value.
    void setCrtValueType(ESrcValueType type) noexcept { m_crtValueType = type; }
    /// Makes the chosen value the original one and chooses that; the former source keeps its own.
    /// False, and nothing changed, if SV_Original is chosen or the chosen source has no value.
    bool setCrtValueAsOriginal();

private:
    EAttribType m_type;
    ESrcValueType m_crtValueType = CTagAttribValue::SV_Original;
    std::vector<std::unique_ptr<CTagAttribValue>> m_values;
};
