#pragma once

#include <QoKernel/Kernel.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace qo::host
{
/// One object of JSON on one line, written member by member into a buffer that is used again: for
/// lists of any length. Names are written as they are.
class JsonLine
{
public:
    JsonLine() { clear(); }

    void text(std::string_view name, std::u16string_view value);
    /// Bytes that are no UTF-8 become U+FFFD.
    void text(std::string_view name, std::string_view value);
    void number(std::string_view name, std::int64_t value);
    /// The value is JSON: null, true, or what dump() made.
    void raw(std::string_view name, std::string_view value);

    /// The whole object; valid until the next call.
    std::string_view end();
    void clear();

private:
    void begin(std::string_view name);
    template <class Char>
    void quote(std::basic_string_view<Char> value);
    /// A quotation mark, a backslash or a control character.
    void escape(char c);

    std::string m_line;
};
} // namespace qo::host
