#pragma once

#include <cstdint>

/// The check mark that a view shows on an object.
class CQoCheckState
{
public:
    enum ECheckState : std::uint8_t
    {
        CS_None = 0, ///< only met while marks are combined
        CS_NotChecked = 1,
        CS_Checked = 2,
        CS_Mixed = 3
    };
};
