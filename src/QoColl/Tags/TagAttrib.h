#pragma once

#include "QoColl/Tags/TagAttribValue.h"

#include <memory>
#include <vector>

/// One attribute of a tag: at most one value for each source, in the order in which the sources
/// were first set, and the choice of one source, whose value is the current one. An attribute with
/// another choice than SV_Original is dirty, even if the texts are equal. Not for several threads
/// at once.
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
        AT_FileName = 10 ///< not in the file's tag, but edited together with it
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

    /// Removes all values but keeps the choice, so a dirty attribute stays dirty.
    void clear() { m_values.clear(); }

    static EAttribClass getAttribClass(EAttribType type) noexcept;
    EAttribClass getAttribClass() const noexcept { return getAttribClass(m_type); }
    /// Whether the attribute is stored in the file's tag.
    static bool isRealTagAttrib(EAttribType type) noexcept;
    bool isRealTagAttrib() const noexcept { return isRealTagAttrib(m_type); }

    /// The index of the source's value; -1 if it has none.
    int getAttribValueIdx(ESrcValueType type) const noexcept;
    bool hasAttribValue(ESrcValueType type) const noexcept { return getAttribValueIdx(type) != -1; }
    /// The value of a source, which belongs to this object until it is removed or cleared. If there
    /// is none, the result is a new empty value with create, else null.
    CTagAttribValue* getAttribValue(ESrcValueType type, bool create);
    const CTagAttribValue* getAttribValue(ESrcValueType type) const noexcept;
    /// Removes the value of a source and returns its text in removed; false if there is none. The
    /// choice stays, so it may be without a value then.
    bool removeAttribValue(ESrcValueType type, CString& removed);

    /// False, with value unchanged, if the source has no value. An empty text is a value.
    bool getValue(ESrcValueType type, CString& value) const;
    void setValue(ESrcValueType type, const char16_t* value, bool makeCurrent);
    void setValue(ESrcValueType type, const CString& value, bool makeCurrent);

    bool getCrtValue(CString& value) const { return getValue(m_crtValueType, value); }
    ESrcValueType getCrtValueType() const noexcept { return m_crtValueType; }
    /// Chooses a source, even one without a value.
    void setCrtValueType(ESrcValueType type) noexcept { m_crtValueType = type; }
    /// Makes the current value the original one and chooses SV_Original; the former source keeps
    /// its value. False, with nothing changed, if SV_Original is chosen already or the chosen
    /// source has no value.
    bool setCrtValueAsOriginal();

private:
    EAttribType m_type;
    ESrcValueType m_crtValueType = CTagAttribValue::SV_Original;
    std::vector<std::unique_ptr<CTagAttribValue>> m_values;
};
