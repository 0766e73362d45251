#pragma once

#include "Physical/QoCheckState.h"
#include "common/QoBaseObj.h"

/// The base of everything that a view can show with a check mark.
class QO_API CQoCheckObject : public CQoBaseObj
{
public:
    using ECheckState = CQoCheckState::ECheckState;

    enum ECheckObjectType : std::uint8_t
    {
        OT_Physical = 0,
        OT_Logical = 1,
        OT_InplaceConverted = 2,
        OT_SearchResult = 3,
        OT_Source = 4
    };

    explicit CQoCheckObject(ECheckObjectType type) : m_objectType(type) {}

    virtual void setCheckState(ECheckState state);

    ECheckState getCheckState() const noexcept { return m_checkState; }
    bool isChecked() const noexcept { return m_checkState == CQoCheckState::CS_Checked; }
    bool isMixed() const noexcept { return m_checkState == CQoCheckState::CS_Mixed; }
    bool isCheckedOrMixed() const noexcept { return isChecked() || isMixed(); }
    bool isNotChecked() const noexcept { return m_checkState == CQoCheckState::CS_NotChecked; }

    ECheckObjectType getObjectType() const noexcept { return m_objectType; }

    /// Whether any object was ever checked. As long as none was, nobody needs to look for marks.
    static bool wasAnyChecked() noexcept { return s_wasAnyChecked; }

private:
    static bool s_wasAnyChecked;

    ECheckState m_checkState = CQoCheckState::CS_NotChecked;
    ECheckObjectType m_objectType;
};
