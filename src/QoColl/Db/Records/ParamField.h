#pragma once

#include "QoColl/Db/Records/ParamTable.h"
#include "types/CharClass.h"

#include <cstdint>
#include <type_traits>

/// How fields of a structure become rows of a table of parameters (see ParamTable.h). A field is
/// given as a function that returns a reference to it.
namespace qo
{
/// Converts a number that was read from a text. Enumerations have specialisations that turn unknown
/// numbers into 0.
template <class T>
struct ParamNumber
{
    static T bounded(int value) { return static_cast<T>(value); }
};

/// A text as a value of the field's type: true for any number above 0, 0 for what is no number.
template <class T>
T paramFromText(std::u16string_view text)
{
    if constexpr (std::is_same_v<T, CString>)
        return CString(text);
    else if constexpr (std::is_same_v<T, bool>)
        return textToInt(text) > 0;
    else if constexpr (std::is_same_v<T, std::int64_t>)
        return textToInt64(text);
    else
        return ParamNumber<T>::bounded(textToInt(text));
}

/// The format directive for the field's type.
template <class T>
constexpr const char16_t* paramFormat()
{
    if constexpr (std::is_same_v<T, CString>)
        return u"%s";
    else if constexpr (std::is_same_v<T, double>)
        return u"%f";
    else if constexpr (std::is_same_v<T, std::int64_t>)
        return u"%I64d";
    else
        return u"%d";
}

/// The row for the field that Field returns. Applies says whether its value is written for a
/// structure; otherwise an empty value is.
template <class S, auto Field, auto Applies>
constexpr ParamInfo<S> paramField(int id)
{
    using T = std::remove_cvref_t<decltype(Field(std::declval<S&>()))>;
    return {id,
            paramFormat<T>(),
            [](const S& params)
            {
                static const T none{};
                return FormatArg(Applies(params) ? Field(params) : none);
            },
            [](S& params, std::u16string_view value) { Field(params) = paramFromText<T>(value); }};
}
} // namespace qo
