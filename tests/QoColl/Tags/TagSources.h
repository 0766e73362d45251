#pragma once

#include "QoColl/Tags/TagAttribValue.h"

/// Short names for the sources of a tag's values.
namespace tagsources
{
constexpr auto original = CTagAttribValue::SV_Original;
constexpr auto edited = CTagAttribValue::SV_Edited;
constexpr auto current = CTagAttribValue::SV_Current;
} // namespace tagsources
