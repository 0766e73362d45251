#pragma once

#include <cstdint>

/// The check mark that a view shows on an object; mixed means that some of the objects below are
/// checked.
class CQoCheckState
{
public:
    enum ECheckState : std::uint8_t
    {
        CS_None = 0, ///< occurs only while marks are being combined
        CS_NotChecked = 1,
        CS_Checked = 2,
        CS_Mixed = 3
    };
};
