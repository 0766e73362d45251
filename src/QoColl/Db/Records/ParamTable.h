#pragma once

#include "types/Export.h"
#include "types/Format.h"
#include "types/String.h"
#include "types/StringArray.h"

#include <functional>
#include <span>
#include <string_view>
#include <vector>

/// The text form of numbered parameters, "<id>:<value>" and a line feed each, and what all its
/// users share. A value must not hold a line end: on writing one becomes a blank.
namespace qo
{
/// One parameter of a structure S: how it is printed and how its text is stored back.
template <class S>
struct ParamInfo
{
    int id;
    const char16_t* format; ///< of the value alone
    /// The value to print; an empty one where the parameter does not apply.
    FormatArg (*value)(const S& params);
    void (*store)(S& params, std::u16string_view value);
};

/// The names that a reader's log lines bear.
struct ParamReader
{
    const char16_t* noNumber;      ///< piece, its index, text
    const char16_t* unknownNumber; ///< value, number, text
};

/// Calls take for each "<id>:<value>"; it returns false for a number it does not know. Lines
/// without a number and numbers that are unknown are logged and passed over: each text up to its
/// first 256 units, and at most 1000 lines. False for an empty text.
QO_API bool readParams(const CString& text,
                       const ParamReader& reader,
                       const std::function<bool(int id, std::u16string_view value)>& take);

/// Prints the values with the format that formatOfParams() gives.
QO_API CString writeParams(const CString& format, std::vector<FormatArg>& values);

/// "<id>:<format>" and a line feed for each parameter.
template <class S>
CString formatOfParams(std::span<const ParamInfo<S>> table)
{
    CString format;
    for (const ParamInfo<S>& info : table)
    {
        format.AppendFormat(u"%d:", info.id);
        format += info.format;
        format += u'\n';
    }
    return format;
}

template <class S>
CString writeParams(const CString& format, std::span<const ParamInfo<S>> table, const S& params)
{
    std::vector<FormatArg> values;
    values.reserve(table.size());
    for (const ParamInfo<S>& info : table)
        values.push_back(info.value(params));
    return writeParams(format, values);
}

template <class S>
bool readParams(const CString& text,
                const ParamReader& reader,
                std::span<const ParamInfo<S>> table,
                S& params)
{
    return readParams(text,
                      reader,
                      [&](int id, std::u16string_view value)
                      {
                          for (const ParamInfo<S>& info : table)
                              if (info.id == id)
                              {
                                  info.store(params, value);
                                  return true;
                              }
                          return false;
                      });
}
} // namespace qo
