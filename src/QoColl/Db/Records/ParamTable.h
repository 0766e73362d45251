#pragma once

#include "types/Export.h"
#include "types/Format.h"
#include "types/String.h"
#include "types/StringArray.h"

#include <functional>
#include <span>
#include <string_view>
#include <vector>

/// Parameter strings: numbered parameters as a text, "<id>:<value>" and a line feed for each. A
/// line end in a value becomes a blank when it is written.
///
///   "0:\n1:8\n38:2\n21:Radio North\n" has origin "", source 8 (radio recording), media type 2 and
///   stationName "Radio North". Reading keeps the present value of every parameter without a line.
namespace qo
{
/// One parameter of a structure S: its number, how it is printed, and how its text is stored.
template <class S>
struct ParamInfo
{
    int id;
    const char16_t* format; ///< for the value alone
    /// The value to print; an empty one if the parameter does not apply to the structure.
    FormatArg (*value)(const S& params);
    void (*store)(S& params, std::u16string_view value);
};

/// The formats of a reader's log lines.
struct ParamReader
{
    const char16_t* noNumber;      ///< piece, its index, text
    const char16_t* unknownNumber; ///< value, number, text
};

/// What a reader says of a parameter.
enum class ParamTaken
{
    yes,
    unknown, ///< the number
    last     ///< no further one is wanted
};

/// Calls take(id, value) for each line until it wants no more. Lines without a number and unknown
/// numbers are logged and skipped: at most 1000 lines, and 256 units of each text. False for an
/// empty text.
QO_API bool readParams(const CString& text,
                       const ParamReader& reader,
                       const std::function<ParamTaken(int id, std::u16string_view value)>& take);

/// Prints the values with a format from formatOfParams(). Texts in values may be replaced by
/// cleaned copies.
QO_API CString writeParams(const CString& format, std::vector<FormatArg>& values);

/// The format for a whole table: "<id>:<format>" and a line feed for each parameter.
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
                                  return ParamTaken::yes;
                              }
                          return ParamTaken::unknown;
                      });
}
} // namespace qo
